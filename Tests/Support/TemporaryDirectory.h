/// Directories for the files of one test.
#ifndef TEMPORARY_DIRECTORY_H
#define TEMPORARY_DIRECTORY_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <string>

inline void writeFile(const std::filesystem::path& path, const std::string& contents)
{
    std::ofstream(path, std::ios::binary) << contents;
}

inline std::string contentsOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Created empty, removed with its contents.
class TemporaryDirectory
{
public:
    TemporaryDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "veltrane-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
        {
            throw std::runtime_error("cannot create " + name);
        }
        itsPath = std::filesystem::canonical(name);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(itsPath, ignored);
    }

    const std::filesystem::path& path() const { return itsPath; }
    std::filesystem::path operator/(const std::string& name) const { return itsPath / name; }

    /// The names in it, hidden ones included.
    std::set<std::string> names() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(itsPath))
        {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    /// The contents of all files in it and below, by relative path.
    std::map<std::string, std::string> files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(itsPath))
        {
            if (entry.is_regular_file())
            {
                files[std::filesystem::relative(entry.path(), itsPath).string()] = contentsOf(entry.path());
            }
        }
        return files;
    }

private:
    std::filesystem::path itsPath;
};

/// A temporary directory that is the current one while it lives.
class WorkingDirectory : public TemporaryDirectory
{
public:
    /// \param files  what it holds at first, by relative path
    explicit WorkingDirectory(const std::map<std::string, std::string>& files = {})
        : itsPrevious(std::filesystem::current_path())
    {
        for (const auto& [name, contents] : files)
        {
            std::filesystem::create_directories((path() / name).parent_path());
            writeFile(path() / name, contents);
        }
        std::filesystem::current_path(path());
    }
    ~WorkingDirectory()
    {
        std::error_code ignored;
        std::filesystem::current_path(itsPrevious, ignored);
    }

private:
    std::filesystem::path itsPrevious;
};

#endif
