#pragma once

#include <boost/make_shared.hpp>

#include "halvex/platform/bss/MsgObject.h"
#include "halvex/platform/caln/SsrMessages.h"
#include "tests/support/Bytes.h"

namespace halvex::test {

inline const SMjdTime kEpoch = SMjdTime::FromDayAndMilliseconds(59025, 1000.0);

template <class Message>
auto shared(const Message& message) {
    return boost::make_shared<BSS::TSK::MsgObjectT<Message>>(message);
}

/// One kind of message.
struct Kind {
    boost::shared_ptr<BSS::TSK::MsgObjectT<CALN::SSRCorrMsgBaseT>> (*make)();
    std::vector<std::uint32_t> codes;  ///< the first one is that of a message without a type
    std::size_t entrySize;             ///< without the lists at its end
    std::vector<std::size_t> lists;    ///< bytes of an element of each
};
template <class Message>
boost::shared_ptr<BSS::TSK::MsgObjectT<CALN::SSRCorrMsgBaseT>> make() {
    return shared(Message());
}
inline const Kind kKinds[] = {{&make<CALN::SSROrbitCorrMsgT>, {1, 2, 15}, 32, {}},
                              {&make<CALN::SSRClockCorrMsgT>, {3, 4}, 14, {}},
                              {&make<CALN::SSRPhaseBiasMsgT>, {5}, 6, {8}},
                              {&make<CALN::SSRCodeBiasMsgT>, {6, 7}, 2, {3}},
                              {&make<CALN::SSRURAMsgT>, {8}, 3, {}},
                              {&make<CALN::SSRHighRateClockMsgT>, {9, 10}, 6, {}},
                              {&make<CALN::QTVertIonoCorrMsgT>, {11}, 7, {2, 2}},
                              {&make<CALN::QTSlantIonoCorrMsgT>, {12}, 10, {}},
                              {&make<CALN::QTVertTropoCorrMsgT>, {13}, 22, {}},
                              {&make<CALN::QTSlantTropoCorrMsgT>, {14}, 10, {}},
                              {&make<CALN::QTBaseCoordsMsgT>, {16}, 30, {}},
                              {&make<CALN::SSRSignalMsgT>, {17}, 4, {}},
                              {&make<CALN::QTNetGeometryCorrMsgT>, {18}, 14, {}}};

}  // namespace halvex::test
