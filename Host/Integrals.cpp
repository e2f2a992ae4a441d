#include "Integrals.h"

#include "Errors.h"
#include "GaussPoints.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <span>
#include <variant>

namespace veltrane
{
namespace
{

using Vector = std::array<double, 3>;

/// The rule of each kind is made once.
class GaussRules
{
public:
    explicit GaussRules(GaussPointRule choice) : choice_(choice) {}

    const GaussRule& of(ElementKind kind)
    {
        auto found = rules_.find(kind);
        return (found == rules_.end() ? rules_.emplace(kind, gaussRuleOf(kind, choice_)).first : found)->second;
    }

private:
    GaussPointRule choice_;
    std::map<ElementKind, GaussRule> rules_;
};

Vector positionOf(const Mesh& mesh, int node)
{
    const auto first = static_cast<std::size_t>(node) * 3;
    if (const std::vector<double>& exact = mesh.exactCoordinates(); !exact.empty())
    {
        return {exact[first], exact[first + 1], exact[first + 2]};
    }
    const std::vector<float>& rounded = mesh.coordinates();
    return {double{rounded[first]}, double{rounded[first + 1]}, double{rounded[first + 2]}};
}

double determinant(const std::array<Vector, 3>& m)
{
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

/// Of the element whose nodes are at these positions.
double jacobianOf(std::span<const Vector> positions, const std::vector<Vector>& gradients)
{
    std::array<Vector, 3> jacobian{};
    for (std::size_t node = 0; node < positions.size(); ++node)
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            for (std::size_t j = 0; j < 3; ++j)
            {
                jacobian[i][j] += gradients[node][i] * positions[node][j];
            }
        }
    }
    return determinant(jacobian);
}

void add(FieldIntegral& integral, std::span<const double> values, double volume)
{
    double square = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        integral.components[i] += volume * values[i];
        square += values[i] * values[i];
    }
    integral.magnitude += volume * std::sqrt(square);
    integral.volume += volume;
}

bool isUsable(double value)
{
    return std::isfinite(value) && value > double{undefinedBound};
}

/// The values at a Gauss point: those that stand there, or those of the element's nodes.
template <typename Values> class ValuesAtGaussPoints
{
public:
    ValuesAtGaussPoints(const Field& field, const Values& numbers)
        : numbers_(numbers), isAtNodes_(field.location() == Location::nodes),
          values_(static_cast<std::size_t>(field.componentCount()))
    {
    }

    /// Empty if one of the values is not usable.
    std::span<const double> at(std::size_t gaussPoint, std::span<const int> nodes, const std::vector<double>& shape)
    {
        std::ranges::fill(values_, 0.0);
        if (!isAtNodes_)
        {
            return addTimes(1.0, gaussPoint) ? std::span<const double>(values_) : std::span<const double>();
        }
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            if (!addTimes(shape[i], static_cast<std::size_t>(nodes[i])))
            {
                return {};
            }
        }
        return values_;
    }

private:
    bool addTimes(double factor, std::size_t location)
    {
        for (std::size_t i = 0; i < values_.size(); ++i)
        {
            const auto value = static_cast<double>(numbers_[location * values_.size() + i]);
            if (!isUsable(value))
            {
                return false;
            }
            values_[i] += factor * value;
        }
        return true;
    }

    const Values& numbers_;
    bool isAtNodes_;
    std::vector<double> values_;
};

} // namespace

std::vector<double> gaussPointVolumes(const Mesh& mesh)
{
    GaussRules rules(mesh.gaussPointRule());
    std::vector<double> volumes;
    volumes.reserve(mesh.gaussPointCount());
    std::vector<Vector> positions;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const ElementKindInfo& kind = mesh.kindOf(element);
        const GaussRule& rule = rules.of(kind.kind);
        positions.clear();
        for (const int node : mesh.nodesOf(element))
        {
            positions.push_back(positionOf(mesh, node));
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(mesh.gaussPointCountOf(element)); ++i)
        {
            volumes.push_back(kind.isVolume ? rule.weights[i] * std::abs(jacobianOf(positions, rule.shapeGradients[i]))
                                            : 0.0);
        }
    }
    return volumes;
}

FieldIntegrals integralsOf(const Field& field, const Mesh& mesh, const std::vector<double>& volumes)
{
    const bool isAtNodes = field.location() == Location::nodes;
    const std::size_t expected = isAtNodes ? static_cast<std::size_t>(mesh.nodeCount()) : volumes.size();
    if (field.locationCount() != expected)
    {
        throw InvalidData(text("field '", field.name(), "' has values at ", field.locationCount(), " ",
                               isAtNodes ? "nodes" : "Gauss points", ", but the mesh has ", expected));
    }
    const FieldIntegral none{.components = std::vector<double>(static_cast<std::size_t>(field.componentCount()))};
    FieldIntegrals integrals{none, std::vector(mesh.materials().size(), none)};
    GaussRules rules(mesh.gaussPointRule());
    const auto integrate = [&](const auto& numbers)
    {
        ValuesAtGaussPoints values(field, numbers);
        std::size_t gaussPoint = 0;
        for (int element = 0; element < mesh.elementCount(); ++element)
        {
            const ElementKindInfo& kind = mesh.kindOf(element);
            const GaussRule& rule = rules.of(kind.kind);
            FieldIntegral& ofMaterial = integrals.materials[static_cast<std::size_t>(mesh.materialOf(element))];
            const auto count = static_cast<std::size_t>(mesh.gaussPointCountOf(element));
            for (std::size_t i = 0; i < count && kind.isVolume; ++i)
            {
                const auto at = values.at(gaussPoint + i, mesh.nodesOf(element), rule.shapeValues[i]);
                if (!at.empty())
                {
                    add(ofMaterial, at, volumes[gaussPoint + i]);
                }
            }
            gaussPoint += count;
        }
    };
    std::visit(integrate, field.values());
    for (const FieldIntegral& ofMaterial : integrals.materials)
    {
        for (std::size_t i = 0; i < ofMaterial.components.size(); ++i)
        {
            integrals.all.components[i] += ofMaterial.components[i];
        }
        integrals.all.magnitude += ofMaterial.magnitude;
        integrals.all.volume += ofMaterial.volume;
    }
    return integrals;
}

double relativeDifference(const FieldIntegral& integral, const FieldIntegral& reference)
{
    double square = 0;
    for (std::size_t i = 0; i < integral.components.size(); ++i)
    {
        const double difference = integral.components[i] - reference.components[i];
        square += difference * difference;
    }
    if (square == 0)
    {
        return 0;
    }
    return reference.magnitude > 0 ? std::sqrt(square) / reference.magnitude : std::numeric_limits<double>::infinity();
}

} // namespace veltrane
