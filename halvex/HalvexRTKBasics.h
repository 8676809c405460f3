#pragma once

/// The whole library, with the platform that it stands on.

#include "halvex/Version.h"
#include "halvex/observations/ContLockCount.h"
#include "halvex/observations/HalvexObservation.h"
#include "halvex/observations/HalvexStationObservation.h"
#include "halvex/observations/ObservationTypes.h"
#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/platform/kernix/PrnID.h"
#include "halvex/platform/kernix/TraceUtil.h"
#include "halvex/platform/mdb/LossOfLockDetector.h"
#include "halvex/platform/mdb/PrnIdZ9.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "halvex/platform/os/CString.h"
#include "halvex/platform/os/Clock.h"
#include "halvex/platform/os/DateTypes.h"
#include "halvex/platform/os/Replaceable.h"
