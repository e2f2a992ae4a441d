/// A directory for the files of one test.
#ifndef VELTRANE_TESTS_TEST_DIRECTORY_H
#define VELTRANE_TESTS_TEST_DIRECTORY_H

#include <filesystem>
#include <set>
#include <string>

/// Created empty, removed with its contents.
class TestDirectory
{
public:
    TestDirectory();
    ~TestDirectory();
    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

    /// The names in it, hidden ones included.
    std::set<std::string> names() const;

private:
    std::filesystem::path path_;
};

#endif
