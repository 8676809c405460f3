#include "halvex/orbits/HalvexIonoUtc.h"

#include <algorithm>
#include <limits>

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/time/TimeBase.h"

CHalvexIonoUtc::CHalvexIonoUtc(const CHalvexIonoUtc& other) : IPersistData(other) {
    Assign(other);
}

CHalvexIonoUtc& CHalvexIonoUtc::operator=(const CHalvexIonoUtc& other) {
    if (this != &other) Assign(other);
    return *this;
}

CHalvexIonoUtc::~CHalvexIonoUtc() = default;

template <class Io, class Self>
void CHalvexIonoUtc::fields(Io& io, Self& d) {
    io(d.source);
    for (auto* set : {&d.alpha, &d.beta}) {
        for (auto& coefficient : *set) io(coefficient);
    }
    io(d.deltaTls);
    io(d.deltaTlsf);
    io(d.wnLsf);
    io(d.dn);
    io(d.a0);
    io(d.a1);
    for (auto* word : {&d.wnt, &d.tot, &d.word1, &d.word2}) io(*word);
}

bool CHalvexIonoUtc::loadData(const unsigned char* buffer, std::size_t length) {
    halvex::ByteReader in(buffer, length);
    std::uint16_t version = 0;
    in(version);
    if (version != kVersion || length < kSavedSize) return false;
    fields(in, m_data);
    return true;
}

void CHalvexIonoUtc::saveData(unsigned char* buffer, std::size_t length) const {
    if (buffer == nullptr || length < kSavedSize) return;
    halvex::ByteWriter out(buffer, length);
    out(kVersion);
    fields(out, m_data);
}

int CHalvexIonoUtc::GetLeapSecondsMjd() const {
    SMjdTime day;
    day.SetAsGpsWeekAndDayNumber(static_cast<int>(m_data.wnLsf & 0x7FFFFFFFU), m_data.dn);
    return day.GetMjdDay();
}

void CHalvexIonoUtc::SetLeapSecondsData(const int& deltaTls, const int& deltaTlsf, const int& mjd) {
    m_data.deltaTls = static_cast<std::uint8_t>(deltaTls);
    m_data.deltaTlsf = static_cast<std::uint8_t>(deltaTlsf);
    int week = 0;
    int day = 0;
    SMjdTime::FromDayAndMilliseconds(mjd, 0.0).GetAsGpsWeekAndDayNumber(week, day);
    m_data.wnLsf = static_cast<std::uint32_t>(week);
    m_data.dn = static_cast<std::uint8_t>(day);
}

std::int32_t CHalvexIonoUtc::referenceDay() const {
    return CTimeBase(static_cast<int>(m_data.wnt & 0x7FFFFFFFU), static_cast<double>(m_data.tot)).GetMjdDay();
}

std::int32_t CHalvexIonoUtc::getValidMJDStart() const {
    return referenceDay() - 7;
}

std::int32_t CHalvexIonoUtc::getValidMJDEnd() const {
    // A week of rubbish puts the reference time at the end of all days.
    return std::min(referenceDay(), std::numeric_limits<std::int32_t>::max() - 7) + 7;
}
