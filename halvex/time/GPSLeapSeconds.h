#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/Monitor.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "halvex/platform/os/Published.h"
#include "halvex/time/IGPSLeapSeconds.h"
#include "halvex/time/LeapSecondsPersist.h"

/// Told what became of a leap-second update, on the thread that made it, after the values are in place and with no lock
/// held: it may look up and update in turn.
class HALVEX_EXPORT ILeapSecondsMsgHnd {
public:
    virtual ~ILeapSecondsMsgHnd();
    /// The values now in force from this source.
    virtual void OnLeapSecondsAccepted(const int& ls, const int& lsf, const int& lsfMjd) = 0;
    /// The values that were kept.
    virtual void OnLeapSecondsRejected(const int& ls, const int& lsf, const int& lsfMjd) = 0;
};

/// GPS minus UTC [s] at `instant` by the process's table.
HALVEX_EXPORT int GetGPSLeapSeconds(const SMjdTime& instant);

/// The leap seconds of the process: an automatic set, fed from navigation messages and checked for plausibility, and a
/// manual set, entered by an operator, which overrides the automatic one while it is not all zeros. A set knows the
/// count before and after one announced change (LS, LSF, and LSF_MJD, the day at whose start in UTC it takes effect).
/// The set in force goes to the central store too (BSS::TIM::GpsC), both sets to the monitoring tree
/// ("LeapSeconds/Automatic" and "LeapSeconds/Manual") and to CLeapSecondsPersist. Rolling an announced change that has
/// passed into LS happens when sets are loaded and at the next accepted automatic update; lookups by instant need no
/// rolling.
///
/// There is one table in a process, made by initInstance and destroyed by ShutDown, which must wait until nobody uses
/// the table any more: a host shuts down after its users. Before and after, getInstance gives a table of the built-in
/// defaults that cannot be changed, so that every conversion works. Any thread may look up or update. Lookups take no
/// lock and write nothing shared; updates take turns, and call handlers and persistence after their turn.
class HALVEX_EXPORT CGPSLeapSeconds : public IGPSLeapSeconds {
public:
    /// Bits of the setters' flags.
    static constexpr int kFlagBypass = 1;  ///< simulation: no plausibility tests of a normal update, nothing persisted
    static constexpr int kFlagPersist =
        2;  ///< save an accepted manual set; automatic ones are always saved without bypass

    /// Loads both sets, rolls changes that have passed and saves the sets back.
    CGPSLeapSeconds();
    /// Saves both sets unless ShutDown said otherwise.
    ~CGPSLeapSeconds() override;
    CGPSLeapSeconds(const CGPSLeapSeconds&) = delete;
    CGPSLeapSeconds& operator=(const CGPSLeapSeconds&) = delete;

    /// LSF when `instant` (GPS time) is strictly later than the start of day LSF_MJD plus LS seconds, otherwise LS, of
    /// the values that GetGPSLeapSecondsData gives; 0 when it gives none.
    int GetGPSLeapSeconds(const SMjdTime& instant) override;
    /// Takes values out of a navigation message. False when they are implausible; then nothing changes. `handler` may
    /// be null, here and below.
    virtual bool SetAutomaticGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf,
                                            const int& lsfMjd, const int& flags);
    /// Takes an operator's entry, never refused. LS below 1 clears the manual set: the automatic one is in force again.
    virtual bool SetManualGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf, const int& lsfMjd,
                                         const int& flags);
    /// An automatic update without the plausibility tests that bypass skips, which also clears a manual set. LSF 0
    /// means LS, LSF_MJD 0 that of the automatic set. True when both steps were accepted.
    virtual bool SetSimulationGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf,
                                             const int& lsfMjd);
    /// The values in force: of the manual set, else of the automatic one, else (also when the set's LS is not above 0)
    /// of the central store, which may know no LSF_MJD and then leaves it alone. False, with nothing written, without
    /// any.
    virtual bool GetGPSLeapSecondsData(int& ls, int& lsf, int& lsfMjd);
    /// Hands a set to the central store: with `force` as a manual one, else as an automatic one. Part of an update's
    /// turn: an override may look up, but not update.
    virtual void SetFWCentralLeapSeconds(const SGPSLeapSeconds& set, const bool& force);
    /// Whether there are values.
    virtual bool Validate();
    /// UTC now. The constructor always takes the process's clock.
    virtual SMjdTime GetCurrentUTCTime();
    /// True makes every hand-over to the central store a manual one.
    [[nodiscard]] virtual bool IsUnitTest() const;

    /// Makes the table if there is none.
    static void initInstance();
    [[nodiscard]] static CGPSLeapSeconds& getInstance();
    [[nodiscard]] static bool hasInstance();
    /// Destroys the table, if there is one; `persist` says whether it saves its sets at that.
    static void ShutDown(bool persist);
    /// Loads both sets anew, if there is a table, and hands the one in force to the central store. A set that is
    /// updated meanwhile keeps the update.
    static void updateInstance();
    /// Empties the central store.
    static void ResetFWCentralLeapSeconds();
    /// Whether `received` can follow `old`, the current automatic set: the tests of an automatic update.
    [[nodiscard]] static bool ValidateGPSLeapSeconds(const SGPSLeapSeconds& old, const SGPSLeapSeconds& received,
                                                     const SMjdTime& now, bool bypass);

