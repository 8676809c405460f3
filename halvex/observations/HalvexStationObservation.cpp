#include "halvex/observations/HalvexStationObservation.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <utility>

#include "halvex/platform/kernix/ByteCodec.h"

CHalvexStationObservation::CHalvexStationObservation() {
    setTimeSynchronized(true);
}

CHalvexStationObservation::CHalvexStationObservation(unsigned int gpsFraction, short gpsWeek)
    : m_week(static_cast<std::uint16_t>(gpsWeek)), m_fraction(gpsFraction) {}

CHalvexStationObservation::CHalvexStationObservation(const CHalvexStationObservation& other) {
    *this = other;
}

CHalvexStationObservation& CHalvexStationObservation::operator=(const CHalvexStationObservation& other) {
    if (this == &other) return *this;
    copyHead(other);
    m_observations = other.m_observations;
    return *this;
}

CHalvexStationObservation::CHalvexStationObservation(CHalvexStationObservation&& other) noexcept {
    *this = std::move(other);
}

CHalvexStationObservation& CHalvexStationObservation::operator=(CHalvexStationObservation&& other) noexcept {
    if (this == &other) return *this;
    copyHead(other);
    m_observations = std::move(other.m_observations);
    m_spare = std::move(other.m_spare);
    other.m_observations.clear();
    other.listChanged();
    other.m_cursor = 0;
    return *this;
}

void CHalvexStationObservation::copyHead(const CHalvexStationObservation& other) {
    m_week = other.m_week;
    m_fraction = other.m_fraction;
    m_status = other.m_status;
    m_siteId = other.m_siteId;
    m_smoothingInterval = other.m_smoothingInterval;
    m_dopplerRate = other.m_dopplerRate;
    for (std::size_t i = 0; i < std::size(m_tracked); ++i) {
        m_tracked[i] = std::atomic_ref(other.m_tracked[i]).load(std::memory_order_relaxed);
    }
    m_filter = other.m_filter;
    m_clockOffsetCode = other.m_clockOffsetCode;
    m_clockOffsetPhase = other.m_clockOffsetPhase;
    m_cursor = 0;
}

CHalvexStationObservation::~CHalvexStationObservation() = default;

void CHalvexStationObservation::Clear() {
    m_week = 0;
    m_fraction = 0;
    m_status = 0;
    m_siteId = -1;
    m_smoothingInterval = 0;
    m_dopplerRate = 0;
    m_clockOffsetCode = 0.0;
    m_clockOffsetPhase = 0.0;
    m_observations.clear();
    listChanged();
    m_cursor = 0;
}

bool CHalvexStationObservation::setGPSWeek(std::uint16_t week) {
    m_week = week;
    return true;
}

bool CHalvexStationObservation::setGPSFraction(std::uint32_t milliseconds) {
    m_fraction = milliseconds;
    return true;
}

bool CHalvexStationObservation::getSiteID(std::int32_t& siteId) const {
    if (m_siteId < 1) return false;
    siteId = m_siteId;
    return true;
}

void CHalvexStationObservation::setStatus(Status bit, bool on) {
    m_status = static_cast<std::uint16_t>(on ? m_status | bit : m_status & ~bit);
}

bool CHalvexStationObservation::setReceiverType(unsigned type) {
    if (type >= 22) return false;
    const unsigned stored = type > 15 ? static_cast<unsigned>(TYPE::SENSOR_GENERIC) : type;
    m_status = static_cast<std::uint16_t>((m_status & ~kReceiverType) | stored);
    return true;
}

TYPE::_enumSensorTypeID CHalvexStationObservation::getReceiverType() const {
    return static_cast<TYPE::_enumSensorTypeID>(m_status & kReceiverType);
}

bool CHalvexStationObservation::IsSimulatedReceiverType() const {
    const unsigned type = getReceiverType();
    return type >= TYPE::SENSOR_SIMULATED_FIRST && type <= TYPE::SENSOR_SIMULATED_LAST;
}

