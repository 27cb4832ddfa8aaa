/* Event history and debug print: the two sinks of every diagnostic.
 *
 * The history keeps the latest records; the debug print shows a text at once. Which levels either of them
 * takes is the platform's to decide, and is asked before a text is formatted. */
#ifndef PLATFORM_EVHIST_H
#define PLATFORM_EVHIST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The room for a record's text, with its terminating zero. */
#define EVHIST_TEXT_SIZE 512

/* One record of the history. */
struct evhist_record {
  uint32_t level;
  char text[EVHIST_TEXT_SIZE]; /* zero-terminated; a longer text is cut */
};

/* Asks whether records of this class and level are kept: 0 means yes. */
int evhist_hist_event_subtype_check(uint32_t event_class, uint32_t level);

/* Keeps a copy of the first `length` bytes of `record`: level word, text and terminating zero. Returns 0 on
 * success, non-zero when the length is not that of a record. */
int evhist_hist_event(uint32_t event_class, uint32_t length, const void *record);

/* Asks whether a text of this level is printed: non-zero means yes. Called with (level, 0, 0, 1). */
int evhist_chk_int(uint32_t level, uint32_t, uint32_t, uint32_t);

/* The name under which the module's texts are printed. */
extern char evhist_dbg_modname[];

/* Prints a formatted text, whole. Called with (1, evhist_dbg_modname, 0, format, ...). */
void dbgprint(int, const char *module, int, const char *format, ...)
#ifdef __GNUC__
    __attribute__((format(printf, 4, 5)))
#endif
    ;

#ifdef __cplusplus
}
static_assert(sizeof(struct evhist_record) == 516, "a record is one level word and 512 bytes of text");
#else
_Static_assert(sizeof(struct evhist_record) == 516, "a record is one level word and 512 bytes of text");
#endif

#endif
