/// How good a transfer is: what of both meshes lies in the other, and what the fields are like once they are mapped
/// back.
#ifndef VELTRANE_HOST_VALIDATION_H
#define VELTRANE_HOST_VALIDATION_H

#include "Comparison.h"
#include "Integrals.h"
#include "Map.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace veltrane
{

/// What of one mesh lies in the other. What is not to receive values, and nodes of no volume element, do not count.
struct Coverage
{
    std::size_t nodes = 0;
    std::size_t mappedNodes = 0; ///< in an element of the other mesh, or near one
    std::size_t nearNodes = 0;   ///< of these
    double meanNearDistance = 0; ///< of the near nodes
    double largestNearDistance = 0;
    std::size_t elements = 0;       ///< volumes
    std::size_t mappedElements = 0; ///< all of whose nodes are mapped
    double volume = 0;
    double mappedVolume = 0; ///< of the Gauss points that lie in an element of the other mesh

    double nodeShare() const;
    double elementShare() const;
    double volumeShare() const;
};

/// One field there and back.
struct FieldRoundTrip
{
    /// At the source's own locations; not a number where nothing comes back: there the target has no element, or no
    /// value of the source.
    Field returned;
    FieldComparison comparison; ///< of what is returned with the source
    FieldIntegrals atSource;
    FieldIntegrals atTarget; ///< without what has no value of the source

    /// Of the integrals over all materials.
    double integralDifference() const { return relativeDifference(atTarget.all, atSource.all); }
};

struct Validation
{
    Coverage target; ///< what of the target lies in the source
    Coverage source; ///< what of the source lies in the target
    std::vector<FieldRoundTrip> fields;

    /// The largest relative L2 difference of any field; 0 without fields, and not a number if nothing came back of one.
    double largestDifference() const;
};

/// Validates transfers with one map: searches the way back once, for any number of fields.
class Validator
{
public:
    /// The map must be one from the source to the target. Volume elements of the target take part; throws InvalidData
    /// if it has none or a mesh does not fit the map, and what the construction of a map throws. Keeps nothing of the
    /// map and of the meshes.
    Validator(const Map& map, const Mesh& source, const Mesh& target, const ValidationOptions& options = {});
    ~Validator();
    Validator(Validator&&) noexcept;
    Validator& operator=(Validator&&) noexcept;

    /// Takes the same meshes again, fields at nodes or Gauss points of the source, and what the map has made of them.
    /// Throws InvalidData if they do not fit.
    Validation validate(const Mesh& source, const Mesh& target, std::span<const Field> sourceFields,
                        std::span<const Field> targetFields) const;

private:
    struct Contents;
    std::unique_ptr<const Contents> contents_;
};

} // namespace veltrane

#endif
