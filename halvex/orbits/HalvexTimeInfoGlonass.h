#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/IonoUtc.h"
#include "halvex/platform/kernix/PersistData.h"

/// GLONASS system time as it accompanies the ephemerides (GLONASS ICD 5.1, table 4.3), kept once for each buffer of
/// ephemerides. Plain value without locks.
///
/// Saved form, little-endian and packed, 45 bytes of which 42 are used: uint16 day number N, uint32 frame time [s of
/// the Moscow day], uint8 N_4, uint8 availability (2 filled, 0 not), uint8 KP, uint8 source, float64 tau_c [s],
/// tau_GPS [s], B1 [s], B2 [s/d]. The last three bytes of the buffer are left alone; slot and almanac day are not kept.
class HALVEX_EXPORT CHalvexTimeInfoGlonass : public IPersistData {
public:
    CHalvexTimeInfoGlonass() = default;
    CHalvexTimeInfoGlonass(const CHalvexTimeInfoGlonass& other);
    CHalvexTimeInfoGlonass& operator=(const CHalvexTimeInfoGlonass& other);
    ~CHalvexTimeInfoGlonass() override;

    bool loadData(const unsigned char* buffer, std::size_t length) override;
    void saveData(unsigned char* buffer, std::size_t length) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = 45;

    void Clear() { m_data = Data(); }
    /// Filled from a clock record that was there.
    [[nodiscard]] bool IsAvailable() const { return m_data.bytes[kAvailability] == kFilled; }

    /// Day number and frame time alone.
    friend bool operator==(const CHalvexTimeInfoGlonass& left, const CHalvexTimeInfoGlonass& right) {
        return left.m_data.dayNumber == right.m_data.dayNumber && left.m_data.frameTime == right.m_data.frameTime;
    }

protected:
    void Assign(const CHalvexTimeInfoGlonass& other) { m_data = other.m_data; }

private:
    friend HALVEX_EXPORT bool convertGLOClkInfo(const CHalvexTimeInfoGlonass& from, CALN::CALX_CLOCK_GLONASS& to);
    friend HALVEX_EXPORT bool convertGLOClkInfo(const CALN::CALX_CLOCK_GLONASS& from, CHalvexTimeInfoGlonass& to);

    static constexpr std::uint8_t kFilled = 2;
    enum Byte : std::uint8_t { kFourYearInterval, kAvailability, kLeapNotice, kSource, kSlot, kBytes };
    struct Data {
        std::uint16_t dayNumber = 0;
        std::uint32_t frameTime = 0;
        std::array<std::uint8_t, kBytes> bytes{};
        std::uint16_t almanacDay = 0;
        double tauC = 0.0, tauGps = 0.0, b1 = 0.0, b2 = 0.0;
    };
    template <class Io, class Self>
    static void fields(Io& io, Self& d);

    Data m_data;
};

/// Between the object and the computation library's record; false, leaving `to` alone, for a record with numbers that
/// are not finite. A record that is not available gives an object that is not, with its numbers.
HALVEX_EXPORT bool convertGLOClkInfo(const CHalvexTimeInfoGlonass& from, CALN::CALX_CLOCK_GLONASS& to);
HALVEX_EXPORT bool convertGLOClkInfo(const CALN::CALX_CLOCK_GLONASS& from, CHalvexTimeInfoGlonass& to);
