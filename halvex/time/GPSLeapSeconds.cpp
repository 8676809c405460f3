#include "halvex/time/GPSLeapSeconds.h"

#include <fmt/format.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "halvex/platform/bss/GpsC.h"
#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/kernix/TraceUtil.h"
#include "halvex/time/LeapSecondsPersist.h"
#include "halvex/time/SystemTime.h"

using SGPSLeapSeconds = IGPSLeapSeconds::SGPSLeapSeconds;

namespace {

constexpr std::uint32_t kTraceCategory = 512;

constexpr const char* kAutomaticSource = "CGPSLeapSeconds::SetAutomaticGPSLeapSeconds";
constexpr const char* kManualSource = "CGPSLeapSeconds::SetManualGPSLeapSeconds";

/// Whether `instant` (GPS time) is strictly later than a change at the start of day `lsfMjd`, announced with `ls`.
bool isAfterChange(const SMjdTime& instant, int ls, int lsfMjd) {
    return instant > SMjdTime::FromDayAndMilliseconds(lsfMjd, ls * 1000.0);
}

SMjdTime startOfDay(std::int32_t mjd) {
    return SMjdTime::FromDayAndMilliseconds(mjd, 0.0);
}

bool hasValues(const SGPSLeapSeconds& set) {
    return set.leapSeconds != 0 || set.leapSecondsFuture != 0 || set.leapSecondsFutureMjd != 0;
}

bool sameValues(const SGPSLeapSeconds& left, const SGPSLeapSeconds& right) {
    return left.leapSeconds == right.leapSeconds && left.leapSecondsFuture == right.leapSecondsFuture &&
           left.leapSecondsFutureMjd == right.leapSecondsFutureMjd;
}

std::string triple(const SGPSLeapSeconds& set) {
    return fmt::format("({}, {}, {})", set.leapSeconds.load(), set.leapSecondsFuture.load(),
                       set.leapSecondsFutureMjd.load());
}

void announce(std::string_view source, std::string_view text) {
    ILogging::getInstance().Log(source, ILogging::kNotice, text);
    CTraceUtil::Trace(kTraceCategory, text);
}

void accepted(ILeapSecondsMsgHnd* handler, const SGPSLeapSeconds& set) {
    if (handler == nullptr) return;
    handler->OnLeapSecondsAccepted(set.leapSeconds, set.leapSecondsFuture, set.leapSecondsFutureMjd);
}

/// What the central store knows.
bool readCentral(int& ls, int& lsf, int& lsfMjd) {
    BSS::TIM::UtcLeapSecond central;
    if (BSS::TIM::GpsC::getUtcLeapSecond(central) != 0) return false;
    ls = central.leapSeconds;
    lsf = central.futureLeapSeconds;
    if (central.futureValid) {
        SMjdTime change;
        change.SetAsGpsWeekAndDayNumber(central.week, central.dayNumber);
        lsfMjd = change.GetMjdDay();
    }
    return true;
}

bool readInForce(const os::Published<3>& inForce, int& ls, int& lsf, int& lsfMjd) {
    const auto values = inForce.read();
    if (values[0] <= 0) return readCentral(ls, lsf, lsfMjd);
    ls = values[0];
    lsf = values[1];
    lsfMjd = values[2];
    return true;
}

/// A lookup in full, for whatever values.
[[gnu::noinline]] int lookUpAnything(const os::Published<3>& inForce, const SMjdTime& instant) {
    int ls = 0;
    int lsf = 0;
    int lsfMjd = 0;
    readInForce(inForce, ls, lsf, lsfMjd);
    return isAfterChange(instant, ls, lsfMjd) ? lsf : ls;
}

/// The same result. Every conversion of a time comes here, so the usual case is short enough to be inlined: there is a
/// set, and the change falls within its day, so that no instant needs to be built to compare with.
inline int lookUp(const os::Published<3>& inForce, const SMjdTime& instant) {
    const auto [ls, lsf, lsfMjd] = inForce.read();
    if (ls <= 0 || ls >= 86400) [[unlikely]]
        return lookUpAnything(inForce, instant);
    const std::int32_t day = instant.GetMjdDay();
    const bool after = day == lsfMjd ? instant.GetMjdFractMilliseconds() > ls * 1000.0 : day > lsfMjd;
    return after ? lsf : ls;
}

std::atomic<CGPSLeapSeconds*> theTable{nullptr};

/// Held while the table is made or destroyed, never by lookups or updates.
std::mutex& lifecycle() {
    static std::mutex mutex;
    return mutex;
}

/// Apart, so that nothing has to be kept across a call in the lookup with a table.
[[gnu::noinline]] int lookUpWithoutTable(const SMjdTime& instant) {
    return CGPSLeapSeconds::getInstance().GetGPSLeapSeconds(instant);
}

}  // namespace

