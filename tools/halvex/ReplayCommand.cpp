#include <fmt/format.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <iostream>
#include <memory>
#include <thread>

#include "formats/rinex/ObservationWriter.h"
#include "formats/rinex/SatelliteName.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/sets/SetNames.h"
#include "tools/halvex/sets/StationSet.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

struct Options {
    std::vector<std::string> sets;
    std::string from, to;
    std::string speed = "max";
    bool json = false;
    std::string rinex;
};

Json slotJson(const CHalvexObservation& observation, unsigned slot) {
    Json json = Json::object();
    double value = 0.0;
    float small = 0.0F;
    bool on = false;
    unsigned short lock = 0;
    // Three decimals are what the sources print; a float's own digits beyond them are noise.
    const auto thousandths = [](float number) { return std::round(static_cast<double>(number) * 1000.0) / 1000.0; };
    if (observation.getPseudorangeC(slot, value)) json["C"] = value;
    if (observation.getPseudorangeP(slot, value)) json["P"] = value;
    if (observation.getPhase(slot, value, true)) json["phase"] = value;
    if (observation.getDoppler(slot, small)) json["doppler"] = thousandths(small);
    if (observation.getCNO(slot, small)) json["cno"] = thousandths(small);
    if (json.empty()) return json;
    if (!observation.IsPhaseValid(slot)) return json;
    if (observation.getContLockCount(slot, lock)) json["lock"] = lock;
    if (observation.getLossOfLock(slot, on) && on) json["lossOfLock"] = true;
    return json;
}

Json epochJson(const CHalvexStationObservation& station) {
    Json json;
    json["time"] = formatTime(epochTime(station));
    json["week"] = station.getGPSWeek();
    json["milliseconds"] = station.getGPSFraction();
    std::int32_t site = 0;
    if (station.getSiteID(site)) json["site"] = site;
    double offset = 0.0;
    if (station.getClockOffsetCode(offset)) json["clockOffset"] = offset;
    Json satellites = Json::object();
    for (const CHalvexObservation& observation : station.observations()) {
        Json slots = Json::array();
        for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) slots.push_back(slotJson(observation, slot));
        const MDB::CPrnIdZ9 id = CHalvexStationObservation::getNewPrnTypeFromDeprecated(observation.getPrnID());
        satellites[rinex::satelliteName(id.getCalSatID())] = std::move(slots);
    }
    json["satellites"] = std::move(satellites);
    tellDisabledSystems(json);
    return json;
}

std::string epochLine(const CHalvexStationObservation& station) {
    std::string text = fmt::format("{}  {:3} satellites ", formatTime(epochTime(station)), station.GetNbSVs());
    for (const SatelliteSystem& system : kSatelliteSystems) {
        const std::int32_t count = station.GetCountObservationSatSystem(system.typeBit());
        if (count != 0) text += fmt::format("  {} {}", system.letter, count);
    }
    return text;
}

/// Holds epochs back until their time has come.
class Pace {
public:
    explicit Pace(const std::string& speed) {
        if (speed == "max") return;
        const char* const last = speed.data() + speed.size();
        const auto [end, error] = std::from_chars(speed.data(), last, m_speed);
        if (error != std::errc() || end != last || !(m_speed > 0.0)) {
            throw Failure("'" + speed + "' is no speed: write a number above 0 (1 is real time) or max",
                          Failure::kWrongUsage);
        }
    }
    void wait(const SMjdTime& time) {
        if (m_speed <= 0.0) return;
        if (!m_first) {
            m_first = time;
            m_start = std::chrono::steady_clock::now();
        }
        const std::chrono::duration<double> sinceFirst(time.GetDifferenceInSeconds(*m_first) / m_speed);
        std::this_thread::sleep_until(m_start +
                                      std::chrono::duration_cast<std::chrono::steady_clock::duration>(sinceFirst));
    }

private:
    double m_speed = 0.0;
    std::optional<SMjdTime> m_first;
    std::chrono::steady_clock::time_point m_start;
};

class Replayer {
public:
    explicit Replayer(const Options& options) : m_options(options), m_pace(options.speed) {
        if (options.json && !options.rinex.empty()) {
            throw Failure("--json and --rinex exclude each other", Failure::kWrongUsage);
        }
        if (!options.from.empty()) m_from = parseTime(options.from);
        if (!options.to.empty()) m_to = parseTime(options.to);
    }

