/* Bitmap printing support. */
#ifndef PLATFORM_BITMAP_PRINT_H
#define PLATFORM_BITMAP_PRINT_H

#ifdef __cplusplus
extern "C" {
#endif

/* Where the next line of a bitmap listing resumes: the last bit that was listed; 0 between listings. Whoever
 * lists a bitmap sets it. */
extern int printf_curr_idx;

#ifdef __cplusplus
}
#endif

#endif
