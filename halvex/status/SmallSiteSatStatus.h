#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvex/observations/HalvexUniqueID.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PrnID.h"
#include "halvex/status/SiteSatStatus.h"

/// A site's status in short: instead of the satellites, how many of GPS, GLONASS, Galileo, BeiDou and QZSS have reached
/// each of the three levels, as 15 bytes, by system and within it low, mid, high. Not persisted. Plain value without
/// locks.
class HALVEX_EXPORT CHalvexSmallSiteSatStatus {
public:
    CHalvexSmallSiteSatStatus() = default;
    /// A satellite counts with the highest level that it has on either frequency.
    explicit CHalvexSmallSiteSatStatus(const CHalvexSiteSatStatus& status);

    [[nodiscard]] const CHalvexUniqueSiteID& GetSiteID() const { return m_site; }
    [[nodiscard]] std::int32_t GetClusterID() const { return m_clusterId; }
    [[nodiscard]] double GetEpochTime() const { return m_epochTime; }
    void GetUniqueNetworkSiteID(CHalvexSiteSatStatusKey& key) const { key = {m_site, m_clusterId}; }

    /// Satellites of one system; more than 255 are kept as 255. False, changing nothing, when `type` is not one of the
    /// five. The flag chooses a frequency where counts are kept for each; here one set serves both.
    bool SetSatsStatus(CPrnID::PrnType type, bool firstFrequency, unsigned low, unsigned mid, unsigned high);
    /// False, with zeros, when `type` is not one of the five; PRN_NONE sums all of them up.
    bool GetSatsStatus(CPrnID::PrnType type, bool firstFrequency, unsigned& low, unsigned& mid, unsigned& high) const;

    /// Same site, cluster and counts.
    [[nodiscard]] bool Compare(const CHalvexSmallSiteSatStatus& other) const {
        return m_site == other.m_site && m_clusterId == other.m_clusterId && m_counts == other.m_counts;
    }
    /// Compare, and the same epoch time.
    friend bool operator==(const CHalvexSmallSiteSatStatus& left, const CHalvexSmallSiteSatStatus& right) {
        return left.m_epochTime == right.m_epochTime && left.Compare(right);
    }

private:
    static constexpr std::array kSystems{CPrnID::PRN_GPS, CPrnID::PRN_GLONASS, CPrnID::PRN_GALILEO, CPrnID::PRN_BEIDOU,
                                         CPrnID::PRN_QZSS};
    static constexpr std::size_t kLevels = 3;

    CHalvexUniqueSiteID m_site;
    std::int32_t m_clusterId = -1;
    double m_epochTime = 0.0;
    std::array<std::uint8_t, kSystems.size() * kLevels> m_counts{};
};
