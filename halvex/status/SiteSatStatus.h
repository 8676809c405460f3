#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "halvex/observations/HalvexUniqueID.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/platform/kernix/PrnID.h"
#include "halvex/status/SatStatus.h"

class CHalvexSiteSatStatus;

/// Which site's status: the site and the cluster of the network processing it is in, -1 for none. Ordered by cluster,
/// then by site. Plain value without locks.
///
/// Saved form, 12 bytes: the site (8), int32 cluster.
class HALVEX_EXPORT CHalvexSiteSatStatusKey : public IPersistData {
public:
    CHalvexSiteSatStatusKey() = default;
    CHalvexSiteSatStatusKey(const CHalvexUniqueSiteID& site, std::int32_t clusterId)
        : m_site(site), m_clusterId(clusterId) {}
    explicit CHalvexSiteSatStatusKey(const CHalvexSiteSatStatus& status);

    [[nodiscard]] const CHalvexUniqueSiteID& GetSiteID() const { return m_site; }
    [[nodiscard]] std::int32_t GetClusterID() const { return m_clusterId; }

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = 12;

    friend bool operator==(const CHalvexSiteSatStatusKey& left, const CHalvexSiteSatStatusKey& right) {
        return left.m_clusterId == right.m_clusterId && left.m_site == right.m_site;
    }
    friend std::strong_ordering operator<=>(const CHalvexSiteSatStatusKey& left, const CHalvexSiteSatStatusKey& right) {
        if (left.m_clusterId != right.m_clusterId) return left.m_clusterId <=> right.m_clusterId;
        return left.m_site <=> right.m_site;
    }

private:
    CHalvexUniqueSiteID m_site;
    std::int32_t m_clusterId = -1;
};

/// The status of a reference site's satellites at an epoch: a list that is merged, counted, filtered and compared, and
/// from which follows whether the site is fixed and whether its state changed. Satellite types are the bits of CPrnID,
/// type 0 (PRN_NONE) means all where a function says so. Plain value without locks.
///
/// Saved form: the site (8 bytes), int32 cluster ID, float64 epoch time, uint32 number of satellites, then each as
/// CHalvexSatStatus. Loading empties the list first and resets the enumeration: when it fails, what was whole stays
/// loaded.
class HALVEX_EXPORT CHalvexSiteSatStatus : public CHalvexUniqueSiteID {
public:
    /// What DetectStateChanges finds.
    enum StateChange : unsigned char {
        kGained = 0x01,
        kLost = 0x02,
    };
    static constexpr unsigned kDefaultFixedThreshold = 5;

    CHalvexSiteSatStatus() = default;

    /// Cluster ID -1, epoch time 0, no satellites, no state change, the default threshold. The site stays.
    void Clear();
    /// Makes ready for the site's next epoch: no satellites, no state change. All else stays.
    void Reset();

    void SetClusterID(std::int32_t id) { m_clusterId = id; }
    [[nodiscard]] std::int32_t GetClusterID() const { return m_clusterId; }
    /// In whatever unit the caller counts epochs; only compared for equality.
    void SetEpochTime(double time) { m_epochTime = time; }
    [[nodiscard]] double GetEpochTime() const { return m_epochTime; }
    void GetUniqueNetworkSiteID(CHalvexSiteSatStatusKey& key) const { key = CHalvexSiteSatStatusKey(*this); }

    /// Merges a satellite's status into the list, or appends it; ignored unless the satellite is valid. A status of one
    /// level bit takes the other levels of its frequency away, a status of 0 takes all away, one of several bits is
    /// merely added. The elevation is replaced.
    void SetStatus(const CHalvexSatStatus& status);
    /// 0 when the satellite is not in the list.
    [[nodiscard]] unsigned char GetStatus(const CPrnID& satellite) const;
    /// False, leaving the outputs alone, when the satellite is not in the list.
    bool GetStatus(const CPrnID& satellite, unsigned char& status, unsigned char& elevation) const;
    /// Degrees; 0 when the satellite is not in the list.
    [[nodiscard]] unsigned char GetElevation(const CPrnID& satellite) const;

