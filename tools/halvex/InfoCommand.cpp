#include <fmt/format.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <set>

#include "formats/rinex/ObservationReader.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rinex/TimeSystems.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/sets/SetNames.h"
#include "tools/halvex/sets/StationSet.h"
#include "tools/halvex/streams/EpochSteps.h"
#include "tools/halvex/streams/Streams.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

/// What there is to say of a stream of epochs. Bounded, however long the stream is.
class Summary {
public:
    std::string file, kind, station, receiver, antenna;

    void addEpoch(const SMjdTime& time) { m_steps.add(time); }
    void addSatellite(const CALN::SCalSatID& satellite) { ++m_satellites[satellite]; }
    void addValue(CALN::eCALSATSYSTEM system, const std::string& signal) { ++m_signals[{system, signal}]; }
    void addEvent() { ++m_events; }

    [[nodiscard]] Json json() const {
        Json json = {
            {"file", file}, {"kind", kind}, {"station", station}, {"receiver", receiver}, {"antenna", antenna}};
        json["epochs"] = m_steps.epochs();
        json["events"] = m_events;
        if (m_steps.last()) {
            json["from"] = formatTime(*m_steps.first());
            json["to"] = formatTime(*m_steps.last());
        }
        json["interval"] = m_steps.interval();
        json["gaps"] = Json::array();
        for (const EpochSteps::Gap& gap : m_steps.gaps()) {
            json["gaps"].push_back({{"after", formatTime(gap.after)}, {"seconds", gap.seconds}});
        }
        json["gapCount"] = m_steps.gapCount();
        json["backwardSteps"] = m_steps.backwardSteps();
        Json systems = Json::object();
        for (const SatelliteSystem& system : kSatelliteSystems) {
            const Json signals = signalsJson(system.code);
            const std::vector<std::string> names = satelliteNames(system.code);
            if (names.empty()) continue;
            systems[std::string(1, system.letter)] = {
                {"name", system.name}, {"satellites", names}, {"observations", signals}};
        }
        json["systems"] = systems;
        tellDisabledSystems(json);
        return json;
    }

    [[nodiscard]] std::string text() const {
        std::string text = fmt::format("{}\n  {}, station {}\n", file, kind, station.empty() ? "unknown" : station);
        if (!receiver.empty()) text += fmt::format("  receiver {}, antenna {}\n", receiver, antenna);
        if (!m_steps.last()) return text + "  no epoch\n";
        text += fmt::format("  {} to {} GPS time, {} epochs at {} s", formatTime(*m_steps.first()),
                            formatTime(*m_steps.last()), m_steps.epochs(), m_steps.interval());
        if (m_events != 0) text += fmt::format(", {} events", m_events);
        text += "\n";
        const std::vector<EpochSteps::Gap> list = m_steps.gaps();
        if (list.empty()) text += "  no gaps\n";
        for (const EpochSteps::Gap& gap : list)
            text += fmt::format("  gap of {} s after {}\n", gap.seconds, formatTime(gap.after));
        if (m_steps.gapCount() > list.size()) text += fmt::format("  {} gaps in all\n", m_steps.gapCount());
        if (m_steps.backwardSteps() != 0) {
            text += fmt::format("  {} epochs are not later than the one before\n", m_steps.backwardSteps());
        }
        Table table({"system", "satellites", "signal", "observations"}, "<><>");
        for (const SatelliteSystem& system : kSatelliteSystems) {
            const std::vector<std::string> names = satelliteNames(system.code);
            if (names.empty()) continue;
            std::string name(system.name);
            std::string count = std::to_string(names.size());
            for (const auto& [key, values] : m_signals) {
                if (key.first != system.code) continue;
                table.add({std::exchange(name, ""), std::exchange(count, ""), key.second, std::to_string(values)});
            }
            if (!name.empty()) table.add({name, count, "", "0"});
        }
        return text + table.text("  ");
    }

private:
    [[nodiscard]] std::vector<std::string> satelliteNames(CALN::eCALSATSYSTEM system) const {
        std::vector<std::string> names;
        for (const auto& [satellite, count] : m_satellites) {
            if (satellite.system == system) names.push_back(rinex::satelliteName(satellite));
        }
        return names;
    }
    [[nodiscard]] Json signalsJson(CALN::eCALSATSYSTEM system) const {
        Json json = Json::object();
        for (const auto& [key, count] : m_signals) {
            if (key.first == system) json[key.second] = count;
        }
        return json;
    }

    std::uint64_t m_events = 0;
    EpochSteps m_steps;
    std::map<CALN::SCalSatID, std::uint64_t> m_satellites;
    std::map<std::pair<CALN::eCALSATSYSTEM, std::string>, std::uint64_t> m_signals;
};

void describe(Summary& summary, const rinex::ObservationHeader& header) {
    summary.station = header.markerName;
    summary.receiver = header.receiverType;
    summary.antenna = header.antennaType;
}

