#include "halvex/platform/caln/Frequency.h"

namespace CALN {

eCALFREQUENCY_GROUP getFrequencyGroup(eCALFREQUENCY frequency) {
    switch (frequency) {
        case eCALFREQUENCY_L1:
        case eCALFREQUENCY_G1:
        case eCALFREQUENCY_B1:
            return eCALFREQUENCY_GROUP_L1;
        case eCALFREQUENCY_L2:
        case eCALFREQUENCY_G2:
            return eCALFREQUENCY_GROUP_L2;
        case eCALFREQUENCY_L5:
            return eCALFREQUENCY_GROUP_L5;
        case eCALFREQUENCY_E5B:
            return eCALFREQUENCY_GROUP_E5B;
        case eCALFREQUENCY_E6:
        case eCALFREQUENCY_B3:
            return eCALFREQUENCY_GROUP_E6;
        case eCALFREQUENCY_E5:
        case eCALFREQUENCY_G3:
            return eCALFREQUENCY_GROUP_E5;
    }
    return eCALFREQUENCY_GROUP_NONE;
}

double getCarrierFrequency(eCALFREQUENCY frequency, int glonassChannel) {
    static constexpr double kMegahertz[kFrequencyCount] = {1575.42, 1227.60,  1176.45, 1602.0,   1246.0, 1202.025,
                                                           1207.14, 1191.795, 1278.75, 1561.098, 1268.52};
    if (frequency >= kFrequencyCount) return 0.0;
    double megahertz = kMegahertz[frequency];
    if (frequency == eCALFREQUENCY_G1) megahertz += glonassChannel * 0.5625;
    if (frequency == eCALFREQUENCY_G2) megahertz += glonassChannel * 0.4375;
    return megahertz * 1e6;
}

}  // namespace CALN

namespace halvex {

SlotBand slotBand(CALN::eCALSATSYSTEM system, int slot) {
    using namespace CALN;
    static constexpr SlotBand kNone{eCALFREQUENCY_L1, 0};
    static constexpr SlotBand kBands[7][kFrequencySlots] = {
        {{eCALFREQUENCY_L1, '1'}, {eCALFREQUENCY_L2, '2'}, {eCALFREQUENCY_L5, '5'}},   // GPS
        {{eCALFREQUENCY_G1, '1'}, {eCALFREQUENCY_G2, '2'}, {eCALFREQUENCY_G3, '3'}},   // GLONASS
        {{eCALFREQUENCY_L1, '1'}, {eCALFREQUENCY_E5B, '7'}, {eCALFREQUENCY_L5, '5'}},  // Galileo
        {{eCALFREQUENCY_L1, '1'}, kNone, {eCALFREQUENCY_L5, '5'}},                     // SBAS
        {{eCALFREQUENCY_B1, '2'}, {eCALFREQUENCY_E5B, '7'}, {eCALFREQUENCY_B3, '6'}},  // BeiDou
        {{eCALFREQUENCY_L1, '1'}, {eCALFREQUENCY_L2, '2'}, {eCALFREQUENCY_L5, '5'}},   // QZSS
        {{eCALFREQUENCY_L1, '1'}, kNone, {eCALFREQUENCY_L5, '5'}},                     // NavIC
    };
    if (systemOfCode(system) == nullptr || slot < 0 || slot >= kFrequencySlots) return kNone;
    return kBands[system - 1][slot];
}

}  // namespace halvex
