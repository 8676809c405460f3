#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>

#include "halvex/platform/Export.h"

/// Identifier of three signed parts, -1 where a part is absent; the third is the most significant one, in order and in
/// text. Not persisted. Plain value without locks.
class HALVEX_EXPORT CTripleID {
public:
    CTripleID() = default;
    CTripleID(std::int32_t id1, std::int32_t id2, std::int32_t id3) : m_id1(id1), m_id2(id2), m_id3(id3) {}
    /// ID1 from the low, ID2 from the high 32 bits.
    CTripleID(std::uint64_t packed, std::int32_t id3)
        : m_id1(static_cast<std::int32_t>(static_cast<std::uint32_t>(packed))),
          m_id2(static_cast<std::int32_t>(static_cast<std::uint32_t>(packed >> 32))),
          m_id3(id3) {}

    [[nodiscard]] std::int32_t GetID1() const { return m_id1; }
    [[nodiscard]] std::int32_t GetID2() const { return m_id2; }
    [[nodiscard]] std::int32_t GetID3() const { return m_id3; }
    void SetID1(std::int32_t id) { m_id1 = id; }
    void SetID2(std::int32_t id) { m_id2 = id; }
    void SetID3(std::int32_t id) { m_id3 = id; }
    void Clear() { *this = CTripleID(); }
    /// ID1 alone decides.
    [[nodiscard]] bool IsValid() const { return m_id1 >= 0; }

    /// "ID3_ID2_ID1"; without ID3 "ID2_ID1"; without both ID1 alone.
    [[nodiscard]] std::string getString() const;

    friend bool operator==(const CTripleID&, const CTripleID&) = default;
    friend std::strong_ordering operator<=>(const CTripleID& left, const CTripleID& right) {
        if (left.m_id3 != right.m_id3) return left.m_id3 <=> right.m_id3;
        if (left.m_id2 != right.m_id2) return left.m_id2 <=> right.m_id2;
        return left.m_id1 <=> right.m_id1;
    }

private:
    std::int32_t m_id1 = -1;
    std::int32_t m_id2 = -1;
    std::int32_t m_id3 = -1;
};

/// Hash for unordered containers: the 64-bit FNV-1a hashes of the three parts' little-endian bytes, combined.
struct HALVEX_EXPORT CTripleIDHasher {
    std::uint64_t operator()(const CTripleID& id) const;
};