    /// Satellites with a status other than 0, and fixed ones.
    void GetSatsAvailable(unsigned& nonEmpty, unsigned& fixed) const;
    /// Fixed satellites by system code in nine slots, 0 for a type that is no system; the number of satellites with a
    /// status other than 0.
    unsigned GetSatsAvailable(std::vector<unsigned>& fixedPerSystem) const;
    /// Satellites of `type` (PRN_NONE: of all) by the highest level that they have on the frequencies asked for; with
    /// both, on either.
    void GetSatsStatus(CPrnID::PrnType type, bool first, bool second, unsigned& low, unsigned& mid,
                       unsigned& high) const;
    /// Bit (satellite number - 1) for every satellite of `type` with a status other than 0. Numbers above 64, which no
    /// system has, are left out.
    [[nodiscard]] std::uint64_t GetNotEmptySats(CPrnID::PrnType type) const;
    [[nodiscard]] unsigned GetSatCount() const { return static_cast<unsigned>(m_satellites.getList().size()); }

    /// Removes what stands below `mask` [deg], what is of one of the `types` (bits); resets the enumeration.
    void FilterSatsBelowElevMask(double mask);
    void FilterPrnType(std::int32_t types);

    /// Whether the fixed satellites of the `systems` (type bits) suffice: the threshold, and one more for every system
    /// that has any.
    [[nodiscard]] bool IsFixed(std::int32_t systems) const;
    /// False, changing nothing, for 0.
    bool SetFixedThreshold(unsigned satellites);
    [[nodiscard]] unsigned GetFixedThreshold() const { return m_fixedThreshold; }

    /// Compares with the record of the epoch before; the result is kept as well. Whether five satellites have level 3
    /// is the state. kGained: five on each frequency now, fewer than five on either before. kLost: fewer than five on
    /// the first or on the second frequency now, five on either before, so that a site that has level 3 on one
    /// frequency alone loses at every epoch.
    unsigned char DetectStateChanges(const CHalvexSiteSatStatus& before);
    /// The result of the last DetectStateChanges.
    [[nodiscard]] unsigned char GetStateChanges() const { return m_stateChanges; }

    /// Enumeration of the list. A pointer becomes invalid when the list changes.
    void ResetEnum() { m_cursor = 0; }
    /// False, with null, behind the last one.
    bool GetNextEnumByRef(CHalvexSatStatus*& status);

    /// Same site, cluster and satellites, these in the same order and by their own equality.
    [[nodiscard]] bool Compare(const CHalvexSiteSatStatus& other) const;
    /// Compare, and the same epoch time; an object is equal to itself whatever its time.
    friend HALVEX_EXPORT bool operator==(const CHalvexSiteSatStatus& left, const CHalvexSiteSatStatus& right);

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override;

private:
    [[nodiscard]] const CHalvexSatStatus* find(const CPrnID& satellite) const;
    [[nodiscard]] unsigned countLevel3(bool first, bool second) const;

    std::int32_t m_clusterId = -1;
    double m_epochTime = 0.0;
    vecSatStatusT m_satellites;
    std::size_t m_cursor = 0;
    unsigned char m_stateChanges = 0;
    unsigned m_fixedThreshold = kDefaultFixedThreshold;
};

/// Saves a key and the satellites of its site one behind the other; both are the caller's. Loads nothing: false.
class HALVEX_EXPORT vecSiteSatStatusSaveHelper : public IPersistData {
public:
    vecSiteSatStatusSaveHelper(const CHalvexSiteSatStatusKey& key, const vecSatStatusT& list)
        : m_key(key), m_list(list) {}

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override;

private:
    const CHalvexSiteSatStatusKey& m_key;
    const vecSatStatusT& m_list;
};

/// Loads the same into the caller's key and list, and saves it too. When the list is cut off the key is loaded all the
/// same.
class HALVEX_EXPORT vecSiteSatStatusLoadHelper : public IPersistData {
public:
    vecSiteSatStatusLoadHelper(CHalvexSiteSatStatusKey& key, vecSatStatusT& list) : m_key(key), m_list(list) {}

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override;

private:
    CHalvexSiteSatStatusKey& m_key;
    vecSatStatusT& m_list;
};
