#include "formats/rtcm3/Signals.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace halvex::rtcm3 {
namespace {

constexpr double kSpeedOfLight = 299792458.0;  // [m/s]; RTCM 10403.3, 3.3
constexpr double kSBandFrequency = 2492.028e6;

/// Two letters for each bit of the mask, from bit 1 on; blanks are reserved. RTCM 10403.3, tables 3.5-91 to 3.5-108.
constexpr std::array<std::string_view, 7> kMasks{
    "  1C1P1W      2C2P2W        2S2L2X        5I5Q5X          1S1L1X",  // GPS
    "  1C1P        2C2P                                              ",  // GLONASS
    "  1C1A1B1X1Z  6C6A6B6X6Z  7I7Q7X  8I8Q8X  5I5Q5X                ",  // Galileo
    "  1C                                      5I5Q5X                ",  // SBAS
    "  2I2Q2X      6I6Q6X      7I7Q7X          5D5P5X7D        1D1P1X",  // BeiDou
    "  1C            6S6L6X      2S2L2X        5I5Q5X          1S1L1X",  // QZSS
    "              9A                          5A                    ",  // NavIC
};
static_assert(std::all_of(kMasks.begin(), kMasks.end(), [](std::string_view mask) { return mask.size() == 64; }));

CALN::eCALFREQUENCY carrierOf(CALN::eCALSATSYSTEM system, char band) {
    using namespace CALN;
    const bool glonass = system == eCALSATSYSTEM_GLONASS;
    const bool beidou = system == eCALSATSYSTEM_BEIDOU;
    switch (band) {
        case '2':
            return glonass ? eCALFREQUENCY_G2 : beidou ? eCALFREQUENCY_B1 : eCALFREQUENCY_L2;
        case '5':
            return eCALFREQUENCY_L5;
        case '6':
            return beidou ? eCALFREQUENCY_B3 : eCALFREQUENCY_E6;
        case '7':
            return eCALFREQUENCY_E5B;
        case '8':
            return eCALFREQUENCY_E5;
        default:
            return glonass ? eCALFREQUENCY_G1 : eCALFREQUENCY_L1;
    }
}

}  // namespace

Signal signalOf(CALN::eCALSATSYSTEM system, char band, char attribute) {
    return {band, attribute, carrierOf(system, band), band == '9'};
}

Signal signalOfMask(CALN::eCALSATSYSTEM system, unsigned id) {
    if (systemOfCode(system) == nullptr || id < 1 || id > 32) return {};
    const std::string_view letters = kMasks[system - 1U].substr(std::size_t{id - 1} * 2, 2);
    return letters[0] == ' ' ? Signal() : signalOf(system, letters[0], letters[1]);
}

double wavelengthOf(const Signal& signal, std::optional<int> glonassChannel) {
    if (signal.band == 0) return 0.0;
    if (signal.sBand) return kSpeedOfLight / kSBandFrequency;
    const bool byChannel = signal.carrier == CALN::eCALFREQUENCY_G1 || signal.carrier == CALN::eCALFREQUENCY_G2;
    if (byChannel && !glonassChannel) return 0.0;
    return kSpeedOfLight / CALN::getCarrierFrequency(signal.carrier, glonassChannel.value_or(0));
}

LockTime lockTimeMsm(unsigned indicator) {
    if (indicator == 0) return {0.0, 32.0};
    const double atLeast = static_cast<double>(16U << std::min(indicator, 15U));
    return {atLeast, indicator >= 15 ? 0.0 : 2.0 * atLeast};
}

LockTime lockTimeExtended(unsigned indicator) {
    constexpr unsigned kLast = 704;
    if (indicator > kLast) return {};                               // reserved
    const unsigned step = indicator < 64 ? 0 : indicator / 32 - 1;  // steps of 2^step ms
    const double atLeast = static_cast<double>((indicator - 32 * step) << step);
    return {atLeast, indicator == kLast ? 0.0 : atLeast + static_cast<double>(1U << step)};
}

LockTime lockTimeObservation(unsigned indicator) {
    struct Row {
        unsigned first, factor, less;
    };
    static constexpr std::array<Row, 6> kRows{
        {{0, 1, 0}, {24, 2, 24}, {48, 4, 120}, {72, 8, 408}, {96, 16, 1176}, {120, 32, 3096}}};
    constexpr unsigned kLast = 127;
    constexpr double kLongest = 937000.0;
    if (indicator >= kLast) return {kLongest, 0.0};
    const Row& row =
        *std::prev(std::find_if(kRows.begin() + 1, kRows.end(), [&](const Row& r) { return indicator < r.first; }));
    const double atLeast = (indicator * row.factor - row.less) * 1000.0;
    return {atLeast, std::min(kLongest, atLeast + row.factor * 1000.0)};
}

}  // namespace halvex::rtcm3
