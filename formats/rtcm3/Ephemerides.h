#pragma once

#include "formats/rinex/NavigationMessages.h"
#include "formats/rinex/NavigationRecords.h"
#include "formats/rtcm3/FrameReader.h"

namespace halvex::rtcm3 {

/// What is known of the time while a stream is read.
struct TimeReference {
    SMjdTime time;  ///< GPS; unset: weeks and days are completed to the latest that are not ahead of `latest`
    SMjdTime latest;
    /// `time` is that of observations in the stream, so that an orbit belongs to the hours around it.
    bool isEpoch = false;
};

/// One ephemeris of a stream.
struct Ephemeris {
    rinex::NavigationRecord record;
    CALN::SCalSatID satellite;
    rinex::MessageKind kind = rinex::MessageKind::lnav;
    /// The messages around this one are of about its reference time: the satellite is healthy, and there is no doubt
    /// about the week. A toe in the first two hours of a week leaves it open, since the week that is sent is that of
    /// the sending; of GLONASS not every receiver knows the date.
    bool tellsTime = false;
    SMjdTime referenceTime;  ///< on the GPS scale
};

/// 1019 GPS, 1020 GLONASS, 1041 NavIC, 1042 BeiDou, 1044 QZSS, 1045 and 1046 Galileo.
[[nodiscard]] bool isEphemeris(unsigned number);

/// Reads one of these into the record that a navigation file would give (NavigationReader.h): angles in radians, full
/// weeks, an unknown transmission time as toe. The source is eCALORBITSOURCE_STREAM. A week of ten bits is brought
/// nearest to the reference time. The week that is sent may be the one in which the message was made: beside
/// observations toe is taken from the week next to it when only that lies near them. False when the message is none,
/// is cut off, or of a satellite that does not exist.
[[nodiscard]] bool readEphemeris(const Frame& frame, const TimeReference& reference, Ephemeris& ephemeris);

/// The continuous number of a week that is known modulo `modulus`.
[[nodiscard]] int fullWeek(unsigned week, int modulus, const TimeReference& reference);

}  // namespace halvex::rtcm3
