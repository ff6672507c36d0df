// bits.h: counting and finding the bits of a word.
#pragma once

#include <cstdint>

namespace Velcor::Tavell
{

/// Number of bits that are set (Warren, Hacker's Delight, 2002): no table, and no instruction that the oldest
/// processors lack.
constexpr unsigned countBits(std::uint64_t bits)
{
    bits -= (bits >> 1) & 0x5555555555555555U;
    bits = (bits & 0x3333333333333333U) + ((bits >> 2) & 0x3333333333333333U);
    bits = (bits + (bits >> 4)) & 0x0f0f0f0f0f0f0f0fU;
    return static_cast<unsigned>((bits * 0x0101010101010101U) >> 56);
}

/// Position from 0 of the lowest bit that is set; bits is not 0.
inline unsigned lowestBitOf(std::uint64_t bits)
{
#if defined(__GNUC__)
    return static_cast<unsigned>(__builtin_ctzll(bits));
#else
    return countBits(~bits & (bits - 1));
#endif
}

}  // namespace Velcor::Tavell
