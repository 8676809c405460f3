#include <gtest/gtest.h>

#include <typeinfo>

#include "halvex/corrections/CalSSRTypes.h"
#include "halvex/platform/kernix/ByteCodec.h"
#include "tests/corrections/Messages.h"

namespace {

using namespace CALN;
using halvex::test::Bytes;
using halvex::test::hex;
using halvex::test::kEpoch;
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
        "0200 08000000 00 91E60000 0000000000408F40 00000000 00 00 0000 00 00 000000 01000000 01 1F 2A";
    const Bytes bytes = hex(kVersionAndSite + "08000000" + message);
    halvex::test::expectSavedForm(CHalvexSSRCorr(kSite, shared(ura)), other, bytes);
    halvex::test::expectSavedForm(CHalvexSSRCorr(kSite), other, hex(kVersionAndSite + "00000000"));

    CHalvexSSRCorr elsewhere;
    EXPECT_FALSE(elsewhere.loadData(bytes.data(), bytes.size() - 1));
    EXPECT_TRUE(elsewhere.GetSiteID() == kSite && elsewhere.GetMessage() == nullptr);
    Bytes version2 = bytes;
    version2[0] = 2;
    EXPECT_TRUE(!(elsewhere = other).loadData(version2.data(), version2.size()) && elsewhere == other);
}

TEST(SsrRecord, TypeCodes) {
    for (const halvex::test::Kind& kind : halvex::test::kKinds) {
        EXPECT_EQ(kind.make()->GetSSRType(), kind.codes[0]);
        for (const std::uint32_t code : kind.codes) {
            const auto message = kind.make();
            message->type = static_cast<eCALSSRCorrectionType>(code);
            const Bytes bytes = saved(CHalvexSSRCorr(kSite, message));
            CHalvexSSRCorr loaded(kSite, shared(SSRSignalMsgT()));
            ASSERT_TRUE(loaded.loadData(bytes.data(), bytes.size())) << code;
            const SSRCorrMsgBaseT &sent = *message, *got = loaded.GetMessage().get();
            EXPECT_EQ(got == nullptr, code == 17) << code;
            EXPECT_TRUE(got == nullptr || (typeid(*got) == typeid(sent) && got->GetSSRType() == code)) << code;
        }
    }
    for (const std::uint32_t code : {0U, 19U, 0x101U, 0xFFFFFFFFU}) {
        Bytes bytes = saved(CHalvexSSRCorr(kSite));
        halvex::storeLittleEndian(&bytes[12], code);
        CHalvexSSRCorr loaded(kSite, shared(SSRSignalMsgT()));
        EXPECT_TRUE(loaded.loadData(bytes.data(), bytes.size()) && loaded.GetMessage() == nullptr) << code;
    }
}

/// The saved form of a set with every message that there can be, each without entries.
Bytes fullSet() {
    std::string text = kVersionAndSite + "91E60000 0000000000408F40 44332211 A00A0000";
    for (int system = 1; system < kSystemSlots; ++system) text += "5F050000";
    Bytes bytes = hex(text);
    const Bytes message = hex("0200 00000000 00 91E60000 0000000000408F40 00000000 00 00 0700 00 00 000000 00000000");
    const auto add = [&](int type, int system) {
        bytes.insert(bytes.end(), message.begin(), message.end());
        bytes[bytes.size() - message.size() + 2] = static_cast<unsigned char>(type);
        bytes[bytes.size() - message.size() + 6] = static_cast<unsigned char>(system);
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

// A message that stood in another's place would not load: it is of another kind.
TEST(SsrSet, Bytes) {
    CHalvexSSRAllCorr set = loadedSet(fullSet());
    EXPECT_TRUE(set.GetSiteID() == kSite && set.GetEpoch() == kEpoch && set.word == 0x11223344);
    EXPECT_TRUE(set.orbit[0] == nullptr && set.signal[0] == nullptr && set.slantTropo[0] == nullptr);
    for (std::size_t i = 1; i < kSystemSlots; ++i) {
        EXPECT_TRUE(set.signal[i]->system == i && set.orbit[i]->system == i && set.slantTropo[i]->system == i) << i;
    }
    set.orbit[0] = set.orbit[1];
    set.signal[0] = set.signal[1];
    EXPECT_EQ(saved(set), fullSet()) << "without slot 0";
}

TEST(SsrSet, AClearBitLeavesItsSlot) {
    CHalvexSSRAllCorr set = loadedSet(fullSet());
    const SSRAllCorrMsgT before = set;
    CHalvexSSRAllCorr other(CHalvexUniqueSiteID(1, 2), kEpoch);
    const Bytes bytes = saved(other);
    ASSERT_TRUE(bytes.size() == kHead && set.loadData(bytes.data(), bytes.size()));
    EXPECT_TRUE(set.word == 0 && set.GetSiteID() == CHalvexUniqueSiteID(1, 2));
    EXPECT_TRUE(set.baseCoords == before.baseCoords && set.orbit == before.orbit && set.slantIono == before.slantIono);
}

TEST(SsrSet, CutOffBytes) {
    CHalvexSSRAllCorr set(kSite, kEpoch);
    SSROrbitCorrMsgT orbit;
    orbit.entries.resize(2);
    SSRCodeBiasMsgT bias;
    bias.entries = {{{eCALSATSYSTEM_GALILEO, 5}, {{1, 2}, {3, -4}}}};
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
}

TEST(SsrSet, RefusedAsAWholeAndAvailability) {
    CHalvexSSRAllCorr set = loadedSet(fullSet());
    std::uint64_t used = 1;
    EXPECT_FALSE(set.loadData(nullptr, kHead, used));
    Bytes version2 = saved(CHalvexSSRAllCorr()), noEpoch = version2;
    version2[0] = 2;
    halvex::storeLittleEndian(&noEpoch[16], std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(set.loadData(version2.data(), kHead, used) || set.loadData(noEpoch.data(), kHead));
    EXPECT_TRUE(saved(set) == fullSet() && used == 0);

    using Set = SSRAllCorrMsgT;
    const auto word8 = [&](bool clear, bool entriesOnly, std::uint32_t mask) {
        std::vector<Set::ebfSSRContent> words(kSystemSlots, static_cast<Set::ebfSSRContent>(0x1000));
        set.getDataAvlblty(words.data(), clear, entriesOnly, static_cast<Set::ebfSSRContent>(mask));
        return words[8];
    };
    EXPECT_TRUE(word8(true, false, Set::ebfSSR_ORBIT) == 1 && word8(true, true, Set::ebfSSR_ALL) == 0);
    EXPECT_EQ(word8(false, false, Set::ebfSSR_ORBIT | Set::ebfSSR_SIGNALS), 0x1401);
}

}  // namespace
