#include "PieceSummary.h"

#include "FileErrors.h"
#include "Text.h"

#include <vtkNew.h>
#include <vtkXMLDataElement.h>
#include <vtkXMLDataParser.h>
#include <vtkXMLUnstructuredGridReader.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace veltrane
{
namespace
{

std::string escaped(const std::string& words)
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
        default: result += letter;
        }
    }
    return result;
}

/// The arrays of points, cells or positions.
std::string arraysOf(vtkXMLDataElement& piece, const char* place)
{
    vtkXMLDataElement* list = piece.FindNestedElementWithName(place);
    std::string lines = text("    <P", place, ">\n");
    for (int i = 0; list != nullptr && i < list->GetNumberOfNestedElements(); ++i)
    {
        vtkXMLDataElement& array = *list->GetNestedElement(i);
        lines += "      <PDataArray";
        for (const char* attribute : {"type", "Name", "NumberOfComponents"})
        {
            if (const char* value = array.GetAttribute(attribute))
            {
                lines += text(' ', attribute, "=\"", escaped(value), '"');
            }
        }
        lines += "/>\n";
    }
    return lines + text("    </P", place, ">\n");
}

} // namespace

std::string arrayListOf(const std::filesystem::path& piece)
{
    vtkNew<vtkXMLUnstructuredGridReader> reader;
    reader->SetFileName(piece.c_str());
    reader->UpdateInformation();
    vtkXMLDataElement* root = reader->GetXMLParser() == nullptr ? nullptr : reader->GetXMLParser()->GetRootElement();
    vtkXMLDataElement* grid = root == nullptr ? nullptr : root->FindNestedElementWithName("UnstructuredGrid");
    vtkXMLDataElement* content = grid == nullptr ? nullptr : grid->FindNestedElementWithName("Piece");
    if (content == nullptr)
    {
        throw CannotWrite(text("the piece '", piece.string(), "' cannot be read again"));
    }
    return arraysOf(*content, "PointData") + arraysOf(*content, "CellData") + arraysOf(*content, "Points");
}

void writePieceSummary(const std::filesystem::path& path, const std::string& arrayList,
                       const std::vector<std::string>& pieces)
{
    std::ofstream stream(path);
    stream << "<?xml version=\"1.0\"?>\n"
              "<VTKFile type=\"PUnstructuredGrid\" version=\"1.0\" byte_order=\"LittleEndian\" "
              "header_type=\"UInt64\">\n  <PUnstructuredGrid GhostLevel=\"0\">\n"
           << arrayList;
    for (const std::string& piece : pieces)
    {
        stream << "    <Piece Source=\"" << escaped(piece) << "\"/>\n";
    }
    stream << "  </PUnstructuredGrid>\n</VTKFile>\n";
    stream.close();
    if (!stream)
    {
        throw CannotWrite(std::strerror(errno));
    }
}

} // namespace veltrane
