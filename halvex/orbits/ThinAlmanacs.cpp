#include "halvex/orbits/ThinAlmanacs.h"

#include <cmath>

#include "halvex/orbits/OrbitValidity.h"

template <class Almanac, class Record>
bool HalvexThinAlmanac<Almanac, Record>::IsValid(const mjd::time& t) const {
    return std::abs(halvex::secondsFromReference(t, GetRefTime(), CSatelliteTime())) < halvex::kOrbitValiditySeconds;
}

template class HalvexThinAlmanac<CHalvexAlmanacGal, CALN::CALX_SAT_ALMANAC_GALILEO>;
template class HalvexThinAlmanac<CHalvexAlmanacBds, CALN::CALX_SAT_ALMANAC_BEIDOU>;
template class HalvexThinAlmanac<CHalvexAlmanacQzss, CALN::CALX_SAT_ALMANAC_QZSS>;
template class HalvexThinAlmanac<CHalvexAlmanacNavic, CALN::CALX_SAT_ALMANAC_NAVIC>;

CHalvexAlmanacGal::~CHalvexAlmanacGal() = default;
CHalvexAlmanacBds::~CHalvexAlmanacBds() = default;
CHalvexAlmanacQzss::~CHalvexAlmanacQzss() = default;
CHalvexAlmanacNavic::~CHalvexAlmanacNavic() = default;
