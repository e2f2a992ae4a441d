#include "XmlNumberTypes.h"

#include <vtkType.h>

#include <climits>
#include <utility>

namespace veltrane
{
namespace
{

constexpr std::string_view wholeNumberName(int size, bool isSigned)
{
    switch (size)
    {
    case 1: return isSigned ? "Int8" : "UInt8";
    case 2: return isSigned ? "Int16" : "UInt16";
    case 4: return isSigned ? "Int32" : "UInt32";
    case 8: return isSigned ? "Int64" : "UInt64";
    default: return "";
    }
}

} // namespace

std::string_view xmlNameOf(int vtkType)
{
    switch (vtkType)
    {
    case VTK_FLOAT: return "Float32";
    case VTK_DOUBLE: return "Float64";
    case VTK_CHAR: return wholeNumberName(1, CHAR_MIN < 0);
    case VTK_SIGNED_CHAR: return wholeNumberName(1, true);
    case VTK_UNSIGNED_CHAR: return wholeNumberName(1, false);
    case VTK_SHORT: return wholeNumberName(sizeof(short), true);
    case VTK_UNSIGNED_SHORT: return wholeNumberName(sizeof(short), false);
    case VTK_INT: return wholeNumberName(sizeof(int), true);
    case VTK_UNSIGNED_INT: return wholeNumberName(sizeof(int), false);
    case VTK_LONG: return wholeNumberName(sizeof(long), true);
    case VTK_UNSIGNED_LONG: return wholeNumberName(sizeof(long), false);
    case VTK_LONG_LONG: return wholeNumberName(sizeof(long long), true);
    case VTK_UNSIGNED_LONG_LONG: return wholeNumberName(sizeof(long long), false);
    case VTK_ID_TYPE: return wholeNumberName(sizeof(vtkIdType), true);
    case VTK_STRING: return "String";
    default: return "";
    }
}

int vtkTypeOf(std::string_view xmlName)
{
    constexpr std::pair<std::string_view, int> types[] = {
        {"Float32", VTK_FLOAT},    {"Float64", VTK_DOUBLE},     {"Int8", VTK_TYPE_INT8},   {"UInt8", VTK_TYPE_UINT8},
        {"Int16", VTK_TYPE_INT16}, {"UInt16", VTK_TYPE_UINT16}, {"Int32", VTK_TYPE_INT32}, {"UInt32", VTK_TYPE_UINT32},
        {"Int64", VTK_TYPE_INT64}, {"UInt64", VTK_TYPE_UINT64}, {"String", VTK_STRING}};
    for (const auto& [name, type] : types)
    {
        if (name == xmlName)
        {
            return type;
        }
    }
    return VTK_VOID;
}

} // namespace veltrane
