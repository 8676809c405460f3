#include "formats/rinex/NavigationMessages.h"

#include <algorithm>
#include <array>

namespace halvex::rinex {
namespace {

using namespace CALN;

constexpr std::array<MessageLayout, 37> kLayouts{{
    {"EPH", eCALSATSYSTEM_GPS, "LNAV", MessageKind::lnav, 8},
    {"EPH", eCALSATSYSTEM_GPS, "CNAV", MessageKind::cnav, 9},
    {"EPH", eCALSATSYSTEM_GPS, "CNV2", MessageKind::cnav2, 10},
    {"EPH", eCALSATSYSTEM_GLONASS, "FDMA", MessageKind::glonass, 4},
    {"EPH", eCALSATSYSTEM_GALILEO, "INAV", MessageKind::galileo, 8},
    {"EPH", eCALSATSYSTEM_GALILEO, "FNAV", MessageKind::galileo, 8},
    {"EPH", eCALSATSYSTEM_SBAS, "SBAS", MessageKind::sbas, 4},
    {"EPH", eCALSATSYSTEM_BEIDOU, "D1", MessageKind::beidouD1, 8},
    {"EPH", eCALSATSYSTEM_BEIDOU, "D2", MessageKind::beidouD2, 8},
    {"EPH", eCALSATSYSTEM_BEIDOU, "CNV1", MessageKind::beidouCnav1, 10},
    {"EPH", eCALSATSYSTEM_BEIDOU, "CNV2", MessageKind::beidouCnav2, 10},
    {"EPH", eCALSATSYSTEM_BEIDOU, "CNV3", MessageKind::beidouCnav3, 9},
    {"EPH", eCALSATSYSTEM_QZSS, "LNAV", MessageKind::lnav, 8},
    {"EPH", eCALSATSYSTEM_QZSS, "CNAV", MessageKind::cnav, 9},
    {"EPH", eCALSATSYSTEM_QZSS, "CNV2", MessageKind::cnav2, 10},
    {"EPH", eCALSATSYSTEM_NAVIC, "LNAV", MessageKind::navic, 8},
    {"STO", eCALSATSYSTEM_GPS, "", MessageKind::timeOffset, 2},
    {"STO", eCALSATSYSTEM_GLONASS, "", MessageKind::timeOffset, 2},
    {"STO", eCALSATSYSTEM_GALILEO, "", MessageKind::timeOffset, 2},
    {"STO", eCALSATSYSTEM_SBAS, "", MessageKind::timeOffset, 2},
    {"STO", eCALSATSYSTEM_BEIDOU, "", MessageKind::timeOffset, 2},
    {"STO", eCALSATSYSTEM_QZSS, "", MessageKind::timeOffset, 2},
    {"STO", eCALSATSYSTEM_NAVIC, "", MessageKind::timeOffset, 2},
    {"EOP", eCALSATSYSTEM_GPS, "", MessageKind::earthOrientation, 3},
    {"EOP", eCALSATSYSTEM_GLONASS, "", MessageKind::earthOrientation, 3},
    {"EOP", eCALSATSYSTEM_GALILEO, "", MessageKind::earthOrientation, 3},
    {"EOP", eCALSATSYSTEM_BEIDOU, "", MessageKind::earthOrientation, 3},
    {"EOP", eCALSATSYSTEM_QZSS, "", MessageKind::earthOrientation, 3},
    {"EOP", eCALSATSYSTEM_NAVIC, "", MessageKind::earthOrientation, 3},
    {"ION", eCALSATSYSTEM_GPS, "LNAV", MessageKind::klobuchar, 3},
    {"ION", eCALSATSYSTEM_GPS, "CNVX", MessageKind::klobuchar, 3},
    {"ION", eCALSATSYSTEM_GALILEO, "IFNV", MessageKind::nequick, 2},
    {"ION", eCALSATSYSTEM_BEIDOU, "D1D2", MessageKind::klobuchar, 3},
    {"ION", eCALSATSYSTEM_BEIDOU, "CNVX", MessageKind::bdgim, 3},
    {"ION", eCALSATSYSTEM_QZSS, "LNAV", MessageKind::klobuchar, 3},
    {"ION", eCALSATSYSTEM_QZSS, "CNVX", MessageKind::klobuchar, 3},
    {"ION", eCALSATSYSTEM_NAVIC, "LNAV", MessageKind::klobuchar, 3},
}};

}  // namespace

const MessageLayout* layoutOf(std::string_view type, eCALSATSYSTEM system, std::string_view message) {
    const auto* const found = std::find_if(kLayouts.begin(), kLayouts.end(), [&](const MessageLayout& layout) {
        return layout.system == system && layout.type == type && (layout.message.empty() || layout.message == message);
    });
    return found != kLayouts.end() ? found : nullptr;
}

const MessageLayout& layoutOfSatellite(const SCalSatID& satellite) {
    // The lists of both systems begin with what these versions hold.
    const bool geostationary = satellite.number <= 5 || satellite.number >= 59;
    if (satellite.system == eCALSATSYSTEM_BEIDOU && geostationary) return *layoutOf("EPH", satellite.system, "D2");
    return *std::find_if(kLayouts.begin(), kLayouts.end(),
                         [&](const MessageLayout& layout) { return layout.system == satellite.system; });
}

}  // namespace halvex::rinex
