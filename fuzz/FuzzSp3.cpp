#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "formats/sp3/PreciseOrbits.h"
#include "fuzz/Require.h"

namespace {

using halvex::fuzz::require;
using halvex::sp3::Epoch;
using halvex::sp3::PreciseOrbits;
using halvex::sp3::Sp3Reader;

halvex::LineReader linesOf(std::string bytes) {
    halvex::LineReader lines;
    lines.openBytes("fuzz", std::move(bytes));
    return lines;
}

bool isFinite(const ORBIT_COORD& position) {
    return std::isfinite(position.x) && std::isfinite(position.y) && std::isfinite(position.z);
}

}  // namespace

/// The bytes are an SP3 file, plain or gzip-compressed. Epochs increase and hold satellites of the header, each once;
/// the file held as a whole has the same positions at them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    Sp3Reader reader;
    PreciseOrbits orbits;
    const bool opened = reader.open(linesOf(bytes));
    require(orbits.read(linesOf(bytes)) == opened);
    if (!opened) {
        require(!reader.error().text().empty() && orbits.errors().size() == 1);
        return 0;
    }

    std::map<CALN::SCalSatID, std::uint64_t> lastLines;
    for (const auto& satellite : reader.header().satellites) lastLines[satellite.id] = 0;
    SMjdTime last;
    std::size_t epochs = 0;
    std::size_t errors = 0;
    Epoch epoch;
    for (auto result = reader.next(epoch); result != Sp3Reader::Result::end; result = reader.next(epoch)) {
        if (result == Sp3Reader::Result::error) {
            ++errors;
            continue;
        }
        require(++epochs == 1 || last < epoch.time);
        last = epoch.time;
        for (const auto& state : epoch.states) {
            const auto satellite = lastLines.find(state.id);
            require(satellite != lastLines.end() && std::exchange(satellite->second, epoch.line) != epoch.line);
            require(!state.position || isFinite(*state.position));
            require(orbits.position(state.id, epoch.time) == state.position);
        }
    }
    require(epochs == reader.epochsRead() && epochs == orbits.epochs().size() && errors == orbits.errors().size());
    require(reader.endLineMissing() == orbits.endLineMissing());
    for (const SMjdTime& time : orbits.epochs()) {
        SMjdTime between = time;
        between.AddSeconds(0.4 * orbits.interval());
        for (const auto& satellite : orbits.header().satellites) (void)orbits.position(satellite.id, between);
    }
    return 0;
}
