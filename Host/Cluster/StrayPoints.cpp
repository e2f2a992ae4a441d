#include "StrayPoints.h"

#include "Agreement.h"
#include "Exchange.h"

#include "Search/ElementBoxes.h"

#include <algorithm>

namespace veltrane
{
namespace
{

BucketRange rangeOfOne(std::int64_t bucket, const BucketSpaceClass& space)
{
    BucketRange range;
    for (std::size_t axis = 3; axis-- > 0;)
    {
        range.low[axis] = range.high[axis] = static_cast<int>(bucket % space.itsNbBuckets[axis]);
        bucket /= space.itsNbBuckets[axis];
    }
    return range;
}

std::vector<std::int64_t> strayBuckets(const ModelClass& part, const BucketSpaceClass& space, float marginRatio)
{
    const BucketRanges ranges = space.ranges();
    std::vector<std::int64_t> buckets;
    for (int elt = 0; elt < part.itsNbElts; ++elt)
    {
        const BucketRange own = ranges(inflated(boxLanesOfElt(part, elt), marginRatio));
        for (int i = 0; i < part.nbGaussPointsOfElt(elt); ++i)
        {
            const std::int64_t bucket = space.bucketOfPoint(part.gaussPointPosition(elt, i));
            if (bucket >= 0 && !rangeOfOne(bucket, space).isWithin(own))
            {
                buckets.push_back(bucket);
            }
        }
    }
    std::ranges::sort(buckets);
    buckets.erase(std::unique(buckets.begin(), buckets.end()), buckets.end());
    return buckets;
}

} // namespace

std::vector<BucketRange> bucketsOfStrayPoints(const Communicator& ranks, const ModelClass& part,
                                              const BucketSpaceClass& space, float marginRatio)
{
    std::vector<std::int64_t> own;
    agree(ranks, [&] { own = strayBuckets(part, space, marginRatio); });
    if (!ranks.isAnywhere(!own.empty()))
    {
        return {};
    }
    // There are few: every rank tells all others, and is told of each whether it is touched.
    const std::vector<std::vector<std::int64_t>> lists(static_cast<std::size_t>(ranks.size()), own);
    const Exchange questions(ranks, sizesOf(lists));
    const std::vector<std::int64_t> asked = questions.run(lists);
    const Exchange answers = questions.reversed();
    std::vector<char> touched(asked.size(), 0);
    agree(ranks,
          [&]
          {
              const BucketRanges rangeOf = space.ranges();
              std::vector<std::int64_t> wanted = asked;
              std::ranges::sort(wanted);
              std::vector<std::int64_t> found;
              for (int elt = 0; elt < part.itsNbElts; ++elt)
              {
                  const BucketRange range = rangeOf(inflated(boxLanesOfElt(part, elt), marginRatio));
                  for (const std::int64_t bucket : wanted)
                  {
                      if (!range.isEmpty() && rangeOfOne(bucket, space).isWithin(range))
                      {
                          found.push_back(bucket);
                      }
                  }
              }
              std::ranges::sort(found);
              std::ranges::transform(asked, touched.begin(),
                                     [&](std::int64_t bucket)
                                     { return std::ranges::binary_search(found, bucket) ? 1 : 0; });
          });
    std::vector<char> told(static_cast<std::size_t>(answers.takenCount()));
    answers.run(1, told.data(),
                [&](int to, std::int64_t first, std::int64_t count, char* rows)
                { std::copy_n(touched.begin() + questions.firstTaken(to) + first, count, rows); });
    std::vector<BucketRange> result;
    for (std::size_t i = 0; i < own.size(); ++i)
    {
        bool isTouched = false;
        for (std::size_t rank = 0; rank < lists.size(); ++rank)
        {
            isTouched = isTouched || told[rank * own.size() + i] != 0;
        }
        if (isTouched)
        {
            result.push_back(rangeOfOne(own[i], space));
        }
    }
    return result;
}

} // namespace veltrane
