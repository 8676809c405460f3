#include "halvex/observations/HalvexObservation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "halvex/platform/kernix/ByteCodec.h"

namespace {

constexpr double kSpeedOfLight = 299792458.0;          // [m/s], IS-GPS-200, 20.3.4.3
constexpr double kFrequencyL1 = 1.57542e9;             // [Hz], IS-GPS-200, 3.3.1.1
constexpr double kFrequencyL2 = 1.2276e9;              // [Hz]
constexpr double kWavelengthL1 = 0.19029367279836487;  // [m]
constexpr double kWavelengthL2 = 0.24421021342456825;  // [m]

double wavelength(unsigned frequency) {
    return frequency == 0 ? kWavelengthL1 : kWavelengthL2;
}

bool within(double value, double low, double high) {
    return value >= low && value <= high;
}

/// Integer part; a number that no integer holds goes to the nearest end, NaN to 0.
std::int32_t truncated(double value) {
    if (std::isnan(value)) return 0;
    constexpr double kLow = std::numeric_limits<std::int32_t>::min();
    constexpr double kHigh = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(value, kLow, kHigh));
}

/// The two directions of the field list below. No checks: the length is known before the list is walked. The position
/// goes through by value, so that the compiler may keep it in a register whatever the bytes alias.
struct Store {
    using Position = unsigned char*;
    template <class T>
    static Position move(Position at, const T& value) {
        halvex::storeLittleEndian(at, value);
        return at + sizeof(T);
    }
    template <class T>
    static void absent(const T&) {}
};
struct Fetch {
    using Position = const unsigned char*;
    template <class T>
    static Position move(Position at, T& value) {
        value = halvex::loadLittleEndian<T>(at);
        return at + sizeof(T);
    }
    template <class T>
    static void absent(T& value) {
        value = T{};
    }
};

template <class Direction, class T>
typename Direction::Position moveIf(bool present, typename Direction::Position at, T& value) {
    if (present) return Direction::move(at, value);
    Direction::absent(value);
    return at;
}

}  // namespace

void CHalvexObservation::Reset() {
    m_prnId.Clear();
    m_validity = 0;
    m_elevationMask = 0.0;
    m_azimuth = 0.0;
    for (Slot& slot : m_slots) slot.flags = 0;
    measure();
}

bool CHalvexObservation::getPrn(unsigned char& prn) const {
    if (!m_prnId.IsSet()) return false;
    prn = m_prnId.getPrn();
    return true;
}

void CHalvexObservation::setIssueOfData(unsigned char issueOfData) {
    m_issueOfData = issueOfData;
    setValid(kIssueOfDataValid);
}

void CHalvexObservation::setElevationMask(double degrees) {
    m_elevationMask = degrees;
    setValid(kElevationMaskValid);
}

void CHalvexObservation::setAzimuth(double degrees) {
    m_azimuth = degrees;
    setValid(kAzimuthValid);
}

bool CHalvexObservation::getIssueOfData(unsigned char& issueOfData) const {
    if (IsIssueOfDataValid()) issueOfData = m_issueOfData;
    return IsIssueOfDataValid();
}

bool CHalvexObservation::getElevationMask(double& degrees) const {
    if (IsElevationMaskValid()) degrees = m_elevationMask;
    return IsElevationMaskValid();
}

bool CHalvexObservation::getAzimuth(double& degrees) const {
    if (IsAzimuthValid()) degrees = m_azimuth;
    return IsAzimuthValid();
}

void CHalvexObservation::setFlag(unsigned frequency, Flag flag, bool on) {
    if (frequency >= kSlots) return;
    std::uint32_t& flags = m_slots[frequency].flags;
    flags = on ? flags | flag : flags & ~static_cast<std::uint32_t>(flag);
}

bool CHalvexObservation::getFlag(unsigned frequency, Flag flag, bool& on) const {
    if (frequency >= kSlots) return false;
    on = has(frequency, flag);
    return true;
}

template <class T>
void CHalvexObservation::setValue(unsigned frequency, T Slot::*member, T value, Flag valid) {
    if (frequency >= kSlots) return;
    m_slots[frequency].*member = value;
    std::uint32_t& flags = m_slots[frequency].flags;
    if ((flags & valid) != 0) return;
    flags |= valid;
    measure();
}

template <class T>
bool CHalvexObservation::getValue(unsigned frequency, T Slot::*member, T& value, Flag valid) const {
    if (!has(frequency, valid)) return false;
    value = m_slots[frequency].*member;
    return true;
}

