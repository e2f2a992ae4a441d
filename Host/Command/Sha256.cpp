#include "Sha256.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <fstream>
#include <vector>

namespace veltrane
{
namespace
{

constexpr std::size_t blockSize = 64;
using State = std::array<std::uint32_t, 8>;

// The first 32 bits of the fractions of the cube roots of the first 64 primes, and of the square roots of eight.
constexpr std::array<std::uint32_t, 64> roundConstants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};
constexpr State initialState{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                             0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

void addBlock(State& state, const std::uint8_t* block)
{
    std::array<std::uint32_t, 64> words{};
    for (std::size_t i = 0; i < 16; ++i)
    {
        for (std::size_t j = 0; j < 4; ++j)
        {
            words[i] = words[i] << 8 | block[4 * i + j];
        }
    }
    for (std::size_t i = 16; i < words.size(); ++i)
    {
        const std::uint32_t a = words[i - 15];
        const std::uint32_t b = words[i - 2];
        words[i] = words[i - 16] + words[i - 7] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) +
                   (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
    }
    State s = state;
    for (std::size_t i = 0; i < words.size(); ++i)
    {
        const std::uint32_t choice = (s[4] & s[5]) ^ (~s[4] & s[6]);
        const std::uint32_t majority = (s[0] & s[1]) ^ (s[0] & s[2]) ^ (s[1] & s[2]);
        const std::uint32_t first = s[7] + (std::rotr(s[4], 6) ^ std::rotr(s[4], 11) ^ std::rotr(s[4], 25)) + choice +
                                    roundConstants[i] + words[i];
        const std::uint32_t second = (std::rotr(s[0], 2) ^ std::rotr(s[0], 13) ^ std::rotr(s[0], 22)) + majority;
        s = {first + second, s[0], s[1], s[2], s[3] + first, s[4], s[5], s[6]};
    }
    for (std::size_t i = 0; i < state.size(); ++i)
    {
        state[i] += s[i];
    }
}

/// The last bytes, what marks their end, and the number of bits in all.
void finish(State& state, std::span<const std::uint8_t> rest, std::uint64_t byteCount)
{
    std::vector<std::uint8_t> bytes(rest.begin(), rest.end());
    bytes.push_back(0x80);
    while (bytes.size() % blockSize != blockSize - 8)
    {
        bytes.push_back(0);
    }
    for (int shift = 56; shift >= 0; shift -= 8)
    {
        bytes.push_back(static_cast<std::uint8_t>(8 * byteCount >> shift));
    }
    for (std::size_t i = 0; i < bytes.size(); i += blockSize)
    {
        addBlock(state, bytes.data() + i);
    }
}

std::string digitsOf(const State& state)
{
    std::string digits;
    for (const std::uint32_t word : state)
    {
        for (int shift = 28; shift >= 0; shift -= 4)
        {
            digits += "0123456789abcdef"[word >> shift & 15U];
        }
    }
    return digits;
}

} // namespace

std::string sha256Of(std::span<const std::uint8_t> bytes)
{
    State state = initialState;
    const std::size_t whole = bytes.size() / blockSize * blockSize;
    for (std::size_t i = 0; i < whole; i += blockSize)
    {
        addBlock(state, bytes.data() + i);
    }
    finish(state, bytes.subspan(whole), bytes.size());
    return digitsOf(state);
}

std::string sha256OfFile(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    State state = initialState;
    std::uint64_t byteCount = 0;
    std::vector<std::uint8_t> buffer(blockSize * 4096);
    while (stream)
    {
        stream.read(reinterpret_cast<char*>(buffer.data()), static_cast<std::streamsize>(buffer.size()));
        const auto count = static_cast<std::size_t>(stream.gcount());
        byteCount += count;
        const std::size_t whole = count / blockSize * blockSize;
        for (std::size_t i = 0; i < whole; i += blockSize)
        {
            addBlock(state, buffer.data() + i);
        }
        if (stream.eof())
        {
            finish(state, std::span(buffer).subspan(whole, count - whole), byteCount);
            return digitsOf(state);
        }
    }
    return "";
}

} // namespace veltrane
