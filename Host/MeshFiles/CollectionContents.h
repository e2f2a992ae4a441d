/// What is in a collection of files, without making anything of it.
#ifndef VELTRANE_HOST_COLLECTION_CONTENTS_H
#define VELTRANE_HOST_COLLECTION_CONTENTS_H

#include "Collection.h"
#include "FileContents.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace veltrane
{

struct CollectionContents
{
    std::vector<Step> steps;
    FileContents first; ///< of the first step
    /// Indices of steps with other points or cells than the first, or with other names, types or components of arrays.
    std::vector<std::size_t> otherMeshes;
    std::vector<std::size_t> otherArrays;
};

/// Of a .pvd file, all files of which are read. Throws NoInput or BadFile, naming the file and what is wrong.
CollectionContents readCollectionContents(const std::filesystem::path& path);

} // namespace veltrane

#endif
