// Trees of blocks in VTK's XML files (.vtm, .vtmb), which name the files that the blocks are in.
#include "BlockJoining.h"
#include "FormatList.h"
#include "VtkReading.h"

#include <vtkPointSet.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLUtilities.h>

#include <array>
#include <string>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 2> endings{".vtm", ".vtmb"};

/// The leaves of a tree in their order.
class Leaves
{
public:
    Leaves(const std::filesystem::path& path, const FileReading& reading) : path_(path), reading_(reading) {}

    void add(vtkXMLDataElement& branch, const std::string& branchName)
    {
        for (int i = 0; i < branch.GetNumberOfNestedElements(); ++i)
        {
            vtkXMLDataElement& entry = *branch.GetNestedElement(i);
            const char* givenName = entry.GetAttribute("name");
            const std::string name = givenName == nullptr ? branchName : givenName;
            const std::string_view kind = entry.GetName();
            if (kind == "DataSet" && entry.GetAttribute("file") != nullptr)
            {
                addFile(path_.parent_path() / entry.GetAttribute("file"), name);
            }
            else if (kind == "Block" || kind == "Piece")
            {
                add(entry, name);
            }
        }
    }

    const std::vector<Block>& blocks() const { return blocks_; }

private:
    void addFile(const std::filesystem::path& file, const std::string& name)
    {
        checkReadable(file);
        const FileFormat* format = formatOf(file);
        if (!isPointInput(format) || format == &formats::multiBlock)
        {
            throw BadFile(text("cannot read ", quoted(path_), ": it names ", quoted(file), ", which is no mesh file"));
        }
        const FileData data = format->read(file, reading_);
        if (data.dataSet->GetNumberOfCells() > 0)
        {
            blocks_.push_back({name, toGrid(*data.dataSet)});
        }
    }

    const std::filesystem::path& path_;
    const FileReading& reading_;
    std::vector<Block> blocks_;
};

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    const VtkMessages messages;
    const GuardedObject<vtkXMLDataElement> root(
        vtkSmartPointer<vtkXMLDataElement>::Take(
            guarded(path, [&] { return vtkXMLUtilities::ReadElementFromFile(path.c_str()); })),
        path);
    vtkXMLDataElement* tree = root.get() == nullptr ? nullptr : root->FindNestedElementWithName("vtkMultiBlockDataSet");
    if (tree == nullptr)
    {
        throw BadFile(text("cannot read ", quoted(path), ": ",
                           messages.errors().empty() ? "it is not a tree of blocks" : messages.errors().front()));
    }
    Leaves leaves(path, reading);
    leaves.add(*tree, "");
    if (leaves.blocks().empty())
    {
        throw BadFile(text(quoted(path), " has no cells"));
    }
    return {joinBlocks(leaves.blocks())};
}

} // namespace

constinit const FileFormat formats::multiBlock{
    .name = "VTK blocks",
    .endings = endings,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true},
    .read = read};

} // namespace veltrane
