#include <fmt/format.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cmath>
#include <fstream>
#include <iostream>
#include <memory>
#include <numbers>
#include <optional>

#include "halvex/corrections/CombinedIonoGeoCorrection.h"
#include "halvex/platform/z9/Rtcm3NetworkProduct.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/corrections/Baseline.h"
#include "tools/halvex/corrections/StationStream.h"
#include "tools/halvex/orbits/Sky.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

struct Options {
    std::string master;
    std::vector<std::string> auxiliaries;
    std::vector<std::string> navigation;
    std::vector<std::string> positions;
    std::string rtcm;
    std::string streamTime;
    std::int32_t interval = 1;
    double mask = 10.0;  // [deg]
    bool keepGoing = false;
    bool json = false;
};

constexpr double kRadiansPerDegree = std::numbers::pi / 180.0;
constexpr double kUnit = 0.0005;  // of a difference [m]

CHalvexUniqueSiteID siteId(std::size_t number) {
    CHalvexUniqueSiteID id;
    id.setUniqueSiteID(static_cast<std::int64_t>(number));
    return id;
}

/// What came of one auxiliary station.
struct Summary {
    std::uint64_t messages = 0;
    std::uint64_t empty = 0;
    std::uint64_t satellites = 0;
    double worstGeometric = 0.0;    // [m]
    double worstIonospheric = 0.0;  // [m]
};

/// Takes the producer's messages: to the RTCM file, to the report.
class Sink final : public Z9::CRTKNetworkProduct {
public:
    Sink(const Options& options, std::size_t stations) : m_options(options), m_summaries(stations + 1) {
        if (options.rtcm.empty()) return;
        m_file.open(options.rtcm, std::ios::binary | std::ios::trunc);
        if (!m_file) throw Failure(options.rtcm + ": cannot be opened for writing");
        m_frames = std::make_unique<Z9::CRtcm3NetworkProduct>([this](std::span<const unsigned char> frame) {
            m_file.write(reinterpret_cast<const char*>(frame.data()), static_cast<std::streamsize>(frame.size()));
            ++m_frameCount;
            return m_file.good();
        });
    }

    std::int32_t addAuxiliaryCombinedIonoGeoCorrection(const CALN::MsgGNSS17T& message) override {
        using Type = CALN::MsgGNSS17T;
        if (m_frames != nullptr && m_frames->addAuxiliaryCombinedIonoGeoCorrection(message) != 0) {
            throw Failure(m_options.rtcm + ": cannot be written");
        }
        Summary& summary = m_summaries.at(message.gps.header.auxiliaryStation - 1U);
        ++summary.messages;
        Json satellites = Json::object();
        bool any = false;
        for (const auto& [type, part] :
             {std::pair(Type::kGps, &message.gps), std::pair(Type::kGlonass, &message.glonass),
              std::pair(Type::kGalileo, &message.galileo), std::pair(Type::kBeidou, &message.beidou)}) {
            if (!message.IsValidMsgType(type)) continue;
            for (const CALN::IonoGeoEntryT& entry : part->entries) {
                any = true;
                ++summary.satellites;
                summary.worstGeometric = std::max(summary.worstGeometric, std::abs(entry.geometric * kUnit));
                summary.worstIonospheric = std::max(summary.worstIonospheric, std::abs(entry.ionospheric * kUnit));
                if (!m_options.json) continue;
                satellites[fmt::format("{}{:02}", systemOfCode(entry.system)->letter, entry.satId)] = {
                    {"geometric", entry.geometric * kUnit},
                    {"ionospheric", entry.ionospheric * kUnit},
                    {"issueOfData", entry.issueOfData}};
            }
        }
        if (!any) ++summary.empty;
        if (printer) {
            printer->add({{"secondsOfWeek", message.gps.header.epoch / 10.0},
                          {"auxiliary", message.gps.header.auxiliaryStation},
                          {"satellites", satellites}});
        }
        return 0;
    }

