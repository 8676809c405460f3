#include <gtest/gtest.h>

#include <random>

#include "tests/corrections/Messages.h"

namespace {

using namespace CALN;
using halvex::test::Bytes;
using halvex::test::hex;
using halvex::test::kEpoch;
using halvex::test::RandomEntry;
using halvex::test::savedMessage;

template <class Message>
class SsrMessage : public testing::Test {};
using Kinds = testing::Types<SSROrbitCorrMsgT, SSRClockCorrMsgT, SSRHighRateClockMsgT, SSRCodeBiasMsgT,
                             SSRPhaseBiasMsgT, SSRURAMsgT, SSRSignalMsgT, QTBaseCoordsMsgT, QTVertTropoCorrMsgT,
                             QTSlantTropoCorrMsgT, QTVertIonoCorrMsgT, QTSlantIonoCorrMsgT, QTNetGeometryCorrMsgT>;
TYPED_TEST_SUITE(SsrMessage, Kinds);

TYPED_TEST(SsrMessage, ComesBackWholeOrNotAtAll) {
    RandomEntry random;
    for (int round = 0; round < 50; ++round) {
        const auto message = random.message<TypeParam>();
        Bytes bytes = savedMessage(message);
        TypeParam loaded = random.message<TypeParam>();
        const TypeParam before = loaded;
        std::uint64_t used = 7;
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            EXPECT_FALSE(loaded.loadData(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)).data(),
                                         size, used));
            Bytes small(size, 0xEE);
            message.saveData(small.data(), size, used);
            ASSERT_TRUE(used == 0 && small == Bytes(size, 0xEE)) << size;
        }
        EXPECT_FALSE(loaded.loadData(nullptr, bytes.size(), used));
        ASSERT_EQ(loaded, before);
        const std::size_t size = bytes.size();
        bytes.push_back(0xEE);
        ASSERT_TRUE(loaded.loadData(bytes.data(), bytes.size(), used));
        ASSERT_TRUE(loaded == message && used == size);
        std::vector<SCalSatID> satellites{{eCALSATSYSTEM_GPS, 1}};
        loaded.getSatIDs(satellites);
        ASSERT_EQ(satellites.size(), 1 + message.entries.size());
        EXPECT_TRUE(message.entries.empty() || satellites.back() == message.entries.back().satId);
    }
}

// Damage is refused or read as another message, which then comes back as it is.
TYPED_TEST(SsrMessage, DamagedBytes) {
    RandomEntry random(7);
    std::mt19937 rng(7);
    for (int round = 0; round < 2000; ++round) {
        Bytes bytes = savedMessage(random.message<TypeParam>());
        for (int i = 0; i < 3; ++i) bytes[rng() % bytes.size()] = static_cast<unsigned char>(rng());
        TypeParam loaded;
        TypeParam again;
        std::uint64_t used = 0;
        if (!loaded.loadData(bytes.data(), bytes.size(), used)) {
            ASSERT_EQ(used, 0);
            continue;
        }
        ASSERT_TRUE(used == loaded.getSize() && used <= bytes.size());
        const Bytes once = savedMessage(loaded);
        ASSERT_TRUE(again.loadData(once.data(), once.size(), used) && again == loaded);
    }
}

template <class Message>
Message golden() {
    Message message;
    message.system = eCALSATSYSTEM_GALILEO;
    message.epoch = kEpoch;
    message.multipleMessage = -2;
    message.updateInterval = 5;
    message.issueOfData = 0x11;
    message.provider = 0x0102;
    message.solution = 7;
    message.referenceDatum = 1;
    return message;
}
const char* const kCommon = "03 91E60000 0000000000408F40 FEFFFFFF 05 11 0201 07 01";

TEST(SsrMessageBytes, Orbit) {
    auto message = golden<SSROrbitCorrMsgT>();
    message.type = eCALSSR_ORBIT_2;
    message.entries = {{{eCALSATSYSTEM_GALILEO, 11}, 0x0A0B0C0D, -1, 0x12345678, -2, 1, 2, -3}, {}};
    EXPECT_EQ(savedMessage(message), hex(std::string("0100 0F000000") + kCommon +
                                         "02000000 03 0B 0D0C0B0A FFFFFFFF 78563412 FEFFFFFF 01000000 02000000 FDFFFFFF"
                                         "00 00 00000000 00000000 00000000 00000000 00000000 00000000 00000000"));
}

TEST(SsrMessageBytes, ListsInAList) {
    auto message = golden<SSRPhaseBiasMsgT>();
    message.entries = {{{eCALSATSYSTEM_GALILEO, 1}, 0x0203, -2, {}},
                       {{eCALSATSYSTEM_GALILEO, 2}, 4, 5, {{6, 1, 2, 9, -10}, {7, 0, 3, 8, 11}}}};
    Bytes bytes = savedMessage(message);
    EXPECT_EQ(bytes, hex(std::string("0100 05000000") + kCommon +
                         "02000000 03 01 0302 FEFF 00000000"
                         "03 02 0400 0500 02000000 06 01 02 09 F6FFFFFF 07 00 03 08 0B000000"));

    struct Row {
        const char* what;
        std::size_t at;
        const char* bytes;
        bool loads;
    };
    const Row rows[] = {{"version", 0, "02", false},
                        {"a type of another kind is the sender's business", 2, "03", true},
                        {"a system that has no slot", 6, "09", false},
                        {"the last slot", 6, "08", true},
                        {"no epoch: infinite milliseconds", 11, "000000000000F07F", false},
                        {"no epoch: days beyond the last", 7, "FFFFFF7F 0000000000000042", false},
                        {"more entries than bytes", 29, "03", false},
                        {"all the entries that there can be", 29, "FFFFFFFF", false},
                        {"fewer entries", 29, "01", true},
                        {"an inner list longer than the rest", 49, "03", false},
                        {"an inner list of any length", 49, "FFFFFFFF", false}};
    for (const Row& row : rows) {
        Bytes damaged = bytes;
        const Bytes patch = hex(row.bytes);
        std::copy(patch.begin(), patch.end(), damaged.begin() + static_cast<std::ptrdiff_t>(row.at));
        SSRPhaseBiasMsgT loaded = message;
        std::uint64_t used = 1;
        EXPECT_EQ(loaded.loadData(damaged.data(), damaged.size(), used), row.loads) << row.what;
        EXPECT_EQ(loaded == message && used == 0, !row.loads) << row.what;
    }
}

TEST(SsrMessageBytes, WithoutAKind) {
    SSRCorrMsgBaseT message;
    message.type = eCALSSR_URA;
    const Bytes bytes = savedMessage(message);
    EXPECT_EQ(bytes, hex("0100 08000000 00 00000000 0000000000000000 00000000 00 00 0000 00 00 00000000"));
    SSRCorrMsgBaseT loaded;
    std::uint64_t used = 0;
    EXPECT_TRUE(loaded.loadData(bytes.data(), bytes.size(), used) && loaded.GetSSRType() == eCALSSR_URA);
    EXPECT_FALSE(loaded.loadData(bytes.data(), bytes.size() - 1, used));
}

}  // namespace
