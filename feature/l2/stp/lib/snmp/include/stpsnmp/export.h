/* Marks what the module exports; the names also stand in libstpsnmp.map. */
#ifndef STPSNMP_EXPORT_H
#define STPSNMP_EXPORT_H

#ifdef __cplusplus
#define STPSNMP_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define STPSNMP_EXPORT extern
#endif

#endif
