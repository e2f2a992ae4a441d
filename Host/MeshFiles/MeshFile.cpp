#include "MeshFile.h"

#include "DataSetReader.h"
#include "DataSetWriter.h"
#include "DirectElements.h"
#include "GaussFields.h"
#include "GridMaterials.h"
#include "GridPoints.h"
#include "GroupNames.h"
#include "NodeLabels.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkDoubleArray.h>
#include <vtkFieldData.h>
#include <vtkFloatArray.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <set>
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

/// Those of the original's arrays that the other grid still has.
StoredArrays keptArrays(const StoredArrays& stored, vtkUnstructuredGrid& original, vtkUnstructuredGrid& grid)
{
    StoredArrays kept = stored;
    for (const auto& [place, part] :
         {std::pair(ArrayPlace::points, "PointData"), std::pair(ArrayPlace::cells, "CellData"),
          std::pair(ArrayPlace::file, "FieldData")})
    {
        vtkFieldData& data = dataOf(original, place);
        for (int i = 0; i < data.GetNumberOfArrays(); ++i)
        {
            const char* name = data.GetArrayName(i);
            if (name != nullptr && dataOf(grid, place).GetAbstractArray(name) != data.GetAbstractArray(i))
            {
                kept.remove(part, name);
            }
        }
    }
    return kept;
}

template <typename Array, typename Number>
void setPoints(vtkUnstructuredGrid& grid, const std::vector<Number>& coordinates)
{
    vtkNew<Array> array;
    array->SetNumberOfComponents(3);
    constexpr int isBorrowed = 1;
    array->SetArray(const_cast<Number*>(coordinates.data()), static_cast<vtkIdType>(coordinates.size()), isBorrowed);
    vtkNew<vtkPoints> points;
    points->SetData(array);
    grid.SetPoints(points);
}

/// Lets the grid's points be those of the mesh, which must live longer, if it has them in the same precision.
void borrowPoints(vtkUnstructuredGrid& grid, const Mesh& mesh)
{
    const int type = grid.GetPoints() == nullptr ? VTK_VOID : grid.GetPoints()->GetDataType();
    if (type == VTK_FLOAT)
    {
        setPoints<vtkFloatArray>(grid, mesh.coordinates());
    }
    else if (type == VTK_DOUBLE && !mesh.exactCoordinates().empty())
    {
        setPoints<vtkDoubleArray>(grid, mesh.exactCoordinates());
    }
}

/// The elements of a file, and of those of its cells that the grid is given back.
GridElements elementsOf(MeshContents& file, const MeshReading& reading, const std::filesystem::path& path)
{
    if (file.cells)
    {
        if (!reading.cellsAsNodes && !file.grid->GetCellData()->HasArray(vtkDataSetAttributes::GhostArrayName()))
        {
            auto elements = takeElements(*file.cells, *file.types, file.grid->GetNumberOfPoints(), reading);
            if (elements)
            {
                return std::move(*elements);
            }
        }
        setCells(*file.grid, *file.types, viewOf(*file.cells));
        file.cells.reset();
    }
    if (reading.cellsAsNodes)
    {
        averageCellsAtNodes(*file.grid, path);
    }
    return readElements(*file.grid, reading, path);
}

} // namespace

struct MeshFile::Contents
{
    std::filesystem::path path;
    std::optional<Mesh> mesh;
    vtkSmartPointer<vtkUnstructuredGrid> grid;   ///< with its cells unless they are the mesh's elements
    vtkSmartPointer<vtkUnsignedCharArray> types; ///< of the file's cells
    std::optional<int> numberType;               ///< if the grid has no cells: what they are numbers of, see CellTable
    std::optional<std::string> materialArray;
    bool hasNamedMaterials = false;
    std::optional<std::string> firstMaterialArray; ///< after reading
    StoredArrays stored;
    ItemNumbers cells; ///< of the elements
    CellCounts skippedCells;
    CellCounts nodeGroups;
    int nodeGroupElementCount = 0;
    int usedCellCount = 0;
    std::vector<PointArray> pointArrays;
    std::vector<std::string> gaussFields;
    LeftOut leftOut;

    FileElements elements() const { return {*mesh, cells, *types}; }
    vtkIdType cellCount() const { return types->GetNumberOfValues(); }
};

