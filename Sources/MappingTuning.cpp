// The optional tuning files, which change three settings without a change of the host.
#include "MappingClass.h"

#include "QorbUtil.h"

namespace
{
constexpr const char* unitName = "MappingClass";
}

void MappingClass::readMappingInputs()
{
    readTuningFile("mappingInputs.txt");
}

void MappingClass::readNodToNodInputs()
{
    readTuningFile("nodToNodInputs.txt");
}

void MappingClass::readGPToGPInputs()
{
    readTuningFile("GPToGPInputs.txt");
}

/// Three numbers, each read straight into its setting: one that cannot be read leaves it as it was. No file, no change.
void MappingClass::readTuningFile(const char* fileName)
{
    std::FILE* file = QorbFOpen(fileName, "rt", unitName, __LINE__);
    if (file == nullptr)
    {
        return;
    }
    long long maxNbBuckets = itsBucketSpace.itsMaxNbBuckets;
    readFromFile(file, "%f", &itsBucketFactor);
    readFromFile(file, "%f", &itsRefCoordTolerance);
    readFromFile(file, "%lld", &maxNbBuckets);
    itsBucketSpace.itsMaxNbBuckets = maxNbBuckets;
    QorbFClose(file, unitName, __LINE__);
}
