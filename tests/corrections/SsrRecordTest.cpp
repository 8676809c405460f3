#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <typeinfo>

#include "halvex/corrections/CalSSRTypes.h"
#include "halvex/platform/kernix/ByteCodec.h"
#include "tests/corrections/Messages.h"

namespace {

using namespace CALN;
using BSS::TSK::MsgObjectT;
using halvex::test::Bytes;
using halvex::test::hex;
using halvex::test::kEpoch;
using halvex::test::RandomEntry;
using halvex::test::saved;
using halvex::test::shared;

const CHalvexUniqueSiteID kSite(0x0A0B0C0D, 0x01020304);
const std::string kVersionAndSite = "01000000 0D0C0B0A 04030201";
constexpr std::size_t kHead = 64;

TEST(SsrRecord, Bytes) {
    SSRURAMsgT ura;
    ura.epoch = kEpoch;
    ura.entries = {{{eCALSATSYSTEM_GPS, 31}, 0x2A}};
    const CHalvexSSRCorr other(kSite, shared(SSRClockCorrMsgT()));
    const std::string message =
        "0100 08000000 00 91E60000 0000000000408F40 00000000 00 00 0000 00 00 01000000 01 1F 2A";
    const Bytes bytes = hex(kVersionAndSite + "08000000" + message);
    halvex::test::expectSavedForm(CHalvexSSRCorr(kSite, shared(ura)), other, bytes);
    halvex::test::expectSavedForm(CHalvexSSRCorr(kSite), other, hex(kVersionAndSite + "00000000"));

    CHalvexSSRCorr elsewhere;
    EXPECT_FALSE(elsewhere.loadData(bytes.data(), bytes.size() - 1));
    EXPECT_TRUE(elsewhere.GetSiteID() == kSite && elsewhere.GetMessage() == nullptr);
    Bytes version2 = bytes;
    version2[0] = 2;
    EXPECT_FALSE((elsewhere = other).loadData(version2.data(), version2.size()));
    EXPECT_TRUE(elsewhere == other);
}

TEST(SsrRecord, TypeCodes) {
    struct Row {
        boost::shared_ptr<MsgObjectT<SSRCorrMsgBaseT>> message;
        std::vector<std::uint32_t> codes;  ///< that stand for its kind; the first one without a type
    };
    const Row rows[] = {{shared(SSROrbitCorrMsgT()), {1, 2, 15}},
                        {shared(SSRClockCorrMsgT()), {3, 4}},
                        {shared(SSRPhaseBiasMsgT()), {5}},
                        {shared(SSRCodeBiasMsgT()), {6, 7}},
                        {shared(SSRURAMsgT()), {8}},
                        {shared(SSRHighRateClockMsgT()), {9, 10}},
                        {shared(QTVertIonoCorrMsgT()), {11}},
                        {shared(QTSlantIonoCorrMsgT()), {12}},
                        {shared(QTVertTropoCorrMsgT()), {13}},
                        {shared(QTSlantTropoCorrMsgT()), {14}},
                        {shared(QTBaseCoordsMsgT()), {16}},
                        {shared(QTNetGeometryCorrMsgT()), {18}},
                        {shared(SSRSignalMsgT()), {17, 19, 0x101, 0xFFFFFFFF}}};
    for (const auto& [message, codes] : rows) {
        EXPECT_EQ(message->GetSSRType(), codes[0]);
        for (const std::uint32_t code : codes) {
            message->type = static_cast<eCALSSRCorrectionType>(code);
            const Bytes bytes = saved(CHalvexSSRCorr(kSite, message));
            CHalvexSSRCorr loaded(kSite, shared(SSRSignalMsgT()));
            ASSERT_TRUE(loaded.loadData(bytes.data(), bytes.size())) << code;
            ASSERT_EQ(loaded.GetMessage() == nullptr, codes[0] == 17) << code;
            if (loaded.GetMessage() == nullptr) continue;
            const SSRCorrMsgBaseT& sent = *message;
            const SSRCorrMsgBaseT& got = *loaded.GetMessage();
            EXPECT_TRUE(typeid(got) == typeid(sent) && got.GetSSRType() == code) << code;
        }
    }
}

/// The saved form of a set with every message that there can be, each without entries and with its own provider.
Bytes fullSet() {
    std::string text = kVersionAndSite + "91E60000 0000000000408F40 44332211 A00A0000";
    for (int system = 1; system < kSystemSlots; ++system) text += "5F050000";
    Bytes bytes = hex(text);
    unsigned char provider = 1;
    const auto add = [&](int type, int system) {
        Bytes message = hex("0100 00000000 00 91E60000 0000000000408F40 00000000 00 00 0000 00 00 00000000");
        message[2] = static_cast<unsigned char>(type);
        message[6] = static_cast<unsigned char>(system);
        message[25] = provider++;
        bytes.insert(bytes.end(), message.begin(), message.end());
    };
    for (const int type : {16, 13, 11, 18}) add(type, 0);
    for (int system = 1; system < kSystemSlots; ++system) {
        for (const int type : {17, 1, 3, 9, 6, 5, 12, 14}) add(type, system);
    }
    return bytes;
}

CHalvexSSRAllCorr loadedSet(const Bytes& bytes) {
    CHalvexSSRAllCorr set;
    std::uint64_t used = 0;
    EXPECT_TRUE(set.loadData(bytes.data(), bytes.size(), used) && used == bytes.size());
    return set;
}

TEST(SsrSet, Bytes) {
    CHalvexSSRAllCorr set = loadedSet(fullSet());
    EXPECT_TRUE(set.GetSiteID() == kSite && set.GetEpoch() == kEpoch && set.word == 0x11223344);
    const auto expect = [](const SSRCorrMsgBaseT& message, unsigned type, std::size_t system) {
        EXPECT_TRUE(message.type == type && message.system == system) << type << " " << system;
    };
    expect(*set.baseCoords, 16, 0);
    expect(*set.vertTropo, 13, 0);
    expect(*set.vertIono, 11, 0);
    expect(*set.netGeometry, 18, 0);
    for (std::size_t system = 1; system < kSystemSlots; ++system) {
        expect(*set.signal[system], 17, system);
        expect(*set.orbit[system], 1, system);
        expect(*set.clock[system], 3, system);
        expect(*set.highRateClock[system], 9, system);
        expect(*set.codeBias[system], 6, system);
        expect(*set.phaseBias[system], 5, system);
        expect(*set.slantIono[system], 12, system);
        expect(*set.slantTropo[system], 14, system);
    }
    EXPECT_TRUE(set.orbit[0] == nullptr && set.signal[0] == nullptr && set.slantTropo[0] == nullptr);
    set.orbit[0] = set.orbit[1];
    set.signal[0] = set.signal[1];
    EXPECT_EQ(saved(set), fullSet()) << "without slot 0";
}

TEST(SsrSet, AClearBitLeavesItsSlot) {
    const Bytes nothing = saved(CHalvexSSRAllCorr(CHalvexUniqueSiteID(1, 2), kEpoch));
    ASSERT_EQ(nothing.size(), kHead);
    CHalvexSSRAllCorr set = loadedSet(fullSet());
    const SSRAllCorrMsgT before = set;
    ASSERT_TRUE(set.loadData(nothing.data(), nothing.size()));
    EXPECT_TRUE(set.word == 0 && set.GetSiteID() == CHalvexUniqueSiteID(1, 2));
    EXPECT_TRUE(set.baseCoords == before.baseCoords && set.orbit == before.orbit && set.slantIono == before.slantIono);

    CHalvexSSRAllCorr one;
    one.orbit[8] = shared(SSROrbitCorrMsgT());
    const Bytes bytes = saved(one);
    ASSERT_TRUE(set.loadData(bytes.data(), bytes.size()));
    EXPECT_TRUE(set.orbit[8]->provider == 0 && set.orbit[7] == before.orbit[7] && set.clock == before.clock);
}

TEST(SsrSet, CutOffBytes) {
    CHalvexSSRAllCorr set(kSite, kEpoch);
    RandomEntry random;
    const auto orbit = random.message<SSROrbitCorrMsgT>();
    const auto bias = random.message<SSRCodeBiasMsgT>();
    set.orbit[1] = shared(orbit);
    set.codeBias[3] = shared(bias);
    const Bytes bytes = saved(set);
    const std::uint64_t afterOrbit = kHead + orbit.getSize();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const Bytes part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        CHalvexSSRAllCorr loaded = loadedSet(fullSet());
        std::uint64_t used = 1;
        ASSERT_EQ(loaded.loadData(part.data(), size, used), size >= kHead) << size;
        EXPECT_EQ(used, size < kHead ? 0 : size < afterOrbit ? kHead : afterOrbit) << size;
        // A message that does not load stands in its slot, empty.
        EXPECT_TRUE(size < kHead ? saved(loaded) == fullSet() : *loaded.codeBias[3] == SSRCodeBiasMsgT()) << size;
        EXPECT_TRUE(size < kHead || *loaded.orbit[1] == (size < afterOrbit ? SSROrbitCorrMsgT() : orbit)) << size;
        Bytes small(size, 0xEE);
        set.saveData(small.data(), size, used);
        EXPECT_TRUE(used == 0 && small == Bytes(size, 0xEE)) << size;
    }
    EXPECT_TRUE(loadedSet(bytes) == set && *loadedSet(bytes).codeBias[3] == bias);

