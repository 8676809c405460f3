#pragma once

#include <cstddef>
#include <vector>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/platform/kernix/PrnID.h"

/// How far a reference site's processing has come with one satellite, and where the satellite stands: for each of the
/// first two frequencies a bit for each of three levels, and the elevation. Plain value without locks.
///
/// Saved form, 4 bytes: the satellite (CPrnID), uint8 status, uint8 elevation.
class HALVEX_EXPORT CHalvexSatStatus : public IPersistData {
public:
    /// Status bits.
    enum Level : unsigned char {
        kLevel1First = 0x01,
        kLevel1Second = 0x02,
        kLevel2First = 0x04,
        kLevel2Second = 0x08,
        kLevel3First = 0x10,
        kLevel3Second = 0x20,
    };
    static constexpr unsigned char kLevel1 = kLevel1First | kLevel1Second;
    static constexpr unsigned char kLevel2 = kLevel2First | kLevel2Second;
    static constexpr unsigned char kLevel3 = kLevel3First | kLevel3Second;

    CHalvexSatStatus() = default;
    /// Elevation in whole degrees.
    CHalvexSatStatus(const CPrnID& satellite, unsigned char status, unsigned char elevation)
        : m_satellite(satellite), m_status(status), m_elevation(elevation) {}

    [[nodiscard]] const CPrnID& GetPrnID() const { return m_satellite; }
    [[nodiscard]] unsigned char GetStatus() const { return m_status; }
    [[nodiscard]] unsigned char GetElevation() const { return m_elevation; }
    /// Level 3 on both frequencies.
    [[nodiscard]] bool IsFixed() const { return (m_status & kLevel3) == kLevel3; }

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override { return kSavedSize; }
    static constexpr std::size_t kSavedSize = CPrnID::kSavedSize + 2;

    /// Satellite and status. A satellite that merely moves has not changed, so the elevation does not count.
    friend bool operator==(const CHalvexSatStatus& left, const CHalvexSatStatus& right) {
        return left.m_satellite == right.m_satellite && left.m_status == right.m_status;
    }

private:
    CPrnID m_satellite;
    unsigned char m_status = 0;
    unsigned char m_elevation = 0;  // degrees
};

/// The satellites of a site. Plain value without locks.
///
/// Saved form: uint32 count, then each satellite. Loading begins with an empty list: when it fails, the satellites that
/// were whole stay in it.
class HALVEX_EXPORT vecSatStatusT : public IPersistData {
public:
    [[nodiscard]] std::vector<CHalvexSatStatus>& getList() { return m_list; }
    [[nodiscard]] const std::vector<CHalvexSatStatus>& getList() const { return m_list; }

    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    [[nodiscard]] std::size_t getSize() const override;

    friend bool operator==(const vecSatStatusT& left, const vecSatStatusT& right) {
        return left.m_list == right.m_list;
    }

private:
    std::vector<CHalvexSatStatus> m_list;
};
