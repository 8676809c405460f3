#include <cmath>

#include "halvex/orbits/HalvexAlmanacBase.h"
#include "halvex/orbits/HalvexEphemerisBase.h"
#include "halvex/orbits/HalvexOrbitBase.h"
#include "halvex/orbits/OrbitListeners.h"
#include "halvex/time/SatelliteTime.h"

IHalvexOrbitBase::~IHalvexOrbitBase() = default;
IHalvexEphemerisBase::~IHalvexEphemerisBase() = default;
IHalvexAlmanacBase::~IHalvexAlmanacBase() = default;
IEphemerisListener::~IEphemerisListener() = default;
IAlmanacListener::~IAlmanacListener() = default;

bool IHalvexOrbitBase::GetPrnID(MDB::CPrnIdZ9& prn) const {
    prn.setFromCalSatID(GetSatID());
    return prn.isValid();
}

bool IHalvexOrbitBase::isNear(const mjd::time& t, const SMjdTime& reference, bool nowOnGpsScale) {
    CSatelliteTime instant(nowOnGpsScale);
    if (t != SMjdTime(0.0)) instant = SMjdTime(t.GetGpsWeek(), t.GetGpsSeconds());
    return std::abs(instant.GetDifferenceInSeconds(reference)) < AlmanacValidityGPS;
}

void IHalvexOrbitBase::GetAdditionalInfo(std::string& info) const {
    info.clear();
}

unsigned int IHalvexEphemerisBase::GetNavigationType() const {
    return 0;
}
