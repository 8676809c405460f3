#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvex/orbits/HalvexEphemerisBase.h"
#include "halvex/platform/caln/EphemerisGlonass.h"
#include "halvex/time/IGPSLeapSeconds.h"

/// GLONASS broadcast ephemeris: state vector of one satellite at a reference time, in PZ-90, with the pull of Sun and
/// Moon, the clock and the frequency channel (GLONASS ICD 5.1, 4.4). Positions come from numerical integration. Filled
/// by convertGLOEphemeris, loadData or assignment. Plain value without locks.
///
/// Saved form, 160 bytes, little-endian and packed: uint8 format 32, uint32 number of the writing thread (skipped when
/// loading), uint8 slot, uint8 source and flags, int8 frequency number, uint32 health, uint16 N_T, uint32 t_k [s of the
/// Moscow day], uint8 M, uint16 F_T, uint16 GPS week, uint32 reference time [ms of the GPS week], uint32 t_b [s of the
/// Moscow day], uint32 t_b index, float64 x, y, z [m], vx, vy, vz [m/s], ax, ay, az [m/s^2], tau_n [s], delta tau_n
/// [s], gamma_n, E_n [d], uint32 N_4, P flags, health flags, uint32 record flags, uint8 issue of data, uint32 content
/// identity.
class HALVEX_EXPORT CHalvexEphemerisGLO : public IHalvexEphemerisBase {
public:
    CHalvexEphemerisGLO() = default;
    CHalvexEphemerisGLO(const CHalvexEphemerisGLO&) = default;
    CHalvexEphemerisGLO& operator=(const CHalvexEphemerisGLO&) = default;
    ~CHalvexEphemerisGLO() override;

    bool loadData(const unsigned char* buffer, std::size_t length) override;
    void saveData(unsigned char* buffer, std::size_t length) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = 160;

    /// Slot 255, all else 0.
    void Clear() { *this = CHalvexEphemerisGLO(); }

    [[nodiscard]] CALN::SCalSatID GetSatID() const override { return {CALN::eCALSATSYSTEM_GLONASS, m_data.slot}; }
    [[nodiscard]] bool IsSimulated() const override { return (m_data.source & CALN::kSimulatedSource) != 0; }
    [[nodiscard]] bool IsHealthy() const override { return m_data.health == 0; }
    [[nodiscard]] bool IsValid(const mjd::time& t) const override;
    [[nodiscard]] SMjdTime GetRefTime() const override { return {int{m_data.week}, m_data.milliseconds / 1000.0}; }
    bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                             double& elevation) const override;
    bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const override;
    [[nodiscard]] double GetEphemerisValidatyTimeframeMinutes() const override {
        return CALN::getEphemerisTimeframeMinutes(CALN::eCALSATSYSTEM_GLONASS);
    }

    /// WGS-84 position [m] at `t` (GPS), by Runge-Kutta steps of 500 s from the reference time. Always true.
    virtual bool CalcSatPosCartesianGlo(mjd::time t, ORBIT_COORD& position) const;
    /// Derivative of position and velocity [m, m/s] in PZ-90; `acceleration` is that of Sun and Moon [m/s^2].
    virtual void ComputeEquationOfMotion(const double state[6], const double acceleration[3],
                                         double derivative[6]) const;

    /// Slot 1 to 24 and week below 10000; nothing else is tested.
    [[nodiscard]] bool IsDataValid() const;
    void SetSimulated(bool on);
    /// Truncated to an integer, of which the field keeps 32 bits; what is no integer is not healthy.
    void SetHealth(double health);
    [[nodiscard]] std::uint32_t GetFlags() const { return m_data.flags; }
    void SetFlags(std::uint32_t flags) { m_data.flags = flags; }
    /// The index tb.
    [[nodiscard]] std::uint32_t GetIssue() const { return m_data.tb; }
    [[nodiscard]] unsigned char GetIOD() const { return m_data.iod; }
    [[nodiscard]] std::uint32_t GetCRC24() const { return m_data.crc24; }
    [[nodiscard]] unsigned char GetEphemerisSource() const { return m_data.source & 0x03U; }
    [[nodiscard]] unsigned short GetGPSWeek() const { return m_data.week; }
    /// Reference time [ms of the GPS week].
    [[nodiscard]] std::uint32_t GetGPSMsec() const { return m_data.milliseconds; }
    /// Reference time on the UTC scale, rounded to 10 ms: week and milliseconds of the week.
    [[nodiscard]] unsigned short GetUTCWeek(IGPSLeapSeconds& table) const;
    [[nodiscard]] std::uint32_t GetUTCMsec(IGPSLeapSeconds& table) const;
    [[nodiscard]] signed char getFreqNumber() const { return m_data.frequencyNumber; }
    void setFreqNumber(signed char number) { m_data.frequencyNumber = number; }

    /// The same slot, tb and content identity.
    friend HALVEX_EXPORT bool operator==(const CHalvexEphemerisGLO& left, const CHalvexEphemerisGLO& right);
    friend bool operator!=(const CHalvexEphemerisGLO& left, const CHalvexEphemerisGLO& right) {
        return !(left == right);
    }
    /// All of the message, the numbers to the last digits; channel, issue of data, identity and flags do not count.
    [[nodiscard]] bool EquivalentAll(const CHalvexEphemerisGLO& other) const;

