#include "Comparison.h"

#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace veltrane
{
namespace
{

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

float largestCoordinate(const Mesh& mesh)
{
    float largest = 0;
    for (const float coordinate : mesh.coordinates())
    {
        largest = std::max(largest, std::abs(coordinate));
    }
    return largest;
}

/// The values of a field at one node after another, in double precision whatever theirs is.
class NodeValues
{
public:
    explicit NodeValues(const Field& field) : field_(field), values_(static_cast<std::size_t>(field.componentCount()))
    {
    }

    /// Null if the node has no usable value.
    const std::vector<double>* at(std::size_t node)
    {
        bool isUsable = true;
        const auto take = [&](const auto& values)
        {
            for (std::size_t i = 0; i < values_.size(); ++i)
            {
                values_[i] = static_cast<double>(values[node * values_.size() + i]);
                isUsable = isUsable && std::isfinite(values_[i]) && values_[i] > double{undefinedBound};
            }
        };
        std::visit(take, field_.values());
        return isUsable ? &values_ : nullptr;
    }

private:
    const Field& field_;
    std::vector<double> values_;
};

// Squares are summed in long double, whose range has room for those of all doubles.
using Square = long double;

Square squareOf(const std::vector<double>& values)
{
    Square sum = 0;
    for (const double value : values)
    {
        sum += Square{value} * Square{value};
    }
    return sum;
}

Square squareOfDifference(const std::vector<double>& a, const std::vector<double>& b)
{
    Square sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        const Square difference = Square{a[i]} - Square{b[i]};
        sum += difference * difference;
    }
    return sum;
}

double rootOf(Square square)
{
    return static_cast<double>(std::sqrt(square));
}

double relativeTo(Square reference, Square difference)
{
    if (reference == 0)
    {
        return difference == 0 ? 0 : std::numeric_limits<double>::infinity();
    }
    return rootOf(difference / reference);
}

} // namespace

std::string meshDifference(const Mesh& first, const Mesh& second)
{
    if (first.nodeCount() != second.nodeCount())
    {
        return text("the first has ", first.nodeCount(), " nodes, the second ", second.nodeCount());
    }
    if (first.elementCount() != second.elementCount())
    {
        return text("the first has ", first.elementCount(), " cells, the second ", second.elementCount());
    }
    for (int element = 0; element < first.elementCount(); ++element)
    {
        const ElementKindInfo& kind = first.kindOf(element);
        const ElementKindInfo& otherKind = second.kindOf(element);
        if (kind.kind != otherKind.kind)
        {
            return text("cell ", element + 1, ", counted from 1, is a ", kind.name, " in the first and a ",
                        otherKind.name, " in the second");
        }
        if (!std::ranges::equal(first.nodesOf(element), second.nodesOf(element)))
        {
            return text("cell ", element + 1, ", counted from 1, has other nodes in the first than in the second");
        }
    }
    const double tolerance =
        double{FLT_EPSILON} * double{std::max(largestCoordinate(first), largestCoordinate(second))};
    for (int node = 0; node < first.nodeCount(); ++node)
    {
        const auto place = first.nodePosition(node);
        const auto otherPlace = second.nodePosition(node);
        const auto isNear = [&](float a, float b) { return std::abs(double{a} - double{b}) <= tolerance; };
        if (!std::ranges::equal(place, otherPlace, isNear))
        {
            return text("node ", node + 1, ", counted from 1, is at ", placeText(place), " in the first and at ",
                        placeText(otherPlace), " in the second");
        }
    }
    return "";
}

bool FieldComparison::exceeds(double tolerance) const
{
    return unusableInField > 0 || unusableInReference > 0 || relativeDifference > tolerance;
}

FieldComparison compare(const Field& field, const Field& reference)
{
    if (field.location() != reference.location())
    {
        throw InvalidData(text("field '", field.name(), "' is at nodes in one case and at Gauss points in the other"));
    }
    if (field.componentCount() != reference.componentCount())
    {
        throw InvalidData(text("field '", field.name(), "' has ", field.componentCount(),
                               " components, but the one to compare it with has ", reference.componentCount()));
    }
    if (field.locationCount() != reference.locationCount())
    {
        throw InvalidData(text("field '", field.name(), "' has values at ", field.locationCount(),
                               " places, but the one to compare it with at ", reference.locationCount()));
    }

    FieldComparison result{};
    std::optional<Square> largestReference;
    std::optional<Square> largest;
    Square referenceSum = 0;
    Square differenceSum = 0;
    NodeValues values(field);
    NodeValues referenceValues(reference);
    for (std::size_t node = 0; node < field.locationCount(); ++node)
    {
        const std::vector<double>* a = values.at(node);
        const std::vector<double>* b = referenceValues.at(node);
        result.unusableInField += a == nullptr ? 1 : 0;
        result.unusableInReference += b == nullptr ? 1 : 0;
        if (b == nullptr)
        {
            continue;
        }
        const Square square = squareOf(*b);
        largestReference = std::max(square, largestReference.value_or(0));
        if (a == nullptr)
        {
            continue;
        }
        const Square difference = squareOfDifference(*a, *b);
        referenceSum += square;
        differenceSum += difference;
        ++result.comparedNodeCount;
        if (!largest || difference > *largest)
        {
            largest = difference;
            result.largestDifferenceNode = static_cast<int>(node);
        }
    }
    result.largestReferenceMagnitude = largestReference ? rootOf(*largestReference) : notANumber;
    result.largestDifference = largest ? rootOf(*largest) : notANumber;
    result.rootMeanSquareDifference =
        largest ? rootOf(differenceSum / static_cast<Square>(result.comparedNodeCount)) : notANumber;
    result.relativeDifference = largest ? relativeTo(referenceSum, differenceSum) : notANumber;
    return result;
}

} // namespace veltrane
