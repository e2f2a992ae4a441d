/* A host program in C: the public header compiles as C, the records have the layout of the interface, and the functions
 * with C linkage are called by name. Exits with 0 when every call did what it should. */
#include "Veltrane.h"

#include <assert.h>
#include <math.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static_assert(sizeof(int) == 4 && sizeof(void*) == 8, "the interface is that of a 64-bit platform");
static_assert(sizeof(FieldsSetStruct) == 16, "size of a field set");
static_assert(offsetof(FieldsSetStruct, nbFields) == 0, "number of fields");
static_assert(offsetof(FieldsSetStruct, fields) == 8, "fields");
static_assert(sizeof(FieldStruct) == 144, "size of a field");
static_assert(offsetof(FieldStruct, name) == 0 && sizeof(((FieldStruct*)0)->name) == 100, "name");
static_assert(offsetof(FieldStruct, matlStateFlag) == 100, "material-state flag");
static_assert(offsetof(FieldStruct, location) == 104, "location");
static_assert(offsetof(FieldStruct, nbComponents) == 108, "number of components");
static_assert(offsetof(FieldStruct, precision) == 112, "precision");
static_assert(offsetof(FieldStruct, valuesFloat) == 120, "single-precision values");
static_assert(offsetof(FieldStruct, valuesDouble) == 128, "double-precision values");
static_assert(offsetof(FieldStruct, defaultValueFloat) == 136, "single-precision default");
static_assert(offsetof(FieldStruct, defaultValueDouble) == 140, "default of a double-precision field");

static int nbFailures = 0;

static void check(int condition, const char* what)
{
    if (!condition)
    {
        fprintf(stderr, "failed: %s\n", what);
        ++nbFailures;
    }
}

static int nbReports = 0;

static int report(int progress, char* title, char* stage, int kind)
{
    nbReports += kind;
    return progress >= 0 && title != NULL && stage != NULL;
}

enum
{
    nbNodes = 8
};

/* One hexahedron: source and target of every call. */
static float coordinates[nbNodes][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                        {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
static int nodesOfElement[nbNodes] = {0, 1, 2, 3, 4, 5, 6, 7};
static int* connectivity[1] = {nodesOfElement};
static int types[1] = {1};
static int materials[1] = {0};
static int stateCodes[1] = {1};
static int flags[1] = {1};

static void checkTransfer(void)
{
    float sourceValues[nbNodes] = {1, 2, 3, 4, 5, 6, 7, 8};
    double targetValues[nbNodes] = {0};
    FieldStruct source = {"temperature", 0, 1, 1, 1, sourceValues, NULL, 0.0F, 0.0F};
    FieldStruct target = {"temperature", 0, 1, 1, 2, NULL, targetValues, 0.0F, 0.0F};
    FieldsSetStruct sourceSet = {1, &source};
    FieldsSetStruct targetSet = {1, &target};
    char message[1000] = "";
    int code = -99;
    FE3DMeshToFE3DMesh_VariablesInterpolation(0, -1.0F, 1, nbNodes, coordinates, connectivity, types, 1, materials,
                                              stateCodes, 1, nbNodes, coordinates, connectivity, types, 1, materials,
                                              stateCodes, flags, sourceSet, targetSet, message, &code, report);
    check(code == 0, "code of the transfer");
    check(strcmp(message, "FE 3D Mesh to FE 3D Mesh interpolation normal termination.") == 0, "text of the transfer");
    check(nbReports == 2 + nbNodes + 1, "reports of the transfer");
    for (int node = 0; node < nbNodes; ++node)
    {
        check(fabs(targetValues[node] - (double)sourceValues[node]) < 1e-5, "value at a node");
    }
}

static void checkNodes(void)
{
    int table[nbNodes] = {0};
    char message[1000] = "";
    int code = -99;
    FE3DMeshToFE3DMesh_NodeToNodeMapping(1, nbNodes, coordinates, connectivity, types, 1, materials, stateCodes, 1,
                                         nbNodes, coordinates, connectivity, types, 1, materials, stateCodes, flags,
                                         table, message, &code, NULL);
    check(code == 0, "code of the node correspondence");
    check(strcmp(message, "Node to Node correspondence computation normal termination.") == 0,
          "text of the node correspondence");
    for (int node = 0; node < nbNodes; ++node)
    {
        check(table[node] == node + 1, "partner of a node");
    }
}

static void checkGaussPoints(void)
{
    int elements[8] = {0};
    int points[8] = {0};
    int* elementTable[1] = {elements};
    int* pointTable[1] = {points};
    char message[1000] = "";
    int code = -99;
    FE3DMeshToFE3DMesh_GPToGPMapping(1, nbNodes, coordinates, connectivity, types, 1, materials, stateCodes, 1, nbNodes,
                                     coordinates, connectivity, types, 1, materials, stateCodes, flags, elementTable,
                                     pointTable, message, &code, NULL);
    check(code == 0, "code of the Gauss-point correspondence");
    check(strcmp(message, "Gauss point to Gauss point correspondence computation normal termination.") == 0,
          "text of the Gauss-point correspondence");
    for (int point = 0; point < 8; ++point)
    {
        check(elements[point] == 1, "element of a Gauss point");
        check(points[point] == point + 1, "partner of a Gauss point");
    }
}

int main(void)
{
    check(strcmp(Veltrane_get_module_info(0), "Dynamic linked library") == 0, "kind of the module");
    check(strcmp(Veltrane_get_module_info(1), "24.0.0.79dbf165755") == 0, "version of the module");
    checkTransfer();
    check(remove("interpoLog.txt") == 0, "log of the transfer");
    checkNodes();
    checkGaussPoints();
    return nbFailures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
