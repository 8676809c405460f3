#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "halvex/observations/HalvexObservation.h"
#include "halvex/observations/ObservationTypes.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/platform/mdb/LossOfLockDetector.h"
#include "halvex/platform/mdb/PrnIdZ9.h"

/// One epoch of one reference station: GPS week and milliseconds of week, site number, a status word, optional
/// smoothing interval, Doppler rate and receiver clock offsets, and the satellites' observations, owned by value, with
/// a filtered cursor over them. Some status bits and fields carry a second meaning for the network processing.
///
/// One thread at a time writes; several may read an object that nobody writes (the tracked counts that const getters
/// cache are stored atomically). Pointers to observations become invalid when the list changes.
///
/// Saved form, little-endian and packed: uint32 number of observations, uint32 milliseconds of week, uint16 week, int32
/// site ID, uint16 status, then only if their status bit is set: uint16 smoothing interval, uint16 Doppler rate,
/// float64 clock offset code, float64 clock offset phase; then the observations in list order, each as
/// CHalvexObservation.
class HALVEX_EXPORT CHalvexStationObservation : public IPersistData, public MDB::IObsLossOfLock {
public:
    /// Week, time and status 0, site ID -1, filter GPS, no observations; time synchronized.
    CHalvexStationObservation();
    /// The same for an epoch, without time synchronized.
    CHalvexStationObservation(unsigned int gpsFraction, short gpsWeek);
    /// Copies and moves take everything and set the cursor to the start; what was moved from has no observations.
    CHalvexStationObservation(const CHalvexStationObservation& other);
    CHalvexStationObservation& operator=(const CHalvexStationObservation& other);
    CHalvexStationObservation(CHalvexStationObservation&& other) noexcept;
    CHalvexStationObservation& operator=(CHalvexStationObservation&& other) noexcept;
    ~CHalvexStationObservation() override;
    CHalvexStationObservation& Assign(const CHalvexStationObservation& other) { return *this = other; }
    /// Back to week, time and status 0, site ID -1, no observations. The filter and the list's memory stay.
    void Clear();

    [[nodiscard]] std::uint16_t getGPSWeek() const { return m_week; }
    template <std::integral T>
    bool getGPSWeek(T& week) const {
        week = static_cast<T>(m_week);
        return true;
    }
    bool setGPSWeek(std::uint16_t week);
    /// Milliseconds of the GPS week.
    [[nodiscard]] std::uint32_t getGPSFraction() const { return m_fraction; }
    template <std::integral T>
    bool getGPSFraction(T& milliseconds) const {
        milliseconds = static_cast<T>(m_fraction);
        return true;
    }
    bool setGPSFraction(std::uint32_t milliseconds);
    [[nodiscard]] std::uint32_t getEpochTimeMsecs() const override { return m_fraction; }
    /// False when the id is below 1: unknown.
    bool getSiteID(std::int32_t& siteId) const;
    void setSiteID(std::int32_t siteId) { m_siteId = siteId; }

    // Status word.

    /// Takes values below 22 (else false, unchanged); those above 15 are stored as 2.
    bool setReceiverType(unsigned type);
    [[nodiscard]] TYPE::_enumSensorTypeID getReceiverType() const;
    [[nodiscard]] bool IsSimulatedReceiverType() const;
    void setNALCoded(bool on) { setStatus(kNalCoded, on); }
    [[nodiscard]] bool IsNALCoded() const { return status(kNalCoded); }
    void setNetProc(bool enabled) { setStatus(kNetProcDisabled, !enabled); }
    [[nodiscard]] bool IsNetProcEnabled() const { return !status(kNetProcDisabled); }
    void SetNALEventRecord() { setNetProc(false); }
    [[nodiscard]] bool IsNALEventRecord() const { return !IsNetProcEnabled(); }
    void setTimeSynchronized(bool on) { setStatus(kTimeSynchronized, on); }
    [[nodiscard]] bool getTimeSynchronized() const { return status(kTimeSynchronized); }
    /// Takes values below 4, else false, unchanged.
    bool setCoverageMode(unsigned mode);
    [[nodiscard]] TYPE::_enumCoverageMode getCoverageMode() const;
    void setCodeSampling(bool on) { setStatus(kCodeSampling, on); }
    [[nodiscard]] bool getCodeSampling() const { return status(kCodeSampling); }
    void setPhaseSampling(bool on) { setStatus(kPhaseSampling, on); }
    [[nodiscard]] bool getPhaseSampling() const { return status(kPhaseSampling); }
    void SetStarted(bool on) { setStatus(kStarted, on); }
    [[nodiscard]] bool IsStarted() const { return status(kStarted); }

