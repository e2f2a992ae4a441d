/// How the buckets of a grid are used.
#ifndef VELTRANE_BUCKET_USE_H
#define VELTRANE_BUCKET_USE_H

#include "../BucketSpaceClass.h"

struct BucketUse
{
    std::int64_t nbUsed = 0;
    std::int64_t nbUnused = 0;
    float nbItems = 0.0F; ///< in used buckets, summed in single precision

    explicit BucketUse(const BucketSpaceClass& space)
    {
        for (std::int64_t bucket = 0; bucket < space.nbHeldBuckets(); ++bucket)
        {
            switch (space.state(bucket))
            {
            case filledDirectly:
            case filledByEnlarged:
                ++nbUsed;
                nbItems += static_cast<float>(space.items(bucket).size());
                break;
            case notNeeded:
            case neededEmpty: ++nbUnused; break;
            }
        }
    }

    /// Not a number if no bucket is used.
    float meanItems() const { return nbItems / static_cast<float>(nbUsed); }
};

#endif
