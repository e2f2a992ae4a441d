/// Several single-precision numbers that are worked on at once, one for each of several points. Every operation is the
/// one on a single number, lane by lane, so a computation gives the same bits in a lane as it does alone.
///
/// They are the compilers' portable vectors. Packs of four are SSE2, which every x86-64 has, or what other processors
/// offer; wider ones belong into files of their own that are compiled for AVX2 or AVX-512, in namespaces of their own.
#ifndef VELTRANE_PACK_H
#define VELTRANE_PACK_H

#include <cstddef>
#include <cstdint>
#include <utility>

#if defined(__SSE2__)
#    include <immintrin.h>
#endif

namespace pack
{
template <class Scalar, std::size_t Size> struct LanesOf
{
    using Type __attribute__((vector_size(sizeof(Scalar) * Size))) = Scalar;
};

/// `Size` scalars as the processor holds them.
template <class Scalar, std::size_t Size> using Lanes = typename LanesOf<Scalar, Size>::Type;
} // namespace pack

// Like a number, a pack without an initial value holds anything, and {} makes it zero.

/// A choice of lanes: -1 in those that are chosen, 0 in the others.
template <std::size_t Size> class PackMask
{
public:
    using Lanes = pack::Lanes<std::int32_t, Size>;

    PackMask() = default;
    explicit PackMask(const Lanes& lanes) : itsLanes(lanes) {}

    friend PackMask operator&(const PackMask& a, const PackMask& b) { return PackMask(a.itsLanes & b.itsLanes); }
    friend PackMask operator|(const PackMask& a, const PackMask& b) { return PackMask(a.itsLanes | b.itsLanes); }
    friend PackMask operator~(const PackMask& a) { return PackMask(~a.itsLanes); }

    /// Bit i for lane i.
    std::uint32_t bits() const
    {
#if defined(__AVX512DQ__)
        if constexpr (Size == 16)
        {
            return _mm512_movepi32_mask(reinterpret_cast<__m512i>(itsLanes));
        }
#endif
#if defined(__AVX__)
        if constexpr (Size == 8)
        {
            return static_cast<std::uint32_t>(_mm256_movemask_ps(reinterpret_cast<__m256>(itsLanes)));
        }
#endif
#if defined(__SSE2__)
        if constexpr (Size == 4)
        {
            return static_cast<std::uint32_t>(_mm_movemask_ps(reinterpret_cast<__m128>(itsLanes)));
        }
#endif
        std::uint32_t bits = 0;
        for (std::size_t lane = 0; lane < Size; ++lane)
        {
            bits |= (itsLanes[lane] != 0 ? 1U : 0U) << lane;
        }
        return bits;
    }

    const Lanes& lanes() const
    {
        return itsLanes;
    }

private:
    Lanes itsLanes{};
};

template <std::size_t Size> class FloatPack
{
public:
    using Lanes = pack::Lanes<float, Size>;

    FloatPack() = default;
    explicit FloatPack(const Lanes& lanes) : itsLanes(lanes) {}
    /// A constant, in all lanes: to take zero from it changes no bit, not even of a negative zero.
    explicit FloatPack(float value) : itsLanes(value - Lanes{}) {}
    FloatPack& operator=(float value)
    {
        itsLanes = FloatPack(value).itsLanes;
        return *this;
    }

    /// valueOf(lane) in every lane.
    template <class ValueOf> static FloatPack ofEach(ValueOf valueOf)
    {
        return ofEach(valueOf, std::make_index_sequence<Size>());
    }

    friend FloatPack operator+(const FloatPack& a, const FloatPack& b) { return FloatPack(a.itsLanes + b.itsLanes); }
    friend FloatPack operator-(const FloatPack& a, const FloatPack& b) { return FloatPack(a.itsLanes - b.itsLanes); }
    friend FloatPack operator*(const FloatPack& a, const FloatPack& b) { return FloatPack(a.itsLanes * b.itsLanes); }
    friend FloatPack operator/(const FloatPack& a, const FloatPack& b) { return FloatPack(a.itsLanes / b.itsLanes); }
    friend FloatPack operator-(const FloatPack& a) { return FloatPack(-a.itsLanes); }
    FloatPack& operator+=(const FloatPack& other) { return *this = *this + other; }
    FloatPack& operator*=(const FloatPack& other) { return *this = *this * other; }

    friend PackMask<Size> operator>(const FloatPack& a, const FloatPack& b)
    {
        return PackMask<Size>(a.itsLanes > b.itsLanes);
    }
    friend PackMask<Size> operator<=(const FloatPack& a, const FloatPack& b)
    {
        return PackMask<Size>(a.itsLanes <= b.itsLanes);
    }
    friend PackMask<Size> operator==(const FloatPack& a, const FloatPack& b)
    {
        return PackMask<Size>(a.itsLanes == b.itsLanes);
    }

    static FloatPack load(const float* values)
    {
        Lanes lanes;
        __builtin_memcpy(&lanes, values, sizeof lanes);
        return FloatPack(lanes);
    }
    void store(float* values) const { __builtin_memcpy(values, &itsLanes, sizeof itsLanes); }

    float operator[](std::size_t lane) const { return itsLanes[lane]; }
    const Lanes& lanes() const { return itsLanes; }

private:
    template <class ValueOf, std::size_t... lane>
    static FloatPack ofEach(ValueOf& valueOf, std::index_sequence<lane...>)
    {
        return FloatPack(Lanes{valueOf(lane)...});
    }

    Lanes itsLanes;
};