ILeapSecondsMsgHnd::~ILeapSecondsMsgHnd() = default;

IGPSLeapSeconds::~IGPSLeapSeconds() = default;

struct CGPSLeapSeconds::Monitoring {
    struct Group {
        explicit Group(const char* path) : container(path) {}

        void show(const SGPSLeapSeconds& set) {
            current.Set(set.leapSeconds);
            future.Set(set.leapSecondsFuture);
            futureMjd.Set(set.leapSecondsFutureMjd);
            confirmedMjd.Set(set.confirmMjd);
        }

        CMonitorElementContainer container;
        CMonitorElement current{container, "Current"};
        CMonitorElement future{container, "Future"};
        CMonitorElement futureMjd{container, "FutureMjd"};
        CMonitorElement confirmedMjd{container, "ConfirmedMjd"};
        CMonitorTimer updateTimer{container, "UpdateTimer"};
    };
    Group automatic{"LeapSeconds/Automatic"};
    Group manual{"LeapSeconds/Manual"};
};

/// Stands in while there is no table: answers lookups, takes no updates.
class CGPSLeapSeconds::BuiltIn final : public CGPSLeapSeconds {
public:
    BuiltIn() : CGPSLeapSeconds(std::unique_ptr<Monitoring>()) {}
    bool SetAutomaticGPSLeapSeconds(ILeapSecondsMsgHnd*, const int&, const int&, const int&, const int&) override {
        return false;
    }
    bool SetManualGPSLeapSeconds(ILeapSecondsMsgHnd*, const int&, const int&, const int&, const int&) override {
        return false;
    }
    bool SetSimulationGPSLeapSeconds(ILeapSecondsMsgHnd*, const int&, const int&, const int&) override { return false; }
};

CGPSLeapSeconds::CGPSLeapSeconds(std::unique_ptr<Monitoring> monitoring)
    : m_monitoring(std::move(monitoring)),
      m_automaticStorage{&CLeapSecondsPersistBase::LoadAuto, &CLeapSecondsPersistBase::SaveAuto},
      m_manualStorage{&CLeapSecondsPersistBase::LoadManual, &CLeapSecondsPersistBase::SaveManual},
      m_automatic(GetDefaultLeapSeconds(), GetDefaultLeapSecondsFuture(), GetDefaultLeapSecondsFutureMjd(),
                  GetDefaultLeapSecondsConfirmMjd()) {
    publish();
}

CGPSLeapSeconds::CGPSLeapSeconds() : CGPSLeapSeconds(std::make_unique<Monitoring>()) {
    load(false);
    m_persistOnDestruction = true;
}

CGPSLeapSeconds::~CGPSLeapSeconds() {
    if (!m_persistOnDestruction) return;
    const Sets last = sets();
    CLeapSecondsPersistBase& persist = CLeapSecondsPersist::GetInstance();
    if (m_automaticStorage.isKnown) persist.SaveAuto(last.automatic);
    if (m_manualStorage.isKnown) persist.SaveManual(last.manual);
}

CGPSLeapSeconds::Sets CGPSLeapSeconds::sets() const {
    const std::lock_guard lock(m_mutex);
    return {m_automatic, m_manual};
}

void CGPSLeapSeconds::askToSave(Storage& storage, const SGPSLeapSeconds& set) {
    storage.set = set;
    ++storage.version;
    ++storage.saving;
    storage.isKnown = true;
}

void CGPSLeapSeconds::saveTo(Storage& storage) {
    std::unique_lock lock(m_mutex);
    for (std::uint64_t saved = 0; saved != storage.version;) {
        const SGPSLeapSeconds set = storage.set;
        saved = storage.version;
        lock.unlock();
        (CLeapSecondsPersist::GetInstance().*storage.save)(set);
        lock.lock();
    }
    --storage.saving;
}