    /// Where an auxiliary station stands: now and then, so that whoever comes later learns of it.
    void sendStation(const StationStream& master, const StationStream& station, std::uint16_t number,
                     std::size_t count) {
        if (m_frames == nullptr) return;
        const ORBIT_GEOGRAPHIC from = toGeographic(master.position());
        const ORBIT_GEOGRAPHIC to = toGeographic(station.position());
        const auto units = [](double radians) {
            constexpr double kUnitsPerDegree = 40000.0;
            return static_cast<std::int32_t>(std::lround(radians / kRadiansPerDegree * kUnitsPerDegree));
        };
        CALN::Msg1014T message;
        message.auxiliaryStations = static_cast<std::uint8_t>(std::min<std::size_t>(count, 31));
        message.masterStation = 1;
        message.auxiliaryStation = number;
        message.deltaLatitude = units(to.latitude - from.latitude);
        message.deltaLongitude = units(std::remainder(to.longitude - from.longitude, 2.0 * std::numbers::pi));
        message.deltaHeight = static_cast<std::int32_t>(std::lround((to.height - from.height) * 1000.0));
        if (m_frames->addAuxiliaryStationData(message) != 0) {
            throw Failure(station.name() +
                          ": too far from the master for an RTCM message, or the file cannot be written");
        }
    }

    void finish() {
        if (m_frames != nullptr && !m_file.flush()) throw Failure(m_options.rtcm + ": cannot be written");
    }
    [[nodiscard]] const Summary& summary(std::size_t number) const { return m_summaries[number]; }
    [[nodiscard]] std::uint64_t frames() const { return m_frameCount; }
    [[nodiscard]] std::uint64_t leftOut() const { return m_frames != nullptr ? m_frames->GetLeftOut() : 0; }

    std::optional<EpochPrinter> printer;

private:
    const Options& m_options;
    std::ofstream m_file;
    std::unique_ptr<Z9::CRtcm3NetworkProduct> m_frames;
    std::vector<Summary> m_summaries;
    std::uint64_t m_frameCount = 0;
};

/// Runs the stations' epochs, in step, through levelling, base and producer.
class Run {
public:
    explicit Run(const Options& options)
        : m_options(options),
          m_orbits(options.navigation, options.keepGoing),
          m_sink(options, options.auxiliaries.size()) {
        addStream(options.master);
        for (const std::string& file : options.auxiliaries) {
            addStream(file);
            const auto number = static_cast<std::uint16_t>(m_streams.size());
            m_collection.AddRtkAux(siteId(number), CRtkAux(0, 1, number));
        }
        m_levels.resize(m_streams.size());
    }

    void run() {
        using namespace CALN;
        const auto l1l2 = eCALFREQUENCY_GROUP_L1 | eCALFREQUENCY_GROUP_L2;
        const eCALFREQUENCY_GROUP bands[kSystemSlots] = {{},   l1l2,
                                                         l1l2, eCALFREQUENCY_GROUP_L1 | eCALFREQUENCY_GROUP_L5,
                                                         {},   eCALFREQUENCY_GROUP_L1 | eCALFREQUENCY_GROUP_E6,
                                                         {},   {},
                                                         {}};
        const auto systems = ebCALGNSSTYPE_GPS | ebCALGNSSTYPE_GLONASS | ebCALGNSSTYPE_GALILEO | ebCALGNSSTYPE_BEIDOU |
                             ebCALGNSSTYPE_QZSS;
        CCombinedIonoGeoCorrection producer(&m_collection, &m_sink, siteId(1), systems, m_options.interval, true, false,
                                            true, bands);
        if (m_options.json) m_sink.printer.emplace(head());
        while (std::optional<SMjdTime> t = nextTime()) step(producer, *t);
        m_sink.finish();
        if (m_epochs == 0) throw Failure(m_options.master + ": has no epoch in common with another station");
        if (m_taken == 0) {
            throw Failure(
                fmt::format("{}: no epoch from {} to {} has satellites with an orbit and phases that can be "
                            "used: do the navigation files serve it?",
                            m_options.master, formatTime(m_first), formatTime(m_last)));
        }
        if (m_sink.printer) {
            m_sink.printer->finish(tail());
        } else {
            report();
        }
    }

private:
    void addStream(const std::string& file) {
        const std::size_t number = m_streams.size() + 1;
        std::optional<ORBIT_COORD> position;
        if (!m_options.positions.empty()) {
            const CGeoCoord given = parseSite(m_options.positions[number - 1]).position;
            position = toCartesian({given.GetLatitude(), given.GetLongitude(), given.GetHeight()});
        }
        EpochSource::StreamChoice choice;
        if (!m_options.streamTime.empty()) choice.time = parseTime(m_options.streamTime);
        m_streams.push_back(std::make_unique<StationStream>(file, static_cast<std::int32_t>(number),
                                                            m_options.keepGoing, position, choice));
    }

