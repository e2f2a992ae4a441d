/// Propagation to far nodes of a target that is spread over ranks: rank 0 gathers the elements with far nodes, and does
/// it in the order of the whole.
#ifndef VELTRANE_HOST_FAR_REGION_H
#define VELTRANE_HOST_FAR_REGION_H

#include "ElementOrder.h"
#include "Exchange.h"

#include "Field.h"
#include "Mesh.h"

#include "Map/MapTable.h"
#include "Map/TransferMap.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace veltrane
{

/// A rank's part of the target.
struct TargetInParts
{
    const Mesh& mesh;
    const ElementOrder& order;
    std::span<const std::int64_t> nodeNumbers; ///< in the whole; empty if no node is shared
    std::span<const int> mappingFlags;         ///< per material
};

class FarRegion
{
public:
    FarRegion() = default;

    /// Collective. `isFar`, per node of the part, is 1 at far nodes, and is left so at those that values do not reach.
    FarRegion(const Communicator& ranks, const TargetInParts& part, std::span<unsigned char> isFar);

    /// Collective. Far nodes that are reached get their values, in the precision of `Real`; the others' are read.
    /// `values` are those of the part's nodes; of the field the arrays do not count.
    template <class Real, class Value>
    void spread(const Communicator& ranks, const MapField& field, Value* values) const;

    bool isComplete() const { return isComplete_; }

private:
    struct Gathered;

    void gather(const Communicator& ranks, const TargetInParts& part, std::span<const unsigned char> isFar,
                Gathered& gathered);
    void plan(const Gathered& gathered, std::vector<unsigned char>& isFar);

    Routes toRoot_; ///< nodes of elements with far ones
    Exchange back_;
    std::vector<int> listed_;          ///< these nodes
    std::vector<unsigned char> takes_; ///< per listed node, whether it is far and reached
    bool isComplete_ = true;

    // On rank 0:
    PropagationPlan plan_;
    std::vector<int> nodeOf_;           ///< per listed node of all ranks its number in the plan
    std::vector<unsigned char> wasFar_; ///< per node of the plan
};

} // namespace veltrane

#endif
