#include "MeshFile.h"

#include "Text.h"
#include "VtkCells.h"
#include "VtkMessages.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkDataSetAttributes.h>
#include <vtkDoubleArray.h>
#include <vtkErrorCode.h>
#include <vtkFloatArray.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLDataElement.h>
#include <vtkXMLDataParser.h>
#include <vtkXMLUnstructuredGridReader.h>
#include <vtkXMLUnstructuredGridWriter.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <new>
#include <set>
#include <system_error>
#include <utility>

namespace veltrane
{
namespace
{

constexpr std::array materialArrayNames{"material", "Material", "MaterialIds", "MaterialId", "materialId",
                                        "part",     "Part",     "PartId",      "partId",     "gmsh:physical"};

std::string quoted(const std::filesystem::path& path)
{
    return text("'", path.string(), "'");
}

void checkReadable(const std::filesystem::path& path)
{
    std::error_code failure;
    const std::filesystem::file_status status = std::filesystem::status(path, failure);
    if (status.type() == std::filesystem::file_type::not_found)
    {
        throw NoInput(text("there is no file ", quoted(path)));
    }
    if (failure)
    {
        throw NoInput(text("cannot open ", quoted(path), ": ", failure.message()));
    }
    if (status.type() == std::filesystem::file_type::directory)
    {
        throw NoInput(text(quoted(path), " is a directory, not a mesh file"));
    }
    if (status.type() != std::filesystem::file_type::regular)
    {
        throw NoInput(text(quoted(path), " is not a regular file"));
    }
    if (!std::ifstream(path))
    {
        throw NoInput(text("cannot open ", quoted(path), ": ", std::strerror(errno)));
    }
    if (std::filesystem::file_size(path, failure) == 0)
    {
        throw BadFile(text(quoted(path), " is empty"));
    }
}

void checkCountAttribute(vtkXMLDataElement& element, const char* attribute, long long smallest,
                         const std::filesystem::path& path)
{
    const char* value = element.GetAttribute(attribute);
    const long long count = value == nullptr ? smallest : std::strtoll(value, nullptr, 10);
    if (count < smallest || count > INT_MAX)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it has a ", element.GetName(), " with ", attribute, " \"",
                           value, "\""));
    }
}

/// Finds what VTK's reader takes no notice of or does not survive: arrays without names or of the same name, of which
/// it would keep the last one, and counts out of range.
void checkStructure(vtkXMLDataElement& parent, const std::filesystem::path& path)
{
    const std::string_view section = parent.GetName();
    std::set<std::string_view> names;
    for (int i = 0; i < parent.GetNumberOfNestedElements(); ++i)
    {
        vtkXMLDataElement& child = *parent.GetNestedElement(i);
        checkCountAttribute(child, "NumberOfPoints", 0, path);
        checkCountAttribute(child, "NumberOfCells", 0, path);
        checkCountAttribute(child, "NumberOfComponents", 1, path);
        if (section == "PointData" || section == "CellData")
        {
            const std::string_view kind = section == "PointData" ? "point" : "cell";
            const char* name = child.GetAttribute("Name");
            if (name == nullptr)
            {
                throw BadFile(text(quoted(path), " has a ", kind, "-data array without a name"));
            }
            if (!names.insert(name).second)
            {
                throw BadFile(text(quoted(path), " has two ", kind, "-data arrays of the name '", name, "'"));
            }
        }
        checkStructure(child, path);
    }
}

/// Why VTK has failed, or nothing if it has not. The first message says most, unless it only passes on a failure.
std::optional<std::string> failureReason(const VtkMessages& messages, unsigned long errorCode)
{
    const std::vector<std::string>& errors = messages.errors();
    if (errors.empty() && errorCode == vtkErrorCode::NoError)
    {
        return std::nullopt;
    }
    const auto found = std::ranges::find_if(errors, [](const auto& error) { return !error.starts_with("Algorithm "); });
    if (found != errors.end())
    {
        return *found;
    }
    switch (errorCode)
    {
    case vtkErrorCode::NoError: return "VTK gives no reason";
    case vtkErrorCode::OutOfDiskSpaceError: return "there is not enough disk space";
    default: return vtkErrorCode::GetStringFromErrorCode(errorCode);
    }
}