    // The message behind one that does not load is looked for in its place, and is not there.
    Bytes noOrbit = bytes;
    noOrbit[kHead] = 2;
    std::uint64_t used = 1;
    ASSERT_TRUE(set.loadData(noOrbit.data(), noOrbit.size(), used));
    EXPECT_TRUE(used == kHead && *set.codeBias[3] == SSRCodeBiasMsgT());
}

TEST(SsrSet, RefusedAsAWhole) {
    CHalvexSSRAllCorr set = loadedSet(fullSet());
    std::uint64_t used = 1;
    EXPECT_FALSE(set.loadData(nullptr, kHead, used));
    Bytes version2 = saved(CHalvexSSRAllCorr());
    Bytes noEpoch = version2;
    version2[0] = 2;
    halvex::storeLittleEndian(&noEpoch[16], std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(set.loadData(version2.data(), kHead, used) || set.loadData(noEpoch.data(), kHead));
    EXPECT_TRUE(saved(set) == fullSet() && used == 0);
}

TEST(SsrSet, Availability) {
    SSRAllCorrMsgT set;
    set.orbit[1] = shared(SSROrbitCorrMsgT());
    set.orbit[0] = set.orbit[1];
    set.signal[8] = shared(RandomEntry(5).message<SSRSignalMsgT>());
    ASSERT_FALSE(set.signal[8]->entries.empty());
    using Set = SSRAllCorrMsgT;
    struct Row {
        bool clear, entriesOnly;
        std::uint32_t mask, word0, word1, word8;
    };
    for (const Row& row :
         {Row{true, false, Set::ebfSSR_ALL, 0, 1, 0x400}, Row{true, true, Set::ebfSSR_ALL, 0, 0, 0x400},
          Row{true, false, Set::ebfSSR_ORBIT, 0, 1, 0}, Row{false, false, 0x400, 2, 2, 0x402}}) {
        std::array<Set::ebfSSRContent, kSystemSlots> words;
        words.fill(Set::ebfSSR_CLOCK);
        set.getDataAvlblty(words.data(), row.clear, row.entriesOnly, static_cast<Set::ebfSSRContent>(row.mask));
        EXPECT_TRUE(words[0] == row.word0 && words[1] == row.word1 && words[8] == row.word8) << row.mask;
    }
}

TEST(SsrSet, LevelDifference) {
    const SLvlDiff none;
    EXPECT_TRUE(none.signal == SSRSignalID() && none.value == 0.0 && none.tag == -1);
}

}  // namespace
