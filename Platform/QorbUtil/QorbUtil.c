#include "QorbUtil.h"

FILE* QorbFOpen(const char* path, const char* mode, const char* unit, int line)
{
    (void)unit;
    (void)line;
    return fopen(path, mode);
}

int QorbFClose(FILE* stream, const char* unit, int line)
{
    (void)unit;
    (void)line;
    return fclose(stream);
}
