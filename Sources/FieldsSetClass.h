/// The fields of one side of a transfer.
#ifndef VELTRANE_FIELDS_SET_CLASS_H
#define VELTRANE_FIELDS_SET_CLASS_H

#include "FieldClass.h"

#include <span>

class FieldsSetClass
{
public:
    FieldsSetClass() = default;
    FieldsSetClass(const FieldsSetClass&) = delete;
    FieldsSetClass& operator=(const FieldsSetClass&) = delete;
    virtual ~FieldsSetClass();

    /// Builds the fields from a record, once. An empty set ends the process.
    void init(const FieldsSetStruct& record);

    std::span<FieldClass> fields() const { return {itsFields, static_cast<std::size_t>(itsNbFields)}; }

    int itsNbFields = 0;
    FieldClass* itsFields = nullptr;
};

#endif
