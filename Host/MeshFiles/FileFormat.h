/// The formats of mesh and point files behind one interface.
///
/// A format is one file in Formats/, which defines a `constinit const FileFormat`, and one line in FormatList.h. What
/// it reads becomes a data set of VTK, in which everything has the same place whatever file it comes from, and from
/// which everything is written:
///
/// | in the file                  | in the data set                                                                  |
/// |------------------------------|----------------------------------------------------------------------------------|
/// | nodes                        | points, in double precision if the file has them so                              |
/// | elements                     | cells with the order of nodes that VTK has                                       |
/// | groups, parts, materials     | cell data `material`, whole numbers; names of theirs by setGroupNames()          |
/// | values at nodes              | point data, float or double as in the file; NaN at nodes without a value         |
/// | values per element           | cell data; NaN in elements without a value                                       |
/// | values at Gauss points       | field data with the offsets and schemes of VTK's convention, see GaussArrays.h   |
/// | what has no such place       | nothing; it is named in FileData::leftOut                                        |
///
/// Functions of a format throw BadFile with one sentence that names the file and what is wrong where (for text files
/// the line). They are called with the path of a regular file that can be opened, and std::bad_alloc and
/// std::length_error are turned into a BadFile by the caller. Readers of VTK run in guarded(), see ReadingGuard.h.
#ifndef VELTRANE_HOST_FILE_FORMAT_H
#define VELTRANE_HOST_FILE_FORMAT_H

#include "Compression.h"
#include "Step.h"

#include <vtkSmartPointer.h>

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class vtkPointSet;

namespace veltrane
{

/// What files of a format hold, as far as it is read or written here; the table in Documentation/Formats.md.
struct FormatContents
{
    bool cells = false; ///< elements, not only points
    bool materials = false;
    bool nodalFields = false;
    bool cellFields = false;
    bool gaussFields = false;
    bool steps = false; ///< several in one file
};

/// What has been left out because it has no place: "the field 'STRESS' at the nodes of elements".
using LeftOut = std::vector<std::string>;

/// What has been read from a file.
struct FileData
{
    vtkSmartPointer<vtkPointSet> dataSet; ///< a vtkUnstructuredGrid if the file has cells
    LeftOut leftOut{};
};

struct FileReading
{
    std::optional<int> step{}; ///< from 0; the last one if none is given
    int threads = 1;           ///< 0: as many as usableThreadCount() tells
    int piece = 0;             ///< of a file in pieces: the share with this number
    int pieceCount = 1;        ///< if it is divided into so many
};

/// A format; functions are null for what is not done with it.
struct FileFormat
{
    std::string_view name;                       ///< for `info` and messages: "Exodus"
    std::span<const std::string_view> endings{}; ///< of file names, in small letters; the usual one first

    /// Whether a file name in small letters is one of this format though it has none of the endings.
    bool (*isNamed)(std::string_view name) = nullptr;

    FormatContents reads{};
    FormatContents writes{};
    bool isCompressed = false; ///< whether FileWriting::compression has an effect
    bool mayBeEmpty = false;   ///< files that only stand for others beside them
    bool isInclude = false;    ///< what is written are values for a solver's own file of the same mesh

    FileData (*read)(const std::filesystem::path& path, const FileReading& reading) = nullptr;

    /// The times of the steps in a file; none if it has no steps.
    std::vector<double> (*times)(const std::filesystem::path& path) = nullptr;

    /// The steps of files that are lists of other files; these have no other function but this one.
    std::vector<Step> (*steps)(const std::filesystem::path& path) = nullptr;

    /// Throws CannotWrite with nothing but the reason. Tells what the file cannot hold.
    LeftOut (*write)(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing) = nullptr;

    /// Why files of this format are not read and what can be done: "... ; meshio converts them". Without any function.
    std::string_view refusal{};
};

/// By the ending in small or capital letters, the longest if several fit; null for other names.
const FileFormat* formatOf(const std::filesystem::path& path);

/// All of them, those first that are named first in messages.
std::span<const FileFormat* const> allFormats();

bool isMeshInput(const FileFormat* format);
bool isPointInput(const FileFormat* format);
bool isMeshOutput(const FileFormat* format);
bool isPointOutput(const FileFormat* format);
bool isTable(const FileFormat* format); ///< .csv

/// Whether it lists other files; of such formats one can be written, ParaView's collections.
bool isCollection(const FileFormat* format);
bool isCollectionOutput(const FileFormat* format);

/// ".vtu, .vtk or .e" of the formats that fulfil a condition, for messages and help texts.
std::string endingsOf(bool (*condition)(const FileFormat*));

/// The index of a step that is wanted among those of a file, the last one if none is. Nothing of a file without steps.
/// Throws BadFile if there is no such step.
std::optional<int> chosenStep(const FileReading& reading, std::size_t stepCount, const std::filesystem::path& path);

} // namespace veltrane

#endif
