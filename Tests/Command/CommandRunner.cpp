#include "CommandRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace
{

void redirect(int descriptor, const std::filesystem::path& file)
{
    const int opened = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(opened, descriptor);
    ::close(opened);
}

int statusOf(pid_t process)
{
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR)
    {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// A line that tells of a stage of the work: "reading source ...", "interpolating ... 40 %, 12 s left".
bool isProgress(const std::string& line)
{
    static const std::regex pattern(R"([a-z][A-Za-z ]* \.\.\.( \d+ %.*)?)");
    return std::regex_match(line, pattern);
}

/// Separates the lines about progress from messages.
CommandResult resultOf(int status, std::string output, const std::string& errors)
{
    CommandResult result{status, std::move(output), "", ""};
    std::istringstream stream(errors);
    for (std::string line; std::getline(stream, line);)
    {
        (isProgress(line) ? result.progress : result.errors) += line + (stream.eof() ? "" : "\n");
    }
    return result;
}

/// Empty at the end.
std::string readSome(int descriptor)
{
    std::array<char, 4096> block;
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    return count > 0 ? std::string(block.data(), static_cast<std::size_t>(count)) : std::string();
}

} // namespace

void CommandRunner::becomeCommand(const std::vector<std::string>& arguments) const
{
    std::vector<char*> words{const_cast<char*>(VELTRANE_COMMAND)};
    for (const std::string& argument : arguments)
    {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    ::setenv("TMPDIR", temporary_.path().c_str(), 1);
    rlimit stack{};
    ::getrlimit(RLIMIT_STACK, &stack);
    constexpr rlim_t usualSize = 8 << 20; // a stack without end would never be used up
    stack.rlim_cur = std::min(stack.rlim_max, usualSize);
    ::setrlimit(RLIMIT_STACK, &stack);
    if (::chdir(directory_.path().c_str()) == 0)
    {
        ::execv(VELTRANE_COMMAND, words.data());
    }
    std::_Exit(127);
}

CommandResult CommandRunner::run(const std::vector<std::string>& arguments, std::optional<rlim_t> maxFileSize) const
{
    return runPrepared(
        [&]
        {
            if (maxFileSize)
            {
                const rlimit limit{*maxFileSize, *maxFileSize};
                ::setrlimit(RLIMIT_FSIZE, &limit);
                ::signal(SIGXFSZ, SIG_IGN); // the failure is to come from the write itself
            }
        },
        arguments);
}

CommandResult CommandRunner::runPrepared(const std::function<void()>& prepare,
                                         const std::vector<std::string>& arguments) const
{
    const TemporaryDirectory streams;
    const pid_t process = ::fork();
    if (process == 0)
    {
        redirect(STDOUT_FILENO, streams / "output");
        redirect(STDERR_FILENO, streams / "errors");
        prepare();
        becomeCommand(arguments);
    }
    const int status = statusOf(process);
    return resultOf(status, contentsOf(streams / "output"), contentsOf(streams / "errors"));
}

CommandResult CommandRunner::runAndInterrupt(const std::vector<std::string>& arguments, int signal,
                                             const std::string& awaited, int times) const
{
    const TemporaryDirectory streams;
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0)
    {
        throw std::runtime_error("cannot open a terminal");
    }
    const std::string name = ::ptsname(terminal);
    const pid_t process = ::fork();
    if (process == 0)
    {
        ::close(terminal);
        redirect(STDOUT_FILENO, streams / "output");
        redirect(STDERR_FILENO, name);
        becomeCommand(arguments);
    }
    std::string errors = readSome(terminal);
    for (std::string more = errors; !more.empty() && errors.find(awaited) == std::string::npos; errors += more)
    {
        more = readSome(terminal);
    }
    for (int i = 0; i < times; ++i)
    {
        ::usleep(i == 0 ? 0 : 20000); // signals of one sort that wait at the same time are one
        ::kill(process, signal);
    }
    for (std::string more = readSome(terminal); !more.empty(); more = readSome(terminal))
    {
        errors += more;
    }
    ::close(terminal);
    const int status = statusOf(process);
    return {status, contentsOf(streams / "output"), errors, ""};
}

void expectFailure(const CommandRunner& runner, int status, const std::string& sentence,
                   const std::vector<std::string>& arguments)
{
    const std::set<std::string> before = runner.directory().names();
    const CommandResult result = runner.run(arguments);
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.errors, "veltrane: " + sentence + "\n");
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(runner.directory().names(), before);
    EXPECT_THAT(runner.temporaryNames(), testing::IsEmpty());
}

void expectCancellation(const CommandRunner& runner, const std::vector<std::string>& arguments)
{
    const std::set<std::string> before = runner.directory().names();
    for (const std::string awaited : {"reading source", " %  "})
    {
        const CommandResult result = runner.runAndInterrupt(arguments, SIGINT, awaited);
        EXPECT_EQ(result.status, 130) << awaited;
        EXPECT_THAT(result.errors, testing::HasSubstr(awaited));
        EXPECT_THAT(result.errors, testing::EndsWith("\r\033[Kveltrane: cancelled\r\n")); // in the place of the bar
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(runner.directory().names(), before);
        EXPECT_THAT(runner.temporaryNames(), testing::IsEmpty());
    }
}
