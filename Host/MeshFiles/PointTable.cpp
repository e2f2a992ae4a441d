#include "PointTable.h"

#include "DataSetReader.h"
#include "ReadingGuard.h"
#include "TableText.h"
#include "Text.h"
#include "VtkMessages.h"

#include <vtkDataArray.h>
#include <vtkDelimitedTextReader.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkTable.h>
#include <vtkVariant.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <limits>
#include <locale>
#include <set>

namespace veltrane
{
namespace
{

using CoordinateNames = std::array<const char*, 3>;

constexpr std::array<CoordinateNames, 4> coordinateNames{
    {{"x", "y", "z"}, {"X", "Y", "Z"}, {"Points:0", "Points:1", "Points:2"}, {"Points_0", "Points_1", "Points_2"}}};

vtkSmartPointer<vtkTable> readTable(const std::string& content, const std::filesystem::path& path, bool onlyFirstLine)
{
    const VtkMessages messages;
    vtkNew<vtkDelimitedTextReader> reader;
    reader->SetReadFromInputString(true);
    reader->SetInputString(content);
    reader->SetFieldDelimiterCharacters(",");
    reader->SetHaveHeaders(!onlyFirstLine);
    reader->SetMaxRecords(onlyFirstLine ? 1 : 0);
    reader->SetDetectNumericColumns(!onlyFirstLine);
    reader->SetTrimWhitespacePriorToNumericConversion(true);
    reader->SetForceDouble(true); // a column of whole numbers has no mark for a missing one
    reader->SetDefaultDoubleValue(std::numeric_limits<double>::quiet_NaN());
    guarded(path, [&] { reader->Update(); });
    if (const auto reason = messages.failureReason(reader->GetErrorCode()))
    {
        throw BadFile(text("cannot read ", quoted(path), ": ", *reason));
    }
    return reader->GetOutput();
}

/// VTK keeps the last one of columns of the same name.
void checkColumnNames(const std::string& content, const std::filesystem::path& path)
{
    const auto firstLine = readTable(content, path, true);
    std::set<std::string> names;
    for (vtkIdType column = 0; column < firstLine->GetNumberOfColumns(); ++column)
    {
        const std::string name = firstLine->GetValue(0, column).ToString();
        if (!names.insert(name).second)
        {
            throw BadFile(text(quoted(path), " has two columns of the name '", name, "'"));
        }
    }
}

/// VTK makes columns shorter where the last lines are.
void checkColumnLengths(vtkTable& table, const std::filesystem::path& path)
{
    for (vtkIdType column = 0; column < table.GetNumberOfColumns(); ++column)
    {
        const vtkIdType length = table.GetColumn(column)->GetNumberOfTuples();
        if (length != table.GetNumberOfRows())
        {
            throw BadFile(text(quoted(path), ": the line of point ", std::min(length, table.GetNumberOfRows()),
                               " has not as many columns as the first line"));
        }
    }
}

const CoordinateNames& findCoordinates(vtkTable& table, const std::filesystem::path& path)
{
    for (const CoordinateNames& names : coordinateNames)
    {
        int foundCount = 0;
        for (const char* name : names)
        {
            foundCount += table.GetColumnByName(name) != nullptr ? 1 : 0;
        }
        if (foundCount == 3)
        {
            return names;
        }
    }
    throw BadFile(text(quoted(path), " has no columns x, y and z; its first line must name the columns"));
}

/// The first value of a column that is no number, for the message.
[[noreturn]] void refuseColumn(vtkTable& table, const char* name, const std::filesystem::path& path)
{
    for (vtkIdType row = 0; row < table.GetNumberOfRows(); ++row)
    {
        const vtkVariant value = table.GetValueByName(row, name);
        bool isNumber = false;
        value.ToDouble(&isNumber);
        if (!isNumber)
        {
            throw BadFile(text(quoted(path), ": ", name, " of point ", row, " is '", value.ToString(),
                               "', which is not a number"));
        }
    }
    throw BadFile(text(quoted(path), ": the column ", name, " is not of numbers"));
}

vtkSmartPointer<vtkPoints> pointsOf(vtkTable& table, const std::filesystem::path& path)
{
    const CoordinateNames& names = findCoordinates(table, path);
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    points->SetNumberOfPoints(table.GetNumberOfRows());
    for (int axis = 0; axis < 3; ++axis)
    {
        const char* name = names[static_cast<std::size_t>(axis)];
        vtkDataArray* column = vtkArrayDownCast<vtkDataArray>(table.GetColumnByName(name));
        if (column == nullptr)
        {
            refuseColumn(table, name, path);
        }
        for (vtkIdType row = 0; row < table.GetNumberOfRows(); ++row)
        {
            points->GetData()->SetComponent(row, axis, column->GetComponent(row, 0));
        }
    }
    for (const char* name : names)
    {
        table.RemoveColumnByName(name);
    }
    return points;
}

/// The fewest digits that give the same number again.
template <typename Number> std::string digitsOf(Number number)
{
    std::array<char, 64> digits{};
    const std::to_chars_result end = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return std::string(digits.data(), end.ptr);
}

std::string valueText(vtkAbstractArray& array, vtkIdType index)
{
    const vtkVariant value = array.GetVariantValue(index);
    switch (array.GetDataType())
    {
    case VTK_FLOAT: return digitsOf(value.ToFloat());
    case VTK_DOUBLE: return digitsOf(value.ToDouble());
    case VTK_CHAR: // would be taken for letters
    case VTK_SIGNED_CHAR:
    case VTK_UNSIGNED_CHAR: return std::to_string(value.ToInt());
    default: return value.ToString();
    }
}

/// A cell of the table, in quotation marks if a delimiter would break it.
std::string cellText(const std::string& value)
{
    if (value.find_first_of(",\"\n") == std::string::npos)
    {
        return value;
    }
    std::string marked = "\"";
    for (const char letter : value)
    {
        marked += letter == '"' ? std::string("\"\"") : std::string(1, letter);
    }
    return marked + "\"";
}

void writeColumnNames(std::ostream& stream, vtkPointData& pointData)
{
    stream << "x,y,z";
    for (int i = 0; i < pointData.GetNumberOfArrays(); ++i)
    {
        vtkAbstractArray& array = *pointData.GetAbstractArray(i);
        const std::string name = array.GetName() == nullptr ? "" : array.GetName();
        for (int component = 0; component < array.GetNumberOfComponents(); ++component)
        {
            stream << ',' << cellText(array.GetNumberOfComponents() == 1 ? name : text(name, ":", component));
        }
    }
    stream << '\n';
}

} // namespace

vtkSmartPointer<vtkPolyData> readPointTable(const std::filesystem::path& path)
{
    const std::string content = readTableText(path);
    checkColumnNames(content, path);
    const auto table = readTable(content, path, false);
    checkColumnLengths(*table, path);
    vtkNew<vtkPolyData> points;
    points->SetPoints(pointsOf(*table, path));
    for (vtkIdType column = 0; column < table->GetNumberOfColumns(); ++column)
    {
        points->GetPointData()->AddArray(table->GetColumn(column));
    }
    return points;
}

void writePointTable(vtkPointSet& points, const std::filesystem::path& path)
{
    std::ofstream stream(path);
    stream.imbue(std::locale::classic());
    vtkPointData& pointData = *points.GetPointData();
    writeColumnNames(stream, pointData);
    for (vtkIdType point = 0; point < points.GetNumberOfPoints() && stream; ++point)
    {
        vtkDataArray& coordinates = *points.GetPoints()->GetData();
        for (int axis = 0; axis < 3; ++axis)
        {
            stream << (axis == 0 ? "" : ",") << valueText(coordinates, 3 * point + axis);
        }
        for (int i = 0; i < pointData.GetNumberOfArrays(); ++i)
        {
            vtkAbstractArray& array = *pointData.GetAbstractArray(i);
            const int componentCount = array.GetNumberOfComponents();
            for (int component = 0; component < componentCount; ++component)
            {
                stream << ',' << cellText(valueText(array, point * componentCount + component));
            }
        }
        stream << '\n';
    }
    stream.close();
    if (!stream)
    {
        throw CannotWrite(std::strerror(errno));
    }
}

} // namespace veltrane
