#include "RecordPicture.h"

#include "PointPicture.h"
#include "TransferPicture.h"

#include <algorithm>

namespace veltrane
{
namespace
{

bool isAtNodes(const Field& field)
{
    return field.location() == Location::nodes;
}

/// \pre canBeDrawn(fields)
std::size_t chooseField(std::span<const Field> fields)
{
    const auto scalar = std::ranges::find_if(fields, [](const Field& field)
                                             { return isAtNodes(field) && field.componentCount() == 1; });
    const auto chosen = scalar != fields.end() ? scalar : std::ranges::find_if(fields, isAtNodes);
    return static_cast<std::size_t>(chosen - fields.begin());
}

} // namespace

bool canBeDrawn(std::span<const Field> sourceFields)
{
    return std::ranges::any_of(sourceFields, isAtNodes);
}

void drawPicture(const TransferRecord& record, const std::filesystem::path& path)
{
    const std::size_t field = chooseField(record.sourceFields);
    const auto nameOf = [](const auto& file) { return file.path().filename().string(); };
    const auto side = [&](const MeshFile& file, const Field& shown) {
        return PictureSide{nameOf(file), file.mesh(), shown};
    };
    const PictureSide source = side(record.source, record.sourceFields[field]);
    const Field& received = record.result.fields[field];
    if (const PointFile* points = record.targetPoints())
    {
        writePicture(source, PicturePoints{nameOf(*points), points->points(), received, record.result.origins}, path);
    }
    else
    {
        writePicture(source, side(*record.targetMesh(), received), path);
    }
}

} // namespace veltrane
