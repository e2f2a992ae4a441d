/// From values at Gauss points of a source that is spread over ranks to values at its nodes.
#ifndef VELTRANE_HOST_SOURCE_AVERAGES_H
#define VELTRANE_HOST_SOURCE_AVERAGES_H

#include "ElementOrder.h"
#include "SharedNodes.h"

#include "Mesh.h"

#include "Elements/ElementKinds.h"

#include <cstdint>
#include <vector>

namespace veltrane
{

/// The sum at a node goes over its elements in the order of the whole. For a node of several ranks the lowest of them
/// collects what the elements give to it.
class SourceAverages
{
public:
    SourceAverages() = default;

    /// Collective. Nothing is borrowed.
    SourceAverages(const Communicator& ranks, const Mesh& part, const ElementOrder& order, const SharedNodes& shared);

    /// Collective. The averages of `values`, [Gauss points of the part][width], at the nodes of the part, in the
    /// precision of `Real`.
    template <class Real, class Value>
    std::vector<Real> average(const Communicator& ranks, const Value* values, std::size_t width) const;

private:
    struct Element
    {
        int typeCode;
        std::int64_t firstNode; ///< in nodes_
        std::int64_t firstGaussPoint;
    };
    /// What an element gives to a node of several ranks.
    struct Share
    {
        std::int64_t element; ///< in the whole
        int node;             ///< in the list of nodes that are sent back to the rank that gives
    };

    void settleHomes(const Communicator& ranks, const SharedNodes& shared);
    void listShares(const Communicator& ranks, const ElementOrder& order);

    GaussRuleChoice rule_ = GaussRuleChoice::full;
    std::vector<Element> elements_;         ///< in the order of the whole
    std::vector<int> nodes_;                ///< element after element
    std::vector<int> elementCounts_;        ///< per node of the part; of those collected here over all ranks
    std::vector<int> homes_;                ///< per node the rank that collects, -1 for nodes of this rank alone
    std::vector<std::int64_t> shareOf_;     ///< per entry of nodes_ the number of its share, -1 for none
    std::vector<std::int64_t> firstShares_; ///< per rank
    Exchange shares_;
    std::vector<std::int64_t> arrivals_;  ///< in the order of the elements of the whole
    std::vector<int> arrivalNodes_;       ///< per arrival the node of the part
    Routes averages_;                     ///< from those who collect
    std::vector<int> collectedElsewhere_; ///< the nodes that averages arrive for
};

} // namespace veltrane

#endif
