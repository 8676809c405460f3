#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "halvex/corrections/DataContainerSSR.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {

/// Provider and solution as the number of a product: the high 16 and the low four bits.
[[nodiscard]] std::uint32_t productOf(const CALN::SSRCorrMsgBaseT& message);

/// What a sequence of correction messages has and covers, for people and for --json: each source (provider and
/// solution) for itself, in a CDataContainerSSR of its own. Memory is bounded by sources and satellites.
///
/// The time of the sequence is the epoch of its last message with orbits or clocks. An age is that time, or for the
/// worst the epoch of the message that ended it, less the epoch that was in force. A gap is a step between two epochs
/// that is longer than one and a half update intervals.
class SsrReport {
public:
    void add(const CALN::SSRCorrMsgBaseT& message);
    [[nodiscard]] std::uint64_t messages() const { return m_messages; }

    [[nodiscard]] std::string text() const;
    /// Adds its members to a report.
    void addTo(Json& json) const;

private:
    static constexpr std::size_t kMostGaps = 10;
    using Numbers = std::bitset<256>;  // of satellites
    using Kind = std::pair<CALN::eCALSATSYSTEM, CALN::eCALSSRCorrectionType>;
    struct Gap {
        SMjdTime after;
        double seconds = 0.0;
    };
    struct KindCounts {
        std::uint64_t messages = 0;
        std::uint64_t entries = 0;
    };
    /// Orbits or clocks of a system.
    struct Group {
        SMjdTime epoch;
        std::uint64_t epochs = 0;
        double worstAge = 0.0;  // [s]
        std::uint64_t gapCount = 0;
        std::vector<Gap> gaps;  // the first ones
        Numbers satellites;

        void add(const CALN::SSRCorrMsgBaseT& message, const std::vector<CALN::SCalSatID>& satellites);
        [[nodiscard]] double worstAgeAt(const SMjdTime& end) const;
    };
    struct System {
        Group orbits, clocks;
        std::optional<std::uint8_t> issue;
        std::uint64_t issueChanges = 0;
    };
    struct Source {
        explicit Source(std::uint32_t product) : container(product) {}

        std::map<Kind, KindCounts> kinds;
        std::map<CALN::eCALSATSYSTEM, System> systems;
        CDataContainerSSR container;
    };

    [[nodiscard]] static Json groupJson(const Group& group, const SMjdTime& end, CALN::eCALSATSYSTEM system);
    [[nodiscard]] Json sourceJson(std::uint32_t product, const Source& source) const;
    [[nodiscard]] std::string sourceText(std::uint32_t product, const Source& source) const;

    std::map<std::uint32_t, Source> m_sources;  // by product
    std::uint64_t m_messages = 0;
    SMjdTime m_first, m_last;  // epochs
    SMjdTime m_time;
    std::vector<CALN::SCalSatID> m_satellites;  // of the message in hand
};

}  // namespace halvex::tool
