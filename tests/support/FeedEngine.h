#pragma once

#include <boost/make_shared.hpp>

#include "halvex/platform/caln/ExtCalElevAziCalculator.h"

namespace halvex::test {

/// Hands a record of any kind to the engine.
template <class Record>
bool feed(CALN::ExtCalElevAziCalculator& engine, const Record& record) {
    using namespace CALN;
    const auto message = boost::make_shared<const BSS::TSK::MsgObjectT<Record>>(record);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS>) return engine.ProcessGPSEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_GLONASS>) return engine.ProcessGLOEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_GALILEO>) return engine.ProcessGALEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_BEIDOU>) return engine.ProcessBDSEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_QZSS>) return engine.ProcessQZSSEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_EPHEMERIS_NAVIC>) return engine.ProcessNAVICEphemeris(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC>) return engine.ProcessGPSAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_GLONASS>) return engine.ProcessGLOAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_GALILEO>) return engine.ProcessGALAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_BEIDOU>) return engine.ProcessBDSAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_QZSS>) return engine.ProcessQZSSAlmanach(message);
    if constexpr (std::is_same_v<Record, CALX_SAT_ALMANAC_NAVIC>) return engine.ProcessNAVICAlmanach(message);
}

}  // namespace halvex::test
