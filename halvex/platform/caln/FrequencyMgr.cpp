#include "halvex/platform/caln/FrequencyMgr.h"

#include <mutex>

namespace CALN {
namespace {

constexpr double kSpeedOfLight = 299792458.0;  // [m/s]

class OwnLock final : public CCalLock {
public:
    void acquire() override { m_mutex.lock(); }
    void release() override { m_mutex.unlock(); }

private:
    std::mutex m_mutex;
};

class Held {
public:
    explicit Held(CCalLock& lock) : m_lock(lock) { m_lock.acquire(); }
    ~Held() { m_lock.release(); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    CCalLock& m_lock;
};

/// Index of a GLONASS satellite's channel; empty for what is none.
std::optional<std::size_t> indexOf(const SCalSatID& id) {
    if (id.system != eCALSATSYSTEM_GLONASS || halvex::satelliteIndex(id) < 0) return std::nullopt;
    return std::size_t{id.number} - 1;
}

}  // namespace

CCalLock::~CCalLock() = default;
ICalReaderWriterLock::~ICalReaderWriterLock() = default;

CCalFrequencyMgr::CCalFrequencyMgr(CCalLock* lock) : m_lock(lock) {
    if (m_lock == nullptr) m_lock = std::make_unique<OwnLock>();
    m_channels.fill(kUnknown);
}

CCalFrequencyMgr::~CCalFrequencyMgr() = default;

CCalFrequencyMgr& CCalFrequencyMgr::getInstance() {
    static CCalFrequencyMgr instance(nullptr);
    return instance;
}

void CCalFrequencyMgr::setGlonassChannel(const SCalSatID& id, int channel) {
    const auto index = indexOf(id);
    if (!index) return;
    const Held held(*m_lock);
    m_channels[*index] = isChannel(channel) ? channel : kUnknown;
}

std::optional<int> CCalFrequencyMgr::getGlonassChannel(const SCalSatID& id) const {
    const auto index = indexOf(id);
    if (!index) return std::nullopt;
    const Held held(*m_lock);
    return m_channels[*index] != kUnknown ? std::optional(m_channels[*index]) : std::nullopt;
}

bool CCalFrequencyMgr::getWavelength(const SCalSatID& id, eCALFREQUENCY frequency, double& wavelength) const {
    int channel = 0;
    if (frequency == eCALFREQUENCY_G1 || frequency == eCALFREQUENCY_G2) {
        const auto known = getGlonassChannel(id);
        if (!known) return false;
        channel = *known;
    }
    const double hertz = getCarrierFrequency(frequency, channel);
    if (hertz == 0.0) return false;
    wavelength = kSpeedOfLight / hertz;
    return true;
}

void CCalFrequencyMgr::Clear() {
    const Held held(*m_lock);
    m_channels.fill(kUnknown);
}

void setGlonassChannel(const SCalSatID& id, int channel) {
    CCalFrequencyMgr::getInstance().setGlonassChannel(id, channel);
}

}  // namespace CALN
