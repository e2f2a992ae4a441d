/// Point files, and the points of mesh files.
#ifndef VELTRANE_HOST_POINT_FILE_H
#define VELTRANE_HOST_POINT_FILE_H

#include "Field.h"
#include "FileErrors.h"
#include "FileFormat.h"
#include "Mesh.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

class VtuAhead;

/// A file in memory of which only the points matter: a target to be sampled at, and everything else that it holds.
class PointFile
{
public:
    /// Reads the file. Throws NoInput or BadFile, naming the file and what is wrong.
    ///
    /// \param materialArray  the point-data array that numbers the materials; the first of the usual names if none is
    ///                       given
    /// \param threads  to read with; 0: as many as usableThreadCount() tells
    /// \param ahead    the file, if somebody has begun to read it; may be null
    explicit PointFile(const std::filesystem::path& path, const std::optional<std::string>& materialArray = {},
                       int threads = 0, VtuAhead* ahead = nullptr);
    ~PointFile();
    PointFile(PointFile&&) noexcept;
    PointFile& operator=(PointFile&&) noexcept;

    const std::filesystem::path& path() const;
    PointCloud& points();
    const PointCloud& points() const;

    /// The point-data array that numbers the materials. Without one all is one material.
    const std::optional<std::string>& materialArray() const;

    /// Whether there is a point-data array of this name, of whatever values.
    bool hasArray(const std::string& name) const;

    /// Writes the file's data set with these fields, and one array of whole numbers, as further point data, in the
    /// format that the path's ending stands for. Throws CannotWrite with nothing but the reason. Tells what of the
    /// fields the format cannot hold.
    LeftOut writeWith(std::span<const Field> fields, const std::string& arrayName, std::span<const int> array,
                      const std::filesystem::path& path, const FileWriting& writing = {}) const;

private:
    struct Contents;
    std::unique_ptr<Contents> contents_;
};

} // namespace veltrane

#endif
