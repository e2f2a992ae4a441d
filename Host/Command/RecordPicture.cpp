#include "RecordPicture.h"

#include "PointPicture.h"
#include "TransferPicture.h"

namespace veltrane
{

Drawing drawRecord(DrawingFormat format, const TransferRecord& record, const PictureView& view,
                   std::span<const double> differences)
{
    const auto nameOf = [](const auto& file) { return file.path().filename().string(); };
    const auto side = [&](const MeshFile& file, const Field& shown) {
        return PictureSide{nameOf(file), file.mesh(), shown};
    };
    const PictureSide source = side(record.source, record.sourceFields[view.field]);
    const Field& received = record.result.fields[view.field];
    if (const PointFile* points = record.targetPoints())
    {
        return drawSampling(format, source,
                            PicturePoints{nameOf(*points), points->points(), received, record.result.origins},
                            view.choice);
    }
    return drawTransfer(format, source, side(*record.targetMesh(), received), differences, view.choice);
}

} // namespace veltrane
