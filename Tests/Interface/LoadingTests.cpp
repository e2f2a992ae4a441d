// The ways in which hosts load the library and where they call it from.
#include "HexahedronOnItself.h"
#include "Scenes.h"
#include "TemporaryDirectory.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
namespace fs = std::filesystem;

/// A copy of the library's file, which the loader takes for another library: other tests do not keep it loaded.
class CopiedLibrary
{
public:
    CopiedLibrary() { fs::copy_file(VELTRANE_LIBRARY, itsPath); }

    void* open(int binding) const { return dlopen(itsPath.c_str(), binding | RTLD_LOCAL); }
    bool isLoaded() const
    {
        void* handle = open(RTLD_LAZY | RTLD_NOLOAD);
        return handle != nullptr && dlclose(handle) == 0;
    }

private:
    const TemporaryDirectory itsDirectory;
    const fs::path itsPath = itsDirectory / "libVeltrane.so";
};

class Loading : public Host
{
protected:
    const WorkingDirectory itsDirectory; // calls write their log into the current directory
};

TEST_F(Loading, worksWithLazyAndWithImmediateBinding)
{
    for (const int binding : {RTLD_LAZY, RTLD_NOW})
    {
        const CopiedLibrary copy;
        void* library = copy.open(binding);
        ASSERT_NE(library, nullptr) << dlerror();
        EXPECT_TRUE(HexahedronOnItself().succeedsWith(functionsOf(library)));
        EXPECT_EQ(dlclose(library), 0);
    }
}

TEST_F(Loading, theLibraryCanBeUnloadedAndLoadedAgain)
{
    const CopiedLibrary copy;
    std::size_t bytesAfterFirst = 0;
    for (int i = 0; i < 100; ++i)
    {
        void* library = copy.open(i % 2 == 0 ? RTLD_LAZY : RTLD_NOW);
        ASSERT_NE(library, nullptr) << dlerror();
        ASSERT_TRUE(HexahedronOnItself().succeedsWith(functionsOf(library))) << i;
        ASSERT_EQ(dlclose(library), 0);
        ASSERT_FALSE(copy.isLoaded());
        const struct mallinfo2 info = mallinfo2();
        bytesAfterFirst = i == 0 ? info.uordblks : bytesAfterFirst;
        EXPECT_LE(info.uordblks, bytesAfterFirst + 16384U) << i;
    }
}

void* callEverything(void* isRight)
{
    *static_cast<bool*>(isRight) = HexahedronOnItself().succeedsWith(libraryUnderTest());
    return nullptr;
}

TEST_F(Loading, aHostWrittenInCFindsAllItNeedsAndNothingButTheLogIsWritten)
{
    EXPECT_EQ(std::system(VELTRANE_C_HOST), 0);
    EXPECT_THAT(itsDirectory.names(), testing::IsEmpty()); // the program removes the log
}

TEST_F(Loading, aThreadWithAStackOf64KiBCanCall)
{
#ifdef __SANITIZE_ADDRESS__
    constexpr std::size_t stackSize = 512 * 1024; // its red zones widen every frame
#else
    constexpr std::size_t stackSize = 64 * 1024;
#endif
    // Below the stack lies a page that may not be touched: an overflow ends the test.
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* region =
        mmap(nullptr, stackSize + page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_NORESERVE, -1, 0);
    ASSERT_NE(region, MAP_FAILED);
    auto* stack = static_cast<unsigned char*>(region) + page;
    ASSERT_EQ(mprotect(stack, stackSize, PROT_READ | PROT_WRITE), 0);
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstack(&attributes, stack, stackSize), 0);
    bool isRight = false;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, callEverything, &isRight), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_TRUE(isRight);
    // Anonymous pages are zero until they are written.
    const auto* deepest = std::find_if(stack, stack + stackSize, [](unsigned char byte) { return byte != 0; });
    RecordProperty("stack_bytes", static_cast<int>(stack + stackSize - deepest));
    pthread_attr_destroy(&attributes);
    munmap(region, stackSize + page);
}

TEST_F(Loading, twoProcessesInTwoDirectoriesDoNotDisturbEachOther)
{
    // Each reads settings of its own, which show in the number of buckets of its log.
    const Transfer inside =
        transferOf(linear, roomySource(), box(element::hexahedron, {0, 0, 0}, {4, 4, 4}, {4, 4, 4}));
    const std::array<Circumstances, 2> circumstances = {
        Circumstances{}, Circumstances{.files = {{"mappingInputs.txt", "0.1 0.001 2\n"}}}};
    std::array<Outcome, 2> expected = {run(inside, circumstances[0]), run(inside, circumstances[1])};
    ASSERT_EQ(expected[0].code, 0);
    ASSERT_NE(expected[0].log(), expected[1].log());
    std::array<pid_t, 2> children{};
    for (std::size_t i = 0; i < children.size(); ++i)
    {
        children[i] = fork();
        if (children[i] == 0)
        {
            bool isSame = true;
            for (int call = 0; call < 100; ++call)
            {
                const Outcome outcome = run(inside, circumstances[i]);
                isSame = isSame && outcome.code == 0 && outcome.files == expected[i].files &&
                         outcome.fields == expected[i].fields;
            }
            _exit(isSame ? EXIT_SUCCESS : EXIT_FAILURE);
        }
    }
    for (const pid_t child : children)
    {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
}
} // namespace
