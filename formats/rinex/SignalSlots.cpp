#include "formats/rinex/SignalSlots.h"

namespace halvex::rinex {

SlotSignalOrder slotSignalOrder(CALN::eCALSATSYSTEM system, int slot) {
    // RINEX 4.01, tables 11 to 17. GPS L2 phases prefer P(Y), which every satellite sends, to L2C, which the older ones
    // do not; BeiDou's band 7 prefers B2I of the second generation to B2b of the third: no satellite sends both.
    static constexpr SlotSignalOrder kOrders[7][kFrequencySlots] = {
        {{"CSLX", "WPYM", "CWPYMSLXN"}, {"CSLX", "WPYMD", "WPYMDXLSCN"}, {"XQI", "", "XQI"}},  // GPS
        {{"C", "P", "CP"}, {"C", "P", "CP"}, {"XQI", "", "XQI"}},                              // GLONASS
        {{"CXBZA", "", "CXBZA"}, {"XQI", "", "XQI"}, {"XQI", "", "XQI"}},                      // Galileo
        {{"C", "", "C"}, {}, {"XQI", "", "XQI"}},                                              // SBAS
        {{"IXQ", "", "IXQ"}, {"IXQDZP", "", "IXQDZP"}, {"IXQDZPA", "", "IXQDZPA"}},            // BeiDou
        {{"CXLSZEB", "", "CXLSZEB"}, {"XLS", "", "XLS"}, {"XQIZDP", "", "XQIZDP"}},            // QZSS
        {{"XPD", "", "XPD"}, {}, {"AXCB", "", "AXCB"}},                                        // NavIC
    };
    if (slotBand(system, slot).rinexBand == 0) return {};
    return kOrders[system - 1][slot];
}

SatelliteSignals preferredSignals(CALN::eCALSATSYSTEM system) {
    SatelliteSignals signals;
    for (int slot = 0; slot < kFrequencySlots; ++slot) {
        const SlotSignalOrder order = slotSignalOrder(system, slot);
        const auto first = [](std::string_view attributes) {
            return attributes.empty() ? char{0} : attributes.front();
        };
        signals[static_cast<std::size_t>(slot)] = {first(order.civil), first(order.precise), first(order.phase),
                                                   first(order.phase), first(order.phase)};
    }
    return signals;
}

}  // namespace halvex::rinex
