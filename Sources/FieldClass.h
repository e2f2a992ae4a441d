/// One field of a set: the host's values, where they lie, and for a source field at Gauss points its nodal averages.
#ifndef VELTRANE_FIELD_CLASS_H
#define VELTRANE_FIELD_CLASS_H

#include "Allocation.h"
#include "Veltrane.h"

#include <cstdint>

class ModelClass;

/// Where values lie, and at which kind of target point they are computed.
enum Location
{
    atNodes = 1,
    atGaussPoints = 2,
    atElements = 3
};

enum Precision
{
    singlePrecision = 1,
    doublePrecision = 2
};

class FieldClass
{
public:
    FieldClass() = default;
    FieldClass(const FieldClass&) = delete;
    FieldClass& operator=(const FieldClass&) = delete;
    virtual ~FieldClass() = default;

    /// Takes a record; the value arrays stay the host's. A name without an end is cut at 99 characters.
    /// An unknown precision ends the process.
    void init(const FieldStruct& record);

    /// Averages a source field at Gauss points to the nodes of its mesh, into itsValuesInterpoNode: the plain mean,
    /// over the elements around a node, of what each gives it. A node in no element becomes not-a-number. Returns null,
    /// or a text that the caller releases: a notice where the field needs no averaging, or an error.
    char* interpoAtNodes(ModelClass& sourceModel);

    /// Whether the field has values on materials of this state class.
    bool existsOn(int matlStateClass) const { return !(itsMatlStateFlag == 1 && matlStateClass == 2); }

    /// A value in single precision; `index` is location * itsNbComponents + component.
    float value(std::int64_t index) const
    {
        return itsPrecision == singlePrecision ? itsValuesFloat[index] : static_cast<float>(itsValuesDouble[index]);
    }

    void setValue(std::int64_t index, float value)
    {
        if (itsPrecision == singlePrecision)
        {
            itsValuesFloat[index] = value;
        }
        else
        {
            itsValuesDouble[index] = value;
        }
    }

    /// Writes every component at one location.
    void fillLocation(std::int64_t location, float value);

    float defaultValue() const
    {
        return itsPrecision == singlePrecision ? itsDefaultValueFloat : itsDefaultValueDouble;
    }

    char itsName[100]{};
    int itsMatlStateFlag = 0;
    int itsLocation = 0;
    int itsNbComponents = 0;
    int itsPrecision = 0;
    float* itsValuesFloat = nullptr;
    double* itsValuesDouble = nullptr;
    float itsDefaultValueFloat = 0.0F;
    float itsDefaultValueDouble = 0.0F;
    OwnedArray<float> itsValuesInterpoNode;

private:
    bool addAllGaussPointsToNodes(const ModelClass& sourceModel);
};

#endif
