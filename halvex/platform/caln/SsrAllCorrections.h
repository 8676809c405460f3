#pragma once

#include <array>
#include <boost/shared_ptr.hpp>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/bss/MsgObject.h"
#include "halvex/platform/caln/SsrMessages.h"

namespace CALN {

/// All correction messages of one epoch: a slot for each kind or for each kind and system, by the system's code. Copies
/// share the messages. A slot without a message is null. Not locked.
struct HALVEX_EXPORT SSRAllCorrMsgT {
    template <class Message>
    using Slot = boost::shared_ptr<const BSS::TSK::MsgObjectT<Message>>;
    template <class Message>
    using SlotOfEach = std::array<Slot<Message>, kSystemSlots>;

    /// Which messages there are, as bits: those without a system in word 0, those of a system in the word of its code.
    enum ebfSSRContent : std::uint32_t {
        ebfSSR_ORBIT = 0x001,
        ebfSSR_CLOCK = 0x002,
        ebfSSR_HIGH_RATE_CLOCK = 0x004,
        ebfSSR_CODE_BIAS = 0x008,
        ebfSSR_PHASE_BIAS = 0x010,
        ebfSSR_VERTICAL_TROPOSPHERE = 0x020,  ///< word 0
        ebfSSR_SLANT_TROPOSPHERE = 0x040,
        ebfSSR_VERTICAL_IONOSPHERE = 0x080,  ///< word 0
        ebfSSR_SLANT_IONOSPHERE = 0x100,
        ebfSSR_BASE_COORDINATES = 0x200,  ///< word 0
        ebfSSR_SIGNALS = 0x400,
        ebfSSR_NETWORK_GEOMETRY = 0x800,  ///< word 0
        ebfSSR_ALL = 0xFFFFFFFF,
    };

    SSRAllCorrMsgT() = default;
    SSRAllCorrMsgT(const SSRAllCorrMsgT&) = default;
    SSRAllCorrMsgT& operator=(const SSRAllCorrMsgT&) = default;
    virtual ~SSRAllCorrMsgT();

    SlotOfEach<SSRSignalMsgT> signal;
    Slot<QTBaseCoordsMsgT> baseCoords;
    SlotOfEach<SSROrbitCorrMsgT> orbit;
    SlotOfEach<SSRClockCorrMsgT> clock;
    SlotOfEach<SSRHighRateClockMsgT> highRateClock;
    SlotOfEach<SSRCodeBiasMsgT> codeBias;
    SlotOfEach<SSRPhaseBiasMsgT> phaseBias;
    Slot<QTVertTropoCorrMsgT> vertTropo;
    SlotOfEach<QTSlantTropoCorrMsgT> slantTropo;
    Slot<QTVertIonoCorrMsgT> vertIono;
    SlotOfEach<QTSlantIonoCorrMsgT> slantIono;
    Slot<QTNetGeometryCorrMsgT> netGeometry;
    std::uint32_t word = 0;  ///< the host's own

    /// Sets a bit of the nine `words` for each message that is there, within `mask`; slot 0 of the systems counts
    /// nowhere. With `clear` all other bits become 0, without they stay. With `entriesOnly` a message without entries
    /// does not count.
    void getDataAvlblty(ebfSSRContent* words, bool clear, bool entriesOnly, ebfSSRContent mask) const;
};

}  // namespace CALN
