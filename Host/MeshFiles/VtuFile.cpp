#include "VtuFile.h"

#include "ThreadWorkers.h"
#include "UsualXml.h"
#include "VtuArrays.h"
#include "VtuHead.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <bit>
#include <set>
#include <string_view>

namespace veltrane
{
namespace
{

class Reader
{
public:
    Reader(const std::filesystem::path& path, int threads)
        : file_(std::make_shared<ReadFile>(path)), workers_(threads), contents_{.stored = StoredArrays(file_)}
    {
    }

    VtuContents read()
    {
        require(file_->size() > 0);
        head_ = readVtuHead(*file_);
        const std::optional<XmlElement> root = parseXml(head_.text);
        require(root && root->name == "VTKFile");
        readForm(*root);
        readGrid(onlyChild(*root, "UnstructuredGrid"));
        return std::move(contents_);
    }

private:
    void readForm(const XmlElement& root)
    {
        requireOnly(root, {"type", "version", "byte_order", "header_type", "compressor"});
        const auto isOneOf = [&](std::string_view name, std::initializer_list<std::string_view> values)
        {
            const std::string* value = root.attribute(name);
            return value != nullptr && std::ranges::find(values, *value) != values.end();
        };
        require(isOneOf("type", {"UnstructuredGrid"}) && isOneOf("version", {"0.1", "1.0", "2.0", "2.1", "2.2"}));
        require(isOneOf("byte_order", {std::endian::native == std::endian::little ? "LittleEndian" : "BigEndian"}));
        require(root.attribute("header_type") == nullptr || isOneOf("header_type", {"UInt32", "UInt64"}));
        require(root.attribute("compressor") == nullptr || isOneOf("compressor", {"vtkZLibDataCompressor"}));
        form_ = {.isCompressed = root.attribute("compressor") != nullptr,
                 .hasLongHeaders = isOneOf("header_type", {"UInt64"})};
    }

    void readGrid(const XmlElement& element)
    {
        require(element.attributes.empty());
        contents_.grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
        bool hasPiece = false;
        for (const XmlElement& child : element.children)
        {
            if (child.name == "FieldData" && !hasPiece)
            {
                requireOnly(child, {});
                addArrays(child, *contents_.grid->GetFieldData(), std::nullopt);
                continue;
            }
            require(child.name == "Piece" && !hasPiece);
            readPiece(child);
            hasPiece = true;
        }
        require(hasPiece);
    }

    void readPiece(const XmlElement& piece)
    {
        requireOnly(piece, {"NumberOfPoints", "NumberOfCells"});
        const std::uint64_t pointCount = countOf(piece, "NumberOfPoints");
        const std::uint64_t cellCount = countOf(piece, "NumberOfCells");
        require(pointCount > 0 && cellCount > 0);
        std::set<std::string_view> parts;
        for (const XmlElement& child : piece.children)
        {
            require(parts.insert(child.name).second);
            if (child.name == "PointData")
            {
                addArrays(child, *contents_.grid->GetPointData(), pointCount);
                activate(child, *contents_.grid->GetPointData());
            }
            else if (child.name == "CellData")
            {
                addArrays(child, *contents_.grid->GetCellData(), cellCount);
                activate(child, *contents_.grid->GetCellData());
            }
            else if (child.name == "Points")
            {
                readPoints(onlyChild(child, "DataArray"), pointCount);
            }
            else
            {
                require(child.name == "Cells");
                readCells(child, cellCount);
            }
        }
        require(parts.contains("Points") && parts.contains("Cells"));
    }

    /// \param tupleCount  none: each array tells it itself
    void addArrays(const XmlElement& element, vtkFieldData& data, std::optional<std::uint64_t> tupleCount)
    {
        for (const XmlElement& child : element.children)
        {
            require(child.name == (child.attribute("type") != nullptr && *child.attribute("type") == "String" &&
                                           tupleCount == std::nullopt && child.name == "Array"
                                       ? "Array"
                                       : "DataArray"));
            const std::string* name = child.attribute("Name");
            require(name != nullptr && data.HasArray(name->c_str()) == 0);
            data.AddArray(
                arrays_.read(child, tupleCount ? *tupleCount : numberOf(child, "NumberOfTuples"), element.name));
        }
    }