bool CHalvexStationObservation::setCoverageMode(unsigned mode) {
    if (mode >= 4) return false;
    m_status = static_cast<std::uint16_t>((m_status & ~kCoverageMode) | (mode << 7));
    return true;
}

TYPE::_enumCoverageMode CHalvexStationObservation::getCoverageMode() const {
    return static_cast<TYPE::_enumCoverageMode>((m_status & kCoverageMode) >> 7);
}

void CHalvexStationObservation::setSmoothingInterval(std::uint16_t interval) {
    m_smoothingInterval = interval;
    setStatus(kSmoothingIntervalValid, true);
}

bool CHalvexStationObservation::getSmoothingInterval(std::uint16_t& interval) const {
    if (status(kSmoothingIntervalValid)) interval = m_smoothingInterval;
    return status(kSmoothingIntervalValid);
}

void CHalvexStationObservation::setDopplerRate(std::uint16_t rate) {
    m_dopplerRate = rate;
    setStatus(kDopplerRateValid, true);
}

bool CHalvexStationObservation::getDopplerRate(std::uint16_t& rate) const {
    if (status(kDopplerRateValid)) rate = m_dopplerRate;
    return status(kDopplerRateValid);
}

void CHalvexStationObservation::setClockOffsetCode(double offset) {
    m_clockOffsetCode = offset;
    setStatus(kClockOffsetCodeValid, true);
}

bool CHalvexStationObservation::getClockOffsetCode(double& offset) const {
    if (IsClockOffsetCodeValid()) offset = m_clockOffsetCode;
    return IsClockOffsetCodeValid();
}

void CHalvexStationObservation::setClockOffsetPhase(double offset) {
    m_clockOffsetPhase = offset;
    setStatus(kClockOffsetPhaseValid, true);
}

bool CHalvexStationObservation::getClockOffsetPhase(double& offset) const {
    if (IsClockOffsetPhaseValid()) offset = m_clockOffsetPhase;
    return IsClockOffsetPhaseValid();
}

std::uint16_t CHalvexStationObservation::GetSubclusterAmbiguityLevel() const {
    return status(kSmoothingIntervalValid) ? m_smoothingInterval : std::uint16_t{0};
}

std::int32_t CHalvexStationObservation::GetSubclusterID() const {
    if (!IsClockOffsetCodeValid() || std::isnan(m_clockOffsetCode)) return 0;
    constexpr double kLow = std::numeric_limits<std::int32_t>::min();
    constexpr double kHigh = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(m_clockOffsetCode, kLow, kHigh));
}

bool CHalvexStationObservation::seek(std::size_t from) {
    m_cursor = from;
    while (m_cursor < m_observations.size() && (m_observations[m_cursor].getPrnType() & m_filter) == 0) ++m_cursor;
    return m_cursor < m_observations.size();
}

bool CHalvexStationObservation::First() {
    return seek(0);
}

bool CHalvexStationObservation::Next() {
    return m_cursor < m_observations.size() && seek(m_cursor + 1);
}

bool CHalvexStationObservation::Get(CHalvexObservation& observation) const {
    if (m_cursor >= m_observations.size()) return false;
    observation = m_observations[m_cursor];
    return true;
}

bool CHalvexStationObservation::GetRef(CHalvexObservation*& observation) {
    if (m_cursor >= m_observations.size()) return false;
    observation = &m_observations[m_cursor];
    return true;
}

bool CHalvexStationObservation::GetObservation(const CPrnID& satellite, const CHalvexObservation*& observation) const {
    const auto found = std::find_if(m_observations.begin(), m_observations.end(),
                                    [&](const CHalvexObservation& each) { return each.getPrnID() == satellite; });
    if (found == m_observations.end()) return false;
    observation = &*found;
    return true;
}

bool CHalvexStationObservation::GetObservation(const CPrnID& satellite, CHalvexObservation*& observation) {
    const CHalvexObservation* found = nullptr;
    if (!std::as_const(*this).GetObservation(satellite, found)) return false;
    observation = const_cast<CHalvexObservation*>(found);  // an element of our own list
    return true;
}

