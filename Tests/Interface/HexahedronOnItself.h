/// A unit hexahedron that is source and target of all four computations, in the plain arrays of a host. The numbers
/// that go with the arrays can be changed.
#ifndef VELTRANE_TESTS_HEXAHEDRON_ON_ITSELF_H
#define VELTRANE_TESTS_HEXAHEDRON_ON_ITSELF_H

#include "LibraryUnderTest.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

struct HexahedronOnItself
{
    int nbSourceElts = 1;
    int nbSourceNodes = 8;
    int nbTargetElts = 1;
    int nbTargetNodes = 8;
    int nbSourceMatls = 1;
    int nbTargetMatls = 1;
    float coordinates[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    int nodes[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    int* connectivity[1] = {nodes};
    int types[1] = {1};
    int materials[8] = {};
    int stateCodes[1] = {1};
    int flags[1] = {1};
    float sourceValues[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    float targetValues[8] = {};
    FieldStruct source = {"t", 0, 1, 1, 1, sourceValues, nullptr, 0.0F, 0.0F};
    FieldStruct target = {"t", 0, 1, 1, 1, targetValues, nullptr, 0.0F, 0.0F};
    int elementTable[8] = {};
    int table[8] = {};
    char message[1000] = {};
    int code = -99;

    void transferToMesh(const LibraryUnderTest& library)
    {
        library.meshToMesh(0, 0.0F, nbSourceElts, nbSourceNodes, coordinates, connectivity, types, nbSourceMatls,
                           materials, stateCodes, nbTargetElts, nbTargetNodes, coordinates, connectivity, types,
                           nbTargetMatls, materials, stateCodes, flags, {1, &source}, {1, &target}, message, &code,
                           nullptr);
    }

    void transferToPoints(const LibraryUnderTest& library)
    {
        library.meshToPointCloud(0, 0.0F, nbSourceElts, nbSourceNodes, coordinates, connectivity, types, nbSourceMatls,
                                 materials, stateCodes, nbTargetNodes, coordinates, nbTargetMatls, materials,
                                 stateCodes, flags, {1, &source}, {1, &target}, message, &code, nullptr);
    }

    void matchNodes(const LibraryUnderTest& library)
    {
        library.nodeToNode(nbSourceElts, nbSourceNodes, coordinates, connectivity, types, nbSourceMatls, materials,
                           stateCodes, nbTargetElts, nbTargetNodes, coordinates, connectivity, types, nbTargetMatls,
                           materials, stateCodes, flags, table, message, &code, nullptr);
    }

    void matchGaussPoints(const LibraryUnderTest& library)
    {
        int* elements[1] = {elementTable};
        int* points[1] = {table};
        library.gaussPointToGaussPoint(nbSourceElts, nbSourceNodes, coordinates, connectivity, types, nbSourceMatls,
                                       materials, stateCodes, nbTargetElts, nbTargetNodes, coordinates, connectivity,
                                       types, nbTargetMatls, materials, stateCodes, flags, elements, points, message,
                                       &code, nullptr);
    }

    /// Makes all four calls; true if each of them gives every node and Gauss point itself.
    bool succeedsWith(const LibraryUnderTest& library)
    {
        transferToMesh(library);
        bool isRight = code == 0 && takeTargetValues();
        transferToPoints(library);
        isRight = isRight && code == 0 && takeTargetValues();
        matchNodes(library);
        isRight = isRight && code == 0 && takeTable();
        matchGaussPoints(library);
        return isRight && code == 0 && takeTable() &&
               std::all_of(std::begin(elementTable), std::end(elementTable), [](int number) { return number == 1; });
    }

private:
    /// Whether the target values are the source's; clears them for the next call.
    bool takeTargetValues()
    {
        bool isRight = true;
        for (int i = 0; i < 8; ++i)
        {
            isRight = isRight && std::abs(targetValues[i] - sourceValues[i]) < 1e-4F;
            targetValues[i] = 0.0F;
        }
        return isRight;
    }

    /// Whether the table counts from 1; clears it for the next call.
    bool takeTable()
    {
        bool isRight = true;
        for (int i = 0; i < 8; ++i)
        {
            isRight = isRight && table[i] == i + 1;
            table[i] = 0;
        }
        return isRight;
    }
};

#endif
