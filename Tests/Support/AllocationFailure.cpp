#include "AllocationFailure.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <sys/wait.h>
#include <unistd.h>

namespace
{
std::int64_t nbRequests = 0;
std::int64_t nbLive = 0;
std::int64_t failingRequest = 0; ///< 0: none
AllocationFailure::Answer failingAnswer = AllocationFailure::Answer::null;

/// Apart from the operators, since compilers do not expect null from these.
[[gnu::noinline]] void* obtain(std::size_t size)
{
    ++nbRequests;
    if (nbRequests == failingRequest)
    {
        if (failingAnswer == AllocationFailure::Answer::exception)
        {
            throw std::bad_alloc();
        }
        return nullptr;
    }
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    ++nbLive;
    return block;
}

void giveBack(void* block) noexcept
{
    if (block != nullptr)
    {
        --nbLive;
        std::free(block);
    }
}

/// What a child process wrote until it ended.
std::string textFrom(int pipeEnd)
{
    std::string text;
    std::array<char, 4096> part;
    ssize_t nbRead = 0;
    while ((nbRead = read(pipeEnd, part.data(), part.size())) > 0)
    {
        text.append(part.data(), static_cast<std::size_t>(nbRead));
    }
    close(pipeEnd);
    return text;
}

constexpr int nothingFailedStatus = 77;

/// Never returns: the end of a child process.
[[noreturn]] void runWithFailure(const std::function<void()>& run, int n, int pipeEnd)
{
    dup2(pipeEnd, STDOUT_FILENO);
    close(pipeEnd);
    bool happened = false;
    {
        const AllocationFailure failure(n);
        run();
        happened = failure.happened();
    }
    std::exit(happened ? EXIT_SUCCESS : nothingFailedStatus);
}
} // namespace

void* operator new(std::size_t size)
{
    return obtain(size);
}
void* operator new[](std::size_t size)
{
    return obtain(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try
    {
        return obtain(size);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept
{
    return operator new(size, tag);
}
void operator delete(void* block) noexcept
{
    giveBack(block);
}
void operator delete[](void* block) noexcept
{
    giveBack(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept
{
    giveBack(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    giveBack(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    giveBack(block);
}
void operator delete[](void* block, std::size_t) noexcept
{
    giveBack(block);
}

AllocationFailure::AllocationFailure(int n, Answer answer)
{
    failingAnswer = answer;
    failingRequest = nbRequests + n;
}

AllocationFailure::~AllocationFailure()
{
    failingRequest = 0;
}

bool AllocationFailure::happened() const
{
    return nbRequests >= failingRequest;
}

std::int64_t nbAllocationRequests()
{
    return nbRequests;
}

std::int64_t nbLiveAllocations()
{
    return nbLive;
}

std::vector<std::string> outcomesOfFailedRequests(const std::function<void()>& run)
{
    constexpr int mostRequests = 200;
    std::vector<std::string> outcomes;
    for (int n = 1; n <= mostRequests; ++n)
    {
        int ends[2];
        std::fflush(nullptr);
        if (pipe(ends) != 0)
        {
            break;
        }
        const pid_t child = fork();
        if (child == 0)
        {
            close(ends[0]);
            runWithFailure(run, n, ends[1]);
        }
        close(ends[1]);
        std::string text = textFrom(ends[0]);
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) != child)
        {
            break;
        }
        if (WIFEXITED(status) && WEXITSTATUS(status) == nothingFailedStatus)
        {
            return outcomes;
        }
        if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS)
        {
            text += WIFEXITED(status) ? "(exit with status " + std::to_string(WEXITSTATUS(status)) + ")"
                                      : "(signal " + std::to_string(WTERMSIG(status)) + ")";
        }
        outcomes.push_back(text);
    }
    outcomes.push_back("(no end)");
    return outcomes;
}

std::vector<std::string> outcomesOfFailedTables(const std::function<void()>& run)
{
    std::vector<std::string> outcomes = outcomesOfFailedRequests(run);
    std::erase_if(outcomes,
                  [](const std::string& outcome)
                  {
                      const std::string bufferText =
                          "Error in MappingStringUtilities file at line 30: impossible to allocate a string in ";
                      return outcome.rfind(bufferText, 0) == 0 && outcome.back() == '\n';
                  });
    return outcomes;
}
