#include "ReadingGuard.h"

#include "DataSetReader.h"
#include "Text.h"

#include <fcntl.h>
#include <sysexits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace veltrane
{
namespace
{

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
#    if __has_feature(address_sanitizer)
constexpr bool isSanitized = true;
#    else
constexpr bool isSanitized = false;
#    endif
#else
constexpr bool isSanitized = false;
#endif

/// In the order of the signals.
constexpr std::array<const char*, 5> signalNames{"SIGFPE", "SIGSEGV", "SIGBUS", "SIGILL", "SIGABRT"};

/// The handler's own stack, since the other one may be what is used up.
std::array<std::byte, 65536> handlerStack;

} // namespace

ReadingGuard* ReadingGuard::current = nullptr;

ReadingGuard::ReadingGuard(const std::filesystem::path& path)
    : outer_(current), thread_(::pthread_self()), errors_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1))
{
    const char* lineBegin = ::isatty(STDERR_FILENO) != 0 ? "\r\033[K" : "";
    std::ranges::transform(signalNames, messages_.begin(),
                           [&](const char* name)
                           {
                               return text(lineBegin, "veltrane: cannot read ", quoted(path),
                                           ": VTK's reader ends with the signal ", name,
                                           "; the file is probably damaged\n");
                           });
    current = this;
    if (isSanitized)
    {
        return;
    }
    stack_t stack{};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    ::sigaltstack(&stack, &previousStack_);
    struct sigaction action = {};
    action.sa_handler = tellAndEnd;
    action.sa_flags = SA_ONSTACK;
    for (std::size_t i = 0; i < signals.size(); ++i)
    {
        ::sigaction(signals[i], &action, &previousActions_[i]);
    }
}

ReadingGuard::~ReadingGuard()
{
    current = outer_;
    if (isSanitized)
    {
        return;
    }
    for (std::size_t i = 0; i < signals.size(); ++i)
    {
        ::sigaction(signals[i], &previousActions_[i], nullptr);
    }
    ::sigaltstack(&previousStack_, nullptr);
}

/// Does nothing but what may be done at any moment.
void ReadingGuard::tellAndEnd(int signal)
{
    if (current == nullptr || ::pthread_equal(current->thread_, ::pthread_self()) == 0)
    {
        ::signal(signal, SIG_DFL);
        ::raise(signal);
        return;
    }
    for (std::size_t i = 0; i < signals.size(); ++i)
    {
        if (signals[i] == signal)
        {
            const std::string& message = current->messages_[i];
            [[maybe_unused]] const ssize_t count = ::write(current->errors_.get(), message.data(), message.size());
        }
    }
    ::_exit(EX_DATAERR);
}

} // namespace veltrane
