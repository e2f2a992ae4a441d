#include "ReferenceCoordinates.h"

#include "MappingStringUtilities.h"

#include <cstdlib>

void endOnSingularJacobian()
{
    constexpr float jacobian[3][3]{};
    float adjugate[3][3];
    char* text = invMatrix33(jacobian, adjugate);
    printMessage("%s", text);
    releaseString(text);
    std::exit(0);
}