private:
    class BuiltIn;
    struct Monitoring;
    struct Sets {
        SGPSLeapSeconds automatic;
        SGPSLeapSeconds manual;
    };

    explicit CGPSLeapSeconds(std::unique_ptr<Monitoring> monitoring);
    /// One set's way to CLeapSecondsPersist.
    struct Storage {
        bool (CLeapSecondsPersistBase::*load)(SGPSLeapSeconds&);
        bool (CLeapSecondsPersistBase::*save)(const SGPSLeapSeconds&);
        SGPSLeapSeconds set{};      ///< to be saved
        std::uint64_t version = 0;  ///< of `set`
        int saving = 0;             ///< how many are about to save it
        bool isKnown = false;       ///< it was loaded once, or set; else what is stored is worth more than what is here
    };

    [[nodiscard]] Sets sets() const;
    /// Makes `set` the one to be saved. Under the mutex; its caller calls saveTo once that is free.
    static void askToSave(Storage& storage, const SGPSLeapSeconds& set);
    /// Saves without a lock. When another set came meanwhile, that too: the last one to be saved is the last one.
    void saveTo(Storage& storage);
    friend HALVEX_EXPORT int(::GetGPSLeapSeconds)(const SMjdTime& instant);
    void load(bool push);
    void publish();
    void showInMonitor();

    mutable std::mutex m_mutex;                ///< guards the sets, for reading several fields too, and who may publish
    std::unique_ptr<Monitoring> m_monitoring;  ///< null in the table of the built-in defaults alone
    Storage m_automaticStorage, m_manualStorage;
    SGPSLeapSeconds m_automatic;
    SGPSLeapSeconds m_manual;
    os::Published<3> m_inForce;  ///< LS, LSF, LSF_MJD for lookups; LS not above 0: ask the central store
    bool m_persistOnDestruction = false;
};

HALVEX_EXPORT void InitCentralLeapSeconds();
/// ShutDown(false): nothing is saved.
HALVEX_EXPORT void ShutdownCentralLeapSeconds();
HALVEX_EXPORT void UpdateCentralLeapSecondsFromDB();

/// The setters of the process's table; false, with nothing done, when there is none.
HALVEX_EXPORT bool SetAutomaticGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf,
                                              const int& lsfMjd, const int& flags);
/// With flags 3: persisted.
HALVEX_EXPORT bool SetManualGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf,
                                           const int& lsfMjd);
HALVEX_EXPORT bool SetSimulationGPSLeapSeconds(ILeapSecondsMsgHnd* handler, const int& ls, const int& lsf,
                                               const int& lsfMjd);

/// The same by `table` instead of the process's; an unset instant means now.
HALVEX_EXPORT int GetGPSLeapSeconds(IGPSLeapSeconds& table, const SMjdTime& instant);
/// The values in force, but with `ls` the leap seconds at `instant`. False when the table has no values.
HALVEX_EXPORT bool GetGPSLeapSeconds(const SMjdTime& instant, int& ls, int& lsf, int& lsfMjd);
HALVEX_EXPORT bool GetGPSLeapSecondsData(int& ls, int& lsf, int& lsfMjd);

/// The built-in automatic set: 17 s, 18 s from 1 January 2017 on, confirmed on 1 October 2016.
HALVEX_EXPORT int GetDefaultLeapSeconds();
HALVEX_EXPORT int GetDefaultLeapSecondsFuture();
HALVEX_EXPORT int GetDefaultLeapSecondsFutureMjd();
HALVEX_EXPORT int GetDefaultLeapSecondsConfirmMjd();

/// "DD.MM.YYYY" of a day number, "-" for 0.
HALVEX_EXPORT std::string GetLeapSecondsMjd(int mjd);

/// Sets LS to LSF and returns true when the announced change of `set` has passed at `now`: by day when a later day than
/// LSF_MJD has begun, otherwise when `now` (GPS time) is later than the start of LSF_MJD plus LS seconds.
HALVEX_EXPORT bool UpdateLeapSecondsCheckFutureMjd(IGPSLeapSeconds::SGPSLeapSeconds& set, const SMjdTime& now,
                                                   bool byDay);
