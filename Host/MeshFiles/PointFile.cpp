#include "PointFile.h"

#include "DataSetReader.h"
#include "DataSetWriter.h"
#include "FieldArrays.h"
#include "GridMaterials.h"
#include "GridPoints.h"
#include "Text.h"

#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPointSet.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace veltrane
{

struct PointFile::Contents
{
    std::filesystem::path path;
    vtkSmartPointer<vtkPointSet> dataSet;
    std::optional<PointCloud> points;
    std::optional<std::string> materialArray;
};

PointFile::PointFile(const std::filesystem::path& path, const std::optional<std::string>& materialArray, int threads,
                     VtuAhead* ahead)
    : contents_(std::make_unique<Contents>())
{
    contents_->path = path;
    contents_->dataSet = readPoints(path, threads, ahead).dataSet;
    vtkPointSet& dataSet = *contents_->dataSet;
    checkTupleCounts(dataSet, path);
    vtkDataArray* array = findMaterialArray(*dataSet.GetPointData(), materialArray, path);
    if (array != nullptr)
    {
        contents_->materialArray = array->GetName();
    }
    const ItemNumbers numbers(static_cast<std::size_t>(dataSet.GetNumberOfPoints()));
    MaterialNumbers materials = readMaterials(array, numbers, "point", path);
    try
    {
        contents_->points.emplace(readCoordinates(dataSet, path), readExactCoordinates(dataSet),
                                  std::move(materials.materialPerItem), std::move(materials.materials));
    }
    catch (const InvalidData& error)
    {
        throw BadFile(text(quoted(path), ": ", error.what()));
    }
}

PointFile::~PointFile() = default;
PointFile::PointFile(PointFile&&) noexcept = default;
PointFile& PointFile::operator=(PointFile&&) noexcept = default;

const std::filesystem::path& PointFile::path() const
{
    return contents_->path;
}

PointCloud& PointFile::points()
{
    return *contents_->points;
}

const PointCloud& PointFile::points() const
{
    return *contents_->points;
}

const std::optional<std::string>& PointFile::materialArray() const
{
    return contents_->materialArray;
}

bool PointFile::hasArray(const std::string& name) const
{
    return contents_->dataSet->GetPointData()->HasArray(name.c_str()) != 0;
}

LeftOut PointFile::writeWith(std::span<const Field> fields, const std::string& arrayName, std::span<const int> array,
                             const std::filesystem::path& path, const FileWriting& writing) const
{
    const auto dataSet = vtkSmartPointer<vtkPointSet>::Take(contents_->dataSet->NewInstance());
    dataSet->ShallowCopy(contents_->dataSet);
    for (const Field& field : fields)
    {
        dataSet->GetPointData()->AddArray(toArray(field));
    }
    vtkNew<vtkIntArray> numbers;
    numbers->SetName(arrayName.c_str());
    numbers->SetNumberOfValues(static_cast<vtkIdType>(array.size()));
    std::ranges::copy(array, numbers->GetPointer(0));
    dataSet->GetPointData()->AddArray(numbers);
    FileWriting described = writing;
    std::ranges::transform(fields, std::back_inserter(described.fields), &Field::name);
    return writeDataSet(*dataSet, path, described);
}

} // namespace veltrane
