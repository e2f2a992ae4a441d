#include "FieldsSetClass.h"

#include "MappingStringUtilities.h"

#include <memory>

namespace
{
constexpr const char* unitName = "FieldsSetClass";
}

FieldsSetClass::~FieldsSetClass()
{
    if (itsFields != nullptr)
    {
        std::destroy_n(itsFields, itsNbFields);
        releaseBytes(itsFields);
        itsFields = nullptr;
    }
}

void FieldsSetClass::init(const FieldsSetStruct& record)
{
    if (record.nbFields == 0)
    {
        endProcess("Error in %s file at line %d: no field to be used. \n", unitName, 52);
    }
    itsFields = allocateArray<FieldClass>(record.nbFields);
    if (itsFields == nullptr)
    {
        endProcess("Error in %s file at line %d: impossible to allocate fields. \n", unitName, 61);
    }
    std::uninitialized_default_construct_n(itsFields, record.nbFields);
    itsNbFields = record.nbFields;
    for (int i = 0; i < itsNbFields; ++i)
    {
        itsFields[i].init(record.fields[i]);
    }
}