    // Optional values: a getter returns false, and leaves its output alone, until the value has been set.

    void setSmoothingInterval(std::uint16_t interval);
    bool getSmoothingInterval(std::uint16_t& interval) const;
    void setDopplerRate(std::uint16_t rate);
    bool getDopplerRate(std::uint16_t& rate) const;
    void setClockOffsetCode(double offset);
    bool getClockOffsetCode(double& offset) const;
    [[nodiscard]] bool IsClockOffsetCodeValid() const { return status(kClockOffsetCodeValid); }
    void setClockOffsetPhase(double offset);
    bool getClockOffsetPhase(double& offset) const;
    [[nodiscard]] bool IsClockOffsetPhaseValid() const { return status(kClockOffsetPhaseValid); }

    // Second meanings for the network processing.

    void SetLinkStation(bool on) { setTimeSynchronized(on); }
    [[nodiscard]] bool IsLinkStation() const { return getTimeSynchronized(); }
    void SetOrbitmodelPredicted(bool on) { setCodeSampling(on); }
    [[nodiscard]] bool IsOrbitmodelPredicted() const { return getCodeSampling(); }
    /// Kept as the smoothing interval; 0 when that is not valid.
    void SetSubclusterAmbiguityLevel(std::uint16_t level) { setSmoothingInterval(level); }
    [[nodiscard]] std::uint16_t GetSubclusterAmbiguityLevel() const;
    /// Kept as the clock offset code; 0 when that is not valid.
    void SetSubclusterID(std::int32_t id) { setClockOffsetCode(id); }
    [[nodiscard]] std::int32_t GetSubclusterID() const;

    // Cursor over the observations whose satellite type is in the filter.

    void SetPrnTypeFilter(CPrnID::PrnTypeFlag mask) { m_filter = mask; }
    [[nodiscard]] CPrnID::PrnTypeFlag GetPrnTypeFilter() const { return m_filter; }
    /// Moves to the first observation, to the next one; false when there is none.
    bool First();
    bool Next();
    /// The observation at the cursor, copied or pointed to; false at the end.
    bool Get(CHalvexObservation& observation) const;
    bool GetRef(CHalvexObservation*& observation);

    // The list.

    bool GetObservation(const CPrnID& satellite, CHalvexObservation*& observation);
    bool GetObservation(const CPrnID& satellite, const CHalvexObservation*& observation) const;
    /// The satellite's observation, appended empty when there is none (the cursor then stands at the end).
    bool CreateObservation(const CPrnID& satellite, CHalvexObservation*& observation);
    /// Appends a copy, whether or not the satellite is there already; with `validate`, only a plausible one. The cursor
    /// goes to the start.
    bool AddObservation(const CHalvexObservation& observation, bool validate);
    /// Removes what is not plausible; whether any is left. The cursor goes to the start when something was removed.
    bool ValidateObservations();
    /// Removes what is of one of the `types`; the cursor goes to the start.
    void RemovePrnTypes(CPrnID::PrnTypeFlag types);
    [[nodiscard]] std::span<const CHalvexObservation> observations() const { return m_observations; }

