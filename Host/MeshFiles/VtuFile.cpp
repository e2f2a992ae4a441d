#include "VtuFile.h"

#include "StoredArray.h"
#include "ThreadWorkers.h"
#include "XmlNumberTypes.h"
#include "XmlText.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkStringArray.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <charconv>
#include <climits>
#include <cstring>
#include <set>
#include <string>

namespace veltrane
{
namespace
{

/// Thrown for whatever is left to VTK's reader.
struct NotUsual
{
};

void require(bool condition)
{
    if (!condition)
    {
        throw NotUsual();
    }
}

std::uint64_t numberOf(const std::string& digits)
{
    std::uint64_t number = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, failure] = std::from_chars(digits.data(), end, number);
    require(failure == std::errc() && stop == end);
    return number;
}

std::uint64_t numberOf(const XmlElement& element, std::string_view attribute)
{
    const std::string* digits = element.attribute(attribute);
    require(digits != nullptr);
    return numberOf(*digits);
}

std::uint64_t countOf(const XmlElement& element, std::string_view attribute)
{
    const std::uint64_t count = numberOf(element, attribute);
    require(count <= INT_MAX);
    return count;
}

/// Attributes of other names may mean anything.
void requireOnly(const XmlElement& element, std::initializer_list<std::string_view> names)
{
    for (const auto& [name, value] : element.attributes)
    {
        require(std::ranges::find(names, name) != names.end());
    }
}

const XmlElement& onlyChild(const XmlElement& element, std::string_view name)
{
    require(element.children.size() == 1 && element.children.front().name == name);
    return element.children.front();
}

/// What VTK's readers do not look for: the end of a file with appended arrays.
void requireEnd(const ReadFile& file)
{
    constexpr std::uint64_t mostSize = 256; // of the closing tags with all blanks around them
    std::string tail(static_cast<std::size_t>(std::min(mostSize, file.size())), ' ');
    require(file.read(file.size() - tail.size(), std::as_writable_bytes(std::span(tail))));
    const std::size_t tag = tail.rfind("</AppendedData>");
    require(tag != std::string::npos && tail.find("</VTKFile>", tag) != std::string::npos);
}

/// The text of a file up to the appended arrays, and where these begin.
struct Head
{
    std::string text;
    std::optional<StoredBytes> appended{}; ///< from the first array on
};

constexpr std::string_view appendedTag = "<AppendedData";

/// Reads as much of the file as it takes.
Head readHead(const ReadFile& file)
{
    constexpr std::uint64_t firstSize = std::uint64_t{1} << 16;
    Head head;
    std::size_t tag = std::string::npos;
    for (std::uint64_t size = std::min(firstSize, file.size());; size = std::min(2 * size, file.size()))
    {
        const std::size_t before = head.text.size();
        head.text.resize(static_cast<std::size_t>(size));
        require(file.read(before, std::as_writable_bytes(std::span(head.text)).subspan(before)));
        tag = head.text.find(appendedTag, before - std::min(before, appendedTag.size()));
        constexpr std::size_t tagRoom = 200; // for its end and for what stands in front of the arrays
        if (size == file.size() || (tag != std::string::npos && tag + tagRoom < size))
        {
            break;
        }
    }
    if (tag == std::string::npos)
    {
        return head;
    }
    const std::size_t tagEnd = head.text.find('>', tag);
    require(tagEnd != std::string::npos);
    const std::size_t mark = head.text.find_first_not_of(" \t\r\n", tagEnd + 1);
    require(mark != std::string::npos && head.text[mark] == '_');
    const auto element = parseXml(head.text.substr(tag, tagEnd - tag) + "/>");
    require(element && element->attribute("encoding") != nullptr && element->attributes.size() == 1);
    const std::string& encoding = *element->attribute("encoding");
    require(encoding == "raw" || encoding == "base64");
    requireEnd(file);
    head.appended = StoredBytes{.file = &file, .place = mark + 1, .isBase64 = encoding == "base64"};
    head.text.resize(tag);
    head.text += "</VTKFile>";
    return head;
}

class Reader
{
public:
    Reader(const std::filesystem::path& path, int threads) : file_(path), workers_(threads) {}

