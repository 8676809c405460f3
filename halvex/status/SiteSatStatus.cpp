#include "halvex/status/SiteSatStatus.h"

#include <algorithm>
#include <array>

#include "halvex/platform/caln/SatelliteSystem.h"
#include "halvex/platform/kernix/ByteCodec.h"

namespace {

constexpr std::size_t kSiteSize = 8;

using Level = CHalvexSatStatus;

/// What a status that is merged takes away from the one that is there.
unsigned char clearedBy(unsigned char status) {
    constexpr struct {
        unsigned char only;
        unsigned char clears;
    } kRules[] = {
        {Level::kLevel1First, Level::kLevel2First | Level::kLevel3First},
        {Level::kLevel1Second, Level::kLevel2Second | Level::kLevel3Second},
        {Level::kLevel2First, Level::kLevel1First | Level::kLevel3First},
        {Level::kLevel2Second, Level::kLevel1Second | Level::kLevel3Second},
        {Level::kLevel3First, Level::kLevel1First | Level::kLevel2First},
        {Level::kLevel3Second, Level::kLevel1Second | Level::kLevel2Second},
    };
    unsigned cleared = 0;
    for (const auto& rule : kRules) {
        if (status == 0 || status == rule.only) cleared |= rule.clears;
    }
    return static_cast<unsigned char>(cleared);
}

CALN::eCALSATSYSTEM systemOf(CPrnID::PrnType type) {
    const halvex::SatelliteSystem* system = halvex::systemOfTypeBit(type);
    return system != nullptr ? system->code : CALN::eCALSATSYSTEM_NONE;
}

}  // namespace

CHalvexSiteSatStatusKey::CHalvexSiteSatStatusKey(const CHalvexSiteSatStatus& status)
    : m_site(status), m_clusterId(status.GetClusterID()) {}

bool CHalvexSiteSatStatusKey::loadData(const unsigned char* buffer, std::size_t size) {
    if (buffer == nullptr || size < kSavedSize) return false;
    m_site.loadData(buffer, size);
    m_clusterId = halvex::loadLittleEndian<std::int32_t>(buffer + kSiteSize);
    return true;
}

void CHalvexSiteSatStatusKey::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < kSavedSize) return;
    m_site.saveData(buffer, size);
    halvex::storeLittleEndian(buffer + kSiteSize, m_clusterId);
}

void CHalvexSiteSatStatus::Clear() {
    const std::int64_t site = getUniqueSiteID();
    *this = CHalvexSiteSatStatus();
    setUniqueSiteID(site);
}

void CHalvexSiteSatStatus::Reset() {
    m_satellites.getList().clear();
    ResetEnum();
    m_stateChanges = 0;
}

void CHalvexSiteSatStatus::SetStatus(const CHalvexSatStatus& status) {
    if (!status.GetPrnID().IsValid()) return;
    bool found = false;
    for (CHalvexSatStatus& each : m_satellites.getList()) {
        if (!(each.GetPrnID() == status.GetPrnID())) continue;
        const unsigned merged = (each.GetStatus() | status.GetStatus()) & ~unsigned{clearedBy(status.GetStatus())};
        each = CHalvexSatStatus(status.GetPrnID(), static_cast<unsigned char>(merged), status.GetElevation());
        found = true;
    }
    if (!found) m_satellites.getList().push_back(status);
}

const CHalvexSatStatus* CHalvexSiteSatStatus::find(const CPrnID& satellite) const {
    const auto& list = m_satellites.getList();
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const auto& each) { return each.GetPrnID() == satellite; });
    return found != list.end() ? &*found : nullptr;
}

unsigned char CHalvexSiteSatStatus::GetStatus(const CPrnID& satellite) const {
    const CHalvexSatStatus* found = find(satellite);
    return found != nullptr ? found->GetStatus() : 0;
}

