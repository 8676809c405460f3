#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/NetworkMessages.h"
#include "halvex/platform/z9/RtkNetworkProduct.h"

namespace Z9 {

/// A network product that codes what it is given as RTCM 3 frames: auxiliary station data (1014) and combined
/// differences of GPS (1017) and GLONASS (1039), RTCM 10403.3, sections 3.5.6 and 4. Other messages of the set have no
/// published number and are left out. A message holds 15 satellites: more go into further ones, all but the last with
/// the multiple message indicator. Satellites that the messages cannot hold (QZSS, differences of 32.768 m and more,
/// numbers beyond 63) are left out and counted. One thread at a time.
class HALVEX_EXPORT CRtcm3NetworkProduct : public CRTKNetworkProduct {
public:
    /// Takes one whole frame, from the preamble to the check sum; false when it cannot.
    using Sink = std::function<bool(std::span<const unsigned char> frame)>;

    explicit CRtcm3NetworkProduct(Sink sink) : m_sink(std::move(sink)) {}

    /// 0 when every frame was taken; else 1, and what could be sent is sent.
    std::int32_t addAuxiliaryCombinedIonoGeoCorrection(const CALN::MsgGNSS17T& message) override;
    /// The same for where an auxiliary station stands; 1 also when a field does not fit into the message.
    std::int32_t addAuxiliaryStationData(const CALN::Msg1014T& message);

    /// Satellites left out so far.
    [[nodiscard]] std::uint64_t GetLeftOut() const { return m_leftOut; }

private:
    bool send(const CALN::IonoGeoMsgT& message, unsigned epochBits);

    Sink m_sink;
    std::uint64_t m_leftOut = 0;
};

}  // namespace Z9
