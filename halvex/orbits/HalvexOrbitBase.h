#pragma once

#include <cstddef>
#include <string>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Coordinates.h"
#include "halvex/platform/caln/EphemerisRecord.h"
#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/platform/mdb/PrnIdZ9.h"
#include "halvex/platform/mjd/MjdTime.h"

/// Orbit of one satellite, from an ephemeris or an almanac. Orbits are plain values without locks; they answer for
/// instants on the GPS scale, in WGS-84, without light time or the Earth's turn during the signal's travel.
class HALVEX_EXPORT IHalvexOrbitBase : public IPersistData {
public:
    /// How long almanacs stay usable on either side of their reference time [s].
    static constexpr int AlmanacValidityGPS = 1209600;
    static constexpr int AlmanacValidityGLO = 1209600;
    static constexpr int AlmanacValidityGAL = 1209600;
    static constexpr int AlmanacValidityBDS = 1209600;
    static constexpr int AlmanacValidityQZSS = 1209600;
    static constexpr int AlmanacValidityNAVIC = 1209600;

    ~IHalvexOrbitBase() override;
    bool loadData(const unsigned char* buffer, std::size_t length) override = 0;
    void saveData(unsigned char* buffer, std::size_t length) const override = 0;
    [[nodiscard]] std::size_t getSize() const override = 0;

    /// The satellite; false when it is none of its system's, `prn` is set all the same.
    virtual bool GetPrnID(MDB::CPrnIdZ9& prn) const;
    [[nodiscard]] virtual CALN::SCalSatID GetSatID() const = 0;
    [[nodiscard]] virtual CALN::eCALEPHEMERISTYPE GetOrbitType() const = 0;
    [[nodiscard]] virtual bool IsSimulated() const = 0;
    [[nodiscard]] virtual bool IsHealthy() const = 0;
    /// Usable at `t`: less than two weeks from the reference time. The unset instant means now.
    [[nodiscard]] virtual bool IsValid(const mjd::time& t) const = 0;
    /// On the GPS scale.
    [[nodiscard]] virtual SMjdTime GetRefTime() const = 0;
    /// Where the satellite stands at `t` in the sky of `site` [rad]; see halvex::LocalFrame. False leaves both alone.
    virtual bool GetAzimuthElevation(const mjd::time& t, const ORBIT_COORD& site, double& azimuth,
                                     double& elevation) const = 0;
    /// The same now, by the time of a default CSatelliteTime.
    virtual bool GetAzimuthElevation(const ORBIT_COORD& site, double& azimuth, double& elevation) const = 0;
    /// Words for people; empty when there is nothing to add.
    virtual void GetAdditionalInfo(std::string& info) const;

protected:
    /// Whether less than two weeks lie between `t`, or now when it is unset, and a reference time. Now is that of a
    /// default CSatelliteTime or, `nowOnGpsScale`, of one on the GPS scale.
    [[nodiscard]] static bool isNear(const mjd::time& t, const SMjdTime& reference, bool nowOnGpsScale);

    IHalvexOrbitBase() = default;
    IHalvexOrbitBase(const IHalvexOrbitBase&) = default;
    IHalvexOrbitBase& operator=(const IHalvexOrbitBase&) = default;
};
