/// The platform's file utility: opening and closing files with the caller's place for the platform's diagnostics.
///
/// This stand-in works on the C runtime alone. A platform that has the real library names it at configure time with
/// VELTRANE_QORBUTIL_INCLUDE_DIR and VELTRANE_QORBUTIL_LIBRARY.
#ifndef QORBUTIL_H
#define QORBUTIL_H

#include <stdio.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /// Opens `path` in the mode of fopen. `unit` and `line` name the caller's place. Returns null if the file cannot be
    /// opened; the caller closes the stream with QorbFClose.
    FILE* QorbFOpen(const char* path, const char* mode, const char* unit, int line);

    /// Closes a stream of QorbFOpen. Returns what fclose returns.
    int QorbFClose(FILE* stream, const char* unit, int line);

#ifdef __cplusplus
}
#endif

#endif