    VtuContents read()
    {
        require(file_.size() > 0);
        head_ = readHead(file_);
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
            data.AddArray(readArray(child, tupleCount ? *tupleCount : numberOf(child, "NumberOfTuples")));
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

    StoredArray find(const XmlElement& element) const
    {
        const std::string* format = element.attribute("format");
        require(format != nullptr);
        std::optional<StoredArray> array;
        if (*format == "appended")
        {
            require(head_.appended.has_value());
            const std::uint64_t offset = numberOf(element, "offset");
            require(offset < file_.size());
            StoredBytes bytes = *head_.appended;
            bytes.place += offset; // in letters if there are letters
            array = StoredArray::find(bytes, form_);
        }
        else
        {
            require(*format == "binary" && element.attribute("offset") == nullptr);
            constexpr std::string_view blanks = " \t\r\n";
            std::string_view letters = element.text;
            letters.remove_prefix(std::min(letters.find_first_not_of(blanks), letters.size()));
            letters = letters.substr(0, letters.find_last_not_of(blanks) + 1);
            array = StoredArray::find({.letters = letters, .isBase64 = true}, form_);
        }
        require(array.has_value());
        return *array;
    }

    /// What VTK writes beside an array can be found again in its values.
    static void requireRangesOnly(const XmlElement& element)
    {
        for (const XmlElement& key : element.children)
        {
            const std::string* name = key.attribute("name");
            require(key.name == "InformationKey" && name != nullptr &&
                    (*name == "L2_NORM_RANGE" || *name == "L2_NORM_FINITE_RANGE" || *name == "COMPONENT_RANGE"));
        }
    }

    vtkSmartPointer<vtkAbstractArray> readArray(const XmlElement& element, std::uint64_t tupleCount)
    {
        requireRangesOnly(element);
        const std::string* typeName = element.attribute("type");
        require(typeName != nullptr);
        const bool hasIds = element.attribute("IdType") != nullptr && *element.attribute("IdType") == "1";
        require(hasIds || element.attribute("IdType") == nullptr);
        const int type = vtkTypeOf(*typeName);
        require(!hasIds || xmlNameOf(VTK_ID_TYPE) == *typeName);
        const std::uint64_t componentCount =
            element.attribute("NumberOfComponents") == nullptr ? 1 : countOf(element, "NumberOfComponents");
        require(componentCount > 0 && componentCount <= 1000000);
        const StoredArray stored = find(element);
        if (type == VTK_STRING)
        {
            require(componentCount == 1);
            return named(*readStrings(stored, tupleCount), element);
        }
        require(type != VTK_VOID);
        const auto array =
            vtkSmartPointer<vtkDataArray>::Take(vtkDataArray::CreateDataArray(hasIds ? VTK_ID_TYPE : type));
        const std::uint64_t valueSize = static_cast<std::uint64_t>(array->GetDataTypeSize());
        require(tupleCount <= stored.size() / valueSize / componentCount &&
                tupleCount * componentCount * valueSize == stored.size());
        array->SetNumberOfComponents(static_cast<int>(componentCount));
        array->SetNumberOfTuples(static_cast<vtkIdType>(tupleCount));
        if (stored.size() > 0)
        {
            require(stored.read({static_cast<std::byte*>(array->GetVoidPointer(0)), stored.size()}, workers_));
        }
        return named(*array, element);
    }

    static vtkSmartPointer<vtkAbstractArray> named(vtkAbstractArray& array, const XmlElement& element)
    {
        constexpr std::string_view componentName = "ComponentName";
        for (const auto& [name, value] : element.attributes)
        {
            if (name == "Name")
            {
                array.SetName(value.c_str());
            }
            else if (name.starts_with(componentName))
            {
                const std::uint64_t component = numberOf(name.substr(componentName.size()));
                require(component < static_cast<std::uint64_t>(array.GetNumberOfComponents()));
                array.SetComponentName(static_cast<vtkIdType>(component), value.c_str());
            }
            else
            {
                constexpr std::array<std::string_view, 8> others{"type",           "IdType",  "NumberOfComponents",
                                                                 "NumberOfTuples", "format",  "offset",
                                                                 "RangeMin",       "RangeMax"};
                require(std::ranges::find(others, name) != others.end());
            }
        }
        return &array;
    }

    vtkSmartPointer<vtkStringArray> readStrings(const StoredArray& stored, std::uint64_t count)
    {
        std::string bytes(static_cast<std::size_t>(stored.size()), '\0');
        require(stored.read(std::as_writable_bytes(std::span(bytes)), workers_));
        require(static_cast<std::uint64_t>(std::ranges::count(bytes, '\0')) == count);
        require(bytes.empty() || bytes.back() == '\0');
        const auto strings = vtkSmartPointer<vtkStringArray>::New();
        for (std::size_t begin = 0; begin < bytes.size(); begin += std::strlen(bytes.c_str() + begin) + 1)
        {
            strings->InsertNextValue(bytes.c_str() + begin);
        }
        return strings;
    }

    void readPoints(const XmlElement& element, std::uint64_t pointCount)
    {
        const vtkSmartPointer<vtkDataArray> array = vtkDataArray::SafeDownCast(readArray(element, pointCount));
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
        contents_.types = vtkUnsignedCharArray::SafeDownCast(readArray(*arrays[2], cellCount));
        require(contents_.types != nullptr);
        const unsigned char* types = contents_.types->GetPointer(0);
        require(std::find(types, types + cellCount, VTK_POLYHEDRON) == types + cellCount);
        CellTable& cells = contents_.cells;
        cells.numberType = wholeNumberTypeOf(*arrays[0]);
        require(cells.numberType == wholeNumberTypeOf(*arrays[1])); // as VTK has it
        const StoredArray offsets = find(*arrays[1]);
        const std::size_t valueSize = cells.numberType == VTK_TYPE_INT32 ? 4 : 8;
        require(offsets.size() == cellCount * valueSize);
        cells.offsets.resize(static_cast<std::size_t>(cellCount) + 1);
        readNumbers(offsets, valueSize, std::span(cells.offsets).subspan(1));
        require(std::ranges::is_sorted(cells.offsets));
        const StoredArray connectivity = find(*arrays[0]);
        require(connectivity.size() / valueSize == cells.offsets.back() && connectivity.size() % valueSize == 0);
        cells.connectivity.resize(cells.offsets.back());
        readNumbers(connectivity, valueSize, std::span(cells.connectivity));
    }

    static int wholeNumberTypeOf(const XmlElement& element)
    {
        const std::string* type = element.attribute("type");
        require(type != nullptr && (*type == "Int32" || *type == "Int64"));
        return *type == "Int32" ? VTK_TYPE_INT32 : VTK_TYPE_INT64;
    }

    /// Numbers from 0 on of one size, in another.
    template <typename Number>
    void readNumbers(const StoredArray& stored, std::size_t storedSize, std::span<Number> numbers)
    {
        if (storedSize == sizeof(Number) && std::endian::native == std::endian::little)
        {
            require(stored.read(std::as_writable_bytes(numbers), workers_));
            return;
        }
        storedSize == 4 ? convert<std::int32_t>(stored, numbers) : convert<std::int64_t>(stored, numbers);
    }

    template <typename Stored, typename Number> void convert(const StoredArray& stored, std::span<Number> numbers)
    {
        std::atomic<bool> doAllFit = true;
        const auto visit = [&](std::uint64_t first, std::span<const std::byte> bytes)
        {
            Stored bits = 0;
            for (std::size_t i = 0; i < bytes.size() / sizeof(Stored); ++i)
            {
                Stored number = 0;
                std::memcpy(&number, bytes.data() + i * sizeof(Stored), sizeof(Stored));
                bits |= number;
                numbers[first / sizeof(Stored) + i] = static_cast<Number>(number);
            }
            if (bits < 0 || bits > INT_MAX)
            {
                doAllFit = false;
            }
        };
        require(stored.visit(workers_, visit) && doAllFit);
    }

    ReadFile file_;
    ThreadWorkers workers_;
    Head head_;
    StorageForm form_{};
    VtuContents contents_{};
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
