#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "formats/rinex/ObservationHeaderWriter.h"
#include "formats/rinex/ObservationReader.h"

/// The bytes are a RINEX observation file, plain or gzip-compressed by their first two bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using halvex::rinex::ObservationReader;
    halvex::LineReader lines;
    lines.openBytes("fuzz", std::string(data, data + size));
    ObservationReader reader;
    if (!reader.open(std::move(lines))) return 0;
    halvex::rinex::ObservationEpoch epoch;
    for (auto result = reader.next(epoch); result != ObservationReader::Result::end; result = reader.next(epoch)) {
        if (result == ObservationReader::Result::error) continue;
        for (const auto& satellite : epoch.satellites) {
            if (epoch.valuesOf(satellite).size() != reader.header().codes[satellite.id.system].size()) std::abort();
        }
    }
    if (halvex::rinex::headerText(reader.header()).empty()) std::abort();
    return 0;
}
