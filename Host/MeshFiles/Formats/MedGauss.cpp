#include "MedGauss.h"

#include "Elements/ElementKinds.h"
#include "MedCells.h"
#include "VtkCells.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>

namespace veltrane
{
namespace
{

using Place = std::array<double, 3>;
using Places = std::vector<Place>;

/// The places of the nodes in the library's reference element, in the order of VTK's cell; empty if it is no element.
Places referenceNodes(int cellType)
{
    Places places;
    if (const VtkCellKind* cellKind = findVtkCellKind(cellType))
    {
        visitElementKind(static_cast<int>(cellKind->kind),
                         [&]<class Kind>(Kind)
                         {
                             places.resize(Kind::nbNodes);
                             for (std::size_t node = 0; node < places.size(); ++node)
                             {
                                 const auto& at = Kind::nodes[node];
                                 places[static_cast<std::size_t>(cellKind->nodeOrder[node])] = {at[0], at[1], at[2]};
                             }
                         });
    }
    return places;
}

/// In the order of VTK's cell.
std::vector<double> shapeValuesAt(int cellType, const Place& place)
{
    const VtkCellKind& cellKind = *findVtkCellKind(cellType);
    std::vector<double> ofCell;
    visitElementKind(static_cast<int>(cellKind.kind),
                     [&]<class Kind>(Kind)
                     {
                         const auto ofElement = shapeFunctionsAt<Kind>(ReferencePoint{place[0], place[1], place[2]});
                         ofCell.resize(ofElement.size());
                         for (std::size_t node = 0; node < ofElement.size(); ++node)
                         {
                             ofCell[static_cast<std::size_t>(cellKind.nodeOrder[node])] = ofElement[node];
                         }
                     });
    return ofCell;
}

Place difference(const Place& a, const Place& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double determinant(const Place& a, const Place& b, const Place& c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) + a[2] * (b[0] * c[1] - b[1] * c[0]);
}

/// Maps one reference element onto another by four of their nodes.
class AffineMap
{
public:
    /// Nothing if no four nodes span a volume, or the map does not lead from all nodes to their counterparts.
    static std::optional<AffineMap> between(const Places& from, const Places& to)
    {
        constexpr double flat = 1e-6;
        for (std::size_t a = 1; a < from.size(); ++a)
        {
            for (std::size_t b = a + 1; b < from.size(); ++b)
            {
                for (std::size_t c = b + 1; c < from.size(); ++c)
                {
                    const AffineMap map(from, to, {a, b, c});
                    if (std::abs(map.volume_) > flat)
                    {
                        return map.leads(from, to) ? std::optional(map) : std::nullopt;
                    }
                }
            }
        }
        return std::nullopt;
    }

    Place operator()(const Place& place) const
    {
        const Place way = difference(place, origin_);
        const double a = determinant(way, sides_[1], sides_[2]) / volume_;
        const double b = determinant(sides_[0], way, sides_[2]) / volume_;
        const double c = determinant(sides_[0], sides_[1], way) / volume_;
        Place result = imageOrigin_;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            result[axis] += a * images_[0][axis] + b * images_[1][axis] + c * images_[2][axis];
        }
        return result;
    }

private:
    AffineMap(const Places& from, const Places& to, const std::array<std::size_t, 3>& nodes)
        : origin_(from[0]), imageOrigin_(to[0])
    {
        for (std::size_t side = 0; side < 3; ++side)
        {
            sides_[side] = difference(from[nodes[side]], origin_);
            images_[side] = difference(to[nodes[side]], imageOrigin_);
        }
        volume_ = determinant(sides_[0], sides_[1], sides_[2]);
    }

    bool leads(const Places& from, const Places& to) const
    {
        constexpr double rounding = 1e-6;
        for (std::size_t node = 0; node < from.size(); ++node)
        {
            const Place miss = difference((*this)(from[node]), to[node]);
            if (std::ranges::any_of(miss, [](double way) { return std::abs(way) > rounding; }))
            {
                return false;
            }
        }
        return true;
    }

    Place origin_;
    Place imageOrigin_;
    std::array<Place, 3> sides_{};
    std::array<Place, 3> images_{};
    double volume_ = 0;
};

Place placeAt(std::span<const double> coordinates, std::size_t index)
{
    return {coordinates[3 * index], coordinates[3 * index + 1], coordinates[3 * index + 2]};
}

} // namespace

std::optional<GaussScheme> readMedScheme(const MedFile& file, const std::string& localization, const MedCell& cell)
{
    const Places library = referenceNodes(cell.cellType);
    med_geometry_type type{};
    med_geometry_type sectionType{};
    med_int dimension = 0;
    med_int pointCount = 0;
    med_int sectionCellCount = 0;
    std::array<char, MED_NAME_SIZE + 1> interpolation{};
    std::array<char, MED_NAME_SIZE + 1> sectionMesh{};
    checked(MEDlocalizationInfoByName(file.id(), localization.c_str(), &type, &dimension, &pointCount,
                                      interpolation.data(), sectionMesh.data(), &sectionCellCount, &sectionType),
            "the localization of Gauss points");
    if (library.empty() || type != cell.type || dimension != 3 || pointCount < 1)
    {
        return std::nullopt;
    }
    std::vector<double> nodes(library.size() * 3);
    std::vector<double> points(static_cast<std::size_t>(pointCount) * 3);
    GaussScheme scheme{.cellType = cell.cellType};
    scheme.weights.resize(static_cast<std::size_t>(pointCount));
    checked(MEDlocalizationRd(file.id(), localization.c_str(), MED_FULL_INTERLACE, nodes.data(), points.data(),
                              scheme.weights.data()),
            "the localization of Gauss points");
    Places inFile(library.size());
    for (std::size_t node = 0; node < inFile.size(); ++node)
    {
        inFile[node] = placeAt(nodes, static_cast<std::size_t>(cell.order[node]));
    }
    const std::optional<AffineMap> map = AffineMap::between(inFile, library);
    if (!map)
    {
        return std::nullopt;
    }
    for (std::size_t point = 0; point < scheme.weights.size(); ++point)
    {
        scheme.shapeValues.push_back(shapeValuesAt(cell.cellType, (*map)(placeAt(points, point))));
    }
    return scheme;
}

void writeMedScheme(const MedFile& file, const std::string& localization, const MedCell& cell,
                    const GaussScheme& scheme)
{
    const Places library = referenceNodes(cell.cellType);
    std::vector<double> nodes(library.size() * 3);
    for (std::size_t node = 0; node < library.size(); ++node)
    {
        std::ranges::copy(library[node], nodes.begin() + 3 * cell.order[node]);
    }
    std::vector<double> points;
    for (const std::vector<double>& shapeValues : scheme.shapeValues)
    {
        Place place{};
        for (std::size_t node = 0; node < library.size(); ++node)
        {
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                place[axis] += shapeValues[node] * library[node][axis];
            }
        }
        points.insert(points.end(), place.begin(), place.end());
    }
    checked(MEDlocalizationWr(file.id(), localization.c_str(), cell.type, 3, nodes.data(), MED_FULL_INTERLACE,
                              static_cast<med_int>(scheme.weights.size()), points.data(), scheme.weights.data(),
                              MED_NO_INTERPOLATION, MED_NO_MESH_SUPPORT),
            "the localization of Gauss points");
}

} // namespace veltrane
