/// The appended data of VTK's XML files, which VTK's readers take for complete.
#ifndef VELTRANE_HOST_APPENDED_DATA_H
#define VELTRANE_HOST_APPENDED_DATA_H

#include <filesystem>

class vtkXMLDataParser;

namespace veltrane
{

/// Throws BadFile if a file with appended data ends before its closing tag, or if the values of an array do not lie
/// within that data. A file without appended data passes: its parser finds out where it ends.
///
/// \param parser  has parsed the file
void checkAppendedData(vtkXMLDataParser& parser, const std::filesystem::path& path);

/// The same of a file that is not parsed yet. What is wrong otherwise is for VTK to tell, and goes where it tells
/// everything.
void checkAppendedData(const std::filesystem::path& path);

} // namespace veltrane

#endif
