#include "tools/halvex/orbits/OrbitSource.h"

#include "tools/halvex/orbits/BroadcastOrbit.h"

namespace halvex::tool {

FileOrbits::FileOrbits(const std::vector<std::string>& files, bool keepGoing)
    : m_files(keepGoing, SMjdTime(), [this](const rinex::NavigationRecord& record) {
          m_records[{satelliteOf(record), referenceTimeOf(record)}] = record;
      }) {
    m_files.read(files);
    if (m_records.empty()) throw Failure(files.front() + ": there is no ephemeris that can be used");
}

std::map<CALN::SCalSatID, int> FileOrbits::satellites() const {
    std::map<CALN::SCalSatID, int> channels;
    for (const auto& [key, record] : m_records) channels[key.first] = glonassChannelOf(record);
    return channels;
}

const rinex::NavigationRecord* FileOrbits::serving(const CALN::SCalSatID& id, const SMjdTime& t) {
    const auto chosen = m_files.calculator().GetEngine().GetSatPosition(id, t);
    if (!chosen || !chosen->healthy || chosen->type != CALN::eCALEPHEMERISTYPE_EPHEMERIS) return nullptr;
    const auto at = m_records.find({id, chosen->referenceTime});
    return at != m_records.end() ? &at->second : nullptr;
}

}  // namespace halvex::tool
