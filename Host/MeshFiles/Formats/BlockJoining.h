/// Files of several blocks, zones or parts as one grid.
#ifndef VELTRANE_HOST_BLOCK_JOINING_H
#define VELTRANE_HOST_BLOCK_JOINING_H

#include "FileFormat.h"

#include <vtkSmartPointer.h>

#include <filesystem>
#include <string>
#include <vector>

class vtkAlgorithm;
class vtkCompositeDataSet;
class vtkDataSet;
class vtkIdList;
class vtkUnstructuredGrid;

namespace veltrane
{

class VtkMessages;

struct Block
{
    std::string name{}; ///< empty: it has none
    vtkSmartPointer<vtkUnstructuredGrid> grid{};
};

/// The type and the order of points of a cell that is a special case of it in another order: a hexahedron for a voxel,
/// a quadrilateral for a pixel.
int plainCellType(int cellType, vtkIdList& points);

/// The data set as an unstructured grid: itself if it is one, or the cells of structured grids as hexahedra,
/// quadrilaterals and lines, without those that are blanked.
vtkSmartPointer<vtkUnstructuredGrid> toGrid(vtkDataSet& dataSet);

/// All data sets with cells in a tree of them, by the names of the tree.
std::vector<Block> blocksOf(vtkCompositeDataSet& tree);

/// The blocks with the points of each of its own. An array is "not a number", or 0 if of whole numbers, in blocks that
/// do not have it. Several blocks are materials, from 1 on, with their names, unless one has an array of a usual name
/// for them. Blocks of no cells have no number.
///
/// \pre there is a block
vtkSmartPointer<vtkUnstructuredGrid> joinBlocks(const std::vector<Block>& blocks);

/// The same for blocks all of which have the points, and the point data, of the first one; they do not become
/// materials.
vtkSmartPointer<vtkUnstructuredGrid> joinBlocksOfSamePoints(const std::vector<Block>& blocks);

/// What a reader of trees gives at the step that is wanted, joined. The reader knows its file, and what it is to read.
/// Throws BadFile.
FileData readBlocks(vtkAlgorithm& reader, const VtkMessages& messages, const FileReading& reading,
                    const std::filesystem::path& path);

} // namespace veltrane

#endif
