/// Small meshes without files.
#ifndef VELTRANE_TESTS_TEST_MESHES_H
#define VELTRANE_TESTS_TEST_MESHES_H

#include "Mesh.h"

#include <array>
#include <vector>

using Corner = std::array<float, 3>;

/// A mesh of separate cubes of one material, each given by its lower corner.
veltrane::Mesh cubes(const std::vector<Corner>& corners, float edge);

/// The unit cube in n * n * n cubes, or another cube of this edge.
veltrane::Mesh cubeGrid(int n, float from = 0, float edge = 1);

/// One element with its nodes in order.
veltrane::Mesh oneElement(veltrane::ElementKind kind, std::vector<float> coordinates);

#endif