bool CHalvexSiteSatStatus::GetStatus(const CPrnID& satellite, unsigned char& status, unsigned char& elevation) const {
    const CHalvexSatStatus* found = find(satellite);
    if (found == nullptr) return false;
    status = found->GetStatus();
    elevation = found->GetElevation();
    return true;
}

unsigned char CHalvexSiteSatStatus::GetElevation(const CPrnID& satellite) const {
    const CHalvexSatStatus* found = find(satellite);
    return found != nullptr ? found->GetElevation() : 0;
}

void CHalvexSiteSatStatus::GetSatsAvailable(unsigned& nonEmpty, unsigned& fixed) const {
    nonEmpty = fixed = 0;
    for (const CHalvexSatStatus& each : m_satellites.getList()) {
        nonEmpty += each.GetStatus() != 0 ? 1U : 0U;
        fixed += each.IsFixed() ? 1U : 0U;
    }
}

unsigned CHalvexSiteSatStatus::GetSatsAvailable(std::vector<unsigned>& fixedPerSystem) const {
    fixedPerSystem.assign(CALN::kSystemSlots, 0);
    unsigned nonEmpty = 0;
    for (const CHalvexSatStatus& each : m_satellites.getList()) {
        nonEmpty += each.GetStatus() != 0 ? 1U : 0U;
        if (each.IsFixed()) ++fixedPerSystem[systemOf(each.GetPrnID().getPrnType())];
    }
    return nonEmpty;
}

void CHalvexSiteSatStatus::GetSatsStatus(CPrnID::PrnType type, bool first, bool second, unsigned& low, unsigned& mid,
                                         unsigned& high) const {
    const unsigned wanted = (first ? Level::kLevel1First | Level::kLevel2First | Level::kLevel3First : 0U) |
                            (second ? Level::kLevel1Second | Level::kLevel2Second | Level::kLevel3Second : 0U);
    low = mid = high = 0;
    for (const CHalvexSatStatus& each : m_satellites.getList()) {
        if (type != CPrnID::PRN_NONE && each.GetPrnID().getPrnType() != type) continue;
        const unsigned status = each.GetStatus() & wanted;
        if ((status & Level::kLevel3) != 0) {
            ++high;
        } else if ((status & Level::kLevel2) != 0) {
            ++mid;
        } else if ((status & Level::kLevel1) != 0) {
            ++low;
        }
    }
}

std::uint64_t CHalvexSiteSatStatus::GetNotEmptySats(CPrnID::PrnType type) const {
    std::uint64_t satellites = 0;
    for (const CHalvexSatStatus& each : m_satellites.getList()) {
        const unsigned number = each.GetPrnID().getPrn();
        if (each.GetPrnID().getPrnType() != type || each.GetStatus() == 0 || number < 1 || number > 64) continue;
        satellites |= std::uint64_t{1} << (number - 1);
    }
    return satellites;
}

void CHalvexSiteSatStatus::FilterSatsBelowElevMask(double mask) {
    std::erase_if(m_satellites.getList(), [mask](const auto& each) { return each.GetElevation() < mask; });
    ResetEnum();
}

void CHalvexSiteSatStatus::FilterPrnType(std::int32_t types) {
    std::erase_if(m_satellites.getList(),
                  [types](const auto& each) { return (each.GetPrnID().getPrnType() & types) != 0; });
    ResetEnum();
}

bool CHalvexSiteSatStatus::IsFixed(std::int32_t systems) const {
    std::vector<unsigned> counts;
    GetSatsAvailable(counts);
    std::uint64_t sum = 0;
    std::uint64_t needed = m_fixedThreshold;
    for (std::size_t system = 1; system < counts.size(); ++system) {
        if (counts[system] == 0 || (systems & (1 << (system - 1))) == 0) continue;
        sum += counts[system];
        ++needed;
    }
    return sum >= needed;
}