bool CHalvexStationObservation::CreateObservation(const CPrnID& satellite, CHalvexObservation*& observation) {
    if (GetObservation(satellite, observation)) return true;
    observation = &m_observations.emplace_back(satellite);
    listChanged();
    m_cursor = m_observations.size();
    return true;
}

bool CHalvexStationObservation::AddObservation(const CHalvexObservation& observation, bool validate) {
    if (validate && !observation.IsDataValid()) return false;
    m_observations.push_back(observation);
    listChanged();
    m_cursor = 0;
    return true;
}

bool CHalvexStationObservation::ValidateObservations() {
    if (std::erase_if(m_observations, [](const CHalvexObservation& each) { return !each.IsDataValid(); }) != 0) {
        listChanged();
        m_cursor = 0;
    }
    return !m_observations.empty();
}

void CHalvexStationObservation::RemovePrnTypes(CPrnID::PrnTypeFlag types) {
    std::erase_if(m_observations, [types](const CHalvexObservation& each) { return (each.getPrnType() & types) != 0; });
    listChanged();
    m_cursor = 0;
}

void CHalvexStationObservation::listChanged() {
    std::fill(std::begin(m_tracked), std::end(m_tracked), 0);
}

std::int32_t CHalvexStationObservation::GetCountObservationSatSystem(CPrnID::PrnTypeFlag mask) const {
    return static_cast<std::int32_t>(
        std::count_if(m_observations.begin(), m_observations.end(),
                      [mask](const CHalvexObservation& each) { return (each.getPrnType() & mask) != 0; }));
}

std::int32_t CHalvexStationObservation::GetCountObsL1L2() const {
    return static_cast<std::int32_t>(
        std::count_if(m_observations.begin(), m_observations.end(), [](const CHalvexObservation& each) {
            return each.IsTracked(TYPE::FREQUENCY_L1) && each.IsTracked(TYPE::FREQUENCY_L2);
        }));
}

std::int32_t CHalvexStationObservation::tracked(std::size_t cache, CPrnID::PrnType type, unsigned frequency) const {
    const std::atomic_ref cached(m_tracked[cache]);
    if (const std::int32_t count = cached.load(std::memory_order_relaxed); count >= 1) return count;
    const auto count = static_cast<std::int32_t>(std::count_if(
        m_observations.begin(), m_observations.end(),
        [=](const CHalvexObservation& each) { return each.getPrnType() == type && each.IsTracked(frequency); }));
    cached.store(count, std::memory_order_relaxed);
    return count;
}

std::int32_t CHalvexStationObservation::GetCountTrackedOnL1() const {
    return tracked(0, CPrnID::PRN_GPS, TYPE::FREQUENCY_L1);
}
std::int32_t CHalvexStationObservation::GetCountTrackedOnL2() const {
    return tracked(1, CPrnID::PRN_GPS, TYPE::FREQUENCY_L2);
}
std::int32_t CHalvexStationObservation::GetCountTrackedOnL1Glo() const {
    return tracked(2, CPrnID::PRN_GLONASS, TYPE::FREQUENCY_L1);
}
std::int32_t CHalvexStationObservation::GetCountTrackedOnL2Glo() const {
    return tracked(3, CPrnID::PRN_GLONASS, TYPE::FREQUENCY_L2);
}

bool CHalvexStationObservation::IsGlonassTracked() const {
    return GetCountTrackedOnL1Glo() >= 1 || GetCountTrackedOnL2Glo() >= 1;
}

MDB::CPrnIdZ9 CHalvexStationObservation::getNewPrnTypeFromDeprecated(const CPrnID& satellite) {
    const halvex::SatelliteSystem* system = halvex::systemOfTypeBit(satellite.getPrnType());
    return system != nullptr ? MDB::CPrnIdZ9(system->code, satellite.getPrn()) : MDB::CPrnIdZ9();
}

