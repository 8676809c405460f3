#pragma once

#include "halvex/orbits/HalvexAlmanacBase.h"
#include "halvex/platform/caln/AlmanacRecords.h"

/// What the almanacs of Galileo, BeiDou, QZSS and NavIC share: each is the computation library's record of its system,
/// which holds and persists the fields, and an almanac at once. They compute no position: azimuth and elevation always
/// fail. `Almanac` is the class itself. Plain value without locks.
template <class Almanac, class Record>
class HalvexThinAlmanac : public Record, public IHalvexAlmanacBase {
public:
    HalvexThinAlmanac() = default;
    explicit HalvexThinAlmanac(const Record& record) : Record(record) {}

    bool loadData(const unsigned char* buffer, std::size_t length) override { return Record::loadData(buffer, length); }
    void saveData(unsigned char* buffer, std::size_t length) const override { Record::saveData(buffer, length); }
    [[nodiscard]] std::size_t getSize() const override { return Record::getSize(); }

    [[nodiscard]] CALN::SCalSatID GetSatID() const override { return Record::GetCalSatID(); }
    [[nodiscard]] bool IsHealthy() const override { return Record::isHealthy(); }
    [[nodiscard]] bool IsValid(const mjd::time& t) const override { return isNear(t, GetRefTime(), false); }
    [[nodiscard]] SMjdTime GetRefTime() const override { return Record::GetReferenceTime(); }
    bool GetAzimuthElevation(const mjd::time&, const ORBIT_COORD&, double&, double&) const override { return false; }
    bool GetAzimuthElevation(const ORBIT_COORD&, double&, double&) const override { return false; }

    friend bool operator==(const Almanac& left, const Almanac& right) {
        return static_cast<const Record&>(left) == static_cast<const Record&>(right);
    }
};

/// Galileo almanac.
class HALVEX_EXPORT CHalvexAlmanacGal : public HalvexThinAlmanac<CHalvexAlmanacGal, CALN::CALX_SAT_ALMANAC_GALILEO> {
public:
    using HalvexThinAlmanac::HalvexThinAlmanac;
    CHalvexAlmanacGal() = default;
    ~CHalvexAlmanacGal() override;
};

/// BeiDou almanac.
class HALVEX_EXPORT CHalvexAlmanacBds : public HalvexThinAlmanac<CHalvexAlmanacBds, CALN::CALX_SAT_ALMANAC_BEIDOU> {
public:
    using HalvexThinAlmanac::HalvexThinAlmanac;
    CHalvexAlmanacBds() = default;
    ~CHalvexAlmanacBds() override;
};

/// QZSS almanac; never healthy.
class HALVEX_EXPORT CHalvexAlmanacQzss : public HalvexThinAlmanac<CHalvexAlmanacQzss, CALN::CALX_SAT_ALMANAC_QZSS> {
public:
    using HalvexThinAlmanac::HalvexThinAlmanac;
    CHalvexAlmanacQzss() = default;
    ~CHalvexAlmanacQzss() override;
    [[nodiscard]] bool IsHealthy() const override { return false; }
};

/// NavIC almanac; never healthy.
class HALVEX_EXPORT CHalvexAlmanacNavic : public HalvexThinAlmanac<CHalvexAlmanacNavic, CALN::CALX_SAT_ALMANAC_NAVIC> {
public:
    using HalvexThinAlmanac::HalvexThinAlmanac;
    CHalvexAlmanacNavic() = default;
    ~CHalvexAlmanacNavic() override;
    [[nodiscard]] bool IsHealthy() const override { return false; }
};
