/* The smallest host: carries a temperature from one tetrahedron to the four nodes of a smaller one inside it.
 *
 * Arrays belong to the host throughout; the library borrows them for the length of the call. */
#include "Veltrane.h"

#include <stdio.h>
#include <string.h>

/* Progress; an answer of 0 would cancel. */
static int report(int percent, char* title, char* stage, int kind)
{
    if (kind == 1)
    {
        printf("%3d %%  %s: %s\n", percent, title, stage);
    }
    return 1;
}

static FieldStruct temperatureField(double* values)
{
    FieldStruct field;
    memset(&field, 0, sizeof field);
    strcpy(field.name, "temperature");
    field.location = 1;     /* at nodes */
    field.nbComponents = 1; /* a scalar */
    field.precision = 2;    /* doubles */
    field.valuesDouble = values;
    return field;
}

int main(void)
{
    float sourceCoords[4][3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    float targetCoords[4][3] = {{0.1F, 0.1F, 0.1F}, {0.5F, 0.1F, 0.1F}, {0.1F, 0.5F, 0.1F}, {0.1F, 0.1F, 0.5F}};
    int nodes[4] = {0, 1, 2, 3};
    int* connectivity[1] = {nodes};
    int types[1] = {2}; /* linear tetrahedron */
    int materialOfElement[1] = {0};
    int materialStates[1] = {1}; /* the same code on both sides: they match */
    int mappingFlags[1] = {1};   /* the one target material is to receive values */

    double sourceValues[4] = {20, 120, 20, 20};
    double targetValues[4] = {0, 0, 0, 0};
    FieldStruct source = temperatureField(sourceValues);
    FieldStruct target = temperatureField(targetValues);
    FieldsSetStruct sourceFields = {1, &source};
    FieldsSetStruct targetFields = {1, &target};

    char message[1000];
    int errorCode = 0;
    FE3DMeshToFE3DMesh_VariablesInterpolation(0, 0.0F, /* mode */
                                              1, 4, sourceCoords, connectivity, types, 1, materialOfElement,
                                              materialStates, 1, 4, targetCoords, connectivity, types, 1,
                                              materialOfElement, materialStates, mappingFlags, sourceFields,
                                              targetFields, message, &errorCode, report);
    printf("%s\n", message);
    for (int i = 0; i < 4; ++i)
    {
        printf("node %d: %g degrees\n", i + 1, targetValues[i]);
    }
    return errorCode == 0 ? 0 : 1;
}
