#include <fmt/format.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>

#include "formats/rinex/EpochBuilder.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/sets/SetNames.h"
#include "tools/halvex/sets/StationSet.h"
#include "tools/halvex/streams/EpochSource.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

struct Options {
    std::vector<std::string> inputs;
    std::string out;
    std::string site;
    std::int32_t siteNumber = -1;
    Span span = Span::daily;
    bool keepGoing = false;
    bool json = false;
    bool async = false;
    std::string streamTime;
    int streamStation = -1;
};

/// Archives files one after another and tells what became of them.
class Archiver {
public:
    explicit Archiver(const Options& options) : m_options(options) {
        if (!options.streamTime.empty()) m_stream.time = parseTime(options.streamTime);
        if (options.streamStation >= 0) m_stream.station = static_cast<unsigned>(options.streamStation);
    }

    void run() {
        static_cast<void>(stationName(m_options.site, "", ""));  // a wrong site code before anything is made
        std::error_code error;
        std::filesystem::create_directories(m_options.out, error);
        if (error) throw Failure(m_options.out + ": the folder cannot be made: " + error.message());
        const os::ScopedClock scope(m_clock);
        for (const std::string& input : m_options.inputs) {
            std::optional<Failure> failure;
            try {
                archive(input);
            } catch (const Failure& thrown) {
                failure = thrown;
            }
            try {
                closeSet();  // what has been read so far stays
            } catch (const Failure&) {
                report();
                throw;
            }
            if (!failure) continue;
            if (!m_options.keepGoing) {
                report();
                throw *failure;
            }
            noteBad(failure->what());
        }
        report();
    }

private:
    struct SetReport {
        std::uint64_t epochs = 0;
        std::uint64_t bytes = 0;
    };
    struct InputReport {
        std::string file;
        rinex::LossCounts losses;
        std::uint64_t events = 0;
        std::optional<StreamCounts> stream;
    };

    void archive(const std::string& input) {
        EpochSource source(input, m_stream);
        rinex::EpochBuilder builder(source.header());
        InputReport& report = m_inputs.emplace_back();
        report.file = input;
        const auto tell = [&] {
            report.losses = builder.losses();
            report.stream = source.streamCounts();
        };
        try {
            readAll(source, builder, report);
        } catch (const Failure&) {
            tell();
            throw;
        }
        tell();
    }

    void readAll(EpochSource& source, rinex::EpochBuilder& builder, InputReport& report) {
        using Result = EpochSource::Result;
        std::optional<StationName> station;
        rinex::ObservationEpoch epoch;
        CHalvexStationObservation record;
        std::uint32_t headerChanges = 0;
        Progress progress("archiving " + std::filesystem::path(report.file).filename().string());
        for (Result result = source.next(epoch); result != Result::end; result = source.next(epoch)) {
            if (result == Result::error) {
                if (!m_options.keepGoing) throw source.error();
                noteBad(source.error().what());
                continue;
            }
            if (source.headerChanges() != headerChanges) {
                headerChanges = source.headerChanges();
                builder.setHeader(source.header());
            }
            if (!station) station = stationName(m_options.site, report.file, source.marker());
            if (result == Result::event) ++report.events;
            if (result == Result::epoch && builder.build(epoch, m_options.siteNumber, record)) {
                add(record, *station, source.header(), builder);
            }
            progress.update(source.bytesRead(), source.fileSize());
        }
    }

    void add(const CHalvexStationObservation& record, const StationName& station,
             const rinex::ObservationHeader& header, const rinex::EpochBuilder& builder) {
        const SMjdTime start = spanStart(epochTime(record), m_options.span);
        if (!m_writer || start != m_start) {
            closeSet();
            m_start = start;
            const auto base = std::filesystem::path(m_options.out) / setName(station, start, m_options.span, header);
            m_writer = std::make_unique<SetWriter>(base.string(), header, m_clock, m_asynchronous);
        }
        if (!m_writer->add(record, builder)) ++m_notLater;
    }

    void closeSet() {
        if (!m_writer) return;
        const std::unique_ptr<SetWriter> writer = std::move(m_writer);
        writer->close();
        SetReport& set = m_sets[writer->base()];
        set.epochs += writer->epochs();
        set.bytes += writer->bytes();
    }

    void noteBad(const std::string& text) {
        ++m_bad;
        std::cerr << "halvex: " << text << std::endl;
    }

    void report() const {
        if (m_options.json) {
            std::cout << json().dump() << "\n";
            return;
        }
        Table sets({"set", "epochs", "bytes"}, "<>>");
        for (const auto& [base, set] : m_sets) {
            sets.add({base, std::to_string(set.epochs), std::to_string(set.bytes)});
        }
        if (!sets.empty()) std::cout << sets.text();
        for (const InputReport& input : m_inputs) reportInput(input);
        if (m_notLater != 0)
            std::cout << m_notLater << " epochs were not later than the last one of their set: left out\n";
        if (m_bad != 0) std::cout << m_bad << " bad epochs or files passed over\n";
        std::cout.flush();
    }