    /// Positions that are not good to some metres make the differences drift with the satellites.
    static void checkPosition(const StationStream& stream, const StationResiduals& residuals) {
        constexpr double kPlausible = 20.0;  // [m]
        if (residuals.codeSpread <= kPlausible) return;
        throw Failure(
            fmt::format("{}: the pseudoranges miss its position by some {:.0f} m; give a better one with "
                        "--position",
                        stream.name(), residuals.codeSpread));
    }

    /// The epoch that a station's belongs to: receivers that let their clocks run are off by milliseconds.
    static SMjdTime slotOf(const StationStream& stream) {
        constexpr double kSlot = 100.0;  // [ms]
        SMjdTime slot = stream.time();
        slot.RoundTo(kSlot);
        return slot;
    }

    [[nodiscard]] std::optional<SMjdTime> nextTime() const {
        std::optional<SMjdTime> earliest;
        for (const auto& stream : m_streams) {
            if (stream->epoch() == nullptr) continue;
            const SMjdTime slot = slotOf(*stream);
            if (!earliest || slot < *earliest) earliest = slot;
        }
        return earliest;
    }

    void step(CCombinedIonoGeoCorrection& producer, const SMjdTime& t) {
        const double mask = m_options.mask * kRadiansPerDegree;
        std::optional<StationResiduals> master;
        bool common = false;
        for (std::size_t i = 0; i < m_streams.size(); ++i) {
            StationStream& stream = *m_streams[i];
            if (stream.epoch() == nullptr || slotOf(stream) != t) continue;
            const StationResiduals residuals =
                residualsOf(*stream.epoch(), stream.time(), stream.position(), m_orbits, mask);
            checkPosition(stream, residuals);
            auto result = boost::make_shared<CHalvexZ9StationCorrection>();
            if (i == 0) {
                *result = m_levels[0].master(residuals);
                master = residuals;
            } else if (master) {
                *result = m_levels[i].auxiliary(residuals, *master, m_levels[0]);
                common = true;
            }
            result->stationId = siteId(i + 1);
            result->epoch = t;
            if (i == 0 || master) {
                m_taken += producer.OnNALResults(result) == CCorrectionBase::kTaken ? 1U : 0U;
            }
            stream.advance();
        }
        if (!common) return;
        constexpr std::uint64_t kStationsEvery = 30;
        if (m_epochs++ % kStationsEvery == 0) {
            for (std::size_t i = 1; i < m_streams.size(); ++i) {
                m_sink.sendStation(*m_streams[0], *m_streams[i], static_cast<std::uint16_t>(i + 1),
                                   m_streams.size() - 1);
            }
        }
        m_first = m_first.IsSet() ? m_first : t;
        m_last = t;
    }

    [[nodiscard]] double distance(std::size_t i) const {
        const ORBIT_COORD& a = m_streams[0]->position();
        const ORBIT_COORD& b = m_streams[i]->position();
        return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
    }

