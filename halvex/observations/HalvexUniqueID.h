#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PersistData.h"

/// Network-wide identifier: a signed 64-bit number made of two unsigned words, high << 32 | low. Ordered as the signed
/// number. Plain value without locks; used through its typed forms below.
///
/// Saved form: the number, 8 bytes little-endian. A null or short buffer is logged (level 3) and refused.
class HALVEX_EXPORT CHalvexUniqueID : public IPersistData {
public:
    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override { return sizeof m_id; }

    friend bool operator==(const CHalvexUniqueID& left, const CHalvexUniqueID& right) {
        return left.m_id == right.m_id;
    }
    friend auto operator<=>(const CHalvexUniqueID& left, const CHalvexUniqueID& right) {
        return left.m_id <=> right.m_id;
    }

protected:
    CHalvexUniqueID() = default;
    CHalvexUniqueID(std::uint32_t low, std::uint32_t high) { setID(low, high); }
    explicit CHalvexUniqueID(std::int64_t id) : m_id(id) {}

    void setID(std::uint32_t low, std::uint32_t high) {
        m_id = static_cast<std::int64_t>(static_cast<std::uint64_t>(high) << 32 | low);
    }
    void setID(std::int64_t id) { m_id = id; }
    void getID(std::uint32_t& low, std::uint32_t& high) const {
        low = static_cast<std::uint32_t>(m_id);
        high = static_cast<std::uint32_t>(static_cast<std::uint64_t>(m_id) >> 32);
    }
    /// Into any signed 64-bit type: long long and std::int64_t are not the same everywhere.
    template <std::signed_integral T>
    requires(sizeof(T) == sizeof(std::int64_t)) void getID(T& id) const { id = m_id; }
    [[nodiscard]] std::int64_t getID() const { return m_id; }

private:
    std::int64_t m_id = 0;
};

/// Identifier of a site: a reference station, or, marked by a fixed high word, an SSR-based real-time product whose
/// number is the low word.
class HALVEX_EXPORT CHalvexUniqueSiteID : public CHalvexUniqueID {
public:
    CHalvexUniqueSiteID() = default;
    CHalvexUniqueSiteID(std::uint32_t low, std::uint32_t high) : CHalvexUniqueID(low, high) {}
    explicit CHalvexUniqueSiteID(std::int64_t id) : CHalvexUniqueID(id) {}

    void setUniqueSiteID(std::uint32_t low, std::uint32_t high) { setID(low, high); }
    void setUniqueSiteID(std::int64_t id) { setID(id); }
    void getUniqueSiteID(std::uint32_t& low, std::uint32_t& high) const { getID(low, high); }
    template <std::signed_integral T>
    requires(sizeof(T) == sizeof(std::int64_t)) void getUniqueSiteID(T& id) const { getID(id); }
    [[nodiscard]] std::int64_t getUniqueSiteID() const { return getID(); }

    /// "HIGH,LOW" in decimal with the given separator.
    [[nodiscard]] std::string GetOutputFormat(char separator) const;

    [[nodiscard]] bool isSSRBasedRTProductID() const;
    /// The product's number; false result and 0 for an ordinary site.
    bool getUniqueSSRBasedRTProductID(std::uint32_t& product) const;
    void setUniqueSSRBasedRTProductID(std::uint32_t product) { setID(product, kProductMarker); }

private:
    static constexpr std::uint32_t kProductMarker = 0xDADACAFE;
};

/// Writes GetOutputFormat(',').
HALVEX_EXPORT std::ostream& operator<<(std::ostream& stream, const CHalvexUniqueSiteID& site);

/// Identifier of an antenna.
class HALVEX_EXPORT CHalvexUniqueAntennaID : public CHalvexUniqueID {
public:
    CHalvexUniqueAntennaID() = default;
    CHalvexUniqueAntennaID(std::uint32_t low, std::uint32_t high) : CHalvexUniqueID(low, high) {}
    explicit CHalvexUniqueAntennaID(std::int64_t id) : CHalvexUniqueID(id) {}

    void setUniqueAntennaID(std::uint32_t low, std::uint32_t high) { setID(low, high); }
    void setUniqueAntennaID(std::int64_t id) { setID(id); }
    void getUniqueAntennaID(std::uint32_t& low, std::uint32_t& high) const { getID(low, high); }
    template <std::signed_integral T>
    requires(sizeof(T) == sizeof(std::int64_t)) void getUniqueAntennaID(T& id) const { getID(id); }
};