/// Both return what is wrong behind the good part; empty when all is well.
std::string readRinex(ByteInput input, Summary& summary) {
    const std::string name = input.name();
    LineReader lines;
    lines.open(std::move(input));
    rinex::ObservationReader reader;
    if (!reader.open(std::move(lines))) throw Failure(reader.error());
    summary.kind = fmt::format("RINEX {:.2f} observations", reader.header().version);
    describe(summary, reader.header());
    Progress progress("reading " + name);
    rinex::ObservationEpoch epoch;
    using Result = rinex::ObservationReader::Result;
    for (Result result = reader.next(epoch); result != Result::end; result = reader.next(epoch)) {
        progress.update(reader.lines().bytesRead(), reader.lines().fileSize());
        if (result == Result::error) return reader.error().text();
        if (result == Result::event || epoch.flag == rinex::EpochFlag::cycleSlips) {
            summary.addEvent();
            continue;
        }
        const rinex::ObservationHeader& header = reader.header();
        leaveOutDisabled(epoch);
        summary.addEpoch(rinex::toGpsTime(epoch.time, header.timeSystem, header.leapSeconds));
        for (const auto& satellite : epoch.satellites) {
            summary.addSatellite(satellite.id);
            const auto values = epoch.valuesOf(satellite);
            for (std::size_t i = 0; i < values.size(); ++i) {
                if (values[i].present)
                    summary.addValue(satellite.id.system, header.codes[satellite.id.system][i].text());
            }
        }
    }
    return "";
}

void addSlots(Summary& summary, const CHalvexObservation& observation, const CALN::SCalSatID& id,
              const rinex::SatelliteSignals& signals) {
    for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
        const char band = slotBand(id.system, static_cast<int>(slot)).rinexBand;
        const auto add = [&](bool valid, char type, char attribute) {
            if (valid) summary.addValue(id.system, rinex::ObservationCode{type, band, attribute}.text());
        };
        add(observation.IsPseudorangeCValid(slot), 'C', signals[slot].pseudorangeC);
        add(observation.IsPseudorangePValid(slot), 'C', signals[slot].pseudorangeP);
        add(observation.IsPhaseValid(slot), 'L', signals[slot].phase);
        add(observation.IsDopplerValid(slot), 'D', signals[slot].doppler);
        add(observation.IsCNOValid(slot), 'S', signals[slot].cno);
    }
}

std::string readSet(const std::string& base, Summary& summary) {
    const StationHeader header = readStationHeader(base);
    describe(summary, header.rinex);
    summary.kind = "indexed set";
    SetReader reader(base);
    CHalvexStationObservation station;
    std::uint64_t other = 0;
    const std::uint64_t torn = reader.read(SMjdTime(), [&](std::span<const unsigned char> block) {
        if (!loadEnabled(station, block)) {
            ++other;
            return true;
        }
        const SMjdTime time = epochTime(station);
        summary.addEpoch(time);
        for (const CHalvexObservation& observation : station.observations()) {
            const auto id =
                CHalvexStationObservation::getNewPrnTypeFromDeprecated(observation.getPrnID()).getCalSatID();
            summary.addSatellite(id);
            addSlots(summary, observation, id, header.signalsAt(id, time));
        }
        return true;
    });
    if (torn != 0)
        return fmt::format("{}t: byte {}: the last record is cut off after {} bytes", base, reader.size() - torn, torn);
    return other != 0 ? fmt::format("{}t: {} blocks are no station epochs", base, other) : "";
}

}  // namespace

void addInfoCommand(CLI::App& app) {
    struct Options {
        std::vector<std::string> files;
        bool json = false;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command = addSatelliteCommand(
        app, "info", "what is in indexed sets, RINEX observation files and RTCM 3 streams",
        "halvex info archive/ESBC00DNK_R_20201770000_01D_30S_MO ESBC00DNK_R_20201770000_01D_30S_MO.rnx.gz");
    command
        ->add_option("FILE", options->files,
                     "indexed sets (base name, or any file of the set), RINEX files, RTCM 3 streams")
        ->required();
    command->add_flag("--json", options->json, "as JSON, an object for each file in an array");
    command->callback([options] {
        Json all = Json::array();
        std::string wrong;
        const auto print = [&](const auto& found) {
            if (options->json) {
                all.push_back(found.json());
            } else {
                std::cout << found.text();
            }
        };
        for (const std::string& file : options->files) {
            Summary summary;
            const std::string base = setBase(file);
            std::error_code ignored;
            const bool isSet = std::filesystem::exists(base + "t", ignored);
            summary.file = isSet ? base : file;
            try {
                ByteInput input;
                if (!isSet && !input.open(file)) {
                    throw Failure(input.error().value_or(FormatError{file, 0, "cannot be opened"}));
                }
                if (!isSet && rtcm3::isStream(input)) {
                    const StreamSummary stream(std::move(input));
                    if (wrong.empty()) wrong = stream.fault();
                    print(stream);
                    continue;
                }
                const std::string fault = isSet ? readSet(base, summary) : readRinex(std::move(input), summary);
                if (wrong.empty()) wrong = fault;
            } catch (const Failure& failure) {
                if (wrong.empty()) wrong = failure.what();
                continue;
            }
            print(summary);
        }
        if (options->json) std::cout << all.dump() << "\n";
        if (!wrong.empty()) throw Failure(wrong);
    });
}

}  // namespace halvex::tool
