#pragma once

#include <fmt/format.h>

#include <string>

#include "formats/rinex/NavigationReader.h"
#include "tests/formats/RinexText.h"

namespace halvex::test {

inline std::string navigationVersion(const std::string& number, const std::string& type = "NAVIGATION DATA",
                                     const std::string& system = "M") {
    return record(fmt::format("     {:15}{:20}{}", number, type, system), "RINEX VERSION / TYPE");
}

/// A record whose every field prints its own place: four to a line, the epoch being number 0.
inline std::string numberedRecord(const std::string& epoch, int lines, std::size_t indent = 4) {
    std::string text = epoch;
    for (int i = 1; i < 4 * lines; ++i) {
        if (i % 4 == 0) text += '\n' + std::string(indent, ' ');
        text += fmt::format("{:19.12E}", static_cast<double>(i));
    }
    return text + '\n';
}

/// Epochs in week 22 of GPS and of BeiDou time, 12 s into it: those fields print their own places too.
inline const std::string kGpsEpoch = " 1980 06 08 00 00 12";
inline const std::string kBeidouEpoch = " 2006 06 04 00 00 12";

/// Every kind of record of version 4, numbered.
inline std::string numberedRecords() {
    std::string text;
    const auto ephemeris = [&text](const std::string& satellite, const std::string& message, int lines,
                                   const std::string& epoch = kGpsEpoch) {
        text += "> EPH " + satellite + ' ' + message + '\n' + numberedRecord(satellite + epoch, lines);
    };
    ephemeris("G07", "LNAV", 8);
    ephemeris("G07", "CNAV", 9);
    ephemeris("J02", "CNV2", 10);
    ephemeris("R24", "FDMA", 5, " 2021 12 31 22 00 00");
    ephemeris("E36", "INAV", 8);
    ephemeris("E36", "FNAV", 8);
    ephemeris("C63", "D2", 8, kBeidouEpoch);
    ephemeris("C30", "CNV1", 10, kBeidouEpoch);
    ephemeris("C30", "CNV2", 10, kBeidouEpoch);
    ephemeris("C30", "CNV3", 9, kBeidouEpoch);
    ephemeris("I14", "LNAV", 8);
    ephemeris("S58", "SBAS", 4);
    text += "> EOP G07 CNVX\n" + numberedRecord("   " + kGpsEpoch, 3);
    text += "> ION J02 LNAV\n" + numberedRecord("   " + kGpsEpoch, 3);
    text += "> ION E01 IFNV\n" + numberedRecord("   " + kGpsEpoch, 2);
    text += "> ION C30 CNVX\n" + numberedRecord("   " + kGpsEpoch, 3);
    text += "> STO E   IFNV\n    1980 06 08 00 00 12 GAUT               WAAS               UTCGAL\n" +
            numberedRecord("", 2).substr(58);
    return text;
}

}  // namespace halvex::test
