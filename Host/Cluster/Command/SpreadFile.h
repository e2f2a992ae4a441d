/// A mesh file of which every rank has a part: its share of the pieces, or what the first rank deals it.
#ifndef VELTRANE_CLUSTER_SPREAD_FILE_H
#define VELTRANE_CLUSTER_SPREAD_FILE_H

#include "DistributedMap.h"
#include "MeshFile.h"
#include "MovedMesh.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

/// All functions but the plain questions are collective.
class SpreadFile
{
public:
    /// Throws on all ranks what reading the file throws on any.
    SpreadFile(const Communicator& ranks, const std::filesystem::path& path, MeshReading reading);

    const std::filesystem::path& path() const { return path_; }
    /// Whether the ranks read pieces of their own; otherwise the first one has the whole file.
    bool isInPieces() const { return isInPieces_; }
    /// What this rank has read; null if there was nothing for it.
    MeshFile* file() { return file_ ? &*file_ : nullptr; }
    /// The lowest rank that has read something.
    int speaker() const { return speaker_; }
    bool hasMaterials() const { return hasMaterials_; }

    /// Lets the array number the materials, and all ranks have the same list of these.
    void useMaterials(const std::string& array);
    /// Whether every rank's file has such a cell array.
    bool hasCellArray(const std::string& name);
    const std::string& materialArray() const { return materialArray_; }

    /// Deals the elements, if the file is in one piece. What this rank has read of the mesh stays with the file.
    void deal();
    /// This rank's part, once it is dealt.
    Mesh& mesh() { return isInPieces_ ? pieces() : *dealt_.mesh; }
    MeshPart part();

    /// Gives back what has been dealt; nothing is collected or written afterwards.
    void forgetWhole()
    {
        if (!isInPieces_)
        {
            file_.reset();
        }
    }

    /// The values of the part. Throws BadFile if the pieces have different ones.
    Field field(const std::string& name, const std::string& newName);

    /// On the first rank the values of the whole file from those of the parts.
    template <class Value>
    std::vector<Value> collected(const std::vector<Value>& ofPart, Location location, std::size_t width) const;

private:
    Mesh& pieces() { return file_ ? file_->mesh() : *empty_; }
    void unifyMaterials();
    const Routes& routes(Location location) const { return location == Location::nodes ? dealt_.nodes : gaussPoints_; }

    const Communicator& ranks_;
    std::filesystem::path path_;
    GaussPointRule gaussPointRule_;
    bool isInPieces_ = false;
    std::optional<MeshFile> file_;
    std::optional<Mesh> empty_; ///< of a rank that has read nothing
    int speaker_ = 0;
    bool hasMaterials_ = false;
    std::string materialArray_;
    MovedMesh dealt_;
    std::vector<std::int64_t> nodeNumbers_;
    Routes gaussPoints_;
};

} // namespace veltrane

#endif
