#include "MappingStringUtilities.h"

#include "Allocation.h"
#include "Fault.h"

#include <cstdarg>

namespace
{
constexpr const char* unitName = "MappingStringUtilities";
}

void allocateString(char** target, int size, const char* callerName)
{
    if (size == 0)
    {
        endProcess("Error in %s file at line %d: allocation of an empty string in %s is not possible\n", unitName, 14,
                   callerName);
    }
    if (*target != nullptr)
    {
        endProcess("Error in %s file at line %d: allocation of a string is not possible in %s because the string "
                   "pointer is already used\n",
                   unitName, 21, callerName);
    }
    *target = allocateArray<char>(size);
    if (*target == nullptr)
    {
        endProcess("Error in %s file at line %d: impossible to allocate a string in %s\n", unitName, 30, callerName);
    }
}

void releaseString(char* text) noexcept
{
    releaseBytes(text);
}

void printMessage(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
}

void endProcess(const char* format, ...)
{
    char line[messageCapacity];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    leaveOnFault({line});
}

void formatMessage(char* buffer, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, messageCapacity, format, arguments);
    va_end(arguments);
}

void printToFile(std::FILE* file, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(file, format, arguments);
    va_end(arguments);
}

int readFromFile(std::FILE* file, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const int nbRead = std::vfscanf(file, format, arguments);
    va_end(arguments);
    return nbRead;
}
