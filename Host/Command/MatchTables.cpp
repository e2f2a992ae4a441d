#include "MatchTables.h"

#include "Text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <locale>
#include <string_view>
#include <utility>

namespace veltrane
{
namespace
{

std::string_view materialRemark(const MeshFile& source, const MeshFile& target)
{
    if (source.materialArray() && target.materialArray())
    {
        return source.hasNamedMaterials() ? ", materials by name" : ", materials by number";
    }
    if (source.materialArray() || target.materialArray())
    {
        return source.materialArray() ? ", materials not regarded: only the source has them"
                                      : ", materials not regarded: only the target has them";
    }
    return "";
}

std::string summarise(const MeshFile& source, const MeshFile& target, std::string_view what, std::size_t matchedCount,
                      std::size_t count)
{
    return text("matched ", matchedCount == count ? "all " : text(matchedCount, " of "), count, " ", what, " of '",
                target.path().string(), "' with those of '", source.path().string(), "'",
                materialRemark(source, target));
}

} // namespace

MatchTable matchNodeTable(const MeshFile& source, const MeshFile& target, const MatchOptions& options)
{
    std::vector<int> sourceNodes = matchNodes(source.mesh(), target.mesh(), options).sourceNodes;
    MatchTable table{.columns = {"target_node", "source_node"}};
    for (std::size_t node = 0; node < sourceNodes.size(); ++node)
    {
        if (sourceNodes[node] != noPartner)
        {
            table.rows.push_back(static_cast<int>(node) + 1);
            table.rows.push_back(sourceNodes[node] + 1);
        }
    }
    table.summary = summarise(source, target, "nodes", table.rows.size() / table.columns.size(), sourceNodes.size());

    static_assert(noPartner + 1 == 0);
    std::ranges::for_each(sourceNodes, [](int& number) { ++number; });
    table.arrays = {{"source_node", ArrayPlace::points, 1, std::move(sourceNodes)}};
    return table;
}

MatchTable matchGaussPointTable(const MeshFile& source, const MeshFile& target, const MatchOptions& options)
{
    const Mesh& mesh = target.mesh();
    const GaussPointMatch match = matchGaussPoints(source.mesh(), mesh, options);
    int mostGaussPoints = 0;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        mostGaussPoints = std::max(mostGaussPoints, mesh.gaussPointCountOf(element));
    }
    const auto rowLength = static_cast<std::size_t>(mostGaussPoints);
    const auto elementCount = static_cast<std::size_t>(mesh.elementCount());
    std::vector<int> sourceElements(elementCount, 0);
    std::vector<int> sourceGaussPoints(elementCount * rowLength, 0);

    MatchTable table{.columns = {"target_element", "target_gauss_point", "source_element", "source_gauss_point"}};
    std::size_t entry = 0;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        for (int gaussPoint = 0; gaussPoint < mesh.gaussPointCountOf(element); ++gaussPoint, ++entry)
        {
            if (match.sourceElements[entry] == noPartner)
            {
                continue;
            }
            const int sourceElement = source.cellOf(match.sourceElements[entry]) + 1;
            const int sourceGaussPoint = match.sourceGaussPoints[entry] + 1;
            const std::array row{target.cellOf(element) + 1, gaussPoint + 1, sourceElement, sourceGaussPoint};
            table.rows.insert(table.rows.end(), row.begin(), row.end());
            const auto index = static_cast<std::size_t>(element);
            sourceElements[index] = sourceElement;
            sourceGaussPoints[index * rowLength + static_cast<std::size_t>(gaussPoint)] = sourceGaussPoint;
        }
    }
    table.summary = summarise(source, target, "Gauss points", table.rows.size() / table.columns.size(), entry);
    table.arrays = {{"source_element", ArrayPlace::cells, 1, std::move(sourceElements)},
                    {"source_gauss_point", ArrayPlace::cells, mostGaussPoints, std::move(sourceGaussPoints)}};
    return table;
}

void writeCsv(const MatchTable& table, const std::filesystem::path& path)
{
    std::ofstream stream(path);
    stream.imbue(std::locale::classic());
    const auto separatorAfter = [&](std::size_t i) { return (i + 1) % table.columns.size() == 0 ? '\n' : ','; };
    for (std::size_t i = 0; i < table.columns.size(); ++i)
    {
        stream << table.columns[i] << separatorAfter(i);
    }
    for (std::size_t i = 0; i < table.rows.size(); ++i)
    {
        stream << table.rows[i] << separatorAfter(i);
    }
    stream.close();
    if (!stream)
    {
        throw CannotWrite(std::strerror(errno));
    }
}

} // namespace veltrane
