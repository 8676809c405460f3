#pragma once

#include <cstdint>

namespace halvex::tool {

/// Scatters the bits of a key by SplitMix64 (Steele, Lea, Flood 2014): the same everywhere, unlike the standard
/// distributions.
constexpr std::uint64_t mixed(std::uint64_t key) {
    key += 0x9E3779B97F4A7C15U;
    key = (key ^ (key >> 30)) * 0xBF58476D1CE4E5B9U;
    key = (key ^ (key >> 27)) * 0x94D049BB133111EBU;
    return key ^ (key >> 31);
}

/// A number in [0, 1) that follows from a key.
constexpr double uniform(std::uint64_t key) {
    return static_cast<double>(mixed(key) >> 11) * 0x1p-53;
}

}  // namespace halvex::tool