bool CHalvexSiteSatStatus::SetFixedThreshold(unsigned satellites) {
    if (satellites == 0) return false;
    m_fixedThreshold = satellites;
    return true;
}

unsigned CHalvexSiteSatStatus::countLevel3(bool first, bool second) const {
    unsigned low = 0, mid = 0, high = 0;
    GetSatsStatus(CPrnID::PRN_NONE, first, second, low, mid, high);
    return high;
}

unsigned char CHalvexSiteSatStatus::DetectStateChanges(const CHalvexSiteSatStatus& before) {
    constexpr unsigned kEnough = 5;
    const bool first = countLevel3(true, false) >= kEnough;
    const bool second = countLevel3(false, true) >= kEnough;
    const bool either = before.countLevel3(true, true) >= kEnough;
    unsigned char changes = 0;
    if (either && (!first || !second)) changes |= kLost;
    if (!either && first && second) changes |= kGained;
    m_stateChanges = changes;
    return changes;
}

bool CHalvexSiteSatStatus::GetNextEnumByRef(CHalvexSatStatus*& status) {
    auto& list = m_satellites.getList();
    status = m_cursor < list.size() ? &list[m_cursor++] : nullptr;
    return status != nullptr;
}

bool CHalvexSiteSatStatus::Compare(const CHalvexSiteSatStatus& other) const {
    return getUniqueSiteID() == other.getUniqueSiteID() && m_clusterId == other.m_clusterId &&
           m_satellites == other.m_satellites;
}

bool operator==(const CHalvexSiteSatStatus& left, const CHalvexSiteSatStatus& right) {
    return &left == &right || (left.m_epochTime == right.m_epochTime && left.Compare(right));
}

bool CHalvexSiteSatStatus::loadData(const unsigned char* buffer, std::size_t size) {
    m_satellites.getList().clear();
    ResetEnum();
    halvex::ByteReader in(buffer, size);
    const unsigned char* site = in.take(kSiteSize);
    std::int32_t clusterId = 0;
    double epochTime = 0.0;
    in(clusterId);
    in(epochTime);
    if (!in.ok()) return false;
    CHalvexUniqueSiteID::loadData(site, kSiteSize);
    m_clusterId = clusterId;
    m_epochTime = epochTime;
    return m_satellites.loadData(in.position(), in.left());
}

void CHalvexSiteSatStatus::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < getSize()) return;
    CHalvexUniqueSiteID::saveData(buffer, kSiteSize);
    halvex::ByteWriter out(buffer + kSiteSize, size - kSiteSize);
    out(m_clusterId);
    out(m_epochTime);
    const std::size_t left = out.left();
    if (unsigned char* to = out.take(left)) m_satellites.saveData(to, left);
}

std::size_t CHalvexSiteSatStatus::getSize() const {
    return kSiteSize + sizeof m_clusterId + sizeof m_epochTime + m_satellites.getSize();
}

bool vecSiteSatStatusSaveHelper::loadData(const unsigned char* /*buffer*/, std::size_t /*size*/) {
    return false;
}

void vecSiteSatStatusSaveHelper::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < getSize()) return;
    m_key.saveData(buffer, size);
    m_list.saveData(buffer + m_key.getSize(), size - m_key.getSize());
}

std::size_t vecSiteSatStatusSaveHelper::getSize() const {
    return m_key.getSize() + m_list.getSize();
}

bool vecSiteSatStatusLoadHelper::loadData(const unsigned char* buffer, std::size_t size) {
    return m_key.loadData(buffer, size) && m_list.loadData(buffer + m_key.getSize(), size - m_key.getSize());
}

void vecSiteSatStatusLoadHelper::saveData(unsigned char* buffer, std::size_t size) const {
    vecSiteSatStatusSaveHelper(m_key, m_list).saveData(buffer, size);
}

std::size_t vecSiteSatStatusLoadHelper::getSize() const {
    return vecSiteSatStatusSaveHelper(m_key, m_list).getSize();
}
