#include "MeshFile.h"

#include "DataSetReader.h"
#include "DataSetWriter.h"
#include "GaussFields.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkFieldData.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <map>
#include <utility>

namespace veltrane
{
namespace
{

/// Row i of the values becomes row rowOf(i) of the array; the others are 0.
template <typename RowOf>
vtkSmartPointer<vtkDataArray> toArray(const IntegerArray& integers, vtkIdType rowCount, const RowOf& rowOf)
{
    vtkNew<vtkIntArray> array;
    array->SetName(integers.name.c_str());
    array->SetNumberOfComponents(integers.componentCount);
    array->SetNumberOfTuples(rowCount);
    array->Fill(0);
    const auto rowLength = static_cast<std::size_t>(integers.componentCount);
    for (std::size_t row = 0; row * rowLength < integers.values.size(); ++row)
    {
        array->SetTypedTuple(rowOf(row), integers.values.data() + row * rowLength);
    }
    return array;
}

vtkFieldData& dataOf(vtkUnstructuredGrid& grid, ArrayPlace place)
{
    switch (place)
    {
    case ArrayPlace::points: return *grid.GetPointData();
    case ArrayPlace::cells: return *grid.GetCellData();
    case ArrayPlace::file: break;
    }
    return *grid.GetFieldData();
}

vtkSmartPointer<vtkUnstructuredGrid> shallowCopy(vtkUnstructuredGrid& original)
{
    vtkNew<vtkUnstructuredGrid> copy;
    copy->ShallowCopy(&original); // with containers of its own for the arrays of points, cells and the file
    return copy;
}

} // namespace

struct MeshFile::Contents
{
    std::filesystem::path path;
    vtkSmartPointer<vtkUnstructuredGrid> grid;
    std::optional<Mesh> mesh;
    std::optional<std::string> materialArray;
    std::vector<vtkIdType> cells; ///< of the elements
    CellCounts skippedCells;
    CellCounts nodeGroups;
    int nodeGroupElementCount = 0;
    int usedCellCount = 0;
    std::vector<PointArray> pointArrays;
    std::vector<std::string> gaussFields;
};

MeshFile::MeshFile(const std::filesystem::path& path, const MeshReading& reading)
    : contents_(std::make_unique<Contents>())
{
    contents_->path = path;
    contents_->grid = readCells(path, reading.step);
    vtkUnstructuredGrid& grid = *contents_->grid;
    checkTupleCounts(grid, path);
    place(grid, reading.placement);
    if (reading.cellsAsNodes)
    {
        averageCellsAtNodes(grid, path);
    }

    contents_->gaussFields = listGaussFields(grid);
    MeshReading elementReading = reading;
    elementReading.keepsRepeatedNodes =
        reading.keepsRepeatedNodes || !contents_->gaussFields.empty() || reading.role == MeshRole::gaussPointTarget;
    GridElements elements = readElements(grid, elementReading, path);
    elements.data.coordinates = readCoordinates(grid, path);
    elements.data.exactCoordinates = readExactCoordinates(grid);
    vtkDataArray* materialArray =
        grid.GetNumberOfCells() == 0 ? nullptr : findMaterialArray(*grid.GetCellData(), reading.materialArray, path);
    if (materialArray != nullptr)
    {
        contents_->materialArray = materialArray->GetName();
    }
    MaterialNumbers materials = readMaterials(materialArray, elements.cells, "cell", path);
    elements.data.materials = std::move(materials.materials);
    elements.data.materialPerElement = std::move(materials.materialPerItem);
    try
    {
        contents_->mesh.emplace(std::move(elements.data));
    }
    catch (const InvalidData& error)
    {
        throw BadFile(text(quoted(path), ": ", error.what()));
    }
    contents_->cells = std::move(elements.cells);
    contents_->skippedCells = std::move(elements.skipped);
    contents_->pointArrays = listArrays(*grid.GetPointData());
    contents_->nodeGroups = std::move(elements.nodeGroups);
    contents_->nodeGroupElementCount = elements.nodeGroupElementCount;
    contents_->usedCellCount = elements.usedCellCount;
}

MeshFile::~MeshFile() = default;
MeshFile::MeshFile(MeshFile&&) noexcept = default;
MeshFile& MeshFile::operator=(MeshFile&&) noexcept = default;

const std::filesystem::path& MeshFile::path() const
{
    return contents_->path;
}

Mesh& MeshFile::mesh()
{
    return *contents_->mesh;
}

const Mesh& MeshFile::mesh() const
{
    return *contents_->mesh;
}

const std::optional<std::string>& MeshFile::materialArray() const
{
    return contents_->materialArray;
}

void MeshFile::useMaterialArray(const std::string& name)
{
    vtkDataArray* array = findMaterialArray(*contents_->grid->GetCellData(), name, path());
    auto [materials, materialPerElement] = readMaterials(array, contents_->cells, "cell", path());
    contents_->mesh->setMaterials(std::move(materials), std::move(materialPerElement));
    contents_->materialArray = name;
}

int MeshFile::leftOutCellCount() const
{
    return static_cast<int>(contents_->grid->GetNumberOfCells()) - contents_->usedCellCount;
}

std::vector<std::pair<CellName, long long>> MeshFile::elementCounts() const
{
    std::map<ElementKind, long long> kinds;
    for (const ElementKind kind : mesh().kinds())
    {
        ++kinds[kind];
    }
    kinds[ElementKind::quadrilateral] -= contents_->nodeGroupElementCount; // these stand for other cells
    std::vector<std::pair<CellName, long long>> counts;
    for (const auto& [kind, count] : kinds)
    {
        const ElementKindInfo& info = *findElementKind(kind);
        if (count > 0)
        {
            counts.push_back({{std::string(info.name), std::string(info.plural)}, count});
        }
    }
    for (const auto& [cellType, count] : contents_->nodeGroups)
    {
        counts.emplace_back(cellNameOf(cellType), count);
    }
    return counts;
}

const CellCounts& MeshFile::skippedCells() const
{
    return contents_->skippedCells;
}

int MeshFile::cellOf(int element) const
{
    return static_cast<int>(contents_->cells[static_cast<std::size_t>(element)]);
}

const std::vector<PointArray>& MeshFile::pointArrays() const
{
    return contents_->pointArrays;
}

bool MeshFile::hasArray(ArrayPlace place, const std::string& name) const
{
    return dataOf(*contents_->grid, place).HasArray(name.c_str()) != 0;
}

std::vector<std::string> MeshFile::floatingPointCellArrays() const
{
    std::vector<std::string> names;
    for (const PointArray& array : listArrays(*contents_->grid->GetCellData()))
    {
        if (array.isFloatingPoint)
        {
            names.push_back(array.name);
        }
    }
    return names;
}

const std::vector<std::string>& MeshFile::gaussFields() const
{
    return contents_->gaussFields;
}

bool MeshFile::hasGaussField(const std::string& name) const
{
    return std::ranges::find(gaussFields(), name) != gaussFields().end();
}

Field MeshFile::field(const std::string& name, const std::string& newName) const
{
    const std::string& resultName = newName.empty() ? name : newName;
    vtkUnstructuredGrid& grid = *contents_->grid;
    vtkAbstractArray* array = grid.GetPointData()->GetAbstractArray(name.c_str());
    if (array == nullptr && hasGaussField(name))
    {
        return readGaussField(grid, mesh(), contents_->cells, name, resultName, path());
    }
    return toField(array, name, resultName, path());
}

void MeshFile::writeWith(std::span<const Field> fields, std::span<const IntegerArray> arrays,
                         const std::filesystem::path& path, const FileWriting& writing) const
{
    const vtkSmartPointer<vtkUnstructuredGrid> grid = shallowCopy(*contents_->grid);
    for (const Field& field : fields)
    {
        if (field.location() == Location::nodes)
        {
            grid->GetPointData()->AddArray(toArray(field));
        }
    }
    addGaussFields(*grid, mesh(), contents_->cells, fields);
    for (const IntegerArray& integers : arrays)
    {
        const bool isPerPoint = integers.place == ArrayPlace::points;
        const auto rowOf = [&](std::size_t row)
        { return isPerPoint ? static_cast<vtkIdType>(row) : contents_->cells[row]; };
        dataOf(*grid, integers.place)
            .AddArray(toArray(integers, isPerPoint ? grid->GetNumberOfPoints() : grid->GetNumberOfCells(), rowOf));
    }
    writeDataSet(*grid, path, writing);
}

} // namespace veltrane