    [[nodiscard]] std::int32_t GetCountObservation() const { return static_cast<std::int32_t>(m_observations.size()); }
    [[nodiscard]] std::int32_t GetNbSVs() const { return GetCountObservation(); }
    [[nodiscard]] std::int32_t GetCountObservationSatSystem(CPrnID::PrnTypeFlag mask) const;
    /// Satellites of any system tracked on L1 and on L2.
    [[nodiscard]] std::int32_t GetCountObsL1L2() const;
    /// Satellites tracked (a valid code or phase), GPS and GLONASS. The counts are cached: a cache below 1 is counted
    /// afresh, the setters overwrite it, every change of the list resets all four to 0.
    [[nodiscard]] std::int32_t GetCountTrackedOnL1() const;
    [[nodiscard]] std::int32_t GetCountTrackedOnL2() const;
    [[nodiscard]] std::int32_t GetCountTrackedOnL1Glo() const;
    [[nodiscard]] std::int32_t GetCountTrackedOnL2Glo() const;
    void SetCountTrackedOnL1(std::int32_t count) { m_tracked[0] = count; }
    void SetCountTrackedOnL2(std::int32_t count) { m_tracked[1] = count; }
    void SetCountTrackedOnL1Glo(std::int32_t count) { m_tracked[2] = count; }
    void SetCountTrackedOnL2Glo(std::int32_t count) { m_tracked[3] = count; }
    [[nodiscard]] bool IsGlonassTracked() const;

    [[nodiscard]] static bool IsFastObsRate(unsigned intervalMilliseconds) { return intervalMilliseconds < 1000; }

    /// The two satellite identifiers converted; what the other side does not know becomes an unset identifier.
    [[nodiscard]] static MDB::CPrnIdZ9 getNewPrnTypeFromDeprecated(const CPrnID& satellite);
    [[nodiscard]] static CPrnID getDepricatedPrnTypeFromNew(const MDB::CPrnIdZ9& satellite);
    void UpdateLossOfLock(MDB::CLossOfLockDetector& detector) override;
    void StoreLossOfLock(MDB::CLossOfLockDetector& detector) const override;

    /// Replaces everything but the filter: what the saved form lacks becomes 0. An object that is loaded
    /// again and again keeps the memory of two lists and allocates no more.
    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    /// Never undercounts: counts both clock offsets whether they are valid or not.
    [[nodiscard]] std::size_t getSize() const override;

    /// Compares the epoch's values and the observations one by one; caches, filter and cursor do not take part.
    friend HALVEX_EXPORT bool operator==(const CHalvexStationObservation& left, const CHalvexStationObservation& right);

private:
    enum Status : std::uint16_t {
        kReceiverType = 0x000F,
        kNalCoded = 0x0010,
        kNetProcDisabled = 0x0020,
        kTimeSynchronized = 0x0040,
        kCoverageMode = 0x0180,
        kCodeSampling = 0x0200,
        kPhaseSampling = 0x0400,
        kSmoothingIntervalValid = 0x0800,
        kDopplerRateValid = 0x1000,
        kStarted = 0x2000,
        kClockOffsetCodeValid = 0x4000,
        kClockOffsetPhaseValid = 0x8000,
    };
    [[nodiscard]] bool status(Status bit) const { return (m_status & bit) != 0; }
    void setStatus(Status bit, bool on);
    template <class Io, class Self>
    static void headFields(Io& io, Self& self);
    [[nodiscard]] std::int32_t tracked(std::size_t cache, CPrnID::PrnType type, unsigned frequency) const;
    void listChanged();
    /// All but the list; the cursor goes to the start.
    void copyHead(const CHalvexStationObservation& other);
    bool seek(std::size_t from);

    std::uint16_t m_week = 0;
    std::uint32_t m_fraction = 0;  // ms of week
    std::uint16_t m_status = 0;
    std::int32_t m_siteId = -1;
    std::uint16_t m_smoothingInterval = 0;
    std::uint16_t m_dopplerRate = 0;
    mutable std::int32_t m_tracked[4] = {};  // L1, L2, GLONASS L1, GLONASS L2
    CPrnID::PrnTypeFlag m_filter = CPrnID::PRN_GPS;
    double m_clockOffsetCode = 0.0;
    double m_clockOffsetPhase = 0.0;
    std::vector<CHalvexObservation> m_observations;
    std::vector<CHalvexObservation> m_spare;  // means nothing: the list before the last load, for its memory
    std::size_t m_cursor = 0;
};
