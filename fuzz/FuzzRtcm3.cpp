#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "formats/rinex/EpochBuilder.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/NetworkMessages.h"
#include "formats/rtcm3/Ssr.h"
#include "formats/rtcm3/StreamReader.h"
#include "fuzz/Require.h"
#include "halvex/platform/pio/Rtcm3.h"

namespace {

using halvex::fuzz::require;
using namespace halvex::rtcm3;
using halvex::rinex::lastSatelliteInFiles;

/// Bytes as the one message of a stream: a fuzzer finds no check sums.
std::string framed(const std::string& message) {
    std::string frame{'\xD3', static_cast<char>(message.size() >> 8U), static_cast<char>(message.size())};
    frame += message;
    const std::uint32_t check =
        PIO::RTCM3::ComputeCRC24({reinterpret_cast<const unsigned char*>(frame.data()), frame.size()});
    for (const unsigned shift : {16U, 8U, 0U}) frame += static_cast<char>(check >> shift);
    return frame;
}

FrameReader framesOf(const std::string& bytes) {
    halvex::ByteInput input;
    input.openBytes("fuzz", bytes);
    FrameReader frames;
    frames.open(std::move(input));
    return frames;
}

/// Corrections: of satellites that there are, and their records the same when they come back.
void readCorrections(const std::string& bytes) {
    FrameReader frames = framesOf(bytes);
    SsrMessages read;
    while (const auto frame = frames.next()) {
        if (!readSsr(*frame, SMjdTime(2010, 302400.0), read)) continue;
        require(ssrTypeOf({frame->number, frame->subType}).has_value());
        require(!read.messages.empty() && read.bitsLeft <= frame->message.size() * 8);
        for (const CHalvexSSRCorr::Message& message : read.messages) {
            std::vector<CALN::SCalSatID> satellites;
            message->getSatIDs(satellites);
            for (const CALN::SCalSatID& id : satellites) {
                const auto* const system = halvex::systemOfCode(id.system);
                require(id.system == message->system);
                require(system == nullptr || (id.number >= 1 && id.number <= lastSatelliteInFiles(*system)));
            }
            const CHalvexSSRCorr record(CHalvexUniqueSiteID(), message);
            std::vector<unsigned char> saved(record.getSize());
            record.saveData(saved.data(), saved.size());
            CHalvexSSRCorr again;
            require(again.loadData(saved.data(), saved.size()) && again == record);
        }
    }
}

void readAll(const std::string& bytes) {
    readCorrections(bytes);
    const SMjdTime reference(2010, 302400.0);
    halvex::ByteInput input;
    input.openBytes("fuzz", bytes);
    static_cast<void>(isStream(input));
    StreamReader reader(reference);
    reader.setTime(reference);
    reader.open(std::move(input));
    halvex::rinex::EpochBuilder builder(reader.header());
    halvex::rinex::ObservationEpoch epoch;
    CHalvexStationObservation station;
    for (auto result = reader.next(epoch); result != StreamReader::Result::end; result = reader.next(epoch)) {
        if (result == StreamReader::Result::ephemeris) {
            require(reader.ephemeris().satellite.number != 0);
            continue;
        }
        for (const auto& satellite : epoch.satellites) {
            require(satellite.id.number != 0 && satellite.id.number < 64);
            require(satellite.count == reader.header().codes[satellite.id.system].size());
            for (const auto& value : epoch.valuesOf(satellite)) require(std::isfinite(value.value));
        }
        builder.setHeader(reader.header());
        static_cast<void>(builder.build(epoch, 1, station));
    }
    std::uint64_t counted = 0;
    for (const auto& [type, count] : reader.frames().counts()) {
        counted += count.count;
        require(count.first <= count.last && count.last < bytes.size());
    }
    require(counted == reader.frames().frames());
    if (!bytes.starts_with("\x1f")) {
        require(reader.frames().unframedBytes() + FrameReader::kFrameBytes * counted <= bytes.size());
    }
}

/// Messages of a network: what one of them takes is within its fields, and what is refused changes nothing.
void readNetwork(const std::string& bytes) {
    FrameReader frames = framesOf(bytes);
    NetworkMessage message;
    while (const auto frame = frames.next()) {
        const NetworkMessage before = message;
        if (!readNetworkMessage(*frame, message)) {
            require(message == before);
            continue;
        }
        require(isNetworkMessage(frame->number));
        if (const auto* differences = std::get_if<CALN::IonoGeoMsgT>(&message)) {
            require(73 + differences->entries.size() * 53 <= frame->message.size() * 8);
            const auto time = instantOf(epochOf(*differences), SMjdTime(2010, 302400.0));
            require(!time || std::abs(time->GetDifferenceInSeconds(SMjdTime(2010, 302400.0))) <= 302400.0);
        }
    }
}

}  // namespace

/// The bytes are a stream, plain or gzip-compressed, and then the one message of another.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    readAll(bytes);
    readNetwork(bytes);
    if (size > FrameReader::kLongestMessage) return 0;
    readAll(framed(bytes));
    readNetwork(framed(bytes));
    return 0;
}
