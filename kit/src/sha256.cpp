#include "sha256.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kit
{

namespace
{

constexpr std::size_t kBlockSize = 64;  // [byte]
constexpr std::size_t kLengthSize = 8;  // [byte], of the message's length in bits at its end
constexpr std::size_t kRounds = 64;
constexpr std::size_t kWordsInBlock = 16;

using Hash = std::array<std::uint32_t, 8>;

// clang-format off
/// First 32 bits of the fractional parts of the cube roots of the first 64 primes (FIPS 180-4, 4.2.2).
constexpr std::array<std::uint32_t, kRounds> kRoundConstants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2,
};

/// First 32 bits of the fractional parts of the square roots of the first 8 primes (FIPS 180-4, 5.3.3).
constexpr Hash kInitialHash{
    0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19,
};
// clang-format on

std::uint32_t rotr(std::uint32_t x, unsigned n)
{
    return (x >> n) | (x << (32U - n));
}

/// The words of a block and those that follow from them (FIPS 180-4, 6.2.2, step 1).
std::array<std::uint32_t, kRounds> schedule(const unsigned char* block)
{
    std::array<std::uint32_t, kRounds> w{};
    for (std::size_t t = 0; t < kWordsInBlock; ++t) {
        const unsigned char* word = block + 4 * t;
        w[t] = std::uint32_t{word[0]} << 24U | std::uint32_t{word[1]} << 16U | std::uint32_t{word[2]} << 8U |
               std::uint32_t{word[3]};
    }
    for (std::size_t t = kWordsInBlock; t < kRounds; ++t) {
        const std::uint32_t s0 = rotr(w[t - 15], 7) ^ rotr(w[t - 15], 18) ^ (w[t - 15] >> 3U);
        const std::uint32_t s1 = rotr(w[t - 2], 17) ^ rotr(w[t - 2], 19) ^ (w[t - 2] >> 10U);
        w[t] = s1 + w[t - 7] + s0 + w[t - 16];
    }
    return w;
}

/// FIPS 180-4, 6.2.2, steps 2 to 4; the letters are those of the standard.
void addBlock(const unsigned char* block, Hash& hash)
{
    const auto w = schedule(block);
    auto [a, b, c, d, e, f, g, h] = hash;
    for (std::size_t t = 0; t < kRounds; ++t) {
        const std::uint32_t sum1 = rotr(e, 6) ^ rotr(e, 11) ^ rotr(e, 25);
        const std::uint32_t ch = (e & f) ^ (~e & g);
        const std::uint32_t t1 = h + sum1 + ch + kRoundConstants[t] + w[t];
        const std::uint32_t sum0 = rotr(a, 2) ^ rotr(a, 13) ^ rotr(a, 22);
        const std::uint32_t maj = (a & b) ^ (a & c) ^ (b & c);
        const std::uint32_t t2 = sum0 + maj;
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const Hash change{a, b, c, d, e, f, g, h};
    std::transform(hash.begin(), hash.end(), change.begin(), hash.begin(),
                   [](std::uint32_t x, std::uint32_t y) { return x + y; });
}

/// What follows the last whole block: the rest of the text, a set bit, zeros, and the length in bits.
std::vector<unsigned char> paddedEnd(std::string_view text)
{
    const std::size_t rest = text.size() % kBlockSize;
    std::vector<unsigned char> end(text.end() - static_cast<std::ptrdiff_t>(rest), text.end());
    end.push_back(0x80);
    while (end.size() % kBlockSize != kBlockSize - kLengthSize)
        end.push_back(0);
    const std::uint64_t bits = std::uint64_t{text.size()} * 8U;
    for (unsigned shift = 64; shift > 0; shift -= 8)
        end.push_back(static_cast<unsigned char>(bits >> (shift - 8U)));
    return end;
}

}  // namespace

std::string sha256(std::string_view text)
{
    Hash hash = kInitialHash;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    for (std::size_t i = 0; i + kBlockSize <= text.size(); i += kBlockSize)
        addBlock(bytes + i, hash);
    const auto end = paddedEnd(text);
    for (std::size_t i = 0; i < end.size(); i += kBlockSize)
        addBlock(end.data() + i, hash);

    static const char kHexDigits[] = "0123456789abcdef";
    std::string digits;
    for (const std::uint32_t word : hash) {
        for (unsigned shift = 32; shift > 0; shift -= 4)
            digits += kHexDigits[(word >> (shift - 4U)) & 0xfU];
    }
    return digits;
}

}  // namespace kit