    [[nodiscard]] Json head() const {
        Json stations = Json::array();
        for (std::size_t i = 1; i < m_streams.size(); ++i) {
            stations.push_back({{"auxiliary", i + 1}, {"station", m_streams[i]->name()}, {"distance", distance(i)}});
        }
        Json json = {
            {"master", m_streams[0]->name()}, {"auxiliaries", stations}, {"navigation", m_orbits.files().json()}};
        tellDisabledSystems(json);
        return json;
    }
    [[nodiscard]] Json tail() const {
        Json summaries = Json::array();
        for (std::size_t i = 1; i < m_streams.size(); ++i) {
            const Summary& summary = m_sink.summary(i);
            summaries.push_back({{"auxiliary", i + 1},
                                 {"messages", summary.messages},
                                 {"empty", summary.empty},
                                 {"satellites", summary.satellites},
                                 {"slips", m_levels[i].slips()}});
        }
        return {{"commonEpochs", m_epochs}, {"resultsTaken", m_taken}, {"stations", summaries}};
    }

    void report() const {
        std::cout << m_orbits.files().text()
                  << fmt::format("master {}; {} common epochs, {} to {}; {} results taken\n", m_streams[0]->name(),
                                 m_epochs, formatTime(m_first), formatTime(m_last), m_taken);
        Table table(
            {"auxiliary", "distance [km]", "messages", "empty", "satellites", "slips", "largest geo [m]", "iono [m]"},
            "<>>>>>>>");
        for (std::size_t i = 1; i < m_streams.size(); ++i) {
            const Summary& summary = m_sink.summary(i);
            table.add({m_streams[i]->name(), fmt::format("{:.3f}", distance(i) / 1000.0),
                       std::to_string(summary.messages), std::to_string(summary.empty),
                       std::to_string(summary.satellites), std::to_string(m_levels[i].slips()),
                       fmt::format("{:.4f}", summary.worstGeometric), fmt::format("{:.4f}", summary.worstIonospheric)});
        }
        std::cout << table.text();
        if (!m_options.rtcm.empty()) {
            std::cout << fmt::format("{}: {} frames; {} satellites that RTCM has no place for\n", m_options.rtcm,
                                     m_sink.frames(), m_sink.leftOut());
        }
    }

    const Options& m_options;
    FileOrbits m_orbits;
    Sink m_sink;
    std::vector<std::unique_ptr<StationStream>> m_streams;  // the master first
    std::vector<Levelling> m_levels;
    CRtkAuxCollection m_collection;
    std::uint64_t m_epochs = 0;
    std::uint64_t m_taken = 0;
    SMjdTime m_first, m_last;
};

}  // namespace

void addCorrectionsCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command = addSatelliteCommand(
        app, "corrections", "combined geometric and ionospheric differences between a master and auxiliary stations",
        "halvex corrections --master 07590920.05o --aux 30400920.05o --nav 07590920.05n --rtcm network.rtcm3");
    command->add_option("--master", options->master, "RINEX observation file or RTCM 3 stream of the master station")
        ->required();
    command->add_option("--aux", options->auxiliaries, "those of the auxiliary stations, one after another")
        ->required();
    command->add_option("--nav", options->navigation, "navigation files, or streams with ephemerides")->required();
    command->add_option("--position", options->positions,
                        "positions of the master and the auxiliary stations, in their order, each LAT,LON,H or X,Y,Z "
                        "[from the files]");
    command->add_option("--rtcm-time", options->streamTime,
                        "about when RTCM 3 streams begin, within half a week [from the streams]");
    command->add_option("--rtcm", options->rtcm, "file for RTCM 3 frames: 1014, 1017, 1039");
    command->add_option("--interval", options->interval, "output interval [s]")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    command->add_option("--mask", options->mask, "satellites from this elevation on alone [deg]")
        ->check(CLI::Range(0.0, 90.0))
        ->capture_default_str();
    command->add_flag("--keep-going", options->keepGoing, "pass over bad epochs and orbits");
    command->add_flag("--json", options->json, "every difference, as JSON");
    command->callback([options] {
        constexpr std::size_t kMost = 4094;  // station numbers of RTCM, the master's taken off
        if (options->auxiliaries.size() > kMost) throw Failure("--aux: too many stations", Failure::kWrongUsage);
        if (!options->positions.empty() && options->positions.size() != options->auxiliaries.size() + 1) {
            throw Failure("--position: one for each station, the master first", Failure::kWrongUsage);
        }
        Run(*options).run();
    });
}

}  // namespace halvex::tool