void CGPSLeapSeconds::load(bool push) {
    const SMjdTime now = GetCurrentUTCTime();
    CLeapSecondsPersistBase& persist = CLeapSecondsPersist::GetInstance();
    struct Reload {
        Storage& storage;
        SGPSLeapSeconds& current;
        std::optional<std::uint64_t> before{};  // empty while an update is on its way into the storage
        SGPSLeapSeconds set{};
        bool isTaken = false;
    };
    Reload reloads[] = {{m_automaticStorage, m_automatic}, {m_manualStorage, m_manual}};
    Reload& manual = reloads[1];
    {
        const std::lock_guard lock(m_mutex);
        for (Reload& each : reloads) {
            if (each.storage.saving == 0) each.before = each.storage.version;
        }
    }
    for (Reload& each : reloads) each.isTaken = (persist.*each.storage.load)(each.set);
    {
        const std::lock_guard lock(m_mutex);
        for (Reload& each : reloads) {
            each.storage.isKnown = each.storage.isKnown || each.isTaken;
            // What was updated meanwhile is younger than what was read.
            if (each.before != each.storage.version) each.isTaken = false;
            if (!each.isTaken) each.set = each.current;
            UpdateLeapSecondsCheckFutureMjd(each.set, now, true);
        }
        if (push) {
            const bool hasManual = hasValues(manual.set);
            SetFWCentralLeapSeconds(hasManual ? manual.set : reloads[0].set, hasManual);
        }
        for (Reload& each : reloads) {
            each.current = each.set;
            if (each.isTaken) askToSave(each.storage, each.set);
        }
        publish();
    }
    showInMonitor();
    for (Reload& each : reloads) {
        if (each.isTaken) saveTo(each.storage);
    }
}

void CGPSLeapSeconds::publish() {
    const SGPSLeapSeconds& set = hasValues(m_manual) ? m_manual : m_automatic;
    m_inForce.publish({set.leapSeconds, set.leapSecondsFuture, set.leapSecondsFutureMjd});
}

void CGPSLeapSeconds::showInMonitor() {
    const std::lock_guard lock(m_mutex);  // the last to show is then the last to have stored
    m_monitoring->automatic.show(m_automatic);
    m_monitoring->manual.show(m_manual);
}

int CGPSLeapSeconds::GetGPSLeapSeconds(const SMjdTime& instant) {
    // Only a derived class can have values of its own; sparing the call to ask for them makes the lookup a third
    // cheaper.
    if (typeid(*this) == typeid(CGPSLeapSeconds)) [[likely]]
        return lookUp(m_inForce, instant);
    int ls = 0;
    int lsf = 0;
    int lsfMjd = 0;
    GetGPSLeapSecondsData(ls, lsf, lsfMjd);
    return isAfterChange(instant, ls, lsfMjd) ? lsf : ls;
}

bool CGPSLeapSeconds::GetGPSLeapSecondsData(int& ls, int& lsf, int& lsfMjd) {
    return readInForce(m_inForce, ls, lsf, lsfMjd);
}

bool CGPSLeapSeconds::ValidateGPSLeapSeconds(const SGPSLeapSeconds& old, const SGPSLeapSeconds& received,
                                             const SMjdTime& now, bool bypass) {
    constexpr double kStaleDays = 91.0;     // a quarter: sets are confirmed daily while messages come in
    constexpr double kHorizonDays = 183.0;  // changes are announced half a year ahead
    // In 64 bits: received values may stand at the ends of their type.
    const std::int64_t ls = received.leapSeconds;
    const std::int64_t lsf = received.leapSecondsFuture;
    const std::int64_t oldLsf = old.leapSecondsFuture;
    const std::int32_t lsfMjd = received.leapSecondsFutureMjd;
    const auto dayFromNow = [&now](double days) {
        SMjdTime instant = now;
        instant.AddDays(days);
        return instant.GetMjdDay();
    };

    if (lsf == oldLsf && lsfMjd == old.leapSecondsFutureMjd) return true;
    if (lsf == 0 || lsfMjd == 0) return false;
    if (lsf < ls - 1 || lsf > ls + 1) return false;
    if (old.confirmMjd < dayFromNow(-kStaleDays)) return true;
    if (bypass) return true;
    if (lsf != oldLsf - 1 && lsf != oldLsf + 1) return false;
    if (lsfMjd <= old.leapSecondsFutureMjd) return false;
    if (lsfMjd > dayFromNow(kHorizonDays)) return false;
    if (startOfDay(lsfMjd).GetCalendar().day != 1) return false;
    return now.GetMjdDay() > old.leapSecondsFutureMjd;
}

