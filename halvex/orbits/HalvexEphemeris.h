#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvex/orbits/HalvexEphemerisBase.h"
#include "halvex/platform/caln/EphemerisGps.h"

/// GPS broadcast ephemeris: orbit and clock of one satellite from the LNAV message (IS-GPS-200, 20.3.3.3 and 20.3.3.4).
/// Filled by convertGPSEphemeris, loadData or assignment. Plain value without locks.
///
/// Saved form, 168 bytes, little-endian and packed: uint16 version 14, uint32 number of the writing thread (skipped
/// when loading), uint8 PRN, uint8 source and flags, uint16 health, uint16 GPS week, float64 nominal URA [m], six
/// uint16 message words (code on L2, URA index, L2 P data flag, age of data offset, fit interval flag, IODC), float32
/// TGD [s], float64 M0, delta n, e, sqrt(A), OMEGA0, i0, omega, OMEGA dot, IDOT [rad, rad/s, m^0.5], float32 Cuc, Cus
/// [rad], Crc, Crs [m], Cic, Cis [rad], uint32 toe, uint32 toc [s of week], float32 af0, af1, af2 [s, s/s, s/s^2],
/// float64 two extra delays.
class HALVEX_EXPORT CHalvexEphemeris : public IHalvexEphemerisBase {
public:
    CHalvexEphemeris() = default;
    CHalvexEphemeris(const CHalvexEphemeris&) = default;
    CHalvexEphemeris& operator=(const CHalvexEphemeris&) = default;
    ~CHalvexEphemeris() override;

    bool loadData(const unsigned char* buffer, std::size_t length) override;
    void saveData(unsigned char* buffer, std::size_t length) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = 168;

    /// PRN 255, all else 0.
    void Clear() { *this = CHalvexEphemeris(); }

    [[nodiscard]] CALN::SCalSatID GetSatID() const override { return {CALN::eCALSATSYSTEM_GPS, m_data.prn}; }
    [[nodiscard]] bool IsSimulated() const override { return IsSimulated(m_data.source); }
    [[nodiscard]] bool IsHealthy() const override { return m_data.health == 0; }
    [[nodiscard]] bool IsValid(const mjd::time& t) const override;
    [[nodiscard]] SMjdTime GetRefTime() const override { return {int{m_data.week}, static_cast<double>(m_data.toe)}; }
    bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                             double& elevation) const override;
    bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const override;
    [[nodiscard]] double GetEphemerisValidatyTimeframeMinutes() const override {
        return CALN::getEphemerisTimeframeMinutes(CALN::eCALSATSYSTEM_GPS);
    }

    /// Every tested member lies within its bounds; health is asked separately.
    [[nodiscard]] virtual bool IsDataValid();
    /// Earth-fixed position [m] at a GPS second of the week by the user algorithm of IS-GPS-200, 20.3.3.4.3. False,
    /// leaving it alone, when the semi-major axis is below 2.0e7 m.
    virtual bool CalcSatPosCartesian(double gpsSecondsOfWeek, ORBIT_COORD& position) const;
    /// This ephemeris' reference time lies less than a minute after that of `other`.
    virtual bool MustOlderEphemerisBeUsed(const CHalvexEphemeris& other);
    static bool MustOlderEphemerisBeUsed(const SMjdTime& newer, const SMjdTime& older);

    void SetAsSimulated() { SetAsSimulated(m_data.source); }
    void UnsetAsSimulated() { UnsetAsSimulated(m_data.source); }
    static bool IsSimulated(unsigned char flags) { return (flags & CALN::kSimulatedSource) != 0; }
    static void SetAsSimulated(unsigned char& flags) { flags |= CALN::kSimulatedSource; }
    static void UnsetAsSimulated(unsigned char& flags) { flags %= CALN::kSimulatedSource; }

    [[nodiscard]] unsigned short GetGPSWeek() const { return m_data.week; }
    /// toe [ms of week].
    [[nodiscard]] std::uint32_t GetGPSMsec() const { return m_data.toe * 1000U; }
    [[nodiscard]] unsigned char GetSource() const { return m_data.source & 0x7FU; }
    [[nodiscard]] unsigned char GetIode() const { return GetIode(m_data.words[kIodc]); }
    /// Low eight bits of the IODC.
    static unsigned char GetIode(unsigned short iodc) { return static_cast<unsigned char>(iodc & 0xFFU); }

    /// Exact comparison of all members; NaN is unequal to itself.
    friend bool operator==(const CHalvexEphemeris& left, const CHalvexEphemeris& right) {
        return left.m_data == right.m_data;
    }
    /// The same within the resolution of the message; age of data offset and extra delays do not count.
    [[nodiscard]] bool Equivalent(const CHalvexEphemeris& other) const;
    [[nodiscard]] bool EquivalentAll(const CHalvexEphemeris& other) const { return Equivalent(other); }
    /// Equal, or closer than 2^exponent.
    static bool Equivalent(double a, double b, int exponent);
    /// Issue `a` is newer than `b`; a lead of more than 200 the other way counts as a wrapped counter.
    static bool IsBiggerIODE(unsigned short a, unsigned short b);
    /// User range accuracy of an index, in metres rounded to a tenth in 16 bits: 15 gives 15.0, from 16 on the value
    /// wraps. IS-GPS-200, 20.3.3.3.1.3.
    static double GetSvAccuracy(unsigned short uraIndex);

private:
    friend HALVEX_EXPORT bool convertGPSEphemeris(const CHalvexEphemeris& from, CALN::CALX_SAT_EPHEMERIS& to);
    friend HALVEX_EXPORT bool convertGPSEphemeris(const CALN::CALX_SAT_EPHEMERIS& from, CHalvexEphemeris& to);

    enum Word : std::uint8_t { kCodeOnL2, kUraIndex, kL2PDataFlag, kAodo, kFitIntervalFlag, kIodc, kWords };
    struct Data {
        std::uint8_t prn = 255;
        std::uint8_t source = 0;
        std::uint16_t health = 0;
        std::uint16_t week = 0;
        double ura = 0.0;
        std::array<std::uint16_t, kWords> words{};
        float tgd = 0.0F;
        double m0 = 0.0, deltaN = 0.0, e = 0.0, sqrtA = 0.0, omega0 = 0.0, i0 = 0.0, omega = 0.0;
        double omegaDot = 0.0, idot = 0.0;
        float cuc = 0.0F, cus = 0.0F, crc = 0.0F, crs = 0.0F, cic = 0.0F, cis = 0.0F;
        std::uint32_t toe = 0, toc = 0;
        float af0 = 0.0F, af1 = 0.0F, af2 = 0.0F;
        double delayTerm1 = 0.0, delayTerm2 = 0.0;

        friend bool operator==(const Data&, const Data&) = default;
    };
    template <class Io, class Self>
    static void fields(Io& io, Self& d);

    Data m_data;
};

/// Between the ephemeris and the computation library's record. False, leaving `to` alone, for a satellite
/// that GPS does not have, a number that is not finite or out of its field's range and, from the record, for what this
/// form cannot hold: a CNAV message, a reference time that is no whole second. Of a source other than 1 to 3 only the
/// simulated bit stays.
HALVEX_EXPORT bool convertGPSEphemeris(const CHalvexEphemeris& from, CALN::CALX_SAT_EPHEMERIS& to);
HALVEX_EXPORT bool convertGPSEphemeris(const CALN::CALX_SAT_EPHEMERIS& from, CHalvexEphemeris& to);
