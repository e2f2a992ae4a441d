// Files of solvers and of a mesh generator with readers of our own: Gmsh, Abaqus, CalculiX, Nastran.
#include "AbaqusFile.h"
#include "DeckWriting.h"
#include "FormatList.h"
#include "FrdFile.h"
#include "GmshFile.h"
#include "GmshWriting.h"
#include "NastranFile.h"
#include "ParsedGrid.h"

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> gmshEndings{".msh"};
constexpr std::array<std::string_view, 1> abaqusEndings{".inp"};
constexpr std::array<std::string_view, 1> calculixEndings{".frd"};
constexpr std::array<std::string_view, 2> nastranEndings{".bdf", ".nas"};

constexpr int noFields = -1; // for a step that no file has

SourceText open(const std::filesystem::path& path)
{
    return SourceText(path);
}

using StepParser = ParsedMesh (*)(const SourceText& source, std::optional<int> step);
using DeckParser = ParsedMesh (*)(const SourceText& source, FileOpener open);

template <StepParser parse> FileData readStep(const std::filesystem::path& path, const FileReading& reading)
{
    ParsedMesh mesh = parse(SourceText(path), reading.step);
    checkStep(reading, mesh, path);
    return toFileData(std::move(mesh));
}

template <StepParser parse> std::vector<double> readTimes(const std::filesystem::path& path)
{
    return parse(SourceText(path), noFields).times;
}

template <DeckParser parse> FileData readDeck(const std::filesystem::path& path, const FileReading&)
{
    return toFileData(parse(SourceText(path), open));
}

constexpr FormatContents gmshContents{
    .cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true};

} // namespace

constinit const FileFormat formats::gmsh{
    .name = "Gmsh",
    .endings = gmshEndings,
    .reads = gmshContents,
    .writes = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true},
    .read = readStep<parseGmsh>,
    .times = readTimes<parseGmsh>,
    .write = writeGmsh};

constinit const FileFormat formats::calculix{
    .name = "CalculiX result",
    .endings = calculixEndings,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .steps = true},
    .read = readStep<parseFrd>,
    .times = readTimes<parseFrd>};

constinit const FileFormat formats::abaqus{.name = "Abaqus or CalculiX input",
                                           .endings = abaqusEndings,
                                           .reads = {.cells = true, .materials = true},
                                           .writes = {.nodalFields = true},
                                           .isInclude = true,
                                           .read = readDeck<parseAbaqus>,
                                           .write = writeDeck};

constinit const FileFormat formats::nastran{.name = "Nastran bulk data",
                                            .endings = nastranEndings,
                                            .reads = {.cells = true, .materials = true},
                                            .read = readDeck<parseNastran>};

} // namespace veltrane