/// `a` in the chosen lanes, `b` in the others.
template <std::size_t Size>
FloatPack<Size> select(const PackMask<Size>& chosen, const FloatPack<Size>& a, const FloatPack<Size>& b)
{
    return FloatPack<Size>(chosen.lanes() ? a.lanes() : b.lanes());
}

/// Double precision for as many lanes, in two halves.
template <std::size_t Size> class DoublePack
{
public:
    using Half = pack::Lanes<double, Size / 2>;

    DoublePack() = default;
    DoublePack(const Half& low, const Half& high) : itsLow(low), itsHigh(high) {}
    /// A constant, in all lanes.
    explicit DoublePack(double value) : itsLow(value - Half{}), itsHigh(value - Half{}) {}

    /// valueOf(lane) in every lane.
    template <class ValueOf> static DoublePack ofEach(ValueOf valueOf)
    {
        return ofEach(valueOf, std::make_index_sequence<Size / 2>());
    }

    friend DoublePack operator+(const DoublePack& a, const DoublePack& b)
    {
        return {a.itsLow + b.itsLow, a.itsHigh + b.itsHigh};
    }
    friend DoublePack operator-(const DoublePack& a, const DoublePack& b)
    {
        return {a.itsLow - b.itsLow, a.itsHigh - b.itsHigh};
    }
    friend DoublePack operator*(const DoublePack& a, const DoublePack& b)
    {
        return {a.itsLow * b.itsLow, a.itsHigh * b.itsHigh};
    }
    friend DoublePack operator/(const DoublePack& a, const DoublePack& b)
    {
        return {a.itsLow / b.itsLow, a.itsHigh / b.itsHigh};
    }
    DoublePack& operator+=(const DoublePack& other) { return *this = *this + other; }
    DoublePack& operator*=(const DoublePack& other) { return *this = *this * other; }
    friend DoublePack operator+(double a, const DoublePack& b) { return {a + b.itsLow, a + b.itsHigh}; }
    friend DoublePack operator-(double a, const DoublePack& b) { return {a - b.itsLow, a - b.itsHigh}; }
    friend DoublePack operator-(const DoublePack& a, double b) { return {a.itsLow - b, a.itsHigh - b}; }
    friend DoublePack operator*(double a, const DoublePack& b) { return {a * b.itsLow, a * b.itsHigh}; }
    friend DoublePack operator/(double a, const DoublePack& b) { return {a / b.itsLow, a / b.itsHigh}; }
    friend DoublePack operator/(const DoublePack& a, double b) { return {a.itsLow / b, a.itsHigh / b}; }
    friend DoublePack operator-(const DoublePack& a) { return {-a.itsLow, -a.itsHigh}; }

    friend PackMask<Size> operator>=(const DoublePack& a, double b) { return mask(a.itsLow >= b, a.itsHigh >= b); }
    friend PackMask<Size> operator<=(const DoublePack& a, double b) { return mask(a.itsLow <= b, a.itsHigh <= b); }
    friend PackMask<Size> operator==(const DoublePack& a, double b) { return mask(a.itsLow == b, a.itsHigh == b); }

    void store(double* values) const
    {
        __builtin_memcpy(values, &itsLow, sizeof itsLow);
        __builtin_memcpy(values + Size / 2, &itsHigh, sizeof itsHigh);
    }

    const Half& low() const { return itsLow; }
    const Half& high() const { return itsHigh; }

private:
    using HalfMask = pack::Lanes<std::int64_t, Size / 2>;

    template <class ValueOf, std::size_t... i> static DoublePack ofEach(ValueOf& valueOf, std::index_sequence<i...>)
    {
        return {Half{valueOf(i)...}, Half{valueOf(i + Size / 2)...}};
    }

    static PackMask<Size> mask(const HalfMask& low, const HalfMask& high)
    {
        return mask(low, high, std::make_index_sequence<Size>());
    }
    template <std::size_t... i>
    static PackMask<Size> mask(const HalfMask& low, const HalfMask& high, std::index_sequence<i...>)
    {
        using Half32 = pack::Lanes<std::int32_t, Size / 2>;
        return PackMask<Size>(
            __builtin_shufflevector(__builtin_convertvector(low, Half32), __builtin_convertvector(high, Half32), i...));
    }

    Half itsLow;
    Half itsHigh;
};

