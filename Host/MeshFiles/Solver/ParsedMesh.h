/// What a file of a solver or a mesh generator holds, whatever its format.
#ifndef VELTRANE_HOST_PARSED_MESH_H
#define VELTRANE_HOST_PARSED_MESH_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace veltrane
{

/// Values at all nodes or all cells, row after row; not a number where the file has none.
struct ParsedField
{
    std::string name;
    int componentCount;
    std::vector<double> values;
    bool isPerCell = false;
};

struct ParsedMesh
{
    std::vector<long long> nodeNumbers{}; ///< the file's own
    std::vector<double> coordinates{};    ///< x, y, z of each node
    /// Which instance each node belongs to; empty if their numbers alone tell nodes apart.
    std::vector<int> nodeInstances{};
    std::vector<std::string> instanceNames{};

    std::vector<unsigned char> cellTypes{};   ///< of VTK, as is the order of the nodes
    std::vector<std::int64_t> offsets{0};     ///< where each cell's nodes begin, and the end
    std::vector<std::int64_t> connectivity{}; ///< places of the nodes in the lists above, from 0
    std::vector<long long> cellNumbers{};     ///< the file's own
    std::vector<int> materials{};             ///< per cell; empty if the file tells none apart
    std::map<int, std::string> materialNames{};
    /// Names of groups of cells of lower dimensions, whose numbers stand among the materials, too.
    std::map<std::pair<int, int>, std::string> lowerGroupNames{};

    std::vector<ParsedField> fields{};  ///< of one step
    std::vector<double> times{};        ///< of all steps
    std::vector<std::string> leftOut{}; ///< what the file has beside that: "element set 'BOLTS' of springs"
};

} // namespace veltrane

#endif
