#include "halvex/orbits/ThinAlmanacs.h"

CHalvexAlmanacGal::~CHalvexAlmanacGal() = default;
CHalvexAlmanacBds::~CHalvexAlmanacBds() = default;
CHalvexAlmanacQzss::~CHalvexAlmanacQzss() = default;
CHalvexAlmanacNavic::~CHalvexAlmanacNavic() = default;