/// Packs of doubles round nothing more.
template <std::size_t Size> const DoublePack<Size>& wide(const DoublePack<Size>& value)
{
    return value;
}

namespace pack
{
template <std::size_t Size, std::size_t... i>
DoublePack<Size> selected(const PackMask<Size>& chosen, const DoublePack<Size>& a, const DoublePack<Size>& b,
                          std::index_sequence<i...>)
{
    using HalfMask = Lanes<std::int64_t, Size / 2>;
    const auto& lanes = chosen.lanes();
    const auto low = __builtin_convertvector(__builtin_shufflevector(lanes, lanes, i...), HalfMask);
    const auto high = __builtin_convertvector(__builtin_shufflevector(lanes, lanes, (i + Size / 2)...), HalfMask);
    return {low ? a.low() : b.low(), high ? a.high() : b.high()};
}
} // namespace pack

/// `a` in the chosen lanes, `b` in the others.
template <std::size_t Size>
DoublePack<Size> select(const PackMask<Size>& chosen, const DoublePack<Size>& a, const DoublePack<Size>& b)
{
    return pack::selected(chosen, a, b, std::make_index_sequence<Size / 2>());
}

/// The lanes that all masks choose.
template <std::size_t Size, class... Masks> PackMask<Size> allOf(const PackMask<Size>& first, const Masks&... others)
{
    return (first & ... & others);
}

namespace pack
{
template <std::size_t Size, std::size_t... i>
DoublePack<Size> widened(const FloatPack<Size>& value, std::index_sequence<i...>)
{
    using Half = typename DoublePack<Size>::Half;
    const auto lanes = value.lanes();
#if defined(__AVX512F__)
    if constexpr (Size == 16)
    {
        // With all lanes chosen, since a warning of g++ 12 hits the plain form.
        constexpr __mmask8 all = 0xFF;
        return {_mm512_maskz_cvtps_pd(all, __builtin_shufflevector(lanes, lanes, i...)),
                _mm512_maskz_cvtps_pd(all, __builtin_shufflevector(lanes, lanes, (i + Size / 2)...))};
    }
#endif
#if defined(__AVX__)
    if constexpr (Size == 8)
    {
        return {_mm256_cvtps_pd(_mm256_castps256_ps128(lanes)), _mm256_cvtps_pd(_mm256_extractf128_ps(lanes, 1))};
    }
#endif
#if defined(__SSE2__)
    if constexpr (Size == 4)
    {
        return {_mm_cvtps_pd(lanes), _mm_cvtps_pd(_mm_movehl_ps(lanes, lanes))};
    }
#endif
    return {__builtin_convertvector(__builtin_shufflevector(lanes, lanes, i...), Half),
            __builtin_convertvector(__builtin_shufflevector(lanes, lanes, (i + Size / 2)...), Half)};
}

template <std::size_t Size, std::size_t... i>
FloatPack<Size> rounded(const DoublePack<Size>& value, std::index_sequence<i...>)
{
    using Half = Lanes<float, Size / 2>;
    const auto low = __builtin_convertvector(value.low(), Half);
    const auto high = __builtin_convertvector(value.high(), Half);
    return FloatPack<Size>(__builtin_shufflevector(low, high, i...));
}
} // namespace pack