CPrnID CHalvexStationObservation::getDepricatedPrnTypeFromNew(const MDB::CPrnIdZ9& satellite) {
    const halvex::SatelliteSystem* system = halvex::systemOfCode(satellite.getSystem());
    return system != nullptr ? CPrnID(satellite.getNumber(), static_cast<CPrnID::PrnType>(system->typeBit()))
                             : CPrnID();
}

void CHalvexStationObservation::UpdateLossOfLock(MDB::CLossOfLockDetector& detector) {
    for (CHalvexObservation& each : m_observations) {
        const MDB::CPrnIdZ9 satellite = getNewPrnTypeFromDeprecated(each.getPrnID());
        for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
            if (each.IsTracked(slot) && detector.takeLoss(satellite, static_cast<int>(slot))) each.SetLossOfLock(slot);
        }
    }
}

void CHalvexStationObservation::StoreLossOfLock(MDB::CLossOfLockDetector& detector) const {
    for (const CHalvexObservation& each : m_observations) {
        const MDB::CPrnIdZ9 satellite = getNewPrnTypeFromDeprecated(each.getPrnID());
        for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
            bool lost = false;
            std::uint16_t lockCount = 0;
            if (!each.IsTracked(slot) || !each.getLossOfLock(slot, lost) || !each.getContLockCount(slot, lockCount)) {
                continue;
            }
            detector.store(satellite, static_cast<int>(slot), lost, lockCount);
        }
    }
}

template <class Io, class Self>
void CHalvexStationObservation::headFields(Io& io, Self& self) {
    io(self.m_fraction);
    io(self.m_week);
    io(self.m_siteId);
    io(self.m_status);
    if (self.status(kSmoothingIntervalValid)) io(self.m_smoothingInterval);
    if (self.status(kDopplerRateValid)) io(self.m_dopplerRate);
    if (self.status(kClockOffsetCodeValid)) io(self.m_clockOffsetCode);
    if (self.status(kClockOffsetPhaseValid)) io(self.m_clockOffsetPhase);
}

std::size_t CHalvexStationObservation::getSize() const {
    std::size_t size = 16 + 16;
    if (status(kSmoothingIntervalValid)) size += 2;
    if (status(kDopplerRateValid)) size += 2;
    for (const CHalvexObservation& each : m_observations) size += each.getSize();
    return size;
}

void CHalvexStationObservation::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < getSize()) return;
    halvex::ByteWriter head(buffer, size);
    head(static_cast<std::uint32_t>(m_observations.size()));
    headFields(head, *this);
    unsigned char* to = buffer + (size - head.left());
    for (const CHalvexObservation& each : m_observations) to = each.write(to);
}

bool CHalvexStationObservation::loadData(const unsigned char* buffer, std::size_t size) {
    halvex::ByteReader reader(buffer, size);
    std::uint32_t count = 0;
    CHalvexStationObservation head;
    reader(count);
    headFields(reader, head);
    if (!reader.ok() || count > reader.left() / CHalvexObservation::kSmallestSize) return false;

    // Into the spare list: nothing of this object is touched before the whole buffer is known to be good.
    m_spare.resize(count);
    const unsigned char* from = reader.position();
    const unsigned char* const end = from + reader.left();
    for (CHalvexObservation& each : m_spare) {
        const auto left = static_cast<std::size_t>(end - from);
        if (left < CHalvexObservation::kLargestSize && CHalvexObservation::savedSize(from, left) == 0) return false;
        from = each.read(from);
    }

    head.m_filter = m_filter;
    head.m_observations = std::move(m_spare);
    head.m_spare = std::move(m_observations);
    *this = std::move(head);
    return true;
}

bool operator==(const CHalvexStationObservation& left, const CHalvexStationObservation& right) {
    return left.m_week == right.m_week && left.m_fraction == right.m_fraction && left.m_status == right.m_status &&
           left.m_siteId == right.m_siteId && left.m_smoothingInterval == right.m_smoothingInterval &&
           left.m_dopplerRate == right.m_dopplerRate && left.m_clockOffsetCode == right.m_clockOffsetCode &&
           left.m_clockOffsetPhase == right.m_clockOffsetPhase && left.m_observations == right.m_observations;
}
