/// The structure of VTK's XML files.
#ifndef VELTRANE_HOST_XML_STRUCTURE_H
#define VELTRANE_HOST_XML_STRUCTURE_H

#include <filesystem>

class vtkXMLDataElement;

namespace veltrane
{

/// Finds what VTK's readers take no notice of or do not survive: arrays without names or of the same name, of which
/// they would keep the last one, and counts out of range; and pieces in files that are not there. Throws BadFile or
/// NoInput.
void checkStructure(vtkXMLDataElement& root, const std::filesystem::path& path);

} // namespace veltrane

#endif
