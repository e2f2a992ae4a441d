/// What files call their nodes, as points of a data set know it.
#ifndef VELTRANE_HOST_NODE_LABELS_H
#define VELTRANE_HOST_NODE_LABELS_H

#include <vtkType.h>

#include <string>
#include <vector>

class vtkPointSet;

namespace veltrane
{

/// Point data: the file's own numbers.
inline constexpr const char* nodeNumberArray = "node_number";
/// Point data: the instances of parts that the points belong to, from 0, and field data: their names.
inline constexpr const char* nodeInstanceArray = "node_instance";
inline constexpr const char* instanceNameArray = "instance_names";

/// "12", or "PLATE-1.12" for a node of an instance. Without numbers of a file points count from 1.
std::string nodeLabel(vtkPointSet& dataSet, vtkIdType point);

/// The file's own numbers of all points, if they are positive, fit an int and tell them apart; else 1, 2, 3 ...
std::vector<long long> nodeNumbers(vtkPointSet& dataSet);

} // namespace veltrane

#endif
