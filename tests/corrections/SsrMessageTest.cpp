#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/corrections/Messages.h"

namespace {

using namespace CALN;
using halvex::test::Bytes;
using halvex::test::hex;
using halvex::test::kEpoch;
using halvex::test::Kind;

/// What a message saves into a buffer of exactly its size.
Bytes saved(const SSRCorrMsgBaseT& message) {
    Bytes bytes(message.getSize());
    std::uint64_t used = 0;
    message.saveData(bytes.data(), bytes.size(), used);
    EXPECT_EQ(used, bytes.size());
    return bytes;
}

const char* const kCommon = "03 91E60000 0000000000408F40 FEFFFFFF 05 11 0201 07 01 02 01 03";

/// The saved form of a message with up to three entries and random content.
Bytes randomBytes(const Kind& kind, std::mt19937& random, std::size_t& entries) {
    Bytes bytes = hex(std::string("0200 00000000") + kCommon);
    bytes[2] = static_cast<unsigned char>(kind.codes.back());
    const auto addRandom = [&](std::size_t count) {
        for (; count > 0; --count) bytes.push_back(static_cast<unsigned char>(random()));
    };
    const auto addCount = [&] {
        bytes.push_back(static_cast<unsigned char>(random() % 4));
        bytes.insert(bytes.end(), 3, 0);
        return std::size_t{bytes[bytes.size() - 4]};
    };
    entries = addCount();
    for (std::size_t i = 0; i < entries; ++i) {
        addRandom(kind.entrySize);
        for (const std::size_t size : kind.lists) addRandom(addCount() * size);
    }
    return bytes;
}

TEST(SsrMessage, ComesBackWholeOrNotAtAll) {
    std::mt19937 random(1980);
    for (const Kind& kind : halvex::test::kKinds) {
        for (int round = 0; round < 50; ++round) {
            std::size_t entries = 0;
            Bytes bytes = randomBytes(kind, random, entries);
            const std::size_t size = bytes.size();
            const auto message = kind.make();
            std::uint64_t used = 0;
            bytes.push_back(0xEE);
            ASSERT_TRUE(message->loadData(bytes.data(), bytes.size(), used)) << kind.codes[0];
            bytes.pop_back();
            ASSERT_TRUE(used == size && saved(*message) == bytes) << kind.codes[0];
            std::vector<SCalSatID> satellites{{eCALSATSYSTEM_GPS, 1}};
            message->getSatIDs(satellites);
            ASSERT_TRUE(satellites.size() == 1 + entries && (entries == 0 || satellites[1].number == bytes[37]));

            for (std::size_t cut = 0; cut < size; ++cut) {
                Bytes part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(cut));
                ASSERT_FALSE(message->loadData(part.data(), cut, used) || used != 0) << kind.codes[0] << " " << cut;
                part.assign(cut, 0xEE);
                message->saveData(part.data(), cut, used);
                ASSERT_TRUE(used == 0 && part == Bytes(cut, 0xEE)) << kind.codes[0] << " " << cut;
            }
            ASSERT_FALSE(message->loadData(nullptr, size, used));
        }
    }
}

/// Saved form of one entry.
template <class Message>
Bytes entry(const typename Message::Entry& value) {
    Message message;
    message.entries = {value};
    Bytes bytes = saved(message);
    bytes.erase(bytes.begin(), bytes.begin() + 36);
    return bytes;
}

TEST(SsrMessage, TheCommonPartHasNoEntries) {
    SSRCorrMsgBaseT message, again;
    message.provider = 513;
    Bytes bytes = saved(message);
    std::uint64_t used = 0;
    EXPECT_TRUE(again.loadData(bytes.data(), bytes.size(), used) && used == 36 && again.provider == 513);
    bytes[32] = 1;  // one satellite, which is there
    bytes.resize(38);
    again.provider = 7;
    EXPECT_FALSE(again.loadData(bytes.data(), bytes.size(), used));
    EXPECT_EQ(std::tuple(used, again.provider), std::tuple(0U, 7));
}

