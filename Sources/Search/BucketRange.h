/// The buckets that a box touches.
#ifndef VELTRANE_BUCKET_RANGE_H
#define VELTRANE_BUCKET_RANGE_H

#include "../VectorHelpers.h"
#include "BoundingBox.h"

#include <algorithm>
#include <cstddef>

#if defined(__SSE2__)
#    include <emmintrin.h>
#endif

/// Indices along x, y, z, both ends included; empty (high = -1) for a box outside the grid.
struct BucketRange
{
    int low[3]{};
    int high[3]{-1, -1, -1};

    bool isEmpty() const { return high[0] == -1 || high[1] == -1 || high[2] == -1; }

    /// Whether every bucket of this range, which is not empty, is in the other.
    bool isWithin(const BucketRange& other) const
    {
        return other.low[0] <= low[0] && high[0] <= other.high[0] && other.low[1] <= low[1] &&
               high[1] <= other.high[1] && other.low[2] <= low[2] && high[2] <= other.high[2];
    }

    /// What both have in common.
    BucketRange cutBy(const BucketRange& other) const
    {
        BucketRange common;
        for (int axis = 0; axis < 3; ++axis)
        {
            common.low[axis] = std::max(low[axis], other.low[axis]);
            common.high[axis] = std::min(high[axis], other.high[axis]);
            if (common.low[axis] > common.high[axis])
            {
                return {};
            }
        }
        return common;
    }

    /// The smallest range with both in it.
    BucketRange joinedWith(const BucketRange& other) const
    {
        if (isEmpty() || other.isEmpty())
        {
            return isEmpty() ? other : *this;
        }
        BucketRange joined;
        for (int axis = 0; axis < 3; ++axis)
        {
            joined.low[axis] = std::min(low[axis], other.low[axis]);
            joined.high[axis] = std::max(high[axis], other.high[axis]);
        }
        return joined;
    }
};

/// Finds the ranges of boxes in a grid.
///
/// An index is the floor of the single-precision position (corner - grid's minimum) * inverse bucket size, except that
/// a negative whole number goes one lower, clipped to the grid. Whatever is negative becomes 0 at the low end and
/// leaves nothing at the high end, so that below 0 the sign alone decides. A position that is not a number is outside.
class BucketRanges
{
public:
    BucketRanges(const Vector3& gridMin, float invBucketSize, const int (&nbBuckets)[3])
        : itsMin(gridMin), itsInvBucketSize(invBucketSize), itsCount{nbBuckets[0], nbBuckets[1], nbBuckets[2]}
    {
#if defined(__SSE2__)
        constexpr int exactInSingle = 1 << 24;
        itsIsVector = nbBuckets[0] < exactInSingle && nbBuckets[1] < exactInSingle && nbBuckets[2] < exactInSingle;
        const Vector3 count{static_cast<float>(nbBuckets[0]), static_cast<float>(nbBuckets[1]),
                            static_cast<float>(nbBuckets[2])};
        itsMinLanes = _mm_setr_ps(gridMin[0], gridMin[1], gridMin[2], 0.0F);
        itsInverse = _mm_set1_ps(invBucketSize);
        itsCountLanes = _mm_setr_ps(count[0], count[1], count[2], 0.0F);
        itsLastLanes = _mm_setr_ps(count[0] - 1.0F, count[1] - 1.0F, count[2] - 1.0F, 0.0F);
#endif
    }

    /// `box` is minimum x, y, z, maximum x, y, z.
    BucketRange operator()(const float* box) const
    {
#if defined(__SSE2__)
        if (itsIsVector)
        {
            // Two overlapping loads, so that nothing is read beyond the box.
            const __m128 high = _mm_loadu_ps(box + 2);
            return vectorRange(_mm_loadu_ps(box), _mm_shuffle_ps(high, high, _MM_SHUFFLE(3, 3, 2, 1)));
        }
#endif
        return range(box);
    }

    /// The same for a box as lanes.
    BucketRange operator()(const BoxLanes& box) const
    {
#if defined(__SSE2__)
        if (itsIsVector)
        {
            return vectorRange(box.low.lanes(), box.high.lanes());
        }
#endif
        const float values[6] = {box.low[0], box.low[1], box.low[2], box.high[0], box.high[1], box.high[2]};
        return range(values);
    }

    /// The definition, for any number of buckets.
    BucketRange range(const float* box) const
    {
        BucketRange result;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            // In double precision, the comparison with a number of buckets is exact.
            const double count = itsCount[axis];
            const double low = (box[axis] - itsMin[axis]) * itsInvBucketSize;
            const double high = (box[axis + 3] - itsMin[axis]) * itsInvBucketSize;
            if (!(low < count && high >= 0.0))
            {
                return {};
            }
            result.low[axis] = low > 0.0 ? static_cast<int>(low) : 0;
            result.high[axis] = high < count ? static_cast<int>(high) : itsCount[axis] - 1;
        }
        return result;
    }

private:
#if defined(__SSE2__)
    /// The same on corners of three values and one that does not count.
    BucketRange vectorRange(__m128 boxLow, __m128 boxHigh) const
    {
        constexpr int allThree = 0b0111;
        const __m128 zero = _mm_setzero_ps();
        const __m128 low = _mm_mul_ps(_mm_sub_ps(boxLow, itsMinLanes), itsInverse);
        const __m128 high = _mm_mul_ps(_mm_sub_ps(boxHigh, itsMinLanes), itsInverse);
        const __m128 isIn = _mm_and_ps(_mm_cmplt_ps(low, itsCountLanes), _mm_cmpge_ps(high, zero));
        if ((_mm_movemask_ps(isIn) & allThree) != allThree)
        {
            return {};
        }
        alignas(16) int first[4];
        alignas(16) int last[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(first), _mm_cvttps_epi32(_mm_max_ps(low, zero)));
        _mm_store_si128(reinterpret_cast<__m128i*>(last), _mm_cvttps_epi32(_mm_min_ps(high, itsLastLanes)));
        return {{first[0], first[1], first[2]}, {last[0], last[1], last[2]}};
    }

    bool itsIsVector;
    __m128 itsMinLanes;
    __m128 itsInverse;
    __m128 itsCountLanes;
    __m128 itsLastLanes;
#endif
    Vector3 itsMin;
    float itsInvBucketSize;
    int itsCount[3];
};

#endif
