/// The names of groups, parts or materials, which cells name by numbers.
#ifndef VELTRANE_HOST_GROUP_NAMES_H
#define VELTRANE_HOST_GROUP_NAMES_H

#include <map>
#include <string>

class vtkDataObject;

namespace veltrane
{

using GroupNames = std::map<long long, std::string>; ///< of numbers

/// Gives a data set an array of its field data, `material_names`, of rows of a number and a name. Without names there
/// is no such array.
void setGroupNames(vtkDataObject& dataSet, const GroupNames& names);

/// Those that setGroupNames() has set, maybe before the data set was written and read.
GroupNames groupNames(vtkDataObject& dataSet);

} // namespace veltrane

#endif
