/// Meshes in bulk data of Nastran (.bdf, .nas): cards in small, large and free fields.
#ifndef VELTRANE_HOST_NASTRAN_FILE_H
#define VELTRANE_HOST_NASTRAN_FILE_H

#include "DeckLines.h"
#include "ParsedMesh.h"

namespace veltrane
{

/// The volume elements with the numbers of their properties as materials, and all nodes, in the basic coordinate
/// system.
///
/// \param open  for the files that are included
///
/// Throws BadFile, naming the line.
ParsedMesh parseNastran(const SourceText& source, FileOpener open);

} // namespace veltrane

#endif