template <std::size_t Size> DoublePack<Size> wide(const FloatPack<Size>& value)
{
    return pack::widened(value, std::make_index_sequence<Size / 2>());
}

template <std::size_t Size> FloatPack<Size> single(const DoublePack<Size>& value)
{
    return pack::rounded(value, std::make_index_sequence<Size>());
}

namespace pack
{
/// Three numbers and a lane that does not count; nothing is read beyond them. `Size` is that of the file's packs.
template <std::size_t Size> Lanes<float, 4> triple(const float* numbers)
{
#if defined(__AVX512VL__)
    if constexpr (Size == 16)
    {
        return _mm_maskz_loadu_ps(0b0111, numbers);
    }
#endif
#if defined(__SSE2__)
    const __m128 firstTwo = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(numbers)));
    return _mm_movelh_ps(firstTwo, _mm_load_ss(numbers + 2));
#else
    return Lanes<float, 4>{numbers[0], numbers[1], numbers[2], numbers[2]};
#endif
}

template <std::size_t Size, class Half, std::size_t... i>
auto joined(const Half& low, const Half& high, std::index_sequence<i...>)
{
    return __builtin_shufflevector(low, high, i...);
}

/// The triples of the lanes `first`, `first` + 4, `first` + 8 ..., one after the other; four numbers each, for
/// `nbLanes` lanes.
template <std::size_t Size, std::size_t nbLanes, class AddressOf>
Lanes<float, nbLanes> everyFourthTriple(AddressOf& addressOf, std::size_t first)
{
    if constexpr (nbLanes == 4)
    {
        return triple<Size>(addressOf(first));
    }
    else
    {
        return joined<Size>(everyFourthTriple<Size, nbLanes / 2>(addressOf, first),
                            everyFourthTriple<Size, nbLanes / 2>(addressOf, first + nbLanes / 2),
                            std::make_index_sequence<nbLanes>());
    }
}

/// Within each four lanes, those numbered c0 to c3: 0 to 3 of a, 4 to 7 of b.
template <std::size_t c0, std::size_t c1, std::size_t c2, std::size_t c3, class Vector, std::size_t... lane>
Vector ofFours(const Vector& a, const Vector& b, std::index_sequence<lane...>)
{
    constexpr std::size_t inB = sizeof...(lane) - 4;
    constexpr std::size_t chosen[4] = {c0 < 4 ? c0 : c0 + inB, c1 < 4 ? c1 : c1 + inB, c2 < 4 ? c2 : c2 + inB,
                                       c3 < 4 ? c3 : c3 + inB};
    return __builtin_shufflevector(a, b, (lane / 4 * 4 + chosen[lane % 4])...);
}
} // namespace pack

/// The three numbers at addressOf(lane), for every lane.
template <std::size_t Size, class AddressOf> void loadTriples(AddressOf addressOf, FloatPack<Size> (&triples)[3])
{
    using namespace pack;
    constexpr auto lanes = std::make_index_sequence<Size>();
    const auto a = everyFourthTriple<Size, Size>(addressOf, 0);
    const auto b = everyFourthTriple<Size, Size>(addressOf, 1);
    const auto c = everyFourthTriple<Size, Size>(addressOf, 2);
    const auto d = everyFourthTriple<Size, Size>(addressOf, 3);
    const auto firstTwoOfAB = ofFours<0, 4, 1, 5>(a, b, lanes);
    const auto firstTwoOfCD = ofFours<0, 4, 1, 5>(c, d, lanes);
    const auto lastOfAB = ofFours<2, 6, 3, 7>(a, b, lanes);
    const auto lastOfCD = ofFours<2, 6, 3, 7>(c, d, lanes);
    triples[0] = FloatPack<Size>(ofFours<0, 1, 4, 5>(firstTwoOfAB, firstTwoOfCD, lanes));
    triples[1] = FloatPack<Size>(ofFours<2, 3, 6, 7>(firstTwoOfAB, firstTwoOfCD, lanes));
    triples[2] = FloatPack<Size>(ofFours<0, 1, 4, 5>(lastOfAB, lastOfCD, lanes));
}

#endif
