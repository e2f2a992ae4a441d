/// Fields as values in the input decks of Abaqus and CalculiX.
#ifndef VELTRANE_HOST_DECK_WRITING_H
#define VELTRANE_HOST_DECK_WRITING_H

#include "FileFormat.h"

namespace veltrane
{

/// Writes a file that a deck includes, with the numbers that the nodes have in the deck: a field of one component as
/// temperatures (*TEMPERATURE), fields of three components as forces (*CLOAD). Nodes without a value are left out.
/// Throws CannotWrite with nothing but the reason, also if there is no such field or more than one of temperatures.
LeftOut writeDeck(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing);

} // namespace veltrane

#endif