MeshFile::MeshFile(const std::filesystem::path& path, const MeshReading& reading)
    : contents_(std::make_unique<Contents>())
{
    contents_->path = path;
    MeshContents file = readMesh(
        path,
        {.step = reading.step, .threads = reading.threads, .piece = reading.piece, .pieceCount = reading.pieceCount},
        reading.ahead.get());
    contents_->grid = file.grid;
    contents_->leftOut = std::move(file.leftOut);
    contents_->stored = std::move(file.stored);
    contents_->types = file.types == nullptr ? vtkSmartPointer<vtkUnsignedCharArray>::New() : file.types;
    vtkUnstructuredGrid& grid = *contents_->grid;
    const vtkIdType cellCount = file.cells ? contents_->cellCount() : grid.GetNumberOfCells();
    checkTupleCounts(grid, cellCount, path);
    place(grid, reading.placement);
    if (!reading.placement.isIdentity())
    {
        contents_->stored.remove("Points", "Points");
    }

    contents_->gaussFields = listGaussFields(grid);
    MeshReading elementReading = reading;
    elementReading.keepsRepeatedNodes =
        reading.keepsRepeatedNodes || !contents_->gaussFields.empty() || reading.role == MeshRole::gaussPointTarget;
    GridElements elements = elementsOf(file, elementReading, path);
    if (file.cells)
    {
        contents_->numberType = file.cells->numberType;
    }
    elements.data.coordinates = readCoordinates(grid, path);
    elements.data.exactCoordinates = readExactCoordinates(grid);
    vtkDataArray* materialArray =
        cellCount == 0 ? nullptr : findMaterialArray(*grid.GetCellData(), reading.materialArray, path);
    if (materialArray != nullptr)
    {
        contents_->materialArray = materialArray->GetName();
        contents_->firstMaterialArray = contents_->materialArray;
    }
    MaterialNumbers materials = readMaterials(materialArray, elements.cells, "cell", path);
    elements.data.materials = std::move(materials.materials);
    elements.data.materialPerElement = std::move(materials.materialPerItem);
    try
    {
        contents_->mesh.emplace(std::move(elements.data), reading.threads);
    }
    catch (const InvalidData& error)
    {
        throw BadFile(text(quoted(path), ": ", error.what()));
    }
    contents_->mesh->setGaussPointRule(reading.gaussPointRule);
    borrowPoints(grid, *contents_->mesh);
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

bool MeshFile::canNameMaterials() const
{
    const auto& array = contents_->materialArray;
    if (array != "material" && array != "ObjectId") // the names are those of the groups that a reader has numbered
    {
        return false;
    }
    const GroupNames names = groupNames(*contents_->grid);
    std::set<std::string> used;
    for (const Material& material : mesh().materials())
    {
        const auto found = names.find(std::atoll(material.name.c_str()));
        if (found == names.end() || !used.insert(found->second).second)
        {
            return false;
        }
    }
    return true;
}

void MeshFile::nameMaterials()
{
    const GroupNames names = groupNames(*contents_->grid);
    std::vector<Material> materials = mesh().materials();
    for (Material& material : materials)
    {
        material.name = names.at(std::atoll(material.name.c_str()));
    }
    mesh().setMaterials(std::move(materials), mesh().materialPerElement());
    contents_->hasNamedMaterials = true;
}

bool MeshFile::hasNamedMaterials() const
{
    return contents_->hasNamedMaterials;
}

void MeshFile::resetMaterials()
{
    if (contents_->materialArray != contents_->firstMaterialArray || contents_->hasNamedMaterials)
    {
        useMaterialArray(*contents_->firstMaterialArray); // without one there is no other, either
    }
    contents_->hasNamedMaterials = false;
    mesh().setStateCodes(std::vector<int>(mesh().materials().size(), 0));
}

int MeshFile::leftOutCellCount() const
{
    return static_cast<int>(contents_->cellCount()) - contents_->usedCellCount;
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

std::string MeshFile::nodeLabel(int node) const
{
    return veltrane::nodeLabel(*contents_->grid, node);
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

const LeftOut& MeshFile::leftOut() const
{
    return contents_->leftOut;
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
        return readGaussField(grid, contents_->elements(), name, resultName, path());
    }
    return toField(array, name, resultName, path());
}

void MeshFile::forgetArrays()
{
    contents_->grid->GetPointData()->Initialize();
    contents_->grid->GetCellData()->Initialize();
    contents_->grid->GetFieldData()->Initialize();
}

LeftOut MeshFile::writeWith(std::span<const Field> fields, std::span<const IntegerArray> arrays,
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
    addGaussFields(*grid, contents_->elements(), fields);
    for (const IntegerArray& integers : arrays)
    {
        const bool isPerPoint = integers.place == ArrayPlace::points;
        const auto rowOf = [&](std::size_t row)
        { return isPerPoint ? static_cast<vtkIdType>(row) : contents_->cells[row]; };
        dataOf(*grid, integers.place)
            .AddArray(toArray(integers, isPerPoint ? grid->GetNumberOfPoints() : contents_->cellCount(), rowOf));
    }
    FileWriting described = writing;
    std::ranges::transform(fields, std::back_inserter(described.fields), &Field::name);
    if (contents_->numberType)
    {
        const CellView cells{.connectivity = mesh().connectivity(),
                             .numberType = *contents_->numberType,
                             .beginnings = mesh().nodesPerElement()};
        const StoredArrays stored = keptArrays(contents_->stored, *contents_->grid, *grid);
        return writeGrid(*grid, *contents_->types, cells, path, described, &stored);
    }
    return writeDataSet(*grid, path, described);
}

} // namespace veltrane
