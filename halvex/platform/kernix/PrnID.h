#pragma once

#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/kernix/PersistData.h"

/// Satellite identifier of the network's records: number within its system and the system as one bit,
/// 1 << (system code - 1). Unset is (0, 0). Plain value without locks.
///
/// Saved form, 2 bytes: uint8 number, uint8 type. Loading takes any number and type and gives them back, so that a
/// record of a newer system survives; IsValid() tells whether the type is a known one. Which numbers a system has is
/// known to MDB::CPrnIdZ9.
class HALVEX_EXPORT CPrnID : public IPersistData {
public:
    enum PrnType : std::uint8_t {
        PRN_NONE = 0x00,
        PRN_GPS = 0x01,
        PRN_GLONASS = 0x02,
        PRN_GALILEO = 0x04,
        PRN_SBAS = 0x08,
        PRN_BEIDOU = 0x10,
        PRN_QZSS = 0x20,
        PRN_NAVIC = 0x40,
    };
    /// A set of types, ORed.
    using PrnTypeFlag = std::uint32_t;

    CPrnID() = default;
    explicit CPrnID(unsigned char number, PrnType type = PRN_GPS) : m_number(number), m_type(type) {}

    /// False, changing nothing, for 0.
    bool setPrn(unsigned char number);
    /// False, changing nothing, unless `type` is exactly one known bit.
    bool setPrnType(PrnType type);
    [[nodiscard]] unsigned char getPrn() const { return m_number; }
    [[nodiscard]] PrnType getPrnType() const { return m_type; }
    /// The same; both spellings are in use.
    [[nodiscard]] unsigned char GetPrn() const { return getPrn(); }
    [[nodiscard]] PrnType GetPrnType() const { return getPrnType(); }

    /// Number and type are there.
    [[nodiscard]] bool IsSet() const { return m_number != 0 && m_type != PRN_NONE; }
    /// The number is not 0 and the type exactly one known system.
    [[nodiscard]] bool IsValid() const { return m_number != 0 && IsSystem(m_type); }
    /// `type` is exactly one known bit.
    [[nodiscard]] static bool IsSystem(PrnType type);
    void Clear() { *this = CPrnID(); }

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = 2;
    /// The two directions for records that have made sure of kSavedSize bytes themselves.
    void writeTo(unsigned char* to) const {
        halvex::storeLittleEndian(to, m_number);
        halvex::storeLittleEndian(to + 1, static_cast<std::uint8_t>(m_type));
    }
    void readFrom(const unsigned char* from) {
        m_number = halvex::loadLittleEndian<std::uint8_t>(from);
        m_type = static_cast<PrnType>(halvex::loadLittleEndian<std::uint8_t>(from + 1));
    }

    friend bool operator==(const CPrnID& left, const CPrnID& right) {
        return left.m_number == right.m_number && left.m_type == right.m_type;
    }
    /// By system, then by number.
    friend bool operator<(const CPrnID& left, const CPrnID& right) {
        return left.m_type != right.m_type ? left.m_type < right.m_type : left.m_number < right.m_number;
    }

private:
    unsigned char m_number = 0;
    PrnType m_type = PRN_NONE;
};
