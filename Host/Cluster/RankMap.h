/// What each rank has of a map that is spread over them.
#ifndef VELTRANE_HOST_RANK_MAP_H
#define VELTRANE_HOST_RANK_MAP_H

#include "Communicator.h"
#include "DistributedMap.h"
#include "ElementOrder.h"
#include "Exchange.h"
#include "FarRegion.h"
#include "MapPart.h"
#include "SourceAverages.h"
#include "TargetNodes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

inline std::size_t sizeOf(std::int64_t count)
{
    return static_cast<std::size_t>(count);
}

/// Collective. Throws InvalidOption on all ranks unless all give the same words.
void checkSame(const Communicator& ranks, const std::string& words, const char* what);

/// The functions are those of DistributedMap.
class RankMap
{
public:
    RankMap(MPI_Comm users, const MapOptions& options) : ranks_(users), options_(options)
    {
        options_.takesChecksums = false;  // of models that are nowhere whole
        options_.fromGaussPoints = false; // values come to the maps of the ranks at nodes
    }

    void build(const MeshPart& source, const MeshPart& target, const MapOptions& options);
    void build(const MeshPart& source, const PointCloud& points, const MapOptions& options);
    std::vector<Field> apply(std::span<const Field> fields, const ApplyOptions& options) const;

    std::size_t sourceNodeCount() const { return sourceNodeCount_; }
    const Map& map() const { return *map_; }
    std::vector<Finding> findings(Location location) const;
    bool hasUnreachedNodes() const { return far_ && !far_->isComplete(); }
    DistributedStatistics statistics() const;

private:
    struct Application;

    template <class Target>
    void buildMap(const MeshPart& source, const ElementOrder& sourceOrder, const Target& target,
                  const std::vector<int>& flags);
    void findNodeMaterials(const MeshPart& target);
    void settleFar(const MeshPart& target, const std::vector<int>& flags);
    void settleAverages(const MeshPart& source, const ElementOrder& order, const MapOptions& options);
    void count(bool isMesh);
    const TransferMap& engineMap() const { return *map_->map_; }
    bool isOwn(std::int64_t node) const
    {
        return targetNodes_.areOwn.empty() || targetNodes_.areOwn[sizeOf(node)] != 0;
    }
    void checkFields(std::span<const Field> fields, const ApplyOptions& options) const;
    FieldValues valuesForWindow(const Field& field) const;
    Application prepared(const Field& field, Location target, const FieldOptions& special, float commonDefault) const;
    void spread(Application& application) const;
    template <class Value> std::vector<Value> carried(const std::vector<Value>& atNodes, std::size_t width) const;

    Communicator ranks_;
    MapOptions options_;
    ElementOrder targetOrder_;
    TargetNodes targetNodes_;
    Routes nodes_;
    std::vector<std::int64_t> windowElements_;
    std::optional<Map> map_;
    std::optional<SourceAverages> averages_;
    std::optional<FarRegion> far_;
    std::vector<unsigned char> isUnreached_; ///< per node, where there is a far region
    std::size_t sourceNodeCount_ = 0;
    std::size_t sourceGaussPointCount_ = 0;
    std::vector<BucketRange> strayBuckets_;
    MapPart part_;
    DistributedStatistics statistics_;
};

} // namespace veltrane

#endif