vtkSmartPointer<vtkUnstructuredGrid> readGrid(const std::filesystem::path& path)
{
    checkReadable(path);
    const VtkMessages messages;
    vtkNew<vtkXMLUnstructuredGridReader> reader;
    const auto throwIfFailed = [&]
    {
        if (const auto reason = failureReason(messages, reader->GetErrorCode()))
        {
            throw BadFile(text("cannot read ", quoted(path), ": ", *reason));
        }
    };
    try
    {
        reader->SetFileName(path.c_str());
        reader->UpdateInformation();
        vtkXMLDataParser* parser = reader->GetXMLParser();
        if (parser != nullptr && parser->GetRootElement() != nullptr)
        {
            checkStructure(*parser->GetRootElement(), path);
        }
        throwIfFailed();
        reader->Update();
        throwIfFailed();
    }
    catch (const std::bad_alloc&)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it says that it has more data than memory can hold"));
    }
    return reader->GetOutput();
}

void checkTupleCounts(vtkFieldData& data, vtkIdType expected, std::string_view where, const std::filesystem::path& path)
{
    for (int i = 0; i < data.GetNumberOfArrays(); ++i)
    {
        const vtkAbstractArray& array = *data.GetAbstractArray(i);
        if (array.GetNumberOfTuples() != expected)
        {
            const char* name = const_cast<vtkAbstractArray&>(array).GetName();
            throw BadFile(text(quoted(path), ": array '", name == nullptr ? "" : name, "' has values for ",
                               array.GetNumberOfTuples(), " ", where, "s, but there are ", expected));
        }
    }
}

std::vector<float> readCoordinates(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    std::vector<float> coordinates;
    if (grid.GetPoints() == nullptr)
    {
        return coordinates;
    }
    vtkDataArray& data = *grid.GetPoints()->GetData();
    const vtkIdType pointCount = data.GetNumberOfTuples();
    coordinates.reserve(static_cast<std::size_t>(pointCount) * 3);
    for (vtkIdType point = 0; point < pointCount; ++point)
    {
        double position[3];
        data.GetTuple(point, position);
        for (const double coordinate : position)
        {
            if (!(std::abs(coordinate) <= double{FLT_MAX}))
            {
                throw BadFile(text(quoted(path), ": point ", point, " has the coordinate ", coordinate,
                                   ", which is not a finite single-precision number"));
            }
            coordinates.push_back(static_cast<float>(coordinate));
        }
    }
    return coordinates;
}

/// A cell type and how often there are cells of it.
using CellCounts = std::map<int, int>;

[[noreturn]] void refuseCells(const CellCounts& unsupported, const std::filesystem::path& path)
{
    std::string list;
    for (const auto& [cellType, count] : unsupported)
    {
        list += text(list.empty() ? "" : ", ", count, " ", vtkCellName(cellType));
    }
    throw BadFile(text(quoted(path), " has cells that cannot be used: ", list));
}

/// The cell types, after a check that there are types and offsets for all cells and that these hold together.
vtkUnsignedCharArray& checkedCellTypes(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    const vtkIdType cellCount = grid.GetNumberOfCells();
    if (cellCount == 0)
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    vtkUnsignedCharArray* types = grid.GetCellTypesArray();
    if (types == nullptr || types->GetNumberOfValues() != cellCount)
    {
        throw BadFile(text(quoted(path), " does not have one cell type for each of its ", cellCount, " cells"));
    }
    vtkDataArray& offsets = *grid.GetCells()->GetOffsetsArray();
    const vtkIdType connectivitySize = grid.GetCells()->GetConnectivityArray()->GetNumberOfValues();
    auto previous = 0.0;
    for (vtkIdType i = 0; i <= cellCount; ++i)
    {
        const double offset = offsets.GetComponent(i, 0);
        if (offset < previous || offset > static_cast<double>(connectivitySize))
        {
            throw BadFile(text(quoted(path), ": the offset ", offset, " of cell ", std::max<vtkIdType>(i - 1, 0),
                               " does not delimit a part of the connectivity"));
        }
        previous = offset;
    }
    return *types;
}

/// Adds a cell's element to the mesh data.
void addElement(MeshData& data, const VtkCellKind& cellKind, vtkIdType cell, std::span<const vtkIdType> points,
                vtkIdType pointCount, const std::filesystem::path& path)
{
    const ElementKindInfo& kind = *findElementKind(cellKind.kind);
    if (points.size() != static_cast<std::size_t>(kind.nodeCount))
    {
        throw BadFile(text(quoted(path), ": cell ", cell, " is a ", kind.name, " of ", points.size(),
                           " points instead of ", kind.nodeCount));
    }
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        const vtkIdType point = points[static_cast<std::size_t>(cellKind.nodeOrder[i])];
        if (point < 0 || point >= pointCount)
        {
            throw BadFile(text(quoted(path), ": cell ", cell, " refers to point ", point, ", but there are ",
                               pointCount, " points, counted from 0"));
        }
        data.connectivity.push_back(static_cast<int>(point));
    }
    data.kinds.push_back(kind.kind);
    data.offsets.push_back(data.connectivity.size());
}

