/// What goes over the border between Python and the C++ interface: arrays, settings, progress.
#ifndef VELTRANE_PYTHON_ARGUMENTS_H
#define VELTRANE_PYTHON_ARGUMENTS_H

#include "CallSettings.h"

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace veltrane
{

namespace nb = nanobind;

/// Arrays of any shape, as they lie in memory.
template <class Number> using ArrayIn = nb::ndarray<const Number, nb::numpy, nb::c_contig, nb::device::cpu>;
template <class Number> using ArrayInOut = nb::ndarray<Number, nb::numpy, nb::c_contig, nb::device::cpu>;
template <class Number> using ArrayOut = nb::ndarray<nb::numpy, Number>;

template <class Number> std::span<const Number> spanOf(const ArrayIn<Number>& array)
{
    return {array.data(), array.size()};
}

template <class Number> std::span<Number> spanOf(const ArrayInOut<Number>& array)
{
    return {array.data(), array.size()};
}

/// Hands the numbers over without copying them. The GIL must be held.
template <class Numbers> auto arrayOf(Numbers numbers, std::initializer_list<std::size_t> shape, auto* first)
{
    using Number = std::remove_pointer_t<decltype(first)>;
    auto owner = std::make_unique<Numbers>(std::move(numbers));
    auto* const data = reinterpret_cast<Number*>(owner->data());
    const nb::capsule capsule(owner.get(), [](void* kept) noexcept { delete static_cast<Numbers*>(kept); });
    owner.release();
    return ArrayOut<Number>(data, shape, capsule);
}

template <class Number> ArrayOut<Number> arrayOf(std::vector<Number> numbers)
{
    const std::size_t count = numbers.size();
    return arrayOf(std::move(numbers), {count}, static_cast<Number*>(nullptr));
}

/// Settings that every computation takes.
struct Settings
{
    bool isAsExported = false;
    bool pointsMayBeNear = false;
    std::optional<float> nearLimit{};
    std::optional<bool> inDoublePrecision{};
    std::optional<float> tolerance{};
    std::optional<float> bucketFactor{};
    std::optional<long long> maxBuckets{};
    int threads = 1;
};

Rules rulesOf(const Settings& settings);
Tuning tuningOf(const Settings& settings);

/// Lets Python look after its signals, so that Ctrl-C ends the computation with KeyboardInterrupt, and tells the
/// progress to `callback` unless that is None; False as its answer cancels. The object must outlive the computation.
ProgressCallback progressTo(nb::handle callback);

} // namespace veltrane

#endif