private:
    friend HALVEX_EXPORT bool GenerateNavIdentValues(CHalvexEphemerisGLO& ephemeris);
    friend HALVEX_EXPORT bool convertGLOEphemeris(const CHalvexEphemerisGLO& from,
                                                  CALN::CALX_SAT_EPHEMERIS_GLONASS& to);
    friend HALVEX_EXPORT bool convertGLOEphemeris(const CALN::CALX_SAT_EPHEMERIS_GLONASS& from,
                                                  CHalvexEphemerisGLO& to);

    struct Data {
        std::uint8_t slot = 255;
        std::uint8_t source = 0;
        std::uint32_t health = 0;
        std::uint16_t dayNumber = 0;
        std::uint32_t frameTime = 0;
        std::uint8_t modification = 0;
        std::uint16_t accuracyIndex = 0;
        std::uint16_t week = 0;
        std::uint32_t milliseconds = 0;
        std::uint32_t referenceSecondsOfDay = 0;
        std::uint32_t tb = 0;
        std::array<double, 3> position{}, velocity{}, acceleration{};
        double tauN = 0.0, deltaTauN = 0.0, gammaN = 0.0, ageOfData = 0.0;
        std::array<std::uint32_t, 3> trailing{};
        std::uint8_t iod = 0;
        std::uint32_t crc24 = 0;
        std::int8_t frequencyNumber = 0;
        std::uint32_t flags = 0;
    };
    /// Calls `use` with each of the thirteen numbers, in their order.
    template <class Self, class Use>
    static void numbers(Self& d, Use&& use);
    template <class Io, class Self>
    static void fields(Io& io, Self& d);

    Data m_data;
};

/// Packs the broadcast content into 26 bytes, as it is sent, and keeps their CRC-24Q as identity: two receptions of one
/// message have the same. False, with the identity as it was, when a value is too wide for its field.
HALVEX_EXPORT bool GenerateNavIdentValues(CHalvexEphemerisGLO& ephemeris);

/// Between the ephemeris and the computation library's record; false, leaving `to` alone, for a slot that is none and a
/// number that is not finite or that its field cannot hold. From the record the issue of data and the identity are made
/// anew.
HALVEX_EXPORT bool convertGLOEphemeris(const CHalvexEphemerisGLO& from, CALN::CALX_SAT_EPHEMERIS_GLONASS& to);
HALVEX_EXPORT bool convertGLOEphemeris(const CALN::CALX_SAT_EPHEMERIS_GLONASS& from, CHalvexEphemerisGLO& to);