    static void activate(const XmlElement& element, vtkDataSetAttributes& data)
    {
        for (const auto& [name, value] : element.attributes)
        {
            int type = 0;
            while (type < vtkDataSetAttributes::NUM_ATTRIBUTES &&
                   name != vtkDataSetAttributes::GetAttributeTypeAsString(type))
            {
                ++type;
            }
            require(type < vtkDataSetAttributes::NUM_ATTRIBUTES);
            data.SetActiveAttribute(value.c_str(), type);
        }
    }

    void readPoints(const XmlElement& element, std::uint64_t pointCount)
    {
        const vtkSmartPointer<vtkDataArray> array =
            vtkDataArray::SafeDownCast(arrays_.read(element, pointCount, "Points"));
        require(array != nullptr && array->GetNumberOfComponents() == 3);
        require(array->GetDataType() == VTK_FLOAT || array->GetDataType() == VTK_DOUBLE);
        vtkNew<vtkPoints> points;
        points->SetData(array);
        contents_.grid->SetPoints(points);
    }

    void readCells(const XmlElement& element, std::uint64_t cellCount)
    {
        std::array<const XmlElement*, 3> arrays{};
        constexpr std::array<std::string_view, 3> names{"connectivity", "offsets", "types"};
        require(element.children.size() == names.size());
        for (const XmlElement& child : element.children)
        {
            const std::string* name = child.attribute("Name");
            require(child.name == "DataArray" && name != nullptr);
            const auto found = std::ranges::find(names, *name);
            require(found != names.end() && arrays[static_cast<std::size_t>(found - names.begin())] == nullptr);
            const std::string* components = child.attribute("NumberOfComponents");
            require(components == nullptr || *components == "1");
            requireOnly(child, {"type", "Name", "IdType", "format", "offset", "RangeMin", "RangeMax",
                                "NumberOfComponents", "NumberOfTuples"});
            requireRangesOnly(child);
            arrays[static_cast<std::size_t>(found - names.begin())] = &child;
        }
        contents_.types = vtkUnsignedCharArray::SafeDownCast(arrays_.read(*arrays[2], cellCount, element.name));
        require(contents_.types != nullptr);
        const unsigned char* types = contents_.types->GetPointer(0);
        require(std::find(types, types + cellCount, VTK_POLYHEDRON) == types + cellCount);
        CellTable& cells = contents_.cells;
        cells.numberType = wholeNumberTypeOf(*arrays[0]);
        require(cells.numberType == wholeNumberTypeOf(*arrays[1])); // as VTK has it
        const StoredArray offsets = arrays_.find(*arrays[1], element.name);
        const std::size_t valueSize = cells.numberType == VTK_TYPE_INT32 ? 4 : 8;
        require(offsets.size() == cellCount * valueSize);
        cells.offsets.resize(static_cast<std::size_t>(cellCount) + 1);
        arrays_.readNumbers(offsets, valueSize, std::span(cells.offsets).subspan(1));
        require(std::ranges::is_sorted(cells.offsets));
        const StoredArray connectivity = arrays_.find(*arrays[0], element.name);
        require(connectivity.size() / valueSize == cells.offsets.back() && connectivity.size() % valueSize == 0);
        cells.connectivity.resize(cells.offsets.back());
        arrays_.readNumbers(connectivity, valueSize, std::span(cells.connectivity));
    }

    static int wholeNumberTypeOf(const XmlElement& element)
    {
        const std::string* type = element.attribute("type");
        require(type != nullptr && (*type == "Int32" || *type == "Int64"));
        return *type == "Int32" ? VTK_TYPE_INT32 : VTK_TYPE_INT64;
    }

    std::shared_ptr<const ReadFile> file_;
    ThreadWorkers workers_;
    VtuHead head_;
    StorageForm form_{};
    VtuContents contents_;
    VtuArrays arrays_{head_, form_, contents_.stored, workers_};
};

} // namespace

std::optional<VtuContents> readVtu(const std::filesystem::path& path, int threads)
{
    try
    {
        return Reader(path, threads).read();
    }
    catch (const NotUsual&)
    {
        return std::nullopt;
    }
}

} // namespace veltrane
