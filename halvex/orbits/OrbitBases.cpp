#include "halvex/orbits/HalvexAlmanacBase.h"
#include "halvex/orbits/HalvexEphemerisBase.h"
#include "halvex/orbits/HalvexOrbitBase.h"
#include "halvex/orbits/OrbitListeners.h"

IHalvexOrbitBase::~IHalvexOrbitBase() = default;
IHalvexEphemerisBase::~IHalvexEphemerisBase() = default;
IHalvexAlmanacBase::~IHalvexAlmanacBase() = default;
IEphemerisListener::~IEphemerisListener() = default;
IAlmanacListener::~IAlmanacListener() = default;

bool IHalvexOrbitBase::GetPrnID(MDB::CPrnIdZ9& prn) const {
    prn.setFromCalSatID(GetSatID());
    return prn.isValid();
}

void IHalvexOrbitBase::GetAdditionalInfo(std::string& info) const {
    info.clear();
}

unsigned int IHalvexEphemerisBase::GetNavigationType() const {
    return 0;
}
