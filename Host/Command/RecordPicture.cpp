#include "RecordPicture.h"

#include "TransferPicture.h"

#include <optional>

namespace veltrane
{
namespace
{

std::optional<std::size_t> chooseField(const TransferRecord& record)
{
    std::optional<std::size_t> chosen;
    for (std::size_t i = record.sourceFields.size(); i-- > 0;)
    {
        const Field& source = record.sourceFields[i];
        const bool isAtNodes =
            source.location() == Location::nodes && record.result.fields[i].location() == Location::nodes;
        const bool isBetter =
            !chosen || source.componentCount() == 1 || record.sourceFields[*chosen].componentCount() != 1;
        if (isAtNodes && isBetter)
        {
            chosen = i;
        }
    }
    return chosen;
}

} // namespace

void drawPicture(const TransferRecord& record, const std::filesystem::path& path)
{
    const std::optional<std::size_t> field = chooseField(record);
    if (!field)
    {
        throw CannotWrite("there is no field at the nodes of both meshes to be drawn");
    }
    const auto side = [](const MeshFile& file, const Field& shown) {
        return PictureSide{file.path().filename().string(), file.mesh(), shown};
    };
    writePicture(side(record.source, record.sourceFields[*field]), side(record.target, record.result.fields[*field]),
                 path);
}

} // namespace veltrane