TEST(SsrMessageBytes, Entries) {
    const SCalSatID sat(eCALSATSYSTEM_GALILEO, 11);
    EXPECT_EQ(entry<SSROrbitCorrMsgT>({sat, 0x0A0B0C0D, 0x0102, -1, 0x12345678, -2, 1, 2, -3}),
              hex("030B 0D0C0B0A 0201 FFFFFFFF 78563412 FEFFFFFF 01000000 02000000 FDFFFFFF"));
    EXPECT_EQ(entry<SSRClockCorrMsgT>({sat, 1, -2, 3}), hex("030B 01000000 FEFFFFFF 03000000"));
    EXPECT_EQ(entry<SSRHighRateClockMsgT>({sat, -2}), hex("030B FEFFFFFF"));
    EXPECT_EQ(entry<SSRCodeBiasMsgT>({sat, {{1, -2}}}), hex("030B 01000000 01 FEFF"));
    EXPECT_EQ(entry<SSRURAMsgT>({sat, 0x2A}), hex("030B 2A"));
    EXPECT_EQ(entry<SSRSignalMsgT>({sat, {eCALSATSYSTEM_GPS, 2}}), hex("030B 01 02"));
    EXPECT_EQ(entry<QTBaseCoordsMsgT>({{}, 1, 0x0102030405, -2, 3}),
              hex("0000 01000000 0504030201000000 FEFFFFFFFFFFFFFF 0300000000000000"));
    EXPECT_EQ(entry<QTVertTropoCorrMsgT>({{}, 1, 2, 3, -4, 5}),
              hex("0000 01000000 02000000 03000000 FCFFFFFF 05000000"));
    EXPECT_EQ(entry<QTSlantTropoCorrMsgT>({sat, 1, -2}), hex("030B 01000000 FEFFFFFF"));
    EXPECT_EQ(entry<QTVertIonoCorrMsgT>({{}, 1, 2, 3, 4, {5, -6}, {7}}),
              hex("0000 01 02 03 0400 02000000 0500 FAFF 01000000 0700"));
    EXPECT_EQ(entry<QTSlantIonoCorrMsgT>({sat, 1, -2}), hex("030B 01000000 FEFFFFFF"));
    EXPECT_EQ(entry<QTNetGeometryCorrMsgT>({sat, 1, 2, -3}), hex("030B 01000000 02000000 FDFFFFFF"));
}

TEST(SsrMessageBytes, ListsInAList) {
    SSRPhaseBiasMsgT message;
    message.system = eCALSATSYSTEM_GALILEO, message.epoch = kEpoch, message.multipleMessage = -2;
    message.updateInterval = 5, message.issueOfData = 0x11, message.provider = 0x0102, message.solution = 7;
    message.referenceDatum = 1, message.igsVersion = 2;
    message.dispersiveBiasConsistency = 1, message.melbourneWuebbenaConsistency = 3;
    message.entries = {{{eCALSATSYSTEM_GALILEO, 1}, 0x0203, -2, {}},
                       {{eCALSATSYSTEM_GALILEO, 2}, 4, 5, {{6, 1, 2, 9, -10}, {7, 0, 3, 8, 11}}}};
    Bytes bytes = saved(message);
    EXPECT_EQ(bytes, hex(std::string("0200 05000000") + kCommon +
                         "02000000 03 01 0302 FEFF 00000000"
                         "03 02 0400 0500 02000000 06 01 02 09 F6FFFFFF 07 00 03 08 0B000000"));

    const std::tuple<const char*, int, const char*, bool> rows[] = {
        {"version", 0, "01", false},
        {"a system that has no slot", 6, "09", false},
        {"no epoch: infinite milliseconds", 11, "000000000000F07F", false},
        {"no epoch: days beyond the last", 7, "FFFFFF7F 0000000000000042", false},
        {"more entries than bytes", 32, "03", false},
        {"all the entries that there can be", 32, "FFFFFFFF", false},
        {"fewer entries", 32, "01", true},
        {"an inner list longer than the rest", 52, "03", false},
        {"an inner list of any length", 52, "FFFFFFFF", false}};
    for (const auto& [what, at, patch, loads] : rows) {
        Bytes damaged = bytes;
        std::ranges::copy(hex(patch), damaged.begin() + at);
        SSRPhaseBiasMsgT loaded = message;
        std::uint64_t used = 1;
        EXPECT_EQ(loaded.loadData(damaged.data(), damaged.size(), used), loads) << what;
        EXPECT_EQ(loaded == message && used == 0, !loads) << what;
    }
}

}  // namespace
