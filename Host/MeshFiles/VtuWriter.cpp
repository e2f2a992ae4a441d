#include "VtuWriter.h"

#include "BlockWriter.h"
#include "PlacedFile.h"
#include "StoredArrays.h"
#include "Text.h"
#include "ThreadWorkers.h"
#include "XmlNumberTypes.h"

#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkInformation.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkStringArray.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <bit>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

constexpr std::string_view fieldData = "FieldData";

/// Keys that VTK itself puts beside arrays when it looks for their ranges.
int rangeKeyCount(vtkInformation& information)
{
    return information.Has(vtkDataArray::COMPONENT_RANGE()) + information.Has(vtkDataArray::L2_NORM_RANGE()) +
           information.Has(vtkDataArray::L2_NORM_FINITE_RANGE());
}

bool canWrite(vtkAbstractArray* array)
{
    if (array == nullptr || (array->HasInformation() &&
                             array->GetInformation()->GetNumberOfKeys() > rangeKeyCount(*array->GetInformation())))
    {
        return false;
    }
    return vtkStringArray::SafeDownCast(array) != nullptr ||
           (vtkDataArray::SafeDownCast(array) != nullptr && array->HasStandardMemoryLayout() &&
            !xmlNameOf(array->GetDataType()).empty());
}

bool canWrite(vtkFieldData& data)
{
    for (int i = 0; i < data.GetNumberOfArrays(); ++i)
    {
        if (!canWrite(data.GetAbstractArray(i)) || data.GetAbstractArray(i)->GetName() == nullptr)
        {
            return false;
        }
    }
    return true;
}

std::string escaped(std::string_view words)
{
    std::string result;
    for (const char letter : words)
    {
        switch (letter)
        {
        case '&': result += "&amp;"; break;
        case '<': result += "&lt;"; break;
        case '>': result += "&gt;"; break;
        case '"': result += "&quot;"; break;
        case '\n': result += "&#10;"; break;
        case '\r': result += "&#13;"; break;
        case '\t': result += "&#9;"; break;
        default: result += letter;
        }
    }
    return result;
}

ArrayBytes memoryOf(vtkDataArray& array, vtkIdType firstValue = 0)
{
    const auto valueSize = static_cast<std::size_t>(array.GetDataTypeSize());
    const auto count = static_cast<std::size_t>(array.GetNumberOfValues() - firstValue);
    return ArrayBytes({static_cast<const std::byte*>(array.GetVoidPointer(firstValue)), count * valueSize});
}

/// The strings one after another, each with a 0 at its end.
ArrayBytes bytesOf(vtkStringArray& strings)
{
    auto bytes = std::make_shared<std::string>();
    for (vtkIdType i = 0; i < strings.GetNumberOfValues(); ++i)
    {
        *bytes += strings.GetValue(i);
        *bytes += '\0';
    }
    return {bytes->size(), [bytes](std::uint64_t first, std::span<std::byte> room)
            { std::memcpy(room.data(), bytes->data() + first, room.size()); }};
}

/// The text of the file in front of the arrays, and the arrays. Where an array begins is known only when those before
/// it have been written, so the text keeps room for it.
class Contents
{
public:
    /// \param stored  arrays that are taken over from another file; may be null
    explicit Contents(const StoredArrays* stored) : stored_(stored) {}

    void add(const std::string& line) { text_ += line + "\n"; }

    /// \param part  what the array belongs to, as in the file: "PointData"
    void addArray(std::string_view part, const std::string& name, const std::string& attributes, ArrayBytes bytes,
                  std::string_view element = "DataArray")
    {
        text_ += text('<', element, ' ', attributes, " format=\"appended\" offset=");
        places_.push_back(text_.size());
        text_.append(offsetWidth, ' ');
        text_ += "/>\n";
        arrays_.push_back({std::move(bytes), stored_ == nullptr ? nullptr : stored_->find(part, name)});
    }

    void addArray(std::string_view part, vtkAbstractArray& array)
    {
        std::string attributes = text("type=\"", xmlNameOf(array.GetDataType()), "\"");
        if (array.GetDataType() == VTK_ID_TYPE)
        {
            attributes += " IdType=\"1\"";
        }
        attributes += text(" Name=\"", escaped(array.GetName()), "\"");
        if (array.GetNumberOfComponents() > 1)
        {
            attributes += text(" NumberOfComponents=\"", array.GetNumberOfComponents(), "\"");
        }
        for (int component = 0; component < array.GetNumberOfComponents() && array.HasAComponentName(); ++component)
        {
            if (const char* name = array.GetComponentName(component))
            {
                attributes += text(" ComponentName", component, "=\"", escaped(name), "\"");
            }
        }
        if (part == fieldData)
        {
            attributes += text(" NumberOfTuples=\"", array.GetNumberOfTuples(), "\"");
        }
        auto* strings = vtkStringArray::SafeDownCast(&array);
        if (strings != nullptr)
        {
            addArray(part, array.GetName(), attributes, bytesOf(*strings), "Array");
            return;
        }
        addArray(part, array.GetName(), attributes, memoryOf(*vtkDataArray::SafeDownCast(&array)));
    }

    void addArrays(std::string_view part, vtkFieldData& data)
    {
        for (int i = 0; i < data.GetNumberOfArrays(); ++i)
        {
            addArray(part, *data.GetAbstractArray(i));
        }
    }

