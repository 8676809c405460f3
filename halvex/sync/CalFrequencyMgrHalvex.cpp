#include "halvex/sync/CalFrequencyMgrHalvex.h"

#include "halvex/sync/CalLocks.h"

CCalFrequencyMgrHalvex::CCalFrequencyMgrHalvex() : CCalFrequencyMgr(new CCalLockHalvex) {}
