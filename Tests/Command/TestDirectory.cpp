#include "TestDirectory.h"

#include <cstdlib>
#include <stdexcept>

TestDirectory::TestDirectory()
{
    std::string name = (std::filesystem::temp_directory_path() / "veltrane-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
    {
        throw std::runtime_error("cannot create " + name);
    }
    path_ = std::filesystem::canonical(name);
}

TestDirectory::~TestDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::set<std::string> TestDirectory::names() const
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
    {
        names.insert(entry.path().filename().string());
    }
    return names;
}
