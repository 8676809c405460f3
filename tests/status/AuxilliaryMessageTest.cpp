#include "halvex/status/AuxilliaryMessage.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "halvex/platform/kernix/ByteCodec.h"
#include "tests/support/Bytes.h"

namespace {

using namespace halvex::test;
using Message = CHalvexAuxilliaryMessage;

CALN::Msg1014T stationData() {
    CALN::Msg1014T record;
    record.networkId = 124;
    record.masterStation = 0x074A;
    record.deltaHeight = -2;
    return record;
}
template <class Record>
Message differences(CALN::eCALSATSYSTEM system) {
    Record record;
    record.system = system;
    record.satelliteCount = 1;
    record.satellites[0].difference = -3;
    return Message(&record);
}
POS_REF_VR_CORRECTION gradients(std::int32_t number) {
    POS_REF_VR_CORRECTION record;
    record.messageNumber = number;
    record.satellites.back().ionosphereEast = -4;
    return record;
}

/// The number whose getter gives a record (1034 for any area correction); 0 for none, -1 for several.
int held(const Message& m) {
    const std::pair<int, const void*> getters[] = {
        {1014, m.getMsg1014T()},   {1015, m.getMsg1015T()}, {1016, m.getMsg1016T()}, {1029, m.getMsg1029T()},
        {1032, m.getPhysRefMsg()}, {1034, m.getFKPMsg()},   {1037, m.getMsg1037T()}, {1038, m.getMsg1038T()},
        {1040, m.getMsg1040T()},   {1041, m.getMsg1041T()}};
    int found = 0;
    for (const auto& [number, record] : getters) {
        if (record != nullptr) found = found == 0 ? number : -1;
    }
    return found;
}

TEST(AuxilliaryMessage, EveryKindItsNumberSizeAndCopy) {
    const auto iono = &differences<CALN::IonoMsgT>, geo = &differences<CALN::GeoMsgT>;
    const auto station = stationData();
    const POS_REF_VR_CORRECTION fkp[] = {gradients(59), gradients(1034), gradients(1035), gradients(1014),
                                         gradients(7)};
    const std::tuple<const char*, Message, int, int, std::size_t, bool> rows[] = {
        {"empty", {}, 0, 0, 0, false},
        {"1014", Message(&station), 1014, 1014, 28, true},
        {"null 1014", Message(static_cast<CALN::Msg1014T*>(nullptr)), 1014, 0, 0, false},
        {"null iono", Message(static_cast<CALN::IonoMsgT*>(nullptr)), 0, 0, 0, false},
        {"iono GPS", iono(CALN::eCALSATSYSTEM_GPS), 1015, 1015, 268, true},
        {"iono GLONASS", iono(CALN::eCALSATSYSTEM_GLONASS), 1037, 1037, 268, true},
        {"iono Galileo", iono(CALN::eCALSATSYSTEM_GALILEO), 0, 0, 0, false},
        {"geo GPS", geo(CALN::eCALSATSYSTEM_GPS), 1016, 1016, 388, true},
        {"geo GLONASS", geo(CALN::eCALSATSYSTEM_GLONASS), 1038, 1038, 388, true},
        {"text", Message(PIO::RTCM3::UTF8MessageC()), 1029, 1029, 284, false},
        {"place", Message(POS_REF_PHYS_REFERENCE()), 1032, 1032, 36, true}};
    for (const auto& [what, message, number, getter, size, loads] : rows) {
        SCOPED_TRACE(what);
        EXPECT_EQ(std::tuple(message.getMessageNumber(), held(message), message.getSize()),
                  std::tuple(number, getter, size));
        const Message copy = message;
        EXPECT_TRUE(held(copy) == getter && copy == message);
        Message loaded;
        const Bytes bytes = saved(message);
        EXPECT_EQ(loaded.loadData(bytes.data(), bytes.size()), loads);
        EXPECT_EQ(loaded == message, loads || number == 0);
        EXPECT_FALSE(Message().loadData(bytes.data(), bytes.size() - std::min<std::size_t>(bytes.size(), 1)));
    }
    for (const std::uint32_t number : {0U, 1040U, 1041U, 0xFFFFFFFFU}) {  // as they are not loaded
        Bytes bytes(400, 0);
        halvex::storeLittleEndian(bytes.data(), number);
        Message message;
        EXPECT_TRUE(!message.loadData(bytes.data(), bytes.size()) && held(message) == 0) << number;
        EXPECT_EQ(message.getMessageNumber(), static_cast<std::int32_t>(number));
    }
    for (const auto& record : fkp) {
        const Message message(&record);
        const bool known = record.messageNumber != 1014 && record.messageNumber != 7;
        EXPECT_EQ(message.getMessageNumber(), record.messageNumber);
        EXPECT_EQ(held(message), known ? 1034 : 0) << "and no shorter record taken for a longer one";
        EXPECT_EQ(message.getSize(), 204U);
        const Message copy = message;
        EXPECT_TRUE(copy.getMessageNumber() == record.messageNumber && held(copy) == 0 && copy.getSize() == 0);
        Message loaded;
        const Bytes bytes = saved(message);
        EXPECT_EQ(loaded.loadData(bytes.data(), bytes.size()), record.messageNumber != 7);
        EXPECT_TRUE(!known || (*loaded.getFKPMsg() == record && loaded == message));
    }
}

TEST(AuxilliaryMessage, SavedForm) {
    const auto record = stationData();
    const Bytes golden = hex("F6 03 00 00  F6 03 7C 00 00 00 00 00 4A 07 00 00 00 00 00 00 00 00 00 00 FE FF FF FF");
    const Message message(&record);
    EXPECT_EQ(saved(message), golden);
    for (std::size_t size = 0; size < golden.size(); ++size) {
        Bytes untouched(size, 0xEE);
        message.saveData(untouched.data(), size);
        EXPECT_EQ(untouched, Bytes(size, 0xEE));
        const Bytes part(golden.begin(), golden.begin() + static_cast<std::ptrdiff_t>(size));
        Message empty;
        EXPECT_FALSE(empty.loadData(part.data(), size)) << size;
        EXPECT_TRUE(empty.getMessageNumber() == (size < 4 ? 0 : 1014) && held(empty) == 0) << size;
        Message full = message;
        EXPECT_FALSE(full.loadData(part.data(), size)) << "shorter than what is held";
        EXPECT_TRUE(full == message) << size;
    }
    Message full = message;
    message.saveData(nullptr, golden.size());
    EXPECT_TRUE(!full.loadData(nullptr, golden.size()) && full == message);
    full.getMsg1014T()->deltaHeight = 5;
    EXPECT_FALSE(full == message) << "a record of its own";
}

}  // namespace
