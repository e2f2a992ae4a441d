/// What is in a file, without making anything of it.
#ifndef VELTRANE_HOST_FILE_CONTENTS_H
#define VELTRANE_HOST_FILE_CONTENTS_H

#include "FileErrors.h"
#include "FileFormat.h"
#include "GroupNames.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

struct ArrayContents
{
    std::string name;
    std::string type; ///< of VTK: "double"
    int componentCount;
    long long tupleCount;
    double min; ///< over all components; not a number if there are no numbers
    double max;
    long long notANumberCount; ///< among all components
};

/// Cells of one name.
struct CellContents
{
    std::string name; ///< "tetrahedron"
    std::string plural;
    long long count;
};

struct FileContents
{
    std::string format; ///< "Exodus"
    long long pointCount;
    long long cellCount;
    std::vector<CellContents> cells;
    double min[3];
    double max[3];
    std::vector<ArrayContents> pointArrays;
    std::vector<ArrayContents> cellArrays;
    std::vector<ArrayContents> otherArrays; ///< of neither points nor cells
    std::optional<std::string> materialArray;
    GroupNames materialNames; ///< of the materials that have any
    std::vector<double> stepTimes;
    LeftOut leftOut;
};

/// Of what has been read from a file. Throws BadFile if its arrays do not fit, or if it is broken: cells
/// that refer to no points, coordinates that are no numbers.
FileContents describeContents(const FileData& data, const std::filesystem::path& path);

/// Of a mesh file or a point file. Throws NoInput or BadFile, naming the file and what is wrong.
FileContents readContents(const std::filesystem::path& path);

} // namespace veltrane

#endif
