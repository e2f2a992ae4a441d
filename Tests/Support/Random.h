/// Random numbers that follow from a seed alone. The distributions are written here, since those of the standard
/// library differ between implementations.
#ifndef RANDOM_H
#define RANDOM_H

#include <cstdint>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

class Random
{
public:
    explicit Random(std::uint64_t seed) : itsEngine(seed) {}

    /// Both ends included.
    int integer(int low, int high)
    {
        return low + static_cast<int>(itsEngine() % static_cast<std::uint64_t>(high - low + 1));
    }

    double real(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(itsEngine() >> 11) * 0x1p-53);
    }

    bool chance(double probability) { return real(0.0, 1.0) < probability; }

    template <typename T> T pick(const std::vector<T>& values)
    {
        return values[static_cast<std::size_t>(integer(0, static_cast<int>(values.size()) - 1))];
    }

    /// A random order of the numbers 0 to n - 1.
    std::vector<int> permutation(int n)
    {
        std::vector<int> numbers(static_cast<std::size_t>(n));
        std::iota(numbers.begin(), numbers.end(), 0);
        for (int i = n - 1; i > 0; --i)
        {
            std::swap(numbers[static_cast<std::size_t>(i)], numbers[static_cast<std::size_t>(integer(0, i))]);
        }
        return numbers;
    }

private:
    std::mt19937_64 itsEngine;
};

#endif
