#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>

#include "formats/rinex/NavigationReader.h"
#include "fuzz/Require.h"
#include "tests/formats/Gzip.h"

namespace {

using halvex::fuzz::require;
using namespace halvex::rinex;

/// What every ephemeris holds, whatever the file says.
void check(const CALN::CALX_SAT_EPHEMERIS_COMMON& r) {
    require(r.toe >= 0.0 && r.toe < 604800.0 && r.toc >= 0.0 && r.toc < 604800.0);
    require(r.satId != 0 && r.source == CALN::eCALORBITSOURCE_FILE);
}
void check(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r) {
    require(r.referenceSeconds >= 0.0 && r.referenceSeconds < 604800.0 && r.tb < 96);
    require(r.frameTime < 86400 && r.frequencyNumber >= -7 && r.frequencyNumber <= 13);
}
void check(const SbasOrbit& r) {
    require(r.number != 0);
}
void check(const SystemTimeOffset& r) {
    require(r.pair.size() <= 19);
}
void check(const IonosphereModel& r) {
    require(!r.source.message.empty());
}
void check(const EarthOrientation& r) {
    require(r.source.satellite.system != CALN::eCALSATSYSTEM_NONE);
}

struct Counts {
    std::size_t records = 0, errors = 0;
    friend bool operator==(const Counts&, const Counts&) = default;
};

Counts readAll(std::string bytes) {
    halvex::LineReader lines;
    lines.openBytes("fuzz", std::move(bytes));
    NavigationReader reader;
    NavigationRecord record;
    Counts counts;
    if (!reader.open(std::move(lines))) return counts;
    for (auto result = reader.next(record); result != NavigationReader::Result::end; result = reader.next(record)) {
        if (result == NavigationReader::Result::error) {
            require(!reader.error().text().empty());
            ++counts.errors;
            continue;
        }
        ++counts.records;
        require(reader.line() != 0 && reader.line() <= reader.lines().lineNumber());
        std::visit([](const auto& r) { check(r); }, record);
    }
    return counts;
}

}  // namespace

/// The bytes are a RINEX navigation file, plain or gzip-compressed by their first two bytes. A plain one reads the same
/// when it is compressed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    const Counts counts = readAll(bytes);
    const bool compressed = size >= 2 && data[0] == 0x1F && data[1] == 0x8B;
    if (!compressed) require(readAll(halvex::test::gzip(bytes)) == counts);
    return 0;
}
