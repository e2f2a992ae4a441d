#include "ExodusWriting.h"

#include "GaussArrays.h"
#include "GridMaterials.h"
#include "SilentStandardError.h"
#include "Text.h"
#include "VtkWriting.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkDoubleArray.h>
#include <vtkExodusIIWriter.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace veltrane
{
namespace
{

constexpr const char* blockArrayName = "ElementBlockIds";
constexpr const char* materialArrayName = "material";

bool isWritten(int cellType)
{
    constexpr std::array types{VTK_VERTEX,
                               VTK_LINE,
                               VTK_TRIANGLE,
                               VTK_QUAD,
                               VTK_TETRA,
                               VTK_HEXAHEDRON,
                               VTK_WEDGE,
                               VTK_PYRAMID,
                               VTK_QUADRATIC_EDGE,
                               VTK_QUADRATIC_TRIANGLE,
                               VTK_QUADRATIC_QUAD,
                               VTK_QUADRATIC_TETRA,
                               VTK_QUADRATIC_HEXAHEDRON,
                               VTK_QUADRATIC_WEDGE};
    return std::ranges::find(types, cellType) != types.end();
}

std::string suffixOf(int component, int componentCount)
{
    constexpr std::array<const char*, 6> tensor{"_XX", "_YY", "_ZZ", "_XY", "_YZ", "_XZ"};
    return componentCount == 6 ? tensor[static_cast<std::size_t>(component)] : text('_', component + 1);
}

/// The arrays of numbers as the writer takes them.
void addArrays(vtkFieldData& to, vtkFieldData& from, const std::set<std::string>& excluded, LeftOut& leftOut)
{
    constexpr std::size_t longestName = 29; // without the letters of a component
    for (int i = 0; i < from.GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& any = *from.GetAbstractArray(i);
        auto* array = vtkDataArray::SafeDownCast(&any);
        const std::string name = any.GetName() == nullptr ? "" : any.GetName();
        if (excluded.contains(name))
        {
            continue;
        }
        if (array == nullptr || name.empty() || name.size() > longestName)
        {
            leftOut.push_back(text(array == nullptr ? "the texts '" : "the array '", name,
                                   array == nullptr ? "'" : "', since names have 1 to 29 letters"));
            continue;
        }
        const int componentCount = array->GetNumberOfComponents();
        if (componentCount <= 3)
        {
            to.AddArray(array);
            continue;
        }
        for (int component = 0; component < componentCount; ++component)
        {
            vtkNew<vtkDoubleArray> part;
            part->SetName((name + suffixOf(component, componentCount)).c_str());
            part->SetNumberOfTuples(array->GetNumberOfTuples());
            part->CopyComponent(0, array, component);
            to.AddArray(part);
        }
    }
}

/// Numbers blocks, each of cells of one type and material. Tells whether they are the numbers of the materials.
bool addBlocks(vtkUnstructuredGrid& grid, vtkDataArray* materials)
{
    const auto keyOf = [&](vtkIdType cell)
    {
        const int material = materials == nullptr ? 0 : static_cast<int>(materials->GetComponent(cell, 0));
        return std::pair(material, grid.GetCellType(cell));
    };
    std::map<std::pair<int, int>, int> blocks;
    int largest = 0;
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        blocks.emplace(keyOf(cell), 0);
        largest = std::max(largest, keyOf(cell).first);
    }
    std::set<int> used;
    bool areMaterials = true;
    for (auto& [key, block] : blocks)
    {
        const bool isFree = key.first > 0 && used.insert(key.first).second;
        block = isFree ? key.first : ++largest;
        areMaterials = areMaterials && isFree;
    }
    vtkNew<vtkIntArray> array;
    array->SetName(blockArrayName);
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        array->InsertNextValue(blocks[keyOf(cell)]);
    }
    grid.GetCellData()->AddArray(array);
    return areMaterials;
}

/// Exodus has the middles of the edges between base and top before those of the top, VTK behind them; the writer leaves
/// them as they are.
void orderMiddleNodes(vtkUnstructuredGrid& grid)
{
    const vtkNew<vtkIdList> points;
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        const int cellType = grid.GetCellType(cell);
        if (cellType == VTK_QUADRATIC_HEXAHEDRON || cellType == VTK_QUADRATIC_WEDGE)
        {
            const vtkIdType sides = cellType == VTK_QUADRATIC_WEDGE ? 3 : 4;
            grid.GetCellPoints(cell, points);
            std::swap_ranges(points->GetPointer(3 * sides), points->GetPointer(4 * sides),
                             points->GetPointer(4 * sides));
            grid.GetCells()->ReplaceCellAtId(cell, points);
        }
    }
}

} // namespace

LeftOut writeExodus(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting&)
{
    LeftOut leftOut;
    const vtkSmartPointer<vtkUnstructuredGrid> all = asGridOf(dataSet, isWritten, leftOut);
    if (all->GetNumberOfCells() == 0)
    {
        throw CannotWrite("an Exodus file needs cells");
    }
    orderMiddleNodes(*all);
    vtkNew<vtkUnstructuredGrid> grid;
    grid->CopyStructure(all);
    vtkDataArray* materials = findMaterialArray(*all->GetCellData(), std::nullopt, path);
    std::set<std::string> excluded{blockArrayName, "ObjectId"};
    for (const auto& [name, offsets] : gaussArraysOf(*all))
    {
        excluded.insert(offsets);
    }
    std::ranges::copy(gaussArrayTexts(*all), std::back_inserter(leftOut));
    addArrays(*grid->GetPointData(), *all->GetPointData(), {}, leftOut);
    addArrays(*grid->GetCellData(), *all->GetCellData(), excluded, leftOut);
    if (!addBlocks(*grid, materials) && materials != nullptr &&
        grid->GetCellData()->HasArray(materials->GetName()) == 0)
    {
        vtkNew<vtkIntArray> copy;
        copy->DeepCopy(materials);
        copy->SetName(materialArrayName);
        grid->GetCellData()->AddArray(copy);
    }
    const SilentStandardError silence;
    const vtkNew<vtkExodusIIWriter> writer;
    writer->SetFileName(path.c_str());
    writer->SetInputData(grid);
    writer->SetBlockIdArrayName(blockArrayName);
    writer->SetStoreDoubles(1);
    writer->WriteOutBlockIdArrayOff();
    writer->WriteOutGlobalNodeIdArrayOff();
    writer->WriteOutGlobalElementIdArrayOff();
    runWriter(*writer);
    return leftOut;
}

} // namespace veltrane
