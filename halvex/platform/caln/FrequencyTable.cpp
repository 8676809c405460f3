#include "halvex/platform/caln/FrequencyTable.h"

#include <optional>

namespace CALN {
namespace {

/// The carrier on which a system sends in a band, if it does.
std::optional<eCALFREQUENCY> carrierOf(eCALSATSYSTEM system, eCALFREQUENCY_GROUP group) {
    struct Carrier {
        eCALSATSYSTEM system;
        eCALFREQUENCY frequency;
    };
    static constexpr Carrier kCarriers[] = {
        {eCALSATSYSTEM_GPS, eCALFREQUENCY_L1},     {eCALSATSYSTEM_GPS, eCALFREQUENCY_L2},
        {eCALSATSYSTEM_GPS, eCALFREQUENCY_L5},     {eCALSATSYSTEM_GLONASS, eCALFREQUENCY_G1},
        {eCALSATSYSTEM_GLONASS, eCALFREQUENCY_G2}, {eCALSATSYSTEM_GALILEO, eCALFREQUENCY_L1},
        {eCALSATSYSTEM_GALILEO, eCALFREQUENCY_L5}, {eCALSATSYSTEM_GALILEO, eCALFREQUENCY_E5B},
        {eCALSATSYSTEM_GALILEO, eCALFREQUENCY_E6}, {eCALSATSYSTEM_GALILEO, eCALFREQUENCY_E5},
        {eCALSATSYSTEM_SBAS, eCALFREQUENCY_L1},    {eCALSATSYSTEM_SBAS, eCALFREQUENCY_L5},
        {eCALSATSYSTEM_BEIDOU, eCALFREQUENCY_B1},  {eCALSATSYSTEM_BEIDOU, eCALFREQUENCY_L5},
        {eCALSATSYSTEM_BEIDOU, eCALFREQUENCY_E5B}, {eCALSATSYSTEM_BEIDOU, eCALFREQUENCY_B3},
        {eCALSATSYSTEM_BEIDOU, eCALFREQUENCY_E5},  {eCALSATSYSTEM_QZSS, eCALFREQUENCY_L1},
        {eCALSATSYSTEM_QZSS, eCALFREQUENCY_L2},    {eCALSATSYSTEM_QZSS, eCALFREQUENCY_L5},
        {eCALSATSYSTEM_QZSS, eCALFREQUENCY_E6},    {eCALSATSYSTEM_NAVIC, eCALFREQUENCY_L1},
        {eCALSATSYSTEM_NAVIC, eCALFREQUENCY_L5},
    };
    for (const Carrier& carrier : kCarriers) {
        if (carrier.system == system && getFrequencyGroup(carrier.frequency) == group) return carrier.frequency;
    }
    return std::nullopt;
}

}  // namespace

bool CCalFrequencyTable::getIFGFCoeffs(eCALSATSYSTEM system, eCALFREQUENCY_GROUP a, eCALFREQUENCY_GROUP b,
                                       double* ionoCoeff, double* geoCoeffA, double* geoCoeffB) const {
    const auto carrierA = carrierOf(system, a);
    const auto carrierB = carrierOf(system, b);
    if (!carrierA || !carrierB || *carrierA == *carrierB) return false;
    if (ionoCoeff == nullptr || geoCoeffA == nullptr || geoCoeffB == nullptr) return false;
    // GLONASS: those of channel 0, whose ratio 9 to 7 all channels have.
    const double frequencyA = getCarrierFrequency(*carrierA);
    const double frequencyB = getCarrierFrequency(*carrierB);
    const double squareA = frequencyA * frequencyA;
    const double squareB = frequencyB * frequencyB;
    *geoCoeffA = squareA / (squareA - squareB);
    *geoCoeffB = -squareB / (squareA - squareB);
    *ionoCoeff = squareB / (squareB - squareA);
    return true;
}

const CCalFrequencyTable& getFrequencyTable() {
    static const CCalFrequencyTable table(CCalFrequencyMgr::getInstance());
    return table;
}

}  // namespace CALN
