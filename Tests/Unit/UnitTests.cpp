// The program of the unit tests. The library ends its process with status 0 on faults in the data, which test runners
// would take for success: an end before the last test counts as a failure here.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace
{
pid_t ownProcess = 0;
bool isFinished = false;

void refuseEarlyEnd()
{
    if (!isFinished && getpid() == ownProcess)
    {
        std::fputs("The test program was ended before its last test.\n", stderr);
        _exit(EXIT_FAILURE);
    }
}
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // Tests that end the process do so in a copy of it, which carries on where it was made.
    GTEST_FLAG_SET(death_test_style, "fast");
    ownProcess = getpid();
    std::atexit(refuseEarlyEnd);
    const int result = RUN_ALL_TESTS();
    isFinished = true;
    return result;
}
