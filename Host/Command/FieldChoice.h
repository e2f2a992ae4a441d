/// Which fields of a file a subcommand works on.
#ifndef VELTRANE_COMMAND_FIELD_CHOICE_H
#define VELTRANE_COMMAND_FIELD_CHOICE_H

#include "MeshFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{

/// Throws InvalidOption if a name is given to an option twice.
void checkRequestedFields(const std::vector<std::string>& names, std::string_view option = "--field");

/// A field and its name in the output.
struct ChosenField
{
    std::string name;
    std::string newName;
};

/// The fields asked for by NAME or NAME=NEWNAME, or else all of them, as chooseFields() finds them. Throws BadFile if
/// two would have the same name in the output.
std::vector<ChosenField> chooseAndRename(const MeshFile& file, const std::vector<std::string>& requested,
                                         std::string_view done);

/// The names of the fields asked for, or else of all floating-point point-data arrays, without those of too many
/// components, which are left out with a warning. Throws BadFile if there is none.
///
/// \param done  what is done with them: "transferred"
std::vector<std::string> chooseFields(const MeshFile& file, const std::vector<std::string>& requested,
                                      std::string_view done);

} // namespace veltrane

#endif