void CHalvexObservation::setPhase(unsigned frequency, double value, bool inCycles) {
    setValue(frequency, &Slot::phase, inCycles ? value : value / wavelength(frequency), kPhaseValid);
}

bool CHalvexObservation::getPhase(unsigned frequency, double& value, bool inCycles) const {
    if (!getValue(frequency, &Slot::phase, value, kPhaseValid)) return false;
    if (!inCycles) value *= wavelength(frequency);
    return true;
}

void CHalvexObservation::setPseudorangeC(unsigned frequency, double metres) {
    setValue(frequency, &Slot::pseudorangeC, metres, kPseudorangeCValid);
}
void CHalvexObservation::setPseudorangeP(unsigned frequency, double metres) {
    setValue(frequency, &Slot::pseudorangeP, metres, kPseudorangePValid);
}
void CHalvexObservation::setDoppler(unsigned frequency, float hertz) {
    setValue(frequency, &Slot::doppler, hertz, kDopplerValid);
}
void CHalvexObservation::setCNO(unsigned frequency, float decibelHertz) {
    setValue(frequency, &Slot::cno, decibelHertz, kCnoValid);
}
void CHalvexObservation::setPhaseError(unsigned frequency, unsigned short value) {
    setValue(frequency, &Slot::phaseError, value, kPhaseErrorValid);
}
void CHalvexObservation::setPseudorangeError(unsigned frequency, unsigned short value) {
    setValue(frequency, &Slot::pseudorangeError, value, kPseudorangeErrorValid);
}
void CHalvexObservation::setMultipathError(unsigned frequency, unsigned char value) {
    setValue(frequency, &Slot::multipathError, value, kMultipathErrorValid);
}
void CHalvexObservation::setContLockCount(unsigned frequency, unsigned short count) {
    if (frequency < kSlots) m_slots[frequency].contLockCount = count;
}

bool CHalvexObservation::getPseudorangeC(unsigned frequency, double& metres) const {
    return getValue(frequency, &Slot::pseudorangeC, metres, kPseudorangeCValid);
}
bool CHalvexObservation::getPseudorangeP(unsigned frequency, double& metres) const {
    return getValue(frequency, &Slot::pseudorangeP, metres, kPseudorangePValid);
}
bool CHalvexObservation::getDoppler(unsigned frequency, float& hertz) const {
    return getValue(frequency, &Slot::doppler, hertz, kDopplerValid);
}
bool CHalvexObservation::getCNO(unsigned frequency, float& decibelHertz) const {
    return getValue(frequency, &Slot::cno, decibelHertz, kCnoValid);
}
bool CHalvexObservation::getPhaseError(unsigned frequency, unsigned short& value) const {
    return getValue(frequency, &Slot::phaseError, value, kPhaseErrorValid);
}
bool CHalvexObservation::getPseudorangeError(unsigned frequency, unsigned short& value) const {
    return getValue(frequency, &Slot::pseudorangeError, value, kPseudorangeErrorValid);
}
bool CHalvexObservation::getMultipathError(unsigned frequency, unsigned char& value) const {
    return getValue(frequency, &Slot::multipathError, value, kMultipathErrorValid);
}
bool CHalvexObservation::getCosta(unsigned frequency, unsigned char& value) const {
    return getValue(frequency, &Slot::costa, value, kCostaValid);
}
bool CHalvexObservation::getContLockCount(unsigned frequency, unsigned short& count) const {
    if (frequency >= kSlots) return false;
    count = m_slots[frequency].contLockCount;
    return true;
}