/// Returns the cells that became elements, and fills in everything but coordinates and materials.
std::vector<vtkIdType> readElements(vtkUnstructuredGrid& grid, MeshRole role, const std::filesystem::path& path,
                                    MeshData& data)
{
    const vtkUnsignedCharArray& types = checkedCellTypes(grid, path);
    CellCounts unsupported;
    std::vector<vtkIdType> cells;
    data.offsets.push_back(0);
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        const int cellType = types.GetValue(cell);
        const VtkCellKind* cellKind = findVtkCellKind(cellType);
        if (cellKind == nullptr)
        {
            ++unsupported[cellType];
            continue;
        }
        if (role != MeshRole::target && !findElementKind(cellKind->kind)->isVolume)
        {
            continue;
        }
        vtkIdType size = 0;
        const vtkIdType* points = nullptr;
        grid.GetCells()->GetCellAtId(cell, size, points);
        addElement(data, *cellKind, cell, {points, static_cast<std::size_t>(size)}, grid.GetNumberOfPoints(), path);
        cells.push_back(cell);
    }
    if (!unsupported.empty())
    {
        refuseCells(unsupported, path);
    }
    if (cells.empty())
    {
        throw BadFile(text(quoted(path), " has no volume cells, which ",
                           role == MeshRole::source ? "a source needs" : "have the Gauss points to be matched"));
    }
    return cells;
}

vtkDataArray* findMaterialArray(vtkUnstructuredGrid& grid)
{
    for (const char* name : materialArrayNames)
    {
        vtkDataArray* array = grid.GetCellData()->GetArray(name);
        if (array != nullptr && array->GetNumberOfComponents() == 1)
        {
            return array;
        }
    }
    return nullptr;
}

/// Fills in the materials, in the order of their numbers.
void readMaterials(vtkDataArray* array, const std::vector<vtkIdType>& cells, const std::filesystem::path& path,
                   MeshData& data)
{
    if (array == nullptr)
    {
        data.materials.push_back({"all", 0});
        data.materialPerElement.assign(cells.size(), 0);
        return;
    }
    std::map<long long, int> materials; // number in the file, index in the mesh
    const auto numberOf = [&](vtkIdType cell)
    {
        constexpr double largest = 9007199254740992.0; // beyond it doubles skip whole numbers
        const double number = array->GetComponent(cell, 0);
        if (!(std::abs(number) <= largest) || number != std::floor(number))
        {
            throw BadFile(text(quoted(path), ": cell array '", array->GetName(), "' numbers the material of cell ",
                               cell, " with ", number, ", which is not a whole number"));
        }
        return static_cast<long long>(number);
    };
    for (const vtkIdType cell : cells)
    {
        materials.try_emplace(numberOf(cell), 0);
    }
    for (auto& [number, index] : materials)
    {
        index = static_cast<int>(data.materials.size());
        data.materials.push_back({std::to_string(number), 0});
    }
    for (const vtkIdType cell : cells)
    {
        data.materialPerElement.push_back(materials.at(numberOf(cell)));
    }
}

std::vector<PointArray> listPointArrays(vtkPointData& pointData)
{
    std::vector<PointArray> arrays;
    for (int i = 0; i < pointData.GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& array = *pointData.GetAbstractArray(i);
        if (array.GetName() != nullptr)
        {
            const bool isFloatingPoint = array.GetDataType() == VTK_FLOAT || array.GetDataType() == VTK_DOUBLE;
            arrays.push_back({array.GetName(), array.GetNumberOfComponents(), isFloatingPoint});
        }
    }
    return arrays;
}

template <typename Array, typename Value>
vtkSmartPointer<vtkDataArray> toArray(const Field& field, const std::vector<Value>& values)
{
    vtkNew<Array> array;
    array->SetName(field.name().c_str());
    array->SetNumberOfComponents(field.componentCount());
    array->SetNumberOfTuples(static_cast<vtkIdType>(field.locationCount()));
    std::ranges::copy(values, array->GetPointer(0));
    return array;
}

vtkSmartPointer<vtkDataArray> toArray(const Field& field)
{
    if (const auto* floats = std::get_if<std::vector<float>>(&field.values()))
    {
        return toArray<vtkFloatArray>(field, *floats);
    }
    return toArray<vtkDoubleArray>(field, std::get<std::vector<double>>(field.values()));
}

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

vtkDataSetAttributes& attributesOf(vtkUnstructuredGrid& grid, ArrayPlace place)
{
    if (place == ArrayPlace::points)
    {
        return *grid.GetPointData();
    }
    return *grid.GetCellData();
}

