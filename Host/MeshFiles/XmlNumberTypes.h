/// The types of numbers in VTK's XML files.
#ifndef VELTRANE_HOST_XML_NUMBER_TYPES_H
#define VELTRANE_HOST_XML_NUMBER_TYPES_H

#include <string_view>

namespace veltrane
{

/// "Float64", by the number that VTK gives the type; "String" for strings, and empty for what is neither.
std::string_view xmlNameOf(int vtkType);

/// The other way round, as VTK's readers do it; VTK_VOID for other names.
int vtkTypeOf(std::string_view xmlName);

} // namespace veltrane

#endif