void CHalvexObservation::SetCycleSlip(unsigned frequency, std::int32_t count) {
    if (frequency >= kSlots) return;
    setMultipathError(frequency, static_cast<std::uint8_t>(m_slots[frequency].multipathError | (count & 31)));
}
std::int32_t CHalvexObservation::GetCycleSlip(unsigned frequency) const {
    return frequency < kSlots ? m_slots[frequency].multipathError & 31 : 0;
}
void CHalvexObservation::SetObservationRejection(unsigned frequency, std::int32_t rejection) {
    if (frequency >= kSlots) return;
    setContLockCount(frequency, static_cast<std::uint16_t>(m_slots[frequency].contLockCount | (rejection & 63)));
}
std::int32_t CHalvexObservation::GetObservationRejection(unsigned frequency) const {
    return frequency < kSlots ? m_slots[frequency].contLockCount & 63 : 0;
}
void CHalvexObservation::SetAmbiguityChanges(unsigned frequency, std::int32_t changes) {
    if (frequency >= kSlots) return;
    setContLockCount(frequency, static_cast<std::uint16_t>(m_slots[frequency].contLockCount | ((changes & 63) * 64)));
}
std::int32_t CHalvexObservation::GetAmbiguityChanges(unsigned frequency) const {
    return frequency < kSlots ? (m_slots[frequency].contLockCount >> 6) & 63 : 0;
}
void CHalvexObservation::SetAmbiguityFixState(unsigned frequency, eAmbiguityFixStateType state) {
    if (frequency >= kSlots) return;
    setContLockCount(frequency, static_cast<std::uint16_t>(m_slots[frequency].contLockCount | (state << 12)));
}
CHalvexObservation::eAmbiguityFixStateType CHalvexObservation::GetAmbiguityFixState(unsigned frequency) const {
    const unsigned count = frequency < kSlots ? m_slots[frequency].contLockCount : 0U;
    return static_cast<eAmbiguityFixStateType>(count >> 12);
}

bool CHalvexObservation::SetAmbiguitySearchAndSubLevel(unsigned frequency, std::int32_t search, std::int32_t sub) {
    if (frequency >= kSlots || sub >= 10) return false;
    const double levels = search * 0.001 + sub * 0.1;
    const std::int32_t whole = truncated(m_slots[frequency].cno);
    setCNO(frequency, static_cast<float>(whole < 0 ? whole - levels : whole + levels));
    return true;
}

bool CHalvexObservation::SetAmbiguityValue(unsigned frequency, double value) {
    if (frequency >= kSlots) return false;
    const double magnitude = std::fabs(static_cast<double>(m_slots[frequency].cno));
    const double levels = std::isfinite(magnitude) ? magnitude - std::floor(magnitude) : 0.0;
    const std::int32_t whole = truncated(value);
    setCNO(frequency, static_cast<float>(value < 0 ? whole - levels : whole + levels));
    return true;
}

bool CHalvexObservation::IsDataValid() const {
    const CPrnID::PrnType type = m_prnId.getPrnType();
    if (!m_prnId.IsSet() || (type != CPrnID::PRN_GPS && type != CPrnID::PRN_GLONASS)) return false;
    if (!has(0, kPseudorangeCValid | kPseudorangePValid)) return false;

    const auto everyTestedSlot = [this](auto&& plausible) { return plausible(m_slots[0]) && plausible(m_slots[1]); };
    const auto validAnd = [](const Slot& slot, Flag valid, bool plausible) {
        return (slot.flags & valid) == 0 || plausible;
    };
    return everyTestedSlot([&](const Slot& slot) {
               return validAnd(slot, kPseudorangeCValid, within(slot.pseudorangeC, 1.5e7, 3e7)) &&
                      validAnd(slot, kPseudorangePValid, within(slot.pseudorangeP, 1.5e7, 3e7));
           }) &&
           everyTestedSlot([&](const Slot& slot) {
               return validAnd(slot, kDopplerValid, within(slot.doppler, -35000.0, 35000.0)) &&
                      validAnd(slot, kCnoValid, within(slot.cno, 0.0, 500.0)) &&
                      validAnd(slot, kPhaseValid, within(std::fabs(slot.phase), 1e-9, 9999999999.0));
           });
}

void CHalvexObservation::AdjustForClockJumps(std::int32_t milliseconds) {
    if (milliseconds == 0) return;
    const double seconds = milliseconds / 1000.0;
    const auto adjust = [seconds](Slot& slot, double hertz) {
        if ((slot.flags & kPhaseValid) != 0) slot.phase += seconds * hertz;
        if ((slot.flags & kPseudorangeCValid) != 0) slot.pseudorangeC += seconds * kSpeedOfLight;
        if ((slot.flags & kPseudorangePValid) != 0) slot.pseudorangeP += seconds * kSpeedOfLight;
    };
    adjust(m_slots[0], kFrequencyL1);
    adjust(m_slots[1], kFrequencyL2);
}

