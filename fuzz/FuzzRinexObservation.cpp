#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "formats/rinex/EpochBuilder.h"
#include "formats/rinex/ObservationHeaderWriter.h"
#include "formats/rinex/ObservationReader.h"
#include "fuzz/Require.h"
#include "halvex/observations/HalvexStationObservation.h"
#include "tests/formats/Gzip.h"

namespace {

using halvex::fuzz::require;
using halvex::rinex::EpochBuilder;
using halvex::rinex::ObservationEpoch;
using halvex::rinex::ObservationReader;

/// A station epoch can be saved, and comes back the same.
void testStation(const CHalvexStationObservation& station) {
    std::vector<unsigned char> bytes(station.getSize());
    station.saveData(bytes.data(), bytes.size());
    CHalvexStationObservation again;
    require(again.loadData(bytes.data(), bytes.size()) && again == station);
}

struct Counts {
    std::size_t epochs = 0, events = 0, errors = 0, values = 0;
    friend bool operator==(const Counts&, const Counts&) = default;
};

Counts readAll(std::string bytes) {
    halvex::LineReader lines;
    lines.openBytes("fuzz", std::move(bytes));
    ObservationReader reader;
    Counts counts;
    if (!reader.open(std::move(lines))) return counts;
    EpochBuilder builder(reader.header());
    CHalvexStationObservation station;
    ObservationEpoch epoch;
    std::uint32_t headerChanges = reader.headerChanges();
    for (auto result = reader.next(epoch); result != ObservationReader::Result::end; result = reader.next(epoch)) {
        if (result == ObservationReader::Result::error) {
            require(!reader.error().text().empty());
            ++counts.errors;
            continue;
        }
        if (headerChanges != reader.headerChanges()) builder.setHeader(reader.header());
        headerChanges = reader.headerChanges();
        if (result == ObservationReader::Result::event) {
            ++counts.events;
            continue;
        }
        ++counts.epochs;
        for (const auto& satellite : epoch.satellites) {
            require(epoch.valuesOf(satellite).size() == reader.header().codes[satellite.id.system].size());
            counts.values += epoch.valuesOf(satellite).size();
        }
        if (builder.build(epoch, 1, station)) {
            require(builder.satellites().size() == station.observations().size());
            testStation(station);
        }
    }
    (void)builder.losses();
    require(!halvex::rinex::headerText(reader.header()).empty());
    return counts;
}

}  // namespace

/// The bytes are a RINEX observation file, plain or gzip-compressed by their first two bytes. A plain one reads the
/// same when it is compressed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    const Counts counts = readAll(bytes);
    const bool compressed = size >= 2 && data[0] == 0x1F && data[1] == 0x8B;
    if (!compressed) require(readAll(halvex::test::gzip(bytes)) == counts);
    return 0;
}
