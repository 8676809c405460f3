#include "halvex/observations/TripleID.h"

namespace {

/// FNV-1a, 64 bits (Fowler, Noll, Vo).
std::uint64_t fnv1a(std::int32_t part) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    const auto bits = static_cast<std::uint32_t>(part);
    for (unsigned shift = 0; shift < 32; shift += 8) {
        hash ^= (bits >> shift) & 0xFFU;
        hash *= 0x100000001b3U;
    }
    return hash;
}

}  // namespace

std::string CTripleID::getString() const {
    const std::string first = std::to_string(m_id1);
    if (m_id3 >= 0) return std::to_string(m_id3) + "_" + std::to_string(m_id2) + "_" + first;
    return m_id2 < 0 ? first : std::to_string(m_id2) + "_" + first;
}

std::uint64_t CTripleIDHasher::operator()(const CTripleID& id) const {
    return ((fnv1a(id.GetID1()) ^ (fnv1a(id.GetID2()) << 1)) >> 1) ^ (fnv1a(id.GetID3()) << 1);
}
