#include "ReferenceCoordinates.h"

#include "../Fault.h"
#include "../MappingStringUtilities.h"

void leaveOnSingularJacobian(int elt)
{
    constexpr float jacobian[3][3]{};
    float adjugate[3][3];
    char* text = invMatrix33(jacobian, adjugate);
    char line[messageCapacity];
    formatMessage(line, "%s", text);
    releaseString(text);
    leaveOnFault({line, elt});
}
