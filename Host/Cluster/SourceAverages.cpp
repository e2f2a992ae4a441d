#include "SourceAverages.h"

#include "Agreement.h"

#include "EngineModel.h"

#include "Map/GaussPointAveraging.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace veltrane
{

SourceAverages::SourceAverages(const Communicator& ranks, const Mesh& part, const ElementOrder& order,
                               const SharedNodes& shared)
    : rule_(engineRule(part.gaussPointRule()))
{
    agree(ranks,
          [&]
          {
              std::vector<std::int64_t> firstGaussPoints(static_cast<std::size_t>(part.elementCount()) + 1, 0);
              for (int element = 0; element < part.elementCount(); ++element)
              {
                  const auto i = static_cast<std::size_t>(element);
                  firstGaussPoints[i + 1] = firstGaussPoints[i] + part.gaussPointCountOf(element);
              }
              elementCounts_.assign(static_cast<std::size_t>(part.nodeCount()), 0);
              for (const int element : order.sorted)
              {
                  const auto i = static_cast<std::size_t>(element);
                  elements_.push_back({static_cast<int>(part.kinds()[i]), static_cast<std::int64_t>(nodes_.size()),
                                       firstGaussPoints[i]});
                  for (const int node : part.nodesOf(element))
                  {
                      nodes_.push_back(node);
                      ++elementCounts_[static_cast<std::size_t>(node)];
                  }
              }
          });
    settleHomes(ranks, shared);
    listShares(ranks, order);
}

/// A node of several ranks is at home on the lowest of them.
void SourceAverages::settleHomes(const Communicator& ranks, const SharedNodes& shared)
{
    std::vector<std::vector<int>> toOthers(shared.with.size());
    agree(ranks,
          [&]
          {
              homes_.assign(elementCounts_.size(), -1);
              shared.forEach(
                  [&](int rank, int node)
                  {
                      int& home = homes_[static_cast<std::size_t>(node)];
                      home = std::min({home == -1 ? ranks.rank() : home, rank});
                  });
              shared.forEach(
                  [&](int rank, int node)
                  {
                      const int home = homes_[static_cast<std::size_t>(node)];
                      if (home == ranks.rank())
                      {
                          toOthers[static_cast<std::size_t>(rank)].push_back(node);
                      }
                      else if (home == rank)
                      {
                          collectedElsewhere_.push_back(node);
                      }
                  });
          });
    averages_ = Routes(ranks, std::move(toOthers));
}

/// Finds out what goes where, and in which order it is summed up.
void SourceAverages::listShares(const Communicator& ranks, const ElementOrder& order)
{
    // A node is told by its place among those that come back, which both sides know.
    std::vector<int> placeOf;
    std::vector<std::vector<Share>> lists(static_cast<std::size_t>(ranks.size()));
    agree(
        ranks,
        [&]
        {
            placeOf.assign(homes_.size(), -1);
            std::vector<int> counts(lists.size(), 0);
            for (const int node : collectedElsewhere_)
            {
                const auto i = static_cast<std::size_t>(node);
                placeOf[i] = counts[static_cast<std::size_t>(homes_[i])]++;
            }
            shareOf_.assign(nodes_.size(), -1);
            for (std::size_t element = 0; element < elements_.size(); ++element)
            {
                const std::size_t end = element + 1 < elements_.size()
                                            ? static_cast<std::size_t>(elements_[element + 1].firstNode)
                                            : nodes_.size();
                for (auto i = static_cast<std::size_t>(elements_[element].firstNode); i < end; ++i)
                {
                    const auto node = static_cast<std::size_t>(nodes_[i]);
                    if (homes_[node] != -1)
                    {
                        auto& list = lists[static_cast<std::size_t>(homes_[node])];
                        shareOf_[i] = static_cast<std::int64_t>(list.size());
                        const std::int64_t number = order.numbers[static_cast<std::size_t>(order.sorted[element])];
                        list.push_back({number, homes_[node] == ranks.rank() ? static_cast<int>(node) : placeOf[node]});
                    }
                }
            }
        });
    shares_ = Exchange(ranks, sizesOf(lists));
    const std::vector<Share> arrived = shares_.run(lists);
    agree(ranks,
          [&]
          {
              firstShares_.assign(lists.size() + 1, 0);
              for (std::size_t rank = 0; rank < lists.size(); ++rank)
              {
                  firstShares_[rank + 1] = firstShares_[rank] + static_cast<std::int64_t>(lists[rank].size());
              }
              for (int from = 0; from < ranks.size(); ++from)
              {
                  for (std::int64_t i = 0; i < shares_.takenCount(from); ++i)
                  {
                      const int node = arrived[static_cast<std::size_t>(shares_.firstTaken(from) + i)].node;
                      arrivalNodes_.push_back(from == ranks.rank() ? node : averages_.rowOf(from, node));
                  }
              }
              arrivals_.resize(arrived.size());
              std::iota(arrivals_.begin(), arrivals_.end(), 0);
              std::ranges::stable_sort(arrivals_, {},
                                       [&](std::int64_t i) { return arrived[static_cast<std::size_t>(i)].element; });
              for (std::size_t node = 0; node < homes_.size(); ++node)
              {
                  elementCounts_[node] = homes_[node] == ranks.rank() ? 0 : elementCounts_[node];
              }
              for (const int node : arrivalNodes_)
              {
                  ++elementCounts_[static_cast<std::size_t>(node)];
              }
          });
}

template <class Real, class Value>
std::vector<Real> SourceAverages::average(const Communicator& ranks, const Value* values, std::size_t width) const
{
    std::vector<Real> atNodes;
    std::vector<Real> given;
    std::vector<Real> arrived;
    std::vector<Real> returned;
    agree(ranks,
          [&]
          {
              atNodes.assign(elementCounts_.size() * width, Real{0});
              given.resize(static_cast<std::size_t>(firstShares_.back()) * width);
              arrived.resize(static_cast<std::size_t>(shares_.takenCount()) * width);
              returned.resize(collectedElsewhere_.size() * width);
          });
    std::array<int, maxNbNodes> places{};
    std::iota(places.begin(), places.end(), 0);
    std::vector<Real> ofElement(places.size() * width);
    const auto add = [&](const Real* row, Real* sums)
    {
        for (std::size_t component = 0; component < width; ++component)
        {
            sums[component] += row[component];
        }
    };
    for (std::size_t element = 0; element < elements_.size(); ++element)
    {
        const Element& at = elements_[element];
        std::ranges::fill(ofElement, Real{0});
        const auto value = [&](std::size_t gaussPoint, int component)
        {
            return static_cast<Real>(values[(static_cast<std::size_t>(at.firstGaussPoint) + gaussPoint) * width +
                                            static_cast<std::size_t>(component)]);
        };
        addGaussPointsToNodes(at.typeCode, rule_, places.data(), static_cast<int>(width), value, ofElement.data());
        const std::size_t end =
            element + 1 < elements_.size() ? static_cast<std::size_t>(elements_[element + 1].firstNode) : nodes_.size();
        const Real* row = ofElement.data();
        for (auto i = static_cast<std::size_t>(at.firstNode); i < end; ++i, row += width)
        {
            const auto node = static_cast<std::size_t>(nodes_[i]);
            if (shareOf_[i] == -1)
            {
                add(row, atNodes.data() + node * width);
            }
            else
            {
                const std::int64_t share = firstShares_[static_cast<std::size_t>(homes_[node])] + shareOf_[i];
                std::copy_n(row, width, given.data() + static_cast<std::size_t>(share) * width);
            }
        }
    }
    shares_.run(width, arrived.data(),
                [&](int to, std::int64_t first, std::int64_t count, Real* rows)
                {
                    const std::int64_t begin = firstShares_[static_cast<std::size_t>(to)] + first;
                    std::copy_n(given.data() + static_cast<std::size_t>(begin) * width,
                                static_cast<std::size_t>(count) * width, rows);
                });
    for (const std::int64_t arrival : arrivals_)
    {
        const auto i = static_cast<std::size_t>(arrival);
        add(arrived.data() + i * width, atNodes.data() + static_cast<std::size_t>(arrivalNodes_[i]) * width);
    }
    for (std::size_t i = 0; i < atNodes.size(); ++i)
    {
        atNodes[i] /= static_cast<Real>(elementCounts_[i / width]);
    }
    averages_.carry(atNodes.data(), width, returned.data());
    for (std::size_t i = 0; i < collectedElsewhere_.size(); ++i)
    {
        std::copy_n(returned.data() + i * width, width,
                    atNodes.data() + static_cast<std::size_t>(collectedElsewhere_[i]) * width);
    }
    return atNodes;
}

template std::vector<float> SourceAverages::average(const Communicator&, const float*, std::size_t) const;
template std::vector<float> SourceAverages::average(const Communicator&, const double*, std::size_t) const;
template std::vector<double> SourceAverages::average(const Communicator&, const float*, std::size_t) const;
template std::vector<double> SourceAverages::average(const Communicator&, const double*, std::size_t) const;

} // namespace veltrane
