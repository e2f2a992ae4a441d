/// A test whose members run in a directory of its own.
#ifndef TEST_IN_OWN_DIRECTORY_H
#define TEST_IN_OWN_DIRECTORY_H

#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

class TestInOwnDirectory : public testing::Test
{
protected:
    const WorkingDirectory itsDirectory;
};

#endif
