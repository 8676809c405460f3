#pragma once

#include "halvex/orbits/HalvexEphemerisBase.h"

/// What the ephemerides of Galileo, BeiDou, QZSS and NavIC share: each is the computation library's record of its
/// system (`Record`, which holds and persists the fields of the message) and an ephemeris at once. `Ephemeris` is the
/// class itself; it says its system, its range of satellite numbers and its reference time. Plain value without locks.
template <class Ephemeris, class Record>
class HalvexThinEphemeris : public Record, public IHalvexEphemerisBase {
public:
    HalvexThinEphemeris() = default;
    explicit HalvexThinEphemeris(const Record& record) : Record(record) {}

    bool loadData(const unsigned char* buffer, std::size_t length) override { return Record::loadData(buffer, length); }
    void saveData(unsigned char* buffer, std::size_t length) const override { Record::saveData(buffer, length); }
    [[nodiscard]] std::size_t getSize() const override { return Record::getSize(); }

    [[nodiscard]] bool IsSimulated() const override { return (Record::source & CALN::kSimulatedSource) != 0; }
    [[nodiscard]] bool IsHealthy() const override { return Record::isHealthy(); }
    /// IsDataValid() and less than two weeks from the reference time; the unset instant means now.
    [[nodiscard]] bool IsValid(const mjd::time& t) const override {
        return IsDataValid() && isNear(t, GetRefTime(), true);
    }

    void SetSimulated(bool on) {
        Record::source = static_cast<unsigned char>(on ? Record::source | CALN::kSimulatedSource
                                                       : Record::source & ~unsigned{CALN::kSimulatedSource});
    }
    /// The satellite number is one of the system's, and somebody has filled the record (source byte not 0).
    [[nodiscard]] bool IsDataValid() const {
        const unsigned number = Record::GetSatId();
        return number >= 1 && number <= Ephemeris::kLargestSatId && Record::source != 0;
    }
    [[nodiscard]] bool EquivalentAll(const Ephemeris& other) const {
        return static_cast<const Record&>(*this) == static_cast<const Record&>(other);
    }
    friend bool operator==(const Ephemeris& left, const Ephemeris& right) { return left.EquivalentAll(right); }
};
