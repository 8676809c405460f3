#include "halvex/platform/caln/EphemerisGalileo.h"

namespace CALN {

bool CALX_SAT_EPHEMERIS_GALILEO::isHealthy() const {
    if (navType == kFNav) return e5a.isGood();
    switch (inavReception) {
        case kReceivedOnE1B:
            return e1b.isGood();
        case kReceivedOnE5b:
            return e5b.isGood();
        default:
            return e1b.isGood() && e5b.isGood();
    }
}

double CALX_SAT_EPHEMERIS_GALILEO::GetSisa() const {
    if (sisaIndex < 50) return sisaIndex * 0.01;
    if (sisaIndex < 75) return 0.5 + (sisaIndex - 50) * 0.02;
    if (sisaIndex < 100) return 1.0 + (sisaIndex - 75) * 0.04;
    if (sisaIndex < 126) return 2.0 + (sisaIndex - 100) * 0.16;
    return -1.0;
}

unsigned char CALX_SAT_EPHEMERIS_GALILEO::indexOfSisa(double metres) {
    constexpr double kSlack = 1e-6;  // metres: a printed value may be a hair above the step it names
    CALX_SAT_EPHEMERIS_GALILEO record;
    for (record.sisaIndex = 0; metres >= 0.0 && record.sisaIndex < 126; ++record.sisaIndex) {
        if (record.GetSisa() >= metres - kSlack) return record.sisaIndex;
    }
    return kNoSisa;
}

}  // namespace CALN