bool CGPSLeapSeconds::SetAutomaticGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf,
                                                 const int& lsfMjd, const int& flags) {
    const CMonitorTimer::Run run = m_monitoring->automatic.updateTimer.start();
    const SMjdTime now = GetCurrentUTCTime();
    const bool bypass = (flags & kFlagBypass) != 0;
    SGPSLeapSeconds old;
    SGPSLeapSeconds received(ls, lsf, lsfMjd, 0);
    bool plausible = false;
    bool changed = false;
    {
        const std::lock_guard lock(m_mutex);
        old = m_automatic;
        plausible = ValidateGPSLeapSeconds(old, received, now, bypass);
        if (plausible && !bypass) {
            m_automatic.confirmMjd = now.GetMjdDay();
            // A message that only repeats the announcement cannot move the current value.
            if (received.leapSecondsFuture == old.leapSecondsFuture) received.leapSeconds = old.leapSeconds.load();
            UpdateLeapSecondsCheckFutureMjd(received, now, true);
        }
        changed = plausible && !sameValues(received, old);
        if (changed) {
            received.confirmMjd = m_automatic.confirmMjd.load();
            m_automatic = received;
            publish();
            if (m_manual.leapSeconds < 1) SetFWCentralLeapSeconds(received, false);
        }
        if (plausible && !bypass) askToSave(m_automaticStorage, m_automatic);
    }
    const auto text = [&](const char* verdict) {
        return fmt::format("Automatic Leap Second (LS, LSF, LSF_MJD) change {} from {} to {}", verdict, triple(old),
                           triple(received));
    };
    if (!plausible) {
        announce(kAutomaticSource, text("REJECTED"));
        if (handler != nullptr) {
            handler->OnLeapSecondsRejected(old.leapSeconds, old.leapSecondsFuture, old.leapSecondsFutureMjd);
        }
        return false;
    }
    if (changed) {
        announce(kAutomaticSource, text("ACCEPTED"));
        accepted(handler, received);
    }
    if (!bypass) saveTo(m_automaticStorage);
    showInMonitor();
    return true;
}

bool CGPSLeapSeconds::SetManualGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf,
                                              const int& lsfMjd, const int& flags) {
    const CMonitorTimer::Run run = m_monitoring->manual.updateTimer.start();
    const SGPSLeapSeconds entry(ls, lsf, lsfMjd, GetCurrentUTCTime().GetMjdDay());
    const bool clears = entry.leapSeconds < 1;
    const bool persists = (flags & kFlagPersist) != 0;
    SGPSLeapSeconds old;
    SGPSLeapSeconds effective = entry;
    {
        const std::lock_guard lock(m_mutex);
        old = m_manual;
        m_manual = entry;
        publish();
        if (clears) {
            effective = m_automatic;
            ResetFWCentralLeapSeconds();
        }
        SetFWCentralLeapSeconds(effective, !clears);
        if (persists) askToSave(m_manualStorage, entry);
    }
    announce(kManualSource, fmt::format("Manual Leap Second (LS, LSF, LSF_MJD) change ACCEPTED from {} to {}{}",
                                        triple(old), clears ? "Automatic " : "", triple(effective)));
    if (persists) saveTo(m_manualStorage);
    accepted(handler, effective);
    showInMonitor();
    return true;
}

bool CGPSLeapSeconds::SetSimulationGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf,
                                                  const int& lsfMjd) {
    const Sets before = sets();
    const int future = lsf != 0 ? lsf : ls;
    const int futureMjd = lsfMjd != 0 ? lsfMjd : before.automatic.leapSecondsFutureMjd.load();
    bool result = SetAutomaticGPSLeapSeconds(handler, ls, future, futureMjd, kFlagBypass);
    if (before.manual.leapSeconds > 0) {
        result = SetManualGPSLeapSeconds(handler, 0, 0, 0, kFlagBypass) && result;
    }
    return result;
}

void CGPSLeapSeconds::SetFWCentralLeapSeconds(const SGPSLeapSeconds& set, const bool& force) {
    using BSS::TIM::GpsC;
    int week = 0;
    int dayNumber = 0;
    if (set.leapSecondsFutureMjd >= 1) {
        startOfDay(set.leapSecondsFutureMjd).GetAsGpsWeekAndDayNumber(week, dayNumber);
    }
    GpsC::setGpsLeapSecondsData(static_cast<std::int16_t>(set.leapSeconds.load()),
                                static_cast<std::int16_t>(set.leapSecondsFuture.load()), week, dayNumber,
                                force || IsUnitTest() ? GpsC::kKindManual : GpsC::kKindAutomatic);
}

bool CGPSLeapSeconds::Validate() {
    int ls = 0;
    int lsf = 0;
    int lsfMjd = 0;
    return GetGPSLeapSecondsData(ls, lsf, lsfMjd);
}

SMjdTime CGPSLeapSeconds::GetCurrentUTCTime() {
    CSystemTime now;
    now.SetToCurrentUTCTime();
    return now;
}

