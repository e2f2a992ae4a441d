/// Whether boxes hold a point, borders included.
#ifndef VELTRANE_BOX_TEST_H
#define VELTRANE_BOX_TEST_H

#include "../VectorHelpers.h"

#if defined(__SSE__)
#    include <xmmintrin.h>
#endif

/// `box` is minimum x, y, z, maximum x, y, z.
inline bool boxContains(const float* box, const Vector3& point)
{
    return box[0] <= point[0] && point[0] <= box[3] && box[1] <= point[1] && point[1] <= box[4] && box[2] <= point[2] &&
           point[2] <= box[5];
}

/// The same for one point and many boxes.
class BoxTest
{
public:
#if defined(__SSE__)
    explicit BoxTest(const Vector3& point)
        : itsLow(_mm_setr_ps(point[0], point[1], point[2], 0.0F)),
          itsHigh(_mm_setr_ps(0.0F, point[0], point[1], point[2]))
    {
    }

    /// Two overlapping loads of four values, of which the last and the first do not count: nothing is read beyond the
    /// box.
    bool operator()(const float* box) const
    {
        constexpr int firstThree = 0b0111;
        constexpr int lastThree = 0b1110;
        const int low = _mm_movemask_ps(_mm_cmple_ps(_mm_loadu_ps(box), itsLow));
        const int high = _mm_movemask_ps(_mm_cmple_ps(itsHigh, _mm_loadu_ps(box + 2)));
        return ((low | ~firstThree) & (high | ~lastThree)) == -1;
    }

private:
    __m128 itsLow;
    __m128 itsHigh;
#else
    explicit BoxTest(const Vector3& point) : itsPoint(point) {}
    bool operator()(const float* box) const
    {
        return boxContains(box, itsPoint);
    }

private:
    Vector3 itsPoint;
#endif
};

#endif
