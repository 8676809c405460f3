#include <boost/make_shared.hpp>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <vector>

#include "fuzz/Require.h"
#include "halvex/HalvexRTKBasics.h"

namespace {

using halvex::fuzz::require;
using Bytes = std::vector<unsigned char>;
using Input = std::span<const unsigned char>;

template <class Thing>
Bytes saved(const Thing& thing) {
    Bytes bytes(thing.getSize());
    std::uint64_t used = 0;
    thing.saveData(bytes.data(), bytes.size(), used);
    require(used == bytes.size());
    if (bytes.empty()) return bytes;
    const Bytes untouched(bytes.size() - 1, 0xA5);
    Bytes tooSmall = untouched;
    thing.saveData(tooSmall.data(), tooSmall.size(), used);
    require(tooSmall == untouched && used == 0);
    return bytes;
}

/// Books a message and asks for what is there: never more satellites than it names.
void exercise(const CALN::SSRCorrMsgBaseT& message) {
    std::vector<CALN::SCalSatID> satellites;
    message.getSatIDs(satellites);
    CDataContainerSSR container(7);
    container.AddCorrectionMsg(message);
    container.AddCorrectionMsg(message);
    require(container.GetNumSat(message.system, message.epoch) <= satellites.size());
    require(!container.IsComplete(message.system) || message.multipleMessage == 0);
    container.OnDisconnect();
    require(container.GetSiteID() == 0);
}

void exercise(const SMjdTime& time) {
    require(time.GetMjdFractMilliseconds() >= 0.0 && time.GetMjdFractMilliseconds() < SMjdTime::kMillisecondsPerDay);
}

/// Loads the bytes over `before`. What is refused changes nothing, what is loaded comes back as it was saved.
template <class Thing>
void test(const Thing& before, Input input) {
    Thing thing = before;
    std::uint64_t used = 1;
    if (!thing.loadData(input.data(), input.size(), used)) {
        require(used == 0 && thing == before);
        return;
    }
    require(used <= input.size() && used == thing.getSize());
    const Bytes bytes = saved(thing);
    Thing again;
    require(again.loadData(bytes.data(), bytes.size(), used) && used == bytes.size() && again == thing);
    exercise(thing);
}

template <class Message>
void testMessage(Input input) {
    Message before;
    before.multipleMessage = 1;
    before.entries.emplace_back().satId = {CALN::eCALSATSYSTEM_GPS, 5};
    test(before, input);
}

void testBase(Input input) {
    CALN::SSRCorrMsgBaseT message, again;
    std::uint64_t used = 1;
    if (!message.loadData(input.data(), input.size(), used)) return require(used == 0);
    require(used <= input.size() && used == message.getSize());
    const Bytes bytes = saved(message);
    require(again.loadData(bytes.data(), bytes.size(), used) && used == bytes.size() && saved(again) == bytes);
}

CHalvexSSRCorr::Message someOrbits() {
    const auto orbits = boost::make_shared<BSS::TSK::MsgObjectT<CALN::SSROrbitCorrMsgT>>();
    orbits->entries.emplace_back().radial = 5;
    return orbits;
}

void testRecord(Input input) {
    const CHalvexSSRCorr::Message before = someOrbits();
    CHalvexSSRCorr record(CHalvexUniqueSiteID(7, 8), before);
    if (!record.loadData(input.data(), input.size())) {
        require(record.GetMessage() == before);
        return;
    }
    require(record.getSize() <= input.size());
    Bytes bytes(record.getSize());
    record.saveData(bytes.data(), bytes.size());
    // The message tells its own type, which need not be the one that stood in front of it.
    CHalvexSSRCorr again;
    (void)again.loadData(bytes.data(), bytes.size());
    require(again.GetSiteID() == record.GetSiteID());
    if (record.GetMessage() != nullptr) exercise(*record.GetMessage());
}

void testSet(Input input) {
    CHalvexSSRAllCorr set(CHalvexUniqueSiteID(7, 8), SMjdTime(2111, 388830.5));
    set.netGeometry = boost::make_shared<BSS::TSK::MsgObjectT<CALN::QTNetGeometryCorrMsgT>>();
    const CHalvexSSRAllCorr before = set;
    std::uint64_t used = 1;
    if (!set.loadData(input.data(), input.size(), used)) {
        require(used == 0 && set == before);
        return;
    }
    require(used >= 64 && used <= input.size());
    const Bytes bytes = saved(set);
    CHalvexSSRAllCorr again;
    require(again.loadData(bytes.data(), bytes.size(), used) && used == bytes.size() && again == set);
    for (const auto& orbits : set.orbit) {
        if (orbits != nullptr) exercise(*orbits);
    }
}

}  // namespace

/// The first byte chooses a class, the others are its saved form.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const halvex::fuzz::SilentLog silent;
    if (size == 0) return 0;
    static constexpr void (*kTests[])(Input) = {
        &testRecord,
        &testSet,
        &testMessage<CALN::SSROrbitCorrMsgT>,
        &testMessage<CALN::SSRClockCorrMsgT>,
        &testMessage<CALN::SSRHighRateClockMsgT>,
        &testMessage<CALN::SSRCodeBiasMsgT>,
        &testMessage<CALN::SSRPhaseBiasMsgT>,
        &testMessage<CALN::SSRURAMsgT>,
        &testMessage<CALN::SSRSignalMsgT>,
        &testMessage<CALN::QTBaseCoordsMsgT>,
        &testMessage<CALN::QTVertTropoCorrMsgT>,
        &testMessage<CALN::QTSlantTropoCorrMsgT>,
        &testMessage<CALN::QTVertIonoCorrMsgT>,
        &testMessage<CALN::QTSlantIonoCorrMsgT>,
        &testMessage<CALN::QTNetGeometryCorrMsgT>,
        [](Input input) { test(SMjdTime(2111, 388830.5), input); },
        &testBase,
    };
    kTests[data[0] % std::size(kTests)](Input(data + 1, size - 1));
    return 0;
}
