/// Models and fields made from a fuzzer's input, as a host would hold them: valid numbers of nodes and materials, any
/// geometry.
#ifndef VELTRANE_FUZZED_MODELS_H
#define VELTRANE_FUZZED_MODELS_H

#include "FuzzedBytes.h"

#include "Veltrane.h"

#include <array>
#include <vector>

/// Nodes and Gauss points per type code, 0 to 14.
inline constexpr std::array<int, 15> nodesOfType{0, 8, 4, 6, 8, 6, 4, 3, 4, 2, 10, 12, 5, 4, 3};
inline constexpr std::array<int, 15> gaussPointsOfType{0, 8, 1, 6, 8, 6, 4, 3, 4, 2, 5, 8, 8, 0, 0};

struct FuzzedMesh
{
    std::vector<std::array<float, 3>> coords;
    std::vector<std::vector<int>> nodesPerElt;
    std::vector<int*> connectivity;
    std::vector<int> types;
    std::vector<int> matlPerElt;
    std::vector<int> matlStates;
    std::vector<int> matlFlags;

    /// `hasAllKinds`: not only type codes, but also the kinds that the engine alone knows.
    explicit FuzzedMesh(FuzzedBytes& bytes, bool hasAllKinds = false);

    int nbElts() const { return static_cast<int>(types.size()); }
    int nbNodes() const { return static_cast<int>(coords.size()); }
    int nbGaussPoints() const;
    float (*nodeCoords())[3] { return reinterpret_cast<float(*)[3]>(coords.data()); }

private:
    void addGrid(FuzzedBytes& bytes);
    void addSoup(FuzzedBytes& bytes, bool hasAllKinds);
};

/// The fields of one side, with arrays that hold `nbComponents` of either side at every location.
struct FuzzedFields
{
    std::vector<FieldStruct> records;
    std::vector<std::vector<float>> floats;
    std::vector<std::vector<double>> doubles;

    FuzzedFields(FuzzedBytes& bytes, int nbFields, int nbNodes, int nbGaussPoints, int nbElts);
    FieldsSetStruct set() { return {static_cast<int>(records.size()), records.data()}; }
};

#endif
