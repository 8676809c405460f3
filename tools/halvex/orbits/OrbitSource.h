#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "formats/rinex/NavigationRecords.h"
#include "tools/halvex/orbits/OrbitFiles.h"

namespace halvex::tool {

/// Where satellites and their ephemerides come from. Instants are on the GPS scale and do not go back.
/// One thread at a time.
class OrbitSource {
public:
    virtual ~OrbitSource() = default;
    /// Every satellite there is, with its GLONASS channel (0: another system).
    [[nodiscard]] virtual std::map<CALN::SCalSatID, int> satellites() const = 0;
    /// The ephemeris that serves a satellite at an instant: the one of the least effective age (see
    /// CALN::getEffectiveAge), of two equally old ones the later. Null when there is none, or it says that the
    /// satellite is not healthy. Stands until the next call for that satellite.
    [[nodiscard]] virtual const rinex::NavigationRecord* serving(const CALN::SCalSatID& id, const SMjdTime& t) = 0;
};

/// The satellites and ephemerides of navigation files, chosen as the elevation-azimuth engine does. Failure when a file
/// cannot be read or none has an ephemeris; faults in them as OrbitFiles treats them.
class FileOrbits final : public OrbitSource {
public:
    FileOrbits(const std::vector<std::string>& files, bool keepGoing);
    [[nodiscard]] std::map<CALN::SCalSatID, int> satellites() const override;
    [[nodiscard]] const rinex::NavigationRecord* serving(const CALN::SCalSatID& id, const SMjdTime& t) override;
    /// What was read.
    [[nodiscard]] const OrbitFiles& files() const { return m_files; }

private:
    OrbitFiles m_files;
    std::map<std::pair<CALN::SCalSatID, SMjdTime>, rinex::NavigationRecord> m_records;
};

}  // namespace halvex::tool
