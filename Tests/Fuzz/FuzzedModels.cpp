#include "FuzzedModels.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{
/// The most components that a fuzzed field has; arrays are sized for it, since values are written in the source field's
/// number and defaults in the target field's.
constexpr int mostComponents = 12;
} // namespace

FuzzedMesh::FuzzedMesh(FuzzedBytes& bytes, bool hasAllKinds)
{
    const int nbMatls = bytes.between(1, 3);
    for (int i = 0; i < nbMatls; ++i)
    {
        matlStates.push_back(bytes.between(-1, 3));
        matlFlags.push_back(bytes.oneIn(6) ? 0 : 1);
    }
    bytes.oneIn(3) ? addSoup(bytes, hasAllKinds) : addGrid(bytes);
    for (auto& nodes : nodesPerElt)
    {
        connectivity.push_back(nodes.data());
    }
}

/// A grid of cells, each cut into elements of one kind, with nodes that may be moved.
void FuzzedMesh::addGrid(FuzzedBytes& bytes)
{
    const int n = bytes.between(1, 3);
    const float scale = bytes.oneIn(8) ? std::ldexp(1.0F, bytes.between(-149, 127))
                                       : 0.5F + static_cast<float>(bytes.between(0, 8)) / 8.0F;
    const float shift = bytes.oneIn(4) ? bytes.number() : 0.0F;
    for (int i = 0; i <= n; ++i)
    {
        for (int j = 0; j <= n; ++j)
        {
            for (int k = 0; k <= n; ++k)
            {
                const float move = bytes.oneIn(4) ? bytes.number() / 32.0F : 0.0F;
                coords.push_back({scale * static_cast<float>(i) + move + shift, scale * static_cast<float>(j) - move,
                                  scale * static_cast<float>(k) + move});
            }
        }
    }
    const auto node = [n](int i, int j, int k) { return (i * (n + 1) + j) * (n + 1) + k; };
    for (int i = 0; i < n; ++i)
    {
        for (int j = 0; j < n; ++j)
        {
            for (int k = 0; k < n; ++k)
            {
                const std::array<int, 8> c{
                    node(i, j, k),     node(i + 1, j, k),     node(i + 1, j + 1, k),     node(i, j + 1, k),
                    node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)};
                const auto add = [&](int type, std::vector<int> nodes)
                {
                    types.push_back(type);
                    nodesPerElt.push_back(std::move(nodes));
                    matlPerElt.push_back(bytes.between(0, static_cast<int>(matlStates.size()) - 1));
                };
                switch (bytes.between(0, 4))
                {
                case 0: add(1, {c.begin(), c.end()}); break;
                case 1:
                    add(3, {c[0], c[1], c[2], c[4], c[5], c[6]});
                    add(3, {c[0], c[2], c[3], c[4], c[6], c[7]});
                    break;
                case 2:
                    add(2, {c[0], c[1], c[3], c[4]});
                    add(2, {c[1], c[2], c[3], c[6]});
                    add(2, {c[4], c[6], c[5], c[1]});
                    add(2, {c[4], c[7], c[6], c[3]});
                    add(2, {c[1], c[3], c[4], c[6]});
                    break;
                case 3: add(12, {c[0], c[1], c[2], c[3], c[6]}); break;
                default: add(bytes.oneIn(2) ? 6 : 7, {c[0], c[1], c[2], c[3]}); break;
                }
            }
        }
    }
}

/// Any nodes, joined in any way by elements of any type.
void FuzzedMesh::addSoup(FuzzedBytes& bytes, bool hasAllKinds)
{
    const int nbSoupNodes = bytes.between(1, 24);
    for (int i = 0; i < nbSoupNodes; ++i)
    {
        coords.push_back({bytes.number(), bytes.number(), bytes.number()});
    }
    const int nbSoupElts = bytes.between(0, 16);
    for (int i = 0; i < nbSoupElts; ++i)
    {
        constexpr std::array<int, 12> usual{1, 2, 3, 10, 12, 6, 7, 113, 115, 118, 120, 127};
        const int last = hasAllKinds ? 11 : 6;
        const int type =
            bytes.oneIn(16) ? bytes.between(0, 14) : usual[static_cast<std::size_t>(bytes.between(0, last))];
        const int nodeCount = type > 100 ? type - 100 : nodesOfType[static_cast<std::size_t>(type)];
        std::vector<int> nodes;
        for (int j = 0; j < nodeCount; ++j)
        {
            nodes.push_back(bytes.between(0, nbSoupNodes - 1));
        }
        types.push_back(type);
        nodesPerElt.push_back(std::move(nodes));
        matlPerElt.push_back(bytes.between(0, static_cast<int>(matlStates.size()) - 1));
    }
}

int FuzzedMesh::nbGaussPoints() const
{
    int count = 0;
    for (const int type : types)
    {
        count += gaussPointsOfType[static_cast<std::size_t>(type)];
    }
    return count;
}

FuzzedFields::FuzzedFields(FuzzedBytes& bytes, int nbFields, int nbNodes, int nbGaussPoints, int nbElts)
{
    const int nbLocations = std::max({nbNodes, nbGaussPoints, nbElts, 1});
    const auto size = static_cast<std::size_t>(nbLocations) * mostComponents;
    for (int i = 0; i < nbFields; ++i)
    {
        FieldStruct record{};
        std::snprintf(record.name, sizeof record.name, "field%d", i);
        record.matlStateFlag = bytes.between(0, 1);
        record.location = bytes.oneIn(12) ? bytes.between(0, 4) : bytes.between(1, 2);
        record.nbComponents = bytes.between(1, mostComponents);
        record.precision = bytes.between(1, 2);
        record.defaultValueFloat = bytes.number();
        record.defaultValueDouble = bytes.number();
        const float slope = bytes.number();
        floats.emplace_back(size);
        doubles.emplace_back(size);
        for (std::size_t v = 0; v < size; ++v)
        {
            floats.back()[v] = slope * static_cast<float>(v);
            doubles.back()[v] = floats.back()[v];
        }
        record.valuesFloat = record.precision == 1 ? floats.back().data() : nullptr;
        record.valuesDouble = record.precision == 2 ? doubles.back().data() : nullptr;
        records.push_back(record);
    }
}
