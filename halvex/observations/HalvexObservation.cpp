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

/// Cursors for the field lists below. No checks: the length is known before a list is walked.
struct Store {
    unsigned char* at;
    template <class T>
    void operator()(const T& value) {
        halvex::storeLittleEndian(at, value);
        at += sizeof(T);
    }
    template <class T>
    void absent(const T&) {}
};
struct Fetch {
    const unsigned char* at;
    template <class T>
    void operator()(T& value) {
        value = halvex::loadLittleEndian<T>(at);
        at += sizeof(T);
    }
    template <class T>
    void absent(T& value) {
        value = T{};
    }
};

}  // namespace

void CHalvexObservation::Reset() {
    m_prnId.Clear();
    m_validity = 0;
    m_elevationMask = 0.0;
    m_azimuth = 0.0;
    for (Slot& slot : m_slots) slot.flags = 0;
}

bool CHalvexObservation::getPrn(unsigned char& prn) const {
    if (!m_prnId.IsSet()) return false;
    prn = m_prnId.getPrn();
    return true;
}

void CHalvexObservation::setIssueOfData(unsigned char issueOfData) {
    m_issueOfData = issueOfData;
    m_validity |= kIssueOfDataValid;
}

void CHalvexObservation::setElevationMask(double degrees) {
    m_elevationMask = degrees;
    m_validity |= kElevationMaskValid;
}

void CHalvexObservation::setAzimuth(double degrees) {
    m_azimuth = degrees;
    m_validity |= kAzimuthValid;
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
    m_slots[frequency].flags |= valid;
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

std::size_t CHalvexObservation::headSize(std::uint8_t validity) {
    return CPrnID::kSavedSize + 1 + ((validity & kIssueOfDataValid) != 0 ? 1U : 0U) +
           ((validity & kElevationMaskValid) != 0 ? 8U : 0U) + ((validity & kAzimuthValid) != 0 ? 8U : 0U);
}

std::size_t CHalvexObservation::slotSize(std::uint32_t slotFlags) {
    return withSet(slotFlags, [](auto flags) -> std::size_t {
        const auto bit = [flags](std::uint32_t mask) -> std::size_t { return (flags & mask) != 0 ? 1 : 0; };
        return 4 + 2 + 8 * (bit(kPhaseValid) + bit(kPseudorangeCValid) + bit(kPseudorangePValid)) +
               4 * (bit(kDopplerValid) + bit(kCnoValid)) + 2 * (bit(kPhaseErrorValid) + bit(kPseudorangeErrorValid)) +
               bit(kMultipathErrorValid) + bit(kCostaValid);
    });
}

std::size_t CHalvexObservation::getSize() const {
    std::size_t size = headSize(m_validity);
    for (const Slot& slot : m_slots) size += slotSize(slot.flags);
    return size;
}

std::size_t CHalvexObservation::savedSize(const unsigned char* from, std::size_t left) {
    if (left < kSmallestSize) return 0;
    std::size_t size = headSize(from[CPrnID::kSavedSize]);
    for (unsigned slot = 0; slot < kSlots; ++slot) {
        if (left < size + 4) return 0;
        size += slotSize(halvex::loadLittleEndian<std::uint32_t>(from + size));
    }
    return size <= left ? size : 0;
}

template <class Io, class Self>
void CHalvexObservation::fields(Io& io, Self& self) {
    const auto optional = [&io](bool present, auto& value) { present ? io(value) : io.absent(value); };
    io(self.m_validity);
    optional((self.m_validity & kIssueOfDataValid) != 0, self.m_issueOfData);
    optional((self.m_validity & kElevationMaskValid) != 0, self.m_elevationMask);
    optional((self.m_validity & kAzimuthValid) != 0, self.m_azimuth);
    for (auto& slot : self.m_slots) {
        io(slot.flags);
        withSet(slot.flags, [&](auto flags) {
            optional((flags & kPhaseValid) != 0, slot.phase);
            optional((flags & kPseudorangeCValid) != 0, slot.pseudorangeC);
            optional((flags & kPseudorangePValid) != 0, slot.pseudorangeP);
            optional((flags & kDopplerValid) != 0, slot.doppler);
            optional((flags & kPhaseErrorValid) != 0, slot.phaseError);
            optional((flags & kPseudorangeErrorValid) != 0, slot.pseudorangeError);
            optional((flags & kMultipathErrorValid) != 0, slot.multipathError);
            optional((flags & kCnoValid) != 0, slot.cno);
            optional((flags & kCostaValid) != 0, slot.costa);
            io(slot.contLockCount);
        });
    }
}

unsigned char* CHalvexObservation::write(unsigned char* to) const {
    m_prnId.writeTo(to);
    Store store{to + CPrnID::kSavedSize};
    fields(store, *this);
    return store.at;
}

const unsigned char* CHalvexObservation::read(const unsigned char* from) {
    m_prnId.readFrom(from);
    Fetch fetch{from + CPrnID::kSavedSize};
    fields(fetch, *this);
    return fetch.at;
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
