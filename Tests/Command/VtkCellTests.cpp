// VTK's node orders against those of the elements, by geometry: nodes that correspond have the same place in the
// reference cell and the reference element.
#include "VtkCells.h"

#include "CellNames.h"
#include "Meshes.h"

#include <vtkCell.h>
#include <vtkCellType.h>
#include <vtkGenericCell.h>
#include <vtkPoints.h>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <vector>

namespace
{

using veltrane::ElementKind;
using Position = std::array<double, 3>;

/// How a kind's reference element follows from VTK's reference cell, which lies between 0 and 1.
Position centred(const Position& p)
{
    return {2 * p[0] - 1, 2 * p[1] - 1, 2 * p[2] - 1};
}
Position centredUpwards(const Position& p)
{
    return {p[0], p[1], 2 * p[2] - 1};
}
/// All of the upper side of VTK's reference pyramid, a cube, is the apex.
Position drawnTogether(const Position& p)
{
    return {(2 * p[0] - 1) * (1 - p[2]), (2 * p[1] - 1) * (1 - p[2]), p[2]};
}
Position centredPlane(const Position& p)
{
    return {2 * p[0] - 1, 2 * p[1] - 1, 0};
}
Position same(const Position& p)
{
    return p;
}

struct Correspondence
{
    int cellType;
    ElementKind kind;
    std::function<Position(const Position&)> toReferenceElement;
    std::vector<Position> elementNodes;
};

const std::vector<Position> cube{{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                 {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
const std::vector<Position> square{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};

std::vector<Position> nodesOf(int kind)
{
    std::vector<Position> nodes;
    for (const auto& [x, y, z] : meshes::referenceNodes(kind))
    {
        nodes.push_back({double{x}, double{y}, double{z}});
    }
    return nodes;
}

const std::vector<Correspondence> correspondences{
    {VTK_HEXAHEDRON, ElementKind::hexahedron, centred, cube},
    {VTK_VOXEL, ElementKind::hexahedron, centred, cube},
    {VTK_TETRA, ElementKind::tetrahedron, same, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {VTK_WEDGE,
     ElementKind::wedge,
     centredUpwards,
     {{0, 0, -1}, {1, 0, -1}, {0, 1, -1}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}}},
    {VTK_PYRAMID, ElementKind::pyramid, drawnTogether, {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {0, 0, 1}}},
    {VTK_QUADRATIC_TETRA,
     ElementKind::quadraticTetrahedron,
     same,
     {{1, 0, 0},
      {0, 1, 0},
      {0, 0, 0},
      {0, 0, 1},
      {0.5, 0.5, 0},
      {0, 0.5, 0},
      {0.5, 0, 0},
      {0.5, 0, 0.5},
      {0, 0.5, 0.5},
      {0, 0, 0.5}}},
    {VTK_QUADRATIC_HEXAHEDRON, ElementKind::quadraticHexahedron, centred,
     nodesOf(meshes::element::quadraticHexahedron)},
    {VTK_TRIQUADRATIC_HEXAHEDRON, ElementKind::triquadraticHexahedron, centred,
     nodesOf(meshes::element::triquadraticHexahedron)},
    {VTK_QUADRATIC_WEDGE, ElementKind::quadraticWedge, centredUpwards, nodesOf(meshes::element::quadraticWedge)},
    {VTK_BIQUADRATIC_QUADRATIC_WEDGE, ElementKind::biquadraticWedge, centredUpwards,
     nodesOf(meshes::element::biquadraticWedge)},
    {VTK_QUADRATIC_PYRAMID, ElementKind::quadraticPyramid, drawnTogether, nodesOf(meshes::element::quadraticPyramid)},
    {VTK_TRIANGLE, ElementKind::triangle, same, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
    {VTK_QUAD, ElementKind::quadrilateral, centredPlane, square},
    {VTK_PIXEL, ElementKind::quadrilateral, centredPlane, square},
};

void PrintTo(const Correspondence& correspondence, std::ostream* stream)
{
    *stream << veltrane::cellNameOf(correspondence.cellType).one;
}

class VtkCellNodeOrder : public testing::TestWithParam<Correspondence>
{
};

TEST_P(VtkCellNodeOrder, KeepsThePlacesOfNodes)
{
    const Correspondence& expected = GetParam();
    const veltrane::VtkCellKind* cellKind = veltrane::findVtkCellKind(expected.cellType);
    ASSERT_NE(cellKind, nullptr);
    EXPECT_EQ(cellKind->kind, expected.kind);

    vtkCell* cell = vtkGenericCell::InstantiateCell(expected.cellType);
    const double* places = cell->GetParametricCoords();
    ASSERT_EQ(static_cast<std::size_t>(cell->GetNumberOfPoints()), expected.elementNodes.size());
    for (std::size_t node = 0; node < expected.elementNodes.size(); ++node)
    {
        const double* place = places + 3 * cellKind->nodeOrder[node];
        EXPECT_EQ(expected.toReferenceElement({place[0], place[1], place[2]}), expected.elementNodes[node])
            << "node " << node;
    }
    cell->Delete();
}

INSTANTIATE_TEST_SUITE_P(AllKinds, VtkCellNodeOrder, testing::ValuesIn(correspondences));

TEST(VtkCells, OtherCellTypesHaveNoKindButAName)
{
    EXPECT_EQ(veltrane::findVtkCellKind(VTK_LINE), nullptr);
    EXPECT_EQ(veltrane::findVtkCellKind(VTK_BIQUADRATIC_QUADRATIC_HEXAHEDRON), nullptr);
    EXPECT_EQ(veltrane::cellNameOf(VTK_POLYHEDRON).one, "polyhedron");
    EXPECT_EQ(veltrane::cellNameOf(VTK_POLYHEDRON).more, "polyhedra");
    EXPECT_EQ(veltrane::cellNameOf(VTK_VOXEL).more, "hexahedra");
    EXPECT_EQ(veltrane::cellNameOf(200).more, "cells of type 200");
}

} // namespace
