/// Meshes in input decks of Abaqus and CalculiX (.inp).
#ifndef VELTRANE_HOST_ABAQUS_FILE_H
#define VELTRANE_HOST_ABAQUS_FILE_H

#include "DeckLines.h"
#include "ParsedMesh.h"

namespace veltrane
{

/// The mesh of a deck, of its parts at the places of their instances.
///
/// Materials are those of the sections, numbered as the deck defines them, as CalculiX numbers them in its results. A
/// deck without sections has its element sets as materials, in the order of their elements: for each element the first
/// set that lists it and not all others, or else the one of its own.
///
/// \param open  for the files that are included
///
/// Throws BadFile, naming the line.
ParsedMesh parseAbaqus(const SourceText& source, FileOpener open);

} // namespace veltrane

#endif
