#pragma once

#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/CombinedCorrections.h"

namespace Z9 {

/// What a network sends to its rovers: takes the correction messages that producers make.
struct HALVEX_EXPORT CRTKNetworkProduct {
    virtual ~CRTKNetworkProduct();
    /// 0 when the message is taken, anything else when it is not.
    virtual std::int32_t addAuxiliaryCombinedIonoGeoCorrection(const CALN::MsgGNSS17T& message) = 0;
};

}  // namespace Z9
