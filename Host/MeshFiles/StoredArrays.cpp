#include "StoredArrays.h"

namespace veltrane
{

void StoredArrays::add(std::string_view part, const std::string& name, const StoredArray& array)
{
    if (array.isPacked())
    {
        arrays_.insert_or_assign({std::string(part), name}, array);
    }
}

const StoredArray* StoredArrays::find(std::string_view part, const std::string& name) const
{
    const auto found = arrays_.find({std::string(part), name});
    return found == arrays_.end() ? nullptr : &found->second;
}

} // namespace veltrane
