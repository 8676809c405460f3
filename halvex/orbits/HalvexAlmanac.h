#pragma once

#include <cstddef>
#include <cstdint>

#include "halvex/orbits/HalvexAlmanacBase.h"
#include "halvex/platform/caln/AlmanacRecords.h"

/// GPS almanac of one satellite (IS-GPS-200, 20.3.3.5), and the geometry that all orbits use. Filled by
/// convertGPSAlmanac, loadData or assignment. Plain value without locks.
///
/// Saved form, 81 bytes, little-endian and packed: uint8 PRN, uint8 source, uint16 toa [4096 s], uint8 health, float64
/// M0, e, sqrt(A), OMEGA0, i, omega, OMEGA dot [rad, m^0.5, rad/s], af0 [s], af1 [s/s], uint32 GPS week.
class HALVEX_EXPORT CHalvexAlmanac : public IHalvexAlmanacBase {
public:
    CHalvexAlmanac() = default;
    CHalvexAlmanac(const CHalvexAlmanac&) = default;
    CHalvexAlmanac& operator=(const CHalvexAlmanac&) = default;
    ~CHalvexAlmanac() override;

    bool loadData(const unsigned char* buffer, std::size_t length) override;
    void saveData(unsigned char* buffer, std::size_t length) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = 81;

    /// All 0, but the source byte 255 (a new object has 0 there).
    void Clear();

    [[nodiscard]] CALN::SCalSatID GetSatID() const override { return {CALN::eCALSATSYSTEM_GPS, m_data.prn}; }
    [[nodiscard]] bool IsHealthy() const override { return m_data.health == 0; }
    [[nodiscard]] bool IsValid(const mjd::time& t) const override;
    [[nodiscard]] SMjdTime GetRefTime() const override;
    /// toa [s of week].
    [[nodiscard]] std::uint32_t GetRefTimeInGPSSeconds() const { return m_data.toa * 4096U; }
    /// False, too, more than a week from the reference time, though IsValid accepts two.
    bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                             double& elevation) const override;
    bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const override;

    /// See halvex::toGeographic.
    static void CartesianToGeographic(const ORBIT_COORD& xyz, ORBIT_GEOGRAPHIC& geographic);
    /// Where a satellite stands in the sky of a site whose geographic position is known already [rad].
    static void GetElevationAndAzimuth(const ORBIT_COORD& satellite, const ORBIT_COORD& site,
                                       const ORBIT_GEOGRAPHIC& siteGeographic, double& elevation, double& azimuth);
    /// The same, working the geographic position out. Mind the order: site before satellite.
    static void GetElevationAndAzimuth(ORBIT_COORD site, const ORBIT_COORD& satellite, double& elevation,
                                       double& azimuth);

    friend bool operator==(const CHalvexAlmanac& left, const CHalvexAlmanac& right) {
        return left.m_data == right.m_data;
    }
    friend bool operator!=(const CHalvexAlmanac& left, const CHalvexAlmanac& right) { return !(left == right); }

private:
    friend HALVEX_EXPORT bool convertGPSAlmanac(const CHalvexAlmanac& from, CALN::CALX_SAT_ALMANAC& to);
    friend HALVEX_EXPORT bool convertGPSAlmanac(const CALN::CALX_SAT_ALMANAC& from, CHalvexAlmanac& to);

    struct Data {
        std::uint8_t prn = 0;
        std::uint8_t source = 0;
        std::uint16_t toa = 0;  // 4096 s
        std::uint8_t health = 0;
        double m0 = 0.0, e = 0.0, sqrtA = 0.0, omega0 = 0.0, i = 0.0, omega = 0.0, omegaDot = 0.0;
        double af0 = 0.0, af1 = 0.0;
        std::uint32_t week = 0;

        friend bool operator==(const Data&, const Data&) = default;
    };
    template <class Io, class Self>
    static void fields(Io& io, Self& d);

    Data m_data;
};

/// Between the almanac and the computation library's record. False, leaving `to` alone, for a satellite that GPS
/// does not have and for a number that is not finite or that its field cannot hold, such as a toa that is no multiple
/// of 4096 s.
HALVEX_EXPORT bool convertGPSAlmanac(const CHalvexAlmanac& from, CALN::CALX_SAT_ALMANAC& to);
HALVEX_EXPORT bool convertGPSAlmanac(const CALN::CALX_SAT_ALMANAC& from, CHalvexAlmanac& to);
