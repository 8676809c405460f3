#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <map>
#include <set>

#include "halvex/corrections/RtkAuxCollection.h"
#include "halvex/corrections/StationCorrection.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/caln/SystemCombination.h"
#include "halvex/platform/z9/RtkNetworkProduct.h"
#include "halvex/time/GPSTime.h"

/// The results of one epoch that wait for their partners.
struct CPhaseCorrectionEpoch {
    using Station = boost::shared_ptr<const CHalvexZ9StationCorrection>;

    SMjdTime epoch;  ///< GPS time, to the millisecond
    Station master;  ///< null until it has come
    std::map<CHalvexUniqueSiteID, Station> auxiliaries;
    std::set<CHalvexUniqueSiteID> delivered;  ///< what need not be sent again when another pair could not be sent
};

/// Base of the producers of network corrections: takes the results of the stations, epoch by epoch, gates them by rate
/// and quality, pairs the master's with those of the auxiliary stations and hands each pair to the producer, which
/// sends what it makes of them to the network product. Owns neither the collection nor the product. One thread at a
/// time.
///
/// An epoch is sent once the master and every station of the collection have come. One result of a later epoch ends the
/// waiting: whatever is there of the earlier epoch is sent then, and for each station that is missing (for all of them
/// without the master) an empty message with the systems that were sent before, so that a rover knows that it went
/// silent. So no more than two epochs ever wait. When an epoch that was not whole is sent so and less than 5000 ms lie
/// between it and the later one, each second between them that is due for output gets empty messages, too; over a
/// longer gap, which no rover bridges, nothing is sent. What comes again of an epoch that was sent whole is taken, and
/// nothing is sent of it.
class HALVEX_EXPORT CCorrectionBase {
public:
    static constexpr std::int32_t kSuccess = 0;
    static constexpr std::int32_t kFailure = static_cast<std::int32_t>(0x80004005U);
    static constexpr std::int32_t kTaken = 0;
    static constexpr std::int32_t kDiscarded = 1;

    /// `intervalSeconds`: below 0 counts as 0, with which every epoch is due.
    /// `announceSilence`: messages carry the flag that lets systems be sent that have fallen silent.
    /// `gloPseudorangeOffsets`: for the producer.
    CCorrectionBase(CRtkAuxCollection* collection, Z9::CRTKNetworkProduct* product, const CHalvexUniqueSiteID& master,
                    CALN::ebCALGNSSTYPECOMBINATION systems, std::int32_t intervalSeconds, bool announceSilence,
                    bool gloPseudorangeOffsets);
    CCorrectionBase(const CCorrectionBase&) = default;
    CCorrectionBase& operator=(const CCorrectionBase&) = default;
    virtual ~CCorrectionBase();

    /// Takes a result into its epoch (0) or discards it (1): the first one, which only sets the start, and none later
    /// than that; one off the output rate (less than the interval since the last one sent, and not two seconds ahead of
    /// a slot); one without enough fixed satellites; one of an epoch before those that wait. A result far in the future
    /// makes every later one such: ClearCorrections() is the way out.
    virtual std::int32_t OnNALResults(const boost::shared_ptr<const CHalvexZ9StationCorrection>& result);

    /// Corrections of the auxiliary station `second` against the master `first`: kSuccess or kFailure.
    virtual std::int32_t ProvideCorrections(const CHalvexZ9StationCorrection& first,
                                            const CHalvexZ9StationCorrection& second, CRtkAux& aux, bool flag) = 0;
    /// A message without satellites for each of the systems; `epoch` in GPS seconds of week, `flag` for its head.
    virtual void ProvideEmptyCorrections(CALN::ebCALGNSSTYPECOMBINATION systems, CRtkAux& aux, unsigned epoch,
                                         unsigned char flag) = 0;

    [[nodiscard]] CALN::ebCALGNSSTYPECOMBINATION GetActiveSystems() const { return m_activeSystems; }

protected:
    /// More than one satellite fixed, or one with a fixed wide lane, by the first valid phase on the first band of
    /// each.
    [[nodiscard]] bool CheckCorrection(const CHalvexZ9StationCorrection& result) const;

    /// c1 (a1 - a2) + c2 (b1 - b2)
    static bool CalculateGeoCorrection(double a1, double a2, double b1, double b2, double c1, double c2, double& out);
    /// c ((a1 - a2) - (b1 - b2))
    static bool CalculateIonoCorrection(double a1, double a2, double b1, double b2, double c, double& out);
    /// d1 = a1 - a2, d2 = b1 - b2; their difference is added to `sum`.
    static bool CalculateGloL1L2PRCorrections(double a1, double a2, double b1, double b2, double& d1, double& d2,
                                              double& sum);
    /// Codes the pseudorange offsets of GLONASS: their common difference between the carriers and their common part
    /// [m], rounded, and the residual [0.02 m] of each satellite whose residuals fit into 12 bits. `n` is the number
    /// that went to `out`; 0 when a common value is out of range (32 m, 127 m), which becomes 0 as well, or nothing
    /// fits.
    static bool CalculateGloDPORandP1OR(const CALN::ProvIonoGeoGLOPRMsgT* in, CALN::IonoGeoMsgT& out, int count,
                                        double dpo, double scale, double c1, double c2, signed char& dpoOut,
                                        signed char& p1orOut, int& n);

    /// Sends an epoch that is complete; false, with nothing sent, when it is not, and when a pair could not be sent.
    bool SendCorrection(CPhaseCorrectionEpoch& pending);
    /// Says of all stations that there is nothing for this epoch.
    void SendEmptyCorrection(CPhaseCorrectionEpoch& pending);
    /// Sends what there is of all epochs before `mjd`, and forgets them.
    void SendOldCorrection(double mjd);
    /// Forgets all epochs that wait, with empty messages for them.
    void ClearCorrections();
    /// Traces what a pair of results has in common.
    static void MaxiDebugTrace(const CHalvexZ9StationCorrection& first, const CHalvexZ9StationCorrection& second);

    static double roundHalfUp(double value);

    CRtkAuxCollection* m_collection;
    Z9::CRTKNetworkProduct* m_product;
    CHalvexUniqueSiteID m_master;
    int m_interval;  ///< [ms]
    std::map<double, CPhaseCorrectionEpoch> m_pending;
    CALN::ebCALGNSSTYPECOMBINATION m_sentSystems = CALN::ebCALGNSSTYPE_NONE;
    CALN::ebCALGNSSTYPECOMBINATION m_activeSystems;
    bool m_announceSilence;
    bool m_gloPseudorangeOffsets;
    CGPSTime m_lastSent;
    SMjdTime m_start;

private:
    [[nodiscard]] bool isDue(const SMjdTime& t) const;
    void add(const boost::shared_ptr<const CHalvexZ9StationCorrection>& result, const SMjdTime& t, double mjd);
    bool sendPair(CPhaseCorrectionEpoch& pending, const CHalvexUniqueSiteID& site, CRtkAux& aux);
    void sendIncomplete(CPhaseCorrectionEpoch& pending);
    void sendEmpty(CRtkAux& aux, const SMjdTime& epoch);
    /// Sent whole already: a result that came again or from a station outside of the collection began it anew.
    [[nodiscard]] bool isSent(const CPhaseCorrectionEpoch& pending) const;
};
