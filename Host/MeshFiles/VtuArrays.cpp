#include "VtuArrays.h"

#include "ThreadWorkers.h"
#include "XmlNumberTypes.h"

#include <vtkDataArray.h>
#include <vtkStringArray.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <climits>
#include <cstring>
#include <optional>
#include <string>

namespace veltrane
{
namespace
{

vtkSmartPointer<vtkAbstractArray> named(vtkAbstractArray& array, const XmlElement& element)
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
            constexpr std::array<std::string_view, 8> others{"type",   "IdType", "NumberOfComponents", "NumberOfTuples",
                                                             "format", "offset", "RangeMin",           "RangeMax"};
            require(std::ranges::find(others, name) != others.end());
        }
    }
    return &array;
}

} // namespace

void requireRangesOnly(const XmlElement& element)
{
    for (const XmlElement& key : element.children)
    {
        const std::string* name = key.attribute("name");
        require(key.name == "InformationKey" && name != nullptr &&
                (*name == "L2_NORM_RANGE" || *name == "L2_NORM_FINITE_RANGE" || *name == "COMPONENT_RANGE"));
    }
}

StoredArray VtuArrays::find(const XmlElement& element, std::string_view part)
{
    const std::string* format = element.attribute("format");
    require(format != nullptr);
    std::optional<StoredArray> array;
    if (*format == "appended")
    {
        require(head_.appended.has_value());
        const std::uint64_t offset = numberOf(element, "offset");
        require(offset < head_.appended->file->size());
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
    if (const std::string* name = element.attribute("Name"))
    {
        stored_.add(part, *name, *array);
    }
    return *array;
}

vtkSmartPointer<vtkAbstractArray> VtuArrays::read(const XmlElement& element, std::uint64_t tupleCount,
                                                  std::string_view part)
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
    const StoredArray stored = find(element, part);
    if (type == VTK_STRING)
    {
        require(componentCount == 1);
        return named(*readStrings(stored, tupleCount), element);
    }
    require(type != VTK_VOID);
    const auto array = vtkSmartPointer<vtkDataArray>::Take(vtkDataArray::CreateDataArray(hasIds ? VTK_ID_TYPE : type));
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

vtkSmartPointer<vtkStringArray> VtuArrays::readStrings(const StoredArray& stored, std::uint64_t count)
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

template <typename Stored, typename Number>
void VtuArrays::convert(const StoredArray& stored, std::span<Number> numbers)
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

template <typename Number>
void VtuArrays::convertNumbers(const StoredArray& stored, std::size_t storedSize, std::span<Number> numbers)
{
    if (storedSize == sizeof(Number) && std::endian::native == std::endian::little)
    {
        require(stored.read(std::as_writable_bytes(numbers), workers_));
        return;
    }
    storedSize == 4 ? convert<std::int32_t>(stored, numbers) : convert<std::int64_t>(stored, numbers);
}

void VtuArrays::readNumbers(const StoredArray& stored, std::size_t storedSize, std::span<int> numbers)
{
    convertNumbers(stored, storedSize, numbers);
}

void VtuArrays::readNumbers(const StoredArray& stored, std::size_t storedSize, std::span<std::size_t> numbers)
{
    convertNumbers(stored, storedSize, numbers);
}

} // namespace veltrane
