/// Standard output or standard error in a file.
#ifndef OUTPUT_FILE_H
#define OUTPUT_FILE_H

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

/// Appends what the process writes to a stream to a file while it lives.
class OutputFile
{
public:
    OutputFile(int stream, const std::filesystem::path& path) : itsStream(stream)
    {
        std::fflush(nullptr);
        itsPrevious = fcntl(stream, F_DUPFD_CLOEXEC, 0);
        const int file = open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
        dup2(file, stream);
        close(file);
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile()
    {
        std::fflush(nullptr);
        dup2(itsPrevious, itsStream);
        close(itsPrevious);
    }

private:
    int itsStream;
    int itsPrevious;
};

#endif
