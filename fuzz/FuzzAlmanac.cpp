#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "formats/almanac/AlmanacReader.h"
#include "fuzz/Require.h"

/// The bytes are a YUMA or SEM almanac, plain or gzip-compressed. Its records are GPS satellites with finite elements,
/// can be saved, and come back the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using halvex::almanac::AlmanacReader;
    using halvex::fuzz::require;
    halvex::LineReader lines;
    lines.openBytes("fuzz", std::string(data, data + size));
    halvex::FormatError error;
    const auto reader = halvex::almanac::openAlmanac(std::move(lines), error, SMjdTime(2400, 0.0));
    if (!reader) {
        require(!error.text().empty());
        return 0;
    }
    CALN::CALX_SAT_ALMANAC almanac;
    std::uint64_t lastLine = 0;
    for (auto result = reader->next(almanac); result != AlmanacReader::Result::end; result = reader->next(almanac)) {
        if (result == AlmanacReader::Result::error) {
            require(!reader->error().message.empty());
            continue;
        }
        require(std::exchange(lastLine, reader->recordLine()) < reader->recordLine());
        require(almanac.satId >= 1 && almanac.satId <= 32 && almanac.source == CALN::eCALORBITSOURCE_FILE);
        require(almanac.e < 1.0 && almanac.sqrtA > 0.0 && std::isfinite(almanac.m0) && almanac.toa < 604800.0);
        std::vector<unsigned char> bytes(almanac.getSize());
        almanac.saveData(bytes.data(), bytes.size());
        CALN::CALX_SAT_ALMANAC again;
        require(again.loadData(bytes.data(), bytes.size()) && again == almanac);
    }
    return 0;
}
