#include "LibraryHost.h"

#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <stdexcept>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

// Present when the leak detector is: a child that ends inside the library leaves its memory to the system.
extern "C" void __attribute__((weak)) __lsan_disable();

namespace
{
std::function<int(const Report&)> theAnswer;
std::vector<Report> theTranscript;

int record(int progress, char* title, char* text, int kind)
{
    theTranscript.push_back({progress, title, text, kind});
    return theAnswer(theTranscript.back());
}

/// Sends standard output to a file while it is diverted.
class DivertedOutput
{
public:
    DivertedOutput() : itsFile(std::tmpfile()) {}
    DivertedOutput(const DivertedOutput&) = delete;
    DivertedOutput& operator=(const DivertedOutput&) = delete;
    ~DivertedOutput() { std::fclose(itsFile); }

    void divert()
    {
        std::fflush(stdout);
        itsSaved = dup(STDOUT_FILENO);
        dup2(fileno(itsFile), STDOUT_FILENO);
    }

    void restore()
    {
        std::fflush(stdout);
        dup2(itsSaved, STDOUT_FILENO);
        close(itsSaved);
    }

    std::string text() const
    {
        std::string all;
        std::rewind(itsFile);
        for (int c = std::fgetc(itsFile); c != EOF; c = std::fgetc(itsFile))
        {
            all.push_back(static_cast<char>(c));
        }
        return all;
    }

private:
    std::FILE* itsFile;
    int itsSaved = -1;
};

/// The call that runs in the test process itself.
struct RunningCall
{
    std::string name;
    DivertedOutput* output;
};
const RunningCall* theRunningCall = nullptr;

/// A fatal fault ends the process with status 0, which would pass for success.
void failWhenACallEndsTheProcess()
{
    if (theRunningCall != nullptr)
    {
        theRunningCall->output->restore();
        std::fprintf(stderr, "the library ended the process in %s: %s\n", theRunningCall->name.c_str(),
                     theRunningCall->output->text().c_str());
        std::_Exit(EXIT_FAILURE);
    }
}
} // namespace

std::ostream& operator<<(std::ostream& stream, const Report& report)
{
    return stream << '(' << report.progress << ", \"" << report.title << "\", \"" << report.text << "\", "
                  << report.kind << ')';
}

VeltraneCallback callbackAnswering(std::function<int(const Report&)> answer)
{
    theAnswer = std::move(answer);
    theTranscript.clear();
    return record;
}

const std::vector<Report>& transcript()
{
    return theTranscript;
}

std::string printedByReturningCall(const std::string& name, const std::function<void()>& call)
{
    static const int registered = std::atexit(failWhenACallEndsTheProcess);
    if (registered != 0)
    {
        throw std::runtime_error("a process that ends could not be told of");
    }
    DivertedOutput output;
    const RunningCall running{name, &output};
    theRunningCall = &running;
    output.divert();
    call();
    output.restore();
    theRunningCall = nullptr;
    return output.text();
}

ChildsEnd endOfCallInChild(const std::function<void()>& call)
{
    constexpr int statusOfReturn = 99;
    constexpr unsigned int longestTime = 60; // seconds
    DivertedOutput output;
    // What is still in the buffers must not be written twice.
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        theRunningCall = nullptr;
        alarm(longestTime);
        if (&__lsan_disable != nullptr)
        {
            __lsan_disable();
        }
        output.divert();
        call();
        std::fflush(stdout);
        _exit(statusOfReturn);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const int exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return {exitStatus == statusOfReturn, exitStatus, output.text()};
}
