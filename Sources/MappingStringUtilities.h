/// Message buffers, formatted output, and the messages of faults.
#ifndef VELTRANE_MAPPING_STRING_UTILITIES_H
#define VELTRANE_MAPPING_STRING_UTILITIES_H

#include <cstdio>

/// Size in bytes of every message buffer, and room that a host provides for a message.
inline constexpr int messageCapacity = 1000;

/// Allocates `size` bytes into `*target`, undefined content; `callerName` is named in the faults.
/// A size of 0, a target that is already set and a failed allocation end the process.
void allocateString(char** target, int size, const char* callerName);

/// Gives back a buffer of allocateString; null is allowed.
void releaseString(char* text) noexcept;

/// printf
[[gnu::format(printf, 1, 2)]] void printMessage(const char* format, ...);

/// Leaves the computation because of a fault in the data that a host hands over; in the library this prints the text
/// and ends the process with status 0.
[[noreturn, gnu::format(printf, 1, 2)]] void endProcess(const char* format, ...);

/// sprintf into a message buffer, of which messageCapacity bytes are never exceeded.
[[gnu::format(printf, 2, 3)]] void formatMessage(char* buffer, const char* format, ...);

/// fprintf
[[gnu::format(printf, 2, 3)]] void printToFile(std::FILE* file, const char* format, ...);

/// fscanf; returns the number of values that were read.
[[gnu::format(scanf, 2, 3)]] int readFromFile(std::FILE* file, const char* format, ...);

/// The magnitude of a single-precision value.
inline float absoluteValue(float value)
{
    return __builtin_fabsf(value);
}

/// The message buffer of one computation: given back at its end unless it was handed over as an error text.
class MessageBuffer
{
public:
    explicit MessageBuffer(const char* callerName) { allocateString(&itsText, messageCapacity, callerName); }
    MessageBuffer(const MessageBuffer&) = delete;
    MessageBuffer& operator=(const MessageBuffer&) = delete;
    ~MessageBuffer() { releaseString(itsText); }

    char* text() { return itsText; }

    /// Hands the buffer over; the receiver gives it back with releaseString.
    char* release()
    {
        char* text = itsText;
        itsText = nullptr;
        return text;
    }

private:
    char* itsText = nullptr;
};

#endif
