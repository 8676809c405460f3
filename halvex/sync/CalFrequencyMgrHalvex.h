#pragma once

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/FrequencyMgr.h"

/// A frequency manager that brings its own lock, so that any thread may use it.
class HALVEX_EXPORT CCalFrequencyMgrHalvex : public CALN::CCalFrequencyMgr {
public:
    CCalFrequencyMgrHalvex();
};
