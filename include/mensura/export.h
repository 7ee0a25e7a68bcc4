/* Visibility of the exported functions; every public header includes this one. */
#ifndef MENSURA_EXPORT_H
#define MENSURA_EXPORT_H

#if defined(__GNUC__)
#define MENSURA_EXPORT __attribute__((visibility("default")))
#else
#define MENSURA_EXPORT
#endif

#endif
