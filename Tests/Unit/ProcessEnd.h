/// Tests of the faults that end the process: one text on standard output, status 0.
#ifndef PROCESS_END_H
#define PROCESS_END_H

#include <gtest/gtest.h>

#include <string>

#include <unistd.h>

/// Runs the statement in a copy of the process, and expects that it ends it with exactly this output and status 0.
/// Standard output goes to standard error, which is what is compared.
#define EXPECT_PROCESS_END(statement, text)                                                                            \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            dup2(STDERR_FILENO, STDOUT_FILENO);                                                                        \
            statement;                                                                                                 \
        },                                                                                                             \
        testing::ExitedWithCode(0), testing::Matcher<const std::string&>(testing::Eq(std::string(text))))

#endif
