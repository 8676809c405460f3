#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvex/orbits/HalvexAlmanacBase.h"
#include "halvex/platform/caln/AlmanacRecords.h"

/// GLONASS almanac of one satellite (GLONASS ICD 5.1, 4.5 and A.3.2). Filled by convertGLOAlmanac, loadData or
/// assignment. Plain value without locks.
///
/// Saved form, 88 bytes, little-endian and packed: uint8 slot, uint16 N_A, uint32 N_4, uint8 M, uint8 H_n as sent,
/// uint16 flags of the host, uint16 GPS week, uint32 reference time [ms of the GPS week], uint16 t_lambda [2 s of the
/// Moscow day], uint8 source, uint32 health C_n (1 healthy), float64 tau_n [s], lambda [rad], delta i [rad], e, omega
/// [rad], delta T [s], its rate [s per revolution], tau_c [s].
class HALVEX_EXPORT CHalvexAlmanacGlonass : public IHalvexAlmanacBase {
public:
    CHalvexAlmanacGlonass() = default;
    CHalvexAlmanacGlonass(const CHalvexAlmanacGlonass&) = default;
    CHalvexAlmanacGlonass& operator=(const CHalvexAlmanacGlonass&) = default;
    ~CHalvexAlmanacGlonass() override;

    bool loadData(const unsigned char* buffer, std::size_t length) override;
    void saveData(unsigned char* buffer, std::size_t length) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = 88;

    void Clear() { m_data = Data(); }

    [[nodiscard]] CALN::SCalSatID GetSatID() const override { return {CALN::eCALSATSYSTEM_GLONASS, m_data.slot}; }
    [[nodiscard]] bool IsHealthy() const override { return m_data.health == 1; }
    /// Asks for a slot of 1 to 24, too.
    [[nodiscard]] bool IsValid(const mjd::time& t) const override;
    [[nodiscard]] SMjdTime GetRefTime() const override { return {int{m_data.week}, m_data.milliseconds / 1000.0}; }
    bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                             double& elevation) const override;
    bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const override;

    /// In place, with the parameters of CGlobalGeodeticSettings that are in force.
    static void TransformPZ90ToWGS84(ORBIT_COORD& xyz);

    friend bool operator==(const CHalvexAlmanacGlonass& left, const CHalvexAlmanacGlonass& right) {
        return left.m_data == right.m_data;
    }
    friend bool operator!=(const CHalvexAlmanacGlonass& left, const CHalvexAlmanacGlonass& right) {
        return !(left == right);
    }

protected:
    /// WGS-84 position [m] at `t` (GPS). Always true.
    virtual bool GetSatelliteCoordinates(const mjd::time& t, ORBIT_COORD& position) const;

private:
    friend HALVEX_EXPORT bool convertGLOAlmanac(const CHalvexAlmanacGlonass& from, CALN::CALX_SAT_ALMANAC_GLONASS& to);
    friend HALVEX_EXPORT bool convertGLOAlmanac(const CALN::CALX_SAT_ALMANAC_GLONASS& from, CHalvexAlmanacGlonass& to);

    struct Data {
        std::uint8_t slot = 0;
        std::uint16_t dayNumber = 0;
        std::uint32_t fourYearInterval = 0;
        std::uint8_t modification = 0;
        std::uint8_t channel = 0;
        std::uint16_t controlFlags = 0;
        std::uint16_t week = 0;
        std::uint32_t milliseconds = 0;
        std::uint16_t nodeSecondsOfDay = 0;
        std::uint8_t source = 0;
        std::uint32_t health = 0;
        double tauN = 0.0, lambda = 0.0, deltaI = 0.0, e = 0.0, omega = 0.0, deltaT = 0.0, deltaTDot = 0.0, tauC = 0.0;

        friend bool operator==(const Data&, const Data&) = default;
    };
    template <class Io, class Self>
    static void fields(Io& io, Self& d);

    Data m_data;
};

/// Between the almanac and the computation library's record, every field; false, leaving `to` alone, for a slot that is
/// none and for a number that is not finite.
HALVEX_EXPORT bool convertGLOAlmanac(const CHalvexAlmanacGlonass& from, CALN::CALX_SAT_ALMANAC_GLONASS& to);
HALVEX_EXPORT bool convertGLOAlmanac(const CALN::CALX_SAT_ALMANAC_GLONASS& from, CHalvexAlmanacGlonass& to);
