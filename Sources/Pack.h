/// Several single-precision numbers that are worked on at once, one for each of several points. Every operation is the
/// one on a single number, lane by lane, so a computation gives the same bits in a lane as it does alone.
///
/// They are the compilers' portable vectors: SSE2, which every x86-64 has, or what other processors offer.
#ifndef VELTRANE_PACK_H
#define VELTRANE_PACK_H

#include <array>
#include <cstddef>

#if defined(__SSE2__)
#    include <emmintrin.h>
#endif

inline constexpr std::size_t packSize = 4;

/// A choice of lanes: -1 in those that are chosen, 0 in the others.
class PackMask
{
public:
    using Lanes = int __attribute__((vector_size(4 * packSize)));

    PackMask() = default;
    explicit PackMask(Lanes lanes) : itsLanes(lanes) {}

    friend PackMask operator&(PackMask a, PackMask b) { return PackMask(a.itsLanes & b.itsLanes); }
    friend PackMask operator|(PackMask a, PackMask b) { return PackMask(a.itsLanes | b.itsLanes); }
    friend PackMask operator~(PackMask a) { return PackMask(~a.itsLanes); }

    bool operator[](std::size_t lane) const { return itsLanes[lane] != 0; }
    /// Bit i for lane i.
    int bits() const
    {
#if defined(__SSE2__)
        return _mm_movemask_ps(reinterpret_cast<__m128>(itsLanes));
#else
        return (itsLanes[0] & 1) | (itsLanes[1] & 2) | (itsLanes[2] & 4) | (itsLanes[3] & 8);
#endif
    }
    bool isEmpty() const
    {
        return bits() == 0;
    }
    Lanes lanes() const
    {
        return itsLanes;
    }

private:
    Lanes itsLanes{};
};

class FloatPack
{
public:
    using Lanes = float __attribute__((vector_size(4 * packSize)));

    FloatPack() = default;
    explicit FloatPack(Lanes lanes) : itsLanes(lanes) {}
    explicit FloatPack(float value) : itsLanes{value, value, value, value} {}
    FloatPack(float a, float b, float c, float d) : itsLanes{a, b, c, d} {}

    /// A constant, in all lanes.
    FloatPack& operator=(float value) { return *this = FloatPack(value); }

    friend FloatPack operator+(FloatPack a, FloatPack b) { return FloatPack(a.itsLanes + b.itsLanes); }
    friend FloatPack operator-(FloatPack a, FloatPack b) { return FloatPack(a.itsLanes - b.itsLanes); }
    friend FloatPack operator*(FloatPack a, FloatPack b) { return FloatPack(a.itsLanes * b.itsLanes); }
    friend FloatPack operator-(FloatPack a) { return FloatPack(-a.itsLanes); }
    FloatPack& operator+=(FloatPack other) { return *this = *this + other; }
    FloatPack& operator*=(FloatPack other) { return *this = *this * other; }

    friend PackMask operator>(FloatPack a, FloatPack b) { return PackMask(a.itsLanes > b.itsLanes); }
    friend PackMask operator==(FloatPack a, FloatPack b) { return PackMask(a.itsLanes == b.itsLanes); }

    float operator[](std::size_t lane) const { return itsLanes[lane]; }
    Lanes lanes() const { return itsLanes; }

private:
    Lanes itsLanes{};
};

/// `a` in the chosen lanes, `b` in the others.
inline FloatPack select(PackMask chosen, FloatPack a, FloatPack b)
{
    return FloatPack(chosen.lanes() ? a.lanes() : b.lanes());
}

/// The smaller, or larger, of each two lanes; `b` where they are equal or one is not a number, as std::min(b, a) and
/// std::max(b, a) have it.
inline FloatPack min(FloatPack a, FloatPack b)
{
#if defined(__SSE2__)
    return FloatPack(_mm_min_ps(a.lanes(), b.lanes()));
#else
    return select(b > a, a, b);
#endif
}

inline FloatPack max(FloatPack a, FloatPack b)
{
#if defined(__SSE2__)
    return FloatPack(_mm_max_ps(a.lanes(), b.lanes()));
#else
    return select(a > b, a, b);
#endif
}

/// Three values in a row, and something in the fourth lane. Nothing is read beyond them.
inline FloatPack packOfThree(const float* values)
{
#if defined(__SSE2__)
    const __m128 firstTwo = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(values)));
    return FloatPack(_mm_movelh_ps(firstTwo, _mm_load_ss(values + 2)));
#else
    return {values[0], values[1], values[2], values[2]};
#endif
}

/// Double precision for as many lanes, in two halves.
class DoublePack
{
public:
    using Half = double __attribute__((vector_size(4 * packSize)));

    DoublePack(Half low, Half high) : itsLow(low), itsHigh(high) {}

    friend DoublePack operator+(DoublePack a, DoublePack b) { return {a.itsLow + b.itsLow, a.itsHigh + b.itsHigh}; }
    friend DoublePack operator-(DoublePack a, DoublePack b) { return {a.itsLow - b.itsLow, a.itsHigh - b.itsHigh}; }
    friend DoublePack operator*(DoublePack a, DoublePack b) { return {a.itsLow * b.itsLow, a.itsHigh * b.itsHigh}; }
    friend DoublePack operator+(double a, DoublePack b) { return {a + b.itsLow, a + b.itsHigh}; }
    friend DoublePack operator-(double a, DoublePack b) { return {a - b.itsLow, a - b.itsHigh}; }
    friend DoublePack operator-(DoublePack a, double b) { return {a.itsLow - b, a.itsHigh - b}; }
    friend DoublePack operator*(double a, DoublePack b) { return {a * b.itsLow, a * b.itsHigh}; }
    friend DoublePack operator/(double a, DoublePack b) { return {a / b.itsLow, a / b.itsHigh}; }
    friend DoublePack operator/(DoublePack a, double b) { return {a.itsLow / b, a.itsHigh / b}; }
    friend DoublePack operator-(DoublePack a) { return {-a.itsLow, -a.itsHigh}; }

    const Half& low() const { return itsLow; }
    const Half& high() const { return itsHigh; }

private:
    Half itsLow;
    Half itsHigh;
};

inline DoublePack wide(FloatPack value)
{
    const auto low = value.lanes();
    const auto high = __builtin_shufflevector(low, low, 2, 3, 2, 3);
    return {DoublePack::Half{low[0], low[1]}, DoublePack::Half{high[0], high[1]}};
}

inline FloatPack single(const DoublePack& value)
{
    return {static_cast<float>(value.low()[0]), static_cast<float>(value.low()[1]), static_cast<float>(value.high()[0]),
            static_cast<float>(value.high()[1])};
}

#endif
