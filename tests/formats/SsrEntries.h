#pragma once

#include "halvex/platform/caln/SsrMessages.h"

namespace halvex::test {

/// Calls with each entry of a message of that kind, with none for one of another.
template <class Message, class Call>
void eachOf(const CALN::SSRCorrMsgBaseT& base, Call call) {
    const auto* message = dynamic_cast<const Message*>(&base);
    if (message == nullptr) return;
    for (const auto& entry : message->entries) call(entry);
}

}  // namespace halvex::test
