#include "formats/rinex/SatelliteName.h"

#include <algorithm>

#include "formats/io/Columns.h"
#include "formats/io/FixedNumber.h"

namespace halvex::rinex {
namespace {

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

}  // namespace

unsigned char lastSatelliteInFiles(const SatelliteSystem& system) {
    constexpr unsigned char kLastSbas = 58;
    constexpr unsigned char kLastGlonass = 31;
    switch (system.code) {
        case CALN::eCALSATSYSTEM_GLONASS:
            return std::max(system.maxNumber, kLastGlonass);
        case CALN::eCALSATSYSTEM_SBAS:
            return std::max(system.maxNumber, kLastSbas);
        default:
            return system.maxNumber;
    }
}

std::optional<std::string> parseSatellite(std::string_view text, char blankSystem, CALN::SCalSatID& id) {
    const char tens = columnAt(text, 1);
    const char ones = columnAt(text, 2);
    const bool isNumber = (tens == ' ' || (tens >= '0' && tens <= '9')) && ones >= '0' && ones <= '9';
    const char letter = columnAt(text, 0) == ' ' ? blankSystem : columnAt(text, 0);
    if (!isNumber) return isBlank(text) ? "a satellite is missing" : quoted(text) + " is no satellite";
    const SatelliteSystem* const system = systemOfLetter(letter);
    if (system == nullptr) return "satellite " + quoted(text) + " is of no known system";
    const int number = (tens == ' ' ? 0 : tens - '0') * 10 + (ones - '0');
    const int last = lastSatelliteInFiles(*system);
    if (number == 0 || number > last) {
        return "satellite " + satelliteName({system->code, static_cast<unsigned char>(number)}) + ": " +
               std::string(system->name) + " has satellites 1 to " + std::to_string(last);
    }
    id = CALN::SCalSatID(system->code, static_cast<unsigned char>(number));
    return std::nullopt;
}

std::string satelliteName(const CALN::SCalSatID& id) {
    const SatelliteSystem* const system = systemOfCode(id.system);
    std::string name(1, system != nullptr ? system->letter : '?');
    if (id.number < 10) name += '0';
    return name + std::to_string(id.number);
}

}  // namespace halvex::rinex