bool CGPSLeapSeconds::IsUnitTest() const {
    return false;
}

void CGPSLeapSeconds::initInstance() {
    const std::lock_guard lock(lifecycle());
    if (!hasInstance()) theTable.store(new CGPSLeapSeconds, std::memory_order_release);
}

CGPSLeapSeconds& CGPSLeapSeconds::getInstance() {
    CGPSLeapSeconds* const table = theTable.load(std::memory_order_acquire);
    if (table != nullptr) return *table;
    static BuiltIn builtIn;
    return builtIn;
}

bool CGPSLeapSeconds::hasInstance() {
    return theTable.load(std::memory_order_acquire) != nullptr;
}

void CGPSLeapSeconds::ShutDown(bool persist) {
    const std::lock_guard lock(lifecycle());
    const std::unique_ptr<CGPSLeapSeconds> table(theTable.exchange(nullptr));
    if (table != nullptr) table->m_persistOnDestruction = persist;
}

void CGPSLeapSeconds::updateInstance() {
    if (CGPSLeapSeconds* const table = theTable.load(std::memory_order_acquire)) table->load(true);
}

void CGPSLeapSeconds::ResetFWCentralLeapSeconds() {
    BSS::TIM::GpsC::setGpsLeapSecondsData(0, 0, 0, 1, BSS::TIM::GpsC::kKindManual);
}

void InitCentralLeapSeconds() {
    CGPSLeapSeconds::initInstance();
}
void ShutdownCentralLeapSeconds() {
    CGPSLeapSeconds::ShutDown(false);
}
void UpdateCentralLeapSecondsFromDB() {
    CGPSLeapSeconds::updateInstance();
}

bool SetAutomaticGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf, const int& lsfMjd,
                                const int& flags) {
    return CGPSLeapSeconds::getInstance().SetAutomaticGPSLeapSeconds(handler, ls, lsf, lsfMjd, flags);
}

bool SetManualGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf, const int& lsfMjd) {
    constexpr int kFlags = CGPSLeapSeconds::kFlagBypass | CGPSLeapSeconds::kFlagPersist;
    return CGPSLeapSeconds::getInstance().SetManualGPSLeapSeconds(handler, ls, lsf, lsfMjd, kFlags);
}

bool SetSimulationGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf, const int& lsfMjd) {
    return CGPSLeapSeconds::getInstance().SetSimulationGPSLeapSeconds(handler, ls, lsf, lsfMjd);
}

int GetGPSLeapSeconds(const SMjdTime& instant) {
    // The table is of the very class, so no call needs to be dispatched.
    const CGPSLeapSeconds* const table = theTable.load(std::memory_order_acquire);
    if (table == nullptr) [[unlikely]]
        return lookUpWithoutTable(instant);
    return lookUp(table->m_inForce, instant);
}

int GetGPSLeapSeconds(IGPSLeapSeconds& table, const SMjdTime& instant) {
    CSystemTime time(instant);
    if (!time.IsSet()) time.SetToCurrentUTCTime();
    return table.GetGPSLeapSeconds(time);
}

bool GetGPSLeapSeconds(const SMjdTime& instant, int& ls, int& lsf, int& lsfMjd) {
    const bool known = GetGPSLeapSecondsData(ls, lsf, lsfMjd);
    ls = GetGPSLeapSeconds(instant);
    return known;
}

bool GetGPSLeapSecondsData(int& ls, int& lsf, int& lsfMjd) {
    return CGPSLeapSeconds::getInstance().GetGPSLeapSecondsData(ls, lsf, lsfMjd);
}

int GetDefaultLeapSeconds() {
    return 17;
}
int GetDefaultLeapSecondsFuture() {
    return 18;
}
int GetDefaultLeapSecondsFutureMjd() {
    return 57754;
}
int GetDefaultLeapSecondsConfirmMjd() {
    return 57662;
}

std::string GetLeapSecondsMjd(int mjd) {
    if (mjd == 0) return "-";
    const SMjdCalendar date = startOfDay(mjd).GetCalendar();
    return fmt::format("{:02}.{:02}.{}", date.day, date.month, date.year);
}

bool UpdateLeapSecondsCheckFutureMjd(SGPSLeapSeconds& set, const SMjdTime& now, bool byDay) {
    const std::int32_t day = set.leapSecondsFutureMjd;
    if (day <= 0) return false;
    const bool passed = byDay ? now.GetMjdDay() > day : isAfterChange(now, set.leapSeconds, day);
    if (passed) set.leapSeconds = set.leapSecondsFuture.load();
    return passed;
}
