/// The map of the last step, for the next one.
#ifndef VELTRANE_COMMAND_MAP_CACHE_H
#define VELTRANE_COMMAND_MAP_CACHE_H

#include "Transfer.h"
#include "Validation.h"

#include <optional>

namespace veltrane
{

/// Keeps a map as long as the meshes stay the same: positions, elements and materials. The options must be those of one
/// command.
class MapCache
{
public:
    /// \param areSteps  whether further steps follow; otherwise the map is let go as soon as it has been used
    explicit MapCache(bool areSteps) : isKept_(areSteps) {}

    /// Keeps the map in any case, for validate().
    void keepMap() { isKept_ = true; }

    /// What transfer() and sample() give, with the map that is kept or a new one.
    TransferResult transfer(const Mesh& source, std::span<const Field> fields, const Mesh& target,
                            const TransferOptions& options);
    TransferResult sample(const Mesh& source, std::span<const Field> fields, const PointCloud& points,
                          const TransferOptions& options);

    /// Validates what transfer() gave for the same arguments, with the way back that is kept or a new one.
    Validation validate(const Mesh& source, std::span<const Field> fields, const Mesh& target,
                        std::span<const Field> targetFields, const TransferOptions& options);

private:
    template <typename Target>
    TransferResult carry(const Mesh& source, std::span<const Field> fields, const Target& target,
                         const TransferOptions& options);

    bool isKept_;
    std::optional<Map> map_{};
    std::optional<Validator> validator_{}; ///< of the map
};

} // namespace veltrane

#endif