    void run() {
        for (const std::string& name : m_options.sets) m_stations.push_back(readStationHeader(setBase(name)));
        std::string torn;
        for (std::size_t i = 0; i < m_options.sets.size(); ++i) {
            const std::string base = setBase(m_options.sets[i]);
            SetReader reader(base);
            Progress progress("replaying " + base);
            std::uint64_t done = 0;
            const std::uint64_t cut = reader.read(m_from, [&](std::span<const unsigned char> block) {
                done += block.size();
                progress.update(done, reader.size());
                return deliver(base, m_stations[i], block);
            });
            if (cut != 0 && torn.empty()) {
                torn = fmt::format(
                    "{}t: byte {}: the last record is cut off after {} bytes; everything before it was "
                    "replayed; the next append cuts it off",
                    base, reader.size() - cut, cut);
            }
        }
        if (m_writer && !m_writer->close()) throw Failure(m_writer->error());
        if (m_writer && m_writer->unwritten() != 0) {
            std::cerr << "halvex: " << m_writer->unwritten() << " values have no place in " << m_options.rinex
                      << std::endl;
        }
        if (!torn.empty()) throw Failure(torn);
        if (m_epochs == 0 && !m_options.rinex.empty())
            throw Failure("no epoch in that span: " + m_options.rinex + " is not made");
    }

private:
    bool deliver(const std::string& base, const StationHeader& header, std::span<const unsigned char> block) {
        if (!loadEnabled(m_record, block)) {
            throw Failure(base + "t: a block after epoch " + std::to_string(m_epochs) + " is no station epoch");
        }
        const SMjdTime time = epochTime(m_record);
        if (m_from.IsSet() && time < m_from) return true;
        if (m_to.IsSet() && time > m_to) return false;
        ++m_epochs;
        m_pace.wait(time);
        if (m_options.json) {
            std::cout << epochJson(m_record).dump() << '\n';
        } else if (m_options.rinex.empty()) {
            std::cout << epochLine(m_record) << '\n';
        } else {
            writeRinex(header, time);
        }
        if (!std::cout) throw Failure("standard output: cannot be written");
        return true;
    }

    void writeRinex(const StationHeader& header, const SMjdTime& time) {
        if (!m_writer) {
            m_writer = std::make_unique<rinex::ObservationWriter>();
            if (!m_writer->open(m_options.rinex, rinexHeader(time))) throw Failure(m_writer->error());
        }
        const auto signals = [&](const CALN::SCalSatID& satellite) { return header.signalsAt(satellite, time); };
        if (!m_writer->write(m_record, signals)) throw Failure(m_writer->error());
    }

    /// The first station's header with the columns that any of the sets needs.
    [[nodiscard]] rinex::ObservationHeader rinexHeader(const SMjdTime& first) const {
        StationHeader all = m_stations.front();
        for (const StationHeader& station : m_stations) {
            for (const auto& [satellite, changes] : station.signals) {
                auto& list = all.signals[satellite];
                list.insert(list.end(), changes.begin(), changes.end());
            }
        }
        rinex::ObservationHeader header = rinex::inGpsTime(all.usedColumns());
        header.firstObservation = first;
        header.lastObservation.reset();
        header.program = "halvex";
        return header;
    }

    const Options& m_options;
    Pace m_pace;
    SMjdTime m_from, m_to;
    std::vector<StationHeader> m_stations;
    std::unique_ptr<rinex::ObservationWriter> m_writer;
    CHalvexStationObservation m_record;
    std::uint64_t m_epochs = 0;
};

}  // namespace

void addReplayCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command =
        addSatelliteCommand(app, "replay", "give archived epochs back, from any time on",
                            "halvex replay archive/ESBC00DNK_R_20201770000_01D_30S_MO --from 2020-06-25T12:00 --json");
    command->add_option("SET", options->sets, "indexed sets (base name, or any file of the set), one after another")
        ->required();
    command->add_option("--from", options->from, "first epoch [the first there is]");
    command->add_option("--to", options->to, "last epoch [the last there is]");
    command->add_option("--speed", options->speed, "1 is real time, 10 ten times as fast, max")->capture_default_str();
    command->add_flag("--json", options->json, "an epoch a line as JSON: metres, cycles, Hz, dB-Hz, lock in 10 ms");
    command->add_option("--rinex", options->rinex, "write a RINEX 3.05 observation file, - for standard output");
    command->callback([options] { Replayer(*options).run(); });
}

}  // namespace halvex::tool
