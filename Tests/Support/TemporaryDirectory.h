/// A working directory of a test's own, for everything that reads or writes files in the current one.
#ifndef TEMPORARY_DIRECTORY_H
#define TEMPORARY_DIRECTORY_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class TemporaryDirectory
{
public:
    TemporaryDirectory() : itsPrevious(std::filesystem::current_path())
    {
        std::string pattern = std::filesystem::temp_directory_path() / "veltrane-test-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr)
        {
            throw std::runtime_error("no temporary directory");
        }
        itsPath = pattern;
        std::filesystem::current_path(itsPath);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory()
    {
        std::error_code ignored;
        std::filesystem::current_path(itsPrevious, ignored);
        std::filesystem::remove_all(itsPath, ignored);
    }

private:
    std::filesystem::path itsPrevious;
    std::filesystem::path itsPath;
};

/// A test that runs in a directory of its own, its members included.
class TestInOwnDirectory : public testing::Test
{
private:
    TemporaryDirectory itsDirectory;
};

inline void writeFile(const std::string& name, const std::string& contents)
{
    std::ofstream(name) << contents;
}

inline std::string contentsOf(const std::string& name)
{
    std::ifstream file(name);
    return {std::istreambuf_iterator<char>(file), {}};
}

#endif
