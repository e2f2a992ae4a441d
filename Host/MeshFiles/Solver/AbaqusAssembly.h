/// Puts the mesh of an input deck together from its parts.
#ifndef VELTRANE_HOST_ABAQUS_ASSEMBLY_H
#define VELTRANE_HOST_ABAQUS_ASSEMBLY_H

#include "AbaqusPart.h"
#include "DeckLines.h"
#include "ParsedMesh.h"

#include <map>
#include <string>
#include <vector>

namespace veltrane
{

struct AbaqusDeck
{
    const AbaqusPart* loose = nullptr; ///< what is in no part
    std::map<std::string, const AbaqusPart*> parts{};
    std::vector<Instance> instances{};
    std::vector<const AbaqusPart*> ownParts{}; ///< what the deck says within each instance
    std::vector<std::string> materials{};      ///< in the order in which they are defined
};

/// Throws BadFile, naming the line, for parts and nodes that do not exist.
ParsedMesh assemble(const AbaqusDeck& deck, const DeckLines& lines);

} // namespace veltrane

#endif