vtkSmartPointer<vtkUnstructuredGrid> shallowCopy(vtkUnstructuredGrid& original)
{
    vtkNew<vtkUnstructuredGrid> copy;
    copy->ShallowCopy(&original);
    return copy;
}

void writeGrid(vtkUnstructuredGrid& grid, const std::filesystem::path& path)
{
    const VtkMessages messages;
    vtkNew<vtkXMLUnstructuredGridWriter> writer;
    writer->SetFileName(path.c_str());
    writer->SetInputData(&grid);
    const bool written = writer->Write() != 0;
    const std::optional<std::string> reason = failureReason(messages, writer->GetErrorCode());
    if (!written || reason)
    {
        throw CannotWrite(reason.value_or("VTK gives no reason"));
    }
}

} // namespace

struct MeshFile::Contents
{
    std::filesystem::path path;
    vtkSmartPointer<vtkUnstructuredGrid> grid;
    std::optional<Mesh> mesh;
    std::optional<std::string> materialArray;
    std::vector<vtkIdType> cells; ///< of the elements
    std::vector<PointArray> pointArrays;
};

MeshFile::MeshFile(const std::filesystem::path& path, MeshRole role) : contents_(std::make_unique<Contents>())
{
    contents_->path = path;
    contents_->grid = readGrid(path);
    vtkUnstructuredGrid& grid = *contents_->grid;
    checkTupleCounts(*grid.GetPointData(), grid.GetNumberOfPoints(), "point", path);
    checkTupleCounts(*grid.GetCellData(), grid.GetNumberOfCells(), "cell", path);

    MeshData data;
    contents_->cells = readElements(grid, role, path, data);
    data.coordinates = readCoordinates(grid, path);
    vtkDataArray* materialArray = findMaterialArray(grid);
    if (materialArray != nullptr)
    {
        contents_->materialArray = materialArray->GetName();
    }
    readMaterials(materialArray, contents_->cells, path, data);
    try
    {
        contents_->mesh.emplace(std::move(data));
    }
    catch (const InvalidData& error)
    {
        throw BadFile(text(quoted(path), ": ", error.what()));
    }
    contents_->pointArrays = listPointArrays(*grid.GetPointData());
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

int MeshFile::leftOutCellCount() const
{
    return static_cast<int>(contents_->grid->GetNumberOfCells()) - mesh().elementCount();
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
    return attributesOf(*contents_->grid, place).HasArray(name.c_str()) != 0;
}

Field MeshFile::field(const std::string& name) const
{
    vtkAbstractArray* array = contents_->grid->GetPointData()->GetAbstractArray(name.c_str());
    if (array == nullptr)
    {
        throw BadFile(text(quoted(contents_->path), " has no point-data array '", name, "'"));
    }
    FieldValues values;
    if (const auto* floats = vtkArrayDownCast<vtkFloatArray>(array))
    {
        const float* begin = const_cast<vtkFloatArray*>(floats)->GetPointer(0);
        values = std::vector<float>(begin, begin + floats->GetNumberOfValues());
    }
    else if (const auto* doubles = vtkArrayDownCast<vtkDoubleArray>(array))
    {
        const double* begin = const_cast<vtkDoubleArray*>(doubles)->GetPointer(0);
        values = std::vector<double>(begin, begin + doubles->GetNumberOfValues());
    }
    else
    {
        throw BadFile(
            text(quoted(contents_->path), ": point-data array '", name, "' is not of floating-point numbers"));
    }
    try
    {
        return Field(name, Location::nodes, array->GetNumberOfComponents(), std::move(values));
    }
    catch (const InvalidData& error)
    {
        throw BadFile(text(quoted(contents_->path), ": ", error.what()));
    }
}

void MeshFile::writeWith(std::span<const Field> fields, const std::filesystem::path& path) const
{
    const vtkSmartPointer<vtkUnstructuredGrid> grid = shallowCopy(*contents_->grid);
    for (const Field& field : fields)
    {
        grid->GetPointData()->AddArray(toArray(field));
    }
    writeGrid(*grid, path);
}

void MeshFile::writeWith(std::span<const IntegerArray> arrays, const std::filesystem::path& path) const
{
    const vtkSmartPointer<vtkUnstructuredGrid> grid = shallowCopy(*contents_->grid);
    for (const IntegerArray& integers : arrays)
    {
        const bool isPerPoint = integers.place == ArrayPlace::points;
        const auto rowOf = [&](std::size_t row)
        { return isPerPoint ? static_cast<vtkIdType>(row) : contents_->cells[row]; };
        attributesOf(*grid, integers.place)
            .AddArray(toArray(integers, isPerPoint ? grid->GetNumberOfPoints() : grid->GetNumberOfCells(), rowOf));
    }
    writeGrid(*grid, path);
}

} // namespace veltrane
