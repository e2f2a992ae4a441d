#include "ArrayRange.h"

#include "ThreadWorkers.h"

#include <vtkDataArray.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace veltrane
{
namespace
{

void add(ArrayRange& range, double value)
{
    if (std::isnan(value))
    {
        ++range.notANumberCount;
        return;
    }
    range.min = range.min < value ? range.min : value; // the value if there is none so far
    range.max = range.max > value ? range.max : value;
}

void add(ArrayRange& range, const ArrayRange& other)
{
    range.notANumberCount += other.notANumberCount;
    if (!std::isnan(other.min))
    {
        range.min = range.min < other.min ? range.min : other.min;
        range.max = range.max > other.max ? range.max : other.max;
    }
}

template <typename Value> ArrayRange rangeOf(const Value* values, std::int64_t count, int threads)
{
    ThreadWorkers workers(threads);
    const Pieces pieces = piecesFor(workers, count);
    std::vector<ArrayRange> ranges(static_cast<std::size_t>(pieces.count()));
    const auto addPiece = [&](std::int64_t piece, int)
    {
        ArrayRange range;
        for (std::int64_t i = pieces.first(piece); i < pieces.end(piece); ++i)
        {
            add(range, static_cast<double>(values[i]));
        }
        ranges[static_cast<std::size_t>(piece)] = range;
    };
    workers.run({"looking for ranges", 0, 100}, pieces.count(), addPiece);
    ArrayRange all;
    for (const ArrayRange& range : ranges)
    {
        add(all, range);
    }
    return all;
}

} // namespace

ArrayRange rangeOf(vtkDataArray& array, int threads)
{
    if (array.HasStandardMemoryLayout() && array.GetNumberOfValues() > 0)
    {
        switch (array.GetDataType())
        {
            vtkTemplateMacro(return rangeOf(static_cast<const VTK_TT*>(array.GetVoidPointer(0)),
                                            array.GetNumberOfValues(), threads));
        default: break; // single bits
        }
    }
    ArrayRange range;
    for (vtkIdType tuple = 0; tuple < array.GetNumberOfTuples(); ++tuple)
    {
        for (int component = 0; component < array.GetNumberOfComponents(); ++component)
        {
            add(range, array.GetComponent(tuple, component));
        }
    }
    return range;
}

} // namespace veltrane
