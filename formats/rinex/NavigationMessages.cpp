#include "formats/rinex/NavigationMessages.h"

#include <algorithm>
#include <array>

namespace halvex::rinex {
namespace {

constexpr std::array<MessageLayout, 26> kLayouts{{
    {"EPH", CALN::eCALSATSYSTEM_GPS, "LNAV", MessageKind::lnav, 8},
    {"EPH", CALN::eCALSATSYSTEM_GPS, "CNAV", MessageKind::cnav, 9},
    {"EPH", CALN::eCALSATSYSTEM_GPS, "CNV2", MessageKind::cnav2, 10},
    {"EPH", CALN::eCALSATSYSTEM_GLONASS, "FDMA", MessageKind::glonass, 4},
    {"EPH", CALN::eCALSATSYSTEM_GALILEO, "INAV", MessageKind::galileo, 8},
    {"EPH", CALN::eCALSATSYSTEM_GALILEO, "FNAV", MessageKind::galileo, 8},
    {"EPH", CALN::eCALSATSYSTEM_SBAS, "SBAS", MessageKind::sbas, 4},
    {"EPH", CALN::eCALSATSYSTEM_BEIDOU, "D1", MessageKind::beidouD1, 8},
    {"EPH", CALN::eCALSATSYSTEM_BEIDOU, "D2", MessageKind::beidouD2, 8},
    {"EPH", CALN::eCALSATSYSTEM_BEIDOU, "CNV1", MessageKind::beidouCnav1, 10},
    {"EPH", CALN::eCALSATSYSTEM_BEIDOU, "CNV2", MessageKind::beidouCnav2, 10},
    {"EPH", CALN::eCALSATSYSTEM_BEIDOU, "CNV3", MessageKind::beidouCnav3, 9},
    {"EPH", CALN::eCALSATSYSTEM_QZSS, "LNAV", MessageKind::lnav, 8},
    {"EPH", CALN::eCALSATSYSTEM_QZSS, "CNAV", MessageKind::cnav, 9},
    {"EPH", CALN::eCALSATSYSTEM_QZSS, "CNV2", MessageKind::cnav2, 10},
    {"EPH", CALN::eCALSATSYSTEM_NAVIC, "LNAV", MessageKind::navic, 8},
    {"STO", CALN::eCALSATSYSTEM_NONE, "", MessageKind::timeOffset, 2},
    {"EOP", CALN::eCALSATSYSTEM_NONE, "", MessageKind::earthOrientation, 3},
    {"ION", CALN::eCALSATSYSTEM_GPS, "LNAV", MessageKind::klobuchar, 3},
    {"ION", CALN::eCALSATSYSTEM_GPS, "CNVX", MessageKind::klobuchar, 3},
    {"ION", CALN::eCALSATSYSTEM_GALILEO, "IFNV", MessageKind::nequick, 2},
    {"ION", CALN::eCALSATSYSTEM_BEIDOU, "D1D2", MessageKind::klobuchar, 3},
    {"ION", CALN::eCALSATSYSTEM_BEIDOU, "CNVX", MessageKind::bdgim, 3},
    {"ION", CALN::eCALSATSYSTEM_QZSS, "LNAV", MessageKind::klobuchar, 3},
    {"ION", CALN::eCALSATSYSTEM_QZSS, "CNVX", MessageKind::klobuchar, 3},
    {"ION", CALN::eCALSATSYSTEM_NAVIC, "LNAV", MessageKind::klobuchar, 3},
}};

}  // namespace

const MessageLayout* layoutOf(std::string_view type, CALN::eCALSATSYSTEM system, std::string_view message) {
    const auto* const found = std::find_if(kLayouts.begin(), kLayouts.end(), [&](const MessageLayout& layout) {
        return layout.type == type && (layout.system == system || layout.system == CALN::eCALSATSYSTEM_NONE) &&
               (layout.message == message || layout.message.empty());
    });
    return found != kLayouts.end() ? found : nullptr;
}

const MessageLayout& layoutOfSatellite(const CALN::SCalSatID& satellite) {
    const bool geostationary = satellite.number <= 5 || satellite.number >= 59;
    if (satellite.system == CALN::eCALSATSYSTEM_BEIDOU && geostationary)
        return *layoutOf("EPH", satellite.system, "D2");
    return *std::find_if(kLayouts.begin(), kLayouts.end(),
                         [&](const MessageLayout& layout) { return layout.system == satellite.system; });
}

}  // namespace halvex::rinex