// Most slots hold one of three sets of values. Walking a set that the compiler knows costs no test for each field, and
// the position behind it does not wait for the flags to be read; `use` gets the set as a constant then.
template <class Use>
auto CHalvexObservation::withSet(std::uint8_t validity, Use&& use) {
    constexpr unsigned kAll = kElevationMaskValid | kAzimuthValid | kIssueOfDataValid;
    return (validity & kAll) == 0 ? use(std::integral_constant<unsigned, 0>()) : use(unsigned{validity});
}
template <class Use>
auto CHalvexObservation::withSet(std::uint32_t flags, Use&& use) {
    constexpr std::uint32_t kCivil = kPhaseValid | kPseudorangeCValid | kDopplerValid | kCnoValid;
    switch (flags & kValues) {
        case 0:
            return use(std::integral_constant<std::uint32_t, 0>());
        case kCivil:
            return use(std::integral_constant<std::uint32_t, kCivil>());
        case kCivil | kPseudorangePValid:
            return use(std::integral_constant<std::uint32_t, kCivil | kPseudorangePValid>());
        default:
            return use(flags);
    }
}

std::size_t CHalvexObservation::savedSize(const unsigned char* from, std::size_t left) {
    if (left < kSmallestSize) return 0;
    std::size_t size = headSize(from[CPrnID::kSavedSize]);
    for (unsigned slot = 0; slot < kSlots; ++slot) {
        if (left < size + 4) return 0;
        // A constant for the usual sets: the next slot is found without waiting for these flags to be looked up.
        size +=
            withSet(halvex::loadLittleEndian<std::uint32_t>(from + size), [](auto flags) { return slotSize(flags); });
    }
    return size <= left ? size : 0;
}

template <class Direction, class Self>
typename Direction::Position CHalvexObservation::fields(typename Direction::Position at, Self& self) {
    at = Direction::move(at, self.m_validity);
    at = withSet(self.m_validity, [&self, from = at](auto validity) {
        auto to = from;
        const auto value = [&to](bool present, auto& field) { to = moveIf<Direction>(present, to, field); };
        value((validity & kIssueOfDataValid) != 0, self.m_issueOfData);
        value((validity & kElevationMaskValid) != 0, self.m_elevationMask);
        value((validity & kAzimuthValid) != 0, self.m_azimuth);
        return to;
    });
    for (auto& slot : self.m_slots) {
        at = Direction::move(at, slot.flags);
        at = withSet(slot.flags, [&slot, from = at](auto flags) {
            auto to = from;
            const auto value = [&to](bool present, auto& field) { to = moveIf<Direction>(present, to, field); };
            value((flags & kPhaseValid) != 0, slot.phase);
            value((flags & kPseudorangeCValid) != 0, slot.pseudorangeC);
            value((flags & kPseudorangePValid) != 0, slot.pseudorangeP);
            value((flags & kDopplerValid) != 0, slot.doppler);
            value((flags & kPhaseErrorValid) != 0, slot.phaseError);
            value((flags & kPseudorangeErrorValid) != 0, slot.pseudorangeError);
            value((flags & kMultipathErrorValid) != 0, slot.multipathError);
            value((flags & kCnoValid) != 0, slot.cno);
            value((flags & kCostaValid) != 0, slot.costa);
            return Direction::move(to, slot.contLockCount);
        });
    }
    return at;
}

unsigned char* CHalvexObservation::write(unsigned char* to) const {
    m_prnId.writeTo(to);
    return fields<Store>(to + CPrnID::kSavedSize, *this);
}

const unsigned char* CHalvexObservation::read(const unsigned char* from) {
    m_prnId.readFrom(from);
    const unsigned char* const end = fields<Fetch>(from + CPrnID::kSavedSize, *this);
    m_size = static_cast<std::uint16_t>(end - from);
    return end;
}

bool CHalvexObservation::SaveData(unsigned char* buffer, std::size_t size, std::size_t& offset) const {
    const std::size_t needed = getSize();
    if (buffer == nullptr || offset > size || size - offset < needed) return false;
    write(buffer + offset);
    offset += needed;
    return true;
}

bool CHalvexObservation::LoadData(const unsigned char* buffer, std::size_t size, std::size_t& offset) {
    if (buffer == nullptr || offset > size) return false;
    const std::size_t taken = savedSize(buffer + offset, size - offset);
    if (taken == 0) return false;
    read(buffer + offset);
    offset += taken;
    return true;
}

bool operator==(const CHalvexObservation& left, const CHalvexObservation& right) {
    return left.m_prnId == right.m_prnId && left.m_validity == right.m_validity &&
           left.m_issueOfData == right.m_issueOfData && left.m_elevationMask == right.m_elevationMask &&
           left.m_azimuth == right.m_azimuth && left.m_slots == right.m_slots;
}
