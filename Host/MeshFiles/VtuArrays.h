/// The arrays of VTK's XML files as arrays of VTK.
#ifndef VELTRANE_HOST_VTU_ARRAYS_H
#define VELTRANE_HOST_VTU_ARRAYS_H

#include "StoredArrays.h"
#include "UsualXml.h"
#include "VtuHead.h"

#include <vtkSmartPointer.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

class vtkAbstractArray;
class vtkStringArray;

namespace veltrane
{

class ThreadWorkers;

/// What VTK writes beside an array can be found again in its values; throws NotUsual if there is more.
void requireRangesOnly(const XmlElement& element);

/// Reads arrays on all workers. Everything throws NotUsual.
class VtuArrays
{
public:
    /// All of these outlive it. Those arrays that a writer can take over are noted.
    VtuArrays(const VtuHead& head, const StorageForm& form, StoredArrays& stored, ThreadWorkers& workers)
        : head_(head), form_(form), stored_(stored), workers_(workers)
    {
    }

    /// An array of any type, with the name that the element gives it.
    ///
    /// \param part  what of the file it belongs to: "PointData"
    vtkSmartPointer<vtkAbstractArray> read(const XmlElement& element, std::uint64_t tupleCount, std::string_view part);

    StoredArray find(const XmlElement& element, std::string_view part);

    /// As many whole numbers from 0 on as there is room for, stored in 4 or 8 bytes each.
    void readNumbers(const StoredArray& stored, std::size_t storedSize, std::span<int> numbers);
    void readNumbers(const StoredArray& stored, std::size_t storedSize, std::span<std::size_t> numbers);

private:
    vtkSmartPointer<vtkStringArray> readStrings(const StoredArray& stored, std::uint64_t count);
    template <typename Number>
    void convertNumbers(const StoredArray& stored, std::size_t storedSize, std::span<Number> numbers);
    template <typename Stored, typename Number> void convert(const StoredArray& stored, std::span<Number> numbers);

    const VtuHead& head_;
    const StorageForm& form_;
    StoredArrays& stored_;
    ThreadWorkers& workers_;
};

} // namespace veltrane

#endif