    void write(const std::filesystem::path& path, const FileWriting& writing)
    {
        ThreadWorkers workers(writing.threads);
        PlacedFile file(path);
        BlockWriter blocks(file, writing.compression, workers);
        text_ += "<AppendedData encoding=\"raw\">\n_";
        const std::uint64_t begin = text_.size();
        std::uint64_t place = begin;
        for (std::size_t i = 0; i < arrays_.size(); ++i)
        {
            const std::string offset = text('"', place - begin, '"');
            text_.replace(places_[i], offset.size(), offset);
            place = blocks.write(arrays_[i].bytes, arrays_[i].stored, place);
        }
        constexpr std::string_view end = "\n</AppendedData>\n</VTKFile>\n";
        file.write(std::as_bytes(std::span(end)), place);
        file.write(std::as_bytes(std::span(text_)), 0);
        file.close();
    }

private:
    static constexpr std::size_t offsetWidth = 22; // of the largest number in quotation marks

    struct Array
    {
        ArrayBytes bytes;
        const StoredArray* stored;
    };

    const StoredArrays* stored_;
    std::string text_;
    std::vector<std::size_t> places_; ///< of the offsets, one per array
    std::vector<Array> arrays_;
};

/// Which arrays are the active ones: Scalars="T"
std::string activeArrays(vtkDataSetAttributes& data)
{
    std::string attributes;
    for (int type = 0; type < vtkDataSetAttributes::NUM_ATTRIBUTES; ++type)
    {
        vtkAbstractArray* array = data.GetAbstractAttribute(type);
        if (array != nullptr)
        {
            attributes +=
                text(' ', vtkDataSetAttributes::GetAttributeTypeAsString(type), "=\"", escaped(array->GetName()), '"');
        }
    }
    return attributes;
}

/// Numbers in the size that they have in the file.
template <typename Stored, typename NumberOf> ArrayBytes bytesOf(std::size_t count, NumberOf numberOf)
{
    return {count * sizeof(Stored), [numberOf](std::uint64_t first, std::span<std::byte> room)
            {
                std::size_t number = first / sizeof(Stored);
                for (std::size_t i = 0; i < room.size(); i += sizeof(Stored))
                {
                    const auto stored = static_cast<Stored>(numberOf(number++));
                    std::memcpy(room.data() + i, &stored, sizeof stored);
                }
            }};
}

void addCells(Contents& contents, vtkUnsignedCharArray& types, const CellView& cells)
{
    const bool areShort = cells.numberType == VTK_TYPE_INT32;
    const auto add = [&](const char* name, std::size_t count, auto numberOf)
    {
        contents.addArray("Cells", name, text("type=\"", areShort ? "Int32" : "Int64", "\" Name=\"", name, "\""),
                          areShort ? bytesOf<std::int32_t>(count, numberOf) : bytesOf<std::int64_t>(count, numberOf));
    };
    add("connectivity", cells.connectivity.size(), [cells](std::size_t i) { return cells.connectivity[i]; });
    add("offsets", cells.cellCount(), [cells](std::size_t cell) { return cells.offset(cell + 1); }); // their ends
    contents.addArray("Cells", "types", "type=\"UInt8\" Name=\"types\"", memoryOf(types));
}

} // namespace

bool canWriteVtu(vtkUnstructuredGrid& grid)
{
    return grid.GetPoints() != nullptr && canWrite(grid.GetPoints()->GetData()) && canWrite(*grid.GetPointData()) &&
           canWrite(*grid.GetCellData()) && canWrite(*grid.GetFieldData());
}

void writeVtu(vtkUnstructuredGrid& grid, vtkUnsignedCharArray& types, const CellView& cells,
              const std::filesystem::path& path, const FileWriting& writing, const StoredArrays* stored)
{
    Contents contents(stored);
    const bool isCompressed = writing.compression != Compression::none;
    contents.add("<?xml version=\"1.0\"?>");
    contents.add(text("<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"",
                      std::endian::native == std::endian::little ? "LittleEndian" : "BigEndian",
                      "\" header_type=\"UInt64\"", isCompressed ? " compressor=\"vtkZLibDataCompressor\"" : "", ">"));
    contents.add("<UnstructuredGrid>");
    if (grid.GetFieldData()->GetNumberOfArrays() > 0)
    {
        contents.add("<FieldData>");
        contents.addArrays(fieldData, *grid.GetFieldData());
        contents.add("</FieldData>");
    }
    contents.add(text("<Piece NumberOfPoints=\"", grid.GetNumberOfPoints(), "\" NumberOfCells=\"",
                      types.GetNumberOfValues(), "\">"));
    contents.add(text("<PointData", activeArrays(*grid.GetPointData()), ">"));
    contents.addArrays("PointData", *grid.GetPointData());
    contents.add("</PointData>");
    contents.add(text("<CellData", activeArrays(*grid.GetCellData()), ">"));
    contents.addArrays("CellData", *grid.GetCellData());
    contents.add("</CellData>");
    contents.add("<Points>");
    vtkDataArray& points = *grid.GetPoints()->GetData();
    contents.addArray("Points", "Points",
                      text("type=\"", xmlNameOf(points.GetDataType()), "\" Name=\"Points\" NumberOfComponents=\"3\""),
                      memoryOf(points));
    contents.add("</Points>\n<Cells>");
    addCells(contents, types, cells);
    contents.add("</Cells>\n</Piece>\n</UnstructuredGrid>");
    contents.write(path, writing);
}

} // namespace veltrane