    static StreamCounts otherLosses(const InputReport& input) {
        const rinex::LossCounts& losses = input.losses;
        StreamCounts list{{"Doppler values rounded to a float", losses.roundedDoppler},
                          {"C/N0 values rounded to a float", losses.roundedCno},
                          {"epochs rounded to the millisecond", losses.roundedEpochs},
                          {"signal strength digits of phases without C/N0", losses.signalStrengthDigits},
                          {"loss-of-lock bits without a flag", losses.lossOfLockBits},
                          {"satellites twice in an epoch", losses.repeatedSatellites},
                          {"cycle-slip epochs", losses.cycleSlipEpochs},
                          {"epochs outside the weeks of GPS time", losses.unstampedEpochs},
                          {"power failures, kept as loss of lock", losses.powerFailures},
                          {"events", input.events}};
        if (input.stream) list.insert(list.end(), input.stream->begin(), input.stream->end());
        return list;
    }

    static void reportInput(const InputReport& input) {
        Table values({"not in the record", "values"}, "<>");
        for (const auto& [code, count] : input.losses.values) {
            const SatelliteSystem* system = systemOfCode(code.first);
            values.add({fmt::format("{} {}", system != nullptr ? system->letter : '?', code.second.text()),
                        std::to_string(count)});
        }
        for (const auto& [what, count] : otherLosses(input)) {
            if (count != 0) values.add({what, std::to_string(count)});
        }
        if (values.empty()) return;
        std::cout << "\n" << input.file << "\n" << values.text("  ");
    }

    [[nodiscard]] Json json() const {
        Json sets = Json::array();
        for (const auto& [base, set] : m_sets) {
            sets.push_back({{"set", base}, {"epochs", set.epochs}, {"bytes", set.bytes}});
        }
        Json inputs = Json::array();
        for (const InputReport& input : m_inputs) {
            Json lost = Json::object();
            for (const auto& [code, count] : input.losses.values) {
                const SatelliteSystem* system = systemOfCode(code.first);
                lost[fmt::format("{} {}", system != nullptr ? system->letter : '?', code.second.text())] = count;
            }
            Json other = Json::object();
            for (const auto& [what, count] : otherLosses(input)) other[what] = count;
            inputs.push_back({{"file", input.file}, {"notInTheRecord", lost}, {"other", other}});
        }
        Json json = {{"sets", sets}, {"inputs", inputs}, {"notLater", m_notLater}, {"bad", m_bad}};
        tellDisabledSystems(json);
        return json;
    }

    const Options& m_options;
    EpochSource::StreamChoice m_stream;
    EpochClock m_clock;
    CDecoupledFileWriteHandle m_handle;
    CDecoupledFileWrite* m_asynchronous = m_options.async ? m_handle.GetRealPointer() : nullptr;
    std::unique_ptr<SetWriter> m_writer;
    SMjdTime m_start;
    std::map<std::string, SetReport> m_sets;
    std::vector<InputReport> m_inputs;
    std::uint64_t m_notLater = 0;
    std::uint64_t m_bad = 0;
};

}  // namespace

void addArchiveCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command = addSatelliteCommand(
        app, "archive", "archive RINEX observation files and RTCM 3 streams as indexed sets, one for each span",
        "halvex archive ESBC00DNK_R_20201770000_01D_30S_MO.rnx.gz --out archive --span hourly");
    command
        ->add_option("OBS", options->inputs,
                     "RINEX observation files or RTCM 3 streams, plain or gzip, - for standard input")
        ->required();
    command->add_option("--out", options->out, "folder of the sets, made when missing")->required();
    command->add_option("--site", options->site, "site code, 4 characters or 9 as ESBC00DNK [from the file]");
    command->add_option("--site-number", options->siteNumber, "site number kept in every record")
        ->check(CLI::Range(1, std::numeric_limits<std::int32_t>::max()));
    command->add_option("--span", options->span, "what one set holds; subhourly is 15 min")
        ->transform(CLI::CheckedTransformer(std::map<std::string, Span>{
            {"hourly", Span::hourly}, {"daily", Span::daily}, {"subhourly", Span::subhourly}}))
        ->default_str("daily")
        ->option_text("daily|hourly|subhourly [daily]");
    command->add_option("--rtcm-time", options->streamTime,
                        "about when an RTCM 3 stream begins, within half a week [from the stream]");
    command->add_option("--rtcm-station", options->streamStation, "the stream's station to archive [the first]")
        ->check(CLI::Range(0, 4095));
    command->add_flag("--keep-going", options->keepGoing, "pass over bad epochs and files, and say how many");
    command->add_flag("--async", options->async,
                      "write on a thread of its own, so that reading never waits for the disk");
    command->add_flag("--json", options->json, "report as JSON");
    command->callback([options] { Archiver(*options).run(); });
}

}  // namespace halvex::tool
