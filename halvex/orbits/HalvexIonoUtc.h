#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/IonoUtc.h"
#include "halvex/platform/kernix/PersistData.h"

/// Ionosphere and UTC parameters of the GPS message: Klobuchar coefficients, GPS - UTC and the announced leap second
/// (IS-GPS-200, 20.3.3.5.2.4 and 20.3.3.5.2.5). It holds them and does not evaluate the model. Plain value without
/// locks.
///
/// Saved form, 109 bytes, little-endian and packed: uint16 version 2, int32 source (-1 none, 0 receiver, 1 simulated,
/// others the record's), float64 alpha0 to alpha3, beta0 to beta3, uint8 delta t_LS, uint8 delta t_LSF, uint32 WN_LSF,
/// uint8 DN, float64 A0 [s], A1 [s/s], uint32 WN_t, t_ot [s of week], two words of the host.
class HALVEX_EXPORT CHalvexIonoUtc : public IPersistData {
public:
    static constexpr std::int32_t kNoSource = -1;
    static constexpr std::int32_t kReceiverSource = 0;
    static constexpr std::int32_t kSimulatedSource = 1;

    CHalvexIonoUtc() = default;
    CHalvexIonoUtc(const CHalvexIonoUtc& other);
    CHalvexIonoUtc& operator=(const CHalvexIonoUtc& other);
    ~CHalvexIonoUtc() override;

    bool loadData(const unsigned char* buffer, std::size_t length) override;
    void saveData(unsigned char* buffer, std::size_t length) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = 109;
    static constexpr std::uint16_t kVersion = 2;

    /// Source -1, all else 0.
    void Clear() { m_data = Data(); }
    [[nodiscard]] bool IsSimulated() const { return m_data.source == kSimulatedSource; }

    [[nodiscard]] unsigned char GetDeltaTls() const { return m_data.deltaTls; }
    void SetDeltaTls(unsigned char seconds) { m_data.deltaTls = seconds; }
    [[nodiscard]] unsigned char GetDeltaTlsf() const { return m_data.deltaTlsf; }
    void SetDeltaTlsf(unsigned char seconds) { m_data.deltaTlsf = seconds; }
    /// Week of the announced change.
    [[nodiscard]] unsigned int GetLeapSecondsWeekNumber() const { return m_data.wnLsf; }
    void SetLeapSecondsWeekNumber(unsigned int week) { m_data.wnLsf = week; }
    /// Day of that week, Sunday = 1.
    [[nodiscard]] unsigned char GetLeapSecondsDayNumber() const { return m_data.dn; }
    void SetLeapSecondsDayNumber(unsigned char day) { m_data.dn = day; }
    /// MJD of the day at whose end the change happens.
    [[nodiscard]] int GetLeapSecondsMjd() const;
    /// Both counts, narrowed to 8 bits, and the day of the change.
    void SetLeapSecondsData(const int& deltaTls, const int& deltaTlsf, const int& mjd);

    /// First and last day (MJD) of the week on either side of the reference time, in which the parameters hold.
    [[nodiscard]] std::int32_t getValidMJDStart() const;
    [[nodiscard]] std::int32_t getValidMJDEnd() const;

    friend bool operator==(const CHalvexIonoUtc& left, const CHalvexIonoUtc& right) {
        return &left == &right || left.m_data == right.m_data;
    }

protected:
    void Assign(const CHalvexIonoUtc& other) { m_data = other.m_data; }

private:
    friend HALVEX_EXPORT bool convertIonoUTC(const CHalvexIonoUtc& from, CALN::CALX_IONO_UTC& to);
    friend HALVEX_EXPORT bool convertIonoUTC(const CALN::CALX_IONO_UTC& from, CHalvexIonoUtc& to);

    struct Data {
        std::int32_t source = kNoSource;
        std::array<double, 4> alpha{}, beta{};
        double a0 = 0.0, a1 = 0.0;
        std::uint32_t wnt = 0, tot = 0, word1 = 0, word2 = 0;
        std::uint8_t deltaTls = 0, deltaTlsf = 0;
        std::uint32_t wnLsf = 0;
        std::uint8_t dn = 0;

        friend bool operator==(const Data&, const Data&) = default;
    };
    template <class Io, class Self>
    static void fields(Io& io, Self& d);
    [[nodiscard]] std::int32_t referenceDay() const;

    Data m_data;
};

/// Between the parameters and the computation library's record; false, leaving `to` alone, for numbers that are not
/// finite. The sources are those of CALN::eCALORBITSOURCE, but that no source is -1, a receiver 0 and simulated data 1.
HALVEX_EXPORT bool convertIonoUTC(const CHalvexIonoUtc& from, CALN::CALX_IONO_UTC& to);
HALVEX_EXPORT bool convertIonoUTC(const CALN::CALX_IONO_UTC& from, CHalvexIonoUtc& to);
