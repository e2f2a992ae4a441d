/// Arrays of a file that stand in it in the form in which another file can have them.
#ifndef VELTRANE_HOST_STORED_ARRAYS_H
#define VELTRANE_HOST_STORED_ARRAYS_H

#include "StoredArray.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace veltrane
{

/// By the part of the file that they belong to, "PointData", and their names. The file stays open as long as this
/// lives.
class StoredArrays
{
public:
    explicit StoredArrays(std::shared_ptr<const ReadFile> file = nullptr) : file_(std::move(file)) {}

    /// Those that stand in the text of the file, or are not compressed, are none.
    void add(std::string_view part, const std::string& name, const StoredArray& array);

    /// For arrays that are replaced by others.
    void remove(std::string_view part, const std::string& name) { arrays_.erase({std::string(part), name}); }

    /// Null if there is none.
    const StoredArray* find(std::string_view part, const std::string& name) const;

private:
    std::shared_ptr<const ReadFile> file_;
    std::map<std::pair<std::string, std::string>, StoredArray> arrays_{};
};

} // namespace veltrane

#endif
