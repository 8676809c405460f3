#pragma once

#include <boost/make_shared.hpp>
#include <vector>

#include "halvex/platform/bss/MsgObject.h"
#include "halvex/platform/caln/SsrMessages.h"
#include "tests/support/Bytes.h"
#include "tests/support/RandomFields.h"

namespace halvex::test {

inline const SMjdTime kEpoch = SMjdTime::FromDayAndMilliseconds(59025, 1000.0);

/// Random values for any number of fields, lists of up to three elements among them.
struct RandomEntry : RandomFields {
    using RandomFields::operator();
    using RandomFields::RandomFields;

    void operator()(CALN::SCalSatID& id) { all(id.system, id.number); }
    void operator()(CALN::SSRSignalID& id) { all(id.system, id.signal); }
    void operator()(CALN::SSRCodeBiasKind::Bias& b) { all(b.signal, b.bias); }
    void operator()(CALN::SSRPhaseBiasKind::Bias& b) {
        all(b.signal, b.integer, b.wideLane, b.discontinuityCounter, b.bias);
    }
    void operator()(CALN::SSROrbitKind::Entry& e) {
        all(e.satId, e.issueOfData, e.radial, e.alongTrack, e.crossTrack);
        all(e.radialRate, e.alongTrackRate, e.crossTrackRate);
    }
    void operator()(CALN::SSRClockKind::Entry& e) { all(e.satId, e.c0, e.c1, e.c2); }
    void operator()(CALN::SSRHighRateClockKind::Entry& e) { all(e.satId, e.correction); }
    void operator()(CALN::SSRCodeBiasKind::Entry& e) { all(e.satId, e.biases); }
    void operator()(CALN::SSRPhaseBiasKind::Entry& e) { all(e.satId, e.yawAngle, e.yawRate, e.biases); }
    void operator()(CALN::SSRURAKind::Entry& e) { all(e.satId, e.ura); }
    void operator()(CALN::SSRSignalKind::Entry& e) { all(e.satId, e.signal); }
    void operator()(CALN::QTBaseCoordsKind::Entry& e) { all(e.satId, e.stationId, e.x, e.y, e.z); }
    void operator()(CALN::QTVertTropoKind::Entry& e) {
        all(e.satId, e.stationId, e.hydrostaticDelay, e.wetDelay, e.gradientNorth, e.gradientEast);
    }
    void operator()(CALN::QTSlantTropoKind::Entry& e) { all(e.satId, e.stationId, e.delay); }
    void operator()(CALN::QTVertIonoKind::Entry& e) {
        all(e.satId, e.height, e.degree, e.order, e.quality, e.cosines, e.sines);
    }
    void operator()(CALN::QTSlantIonoKind::Entry& e) { all(e.satId, e.stationId, e.delay); }
    void operator()(CALN::QTNetGeometryKind::Entry& e) { all(e.satId, e.stationId, e.issueOfData, e.correction); }

    template <class Element>
    void operator()(std::vector<Element>& elements) {
        elements.resize(static_cast<std::size_t>(number(0.0, 4.0)));
        for (Element& element : elements) (*this)(element);
    }
    template <class... Fields>
    void all(Fields&... fields) {
        ((*this)(fields), ...);
    }
    template <class Message>
    Message message() {
        Message m;
        all(m.multipleMessage, m.updateInterval, m.issueOfData, m.provider, m.solution, m.referenceDatum, m.entries);
        m.system = static_cast<CALN::eCALSATSYSTEM>(number(0.0, 9.0));
        m.epoch = SMjdTime(number(0.0, 1e5));
        return m;
    }
};

/// What a message saves into a buffer of exactly its size.
inline Bytes savedMessage(const CALN::SSRCorrMsgBaseT& message) {
    Bytes bytes(message.getSize());
    std::uint64_t used = 0;
    message.saveData(bytes.data(), bytes.size(), used);
    EXPECT_EQ(used, bytes.size());
    return bytes;
}

template <class Message>
auto shared(const Message& message) {
    return boost::make_shared<BSS::TSK::MsgObjectT<Message>>(message);
}

}  // namespace halvex::test
