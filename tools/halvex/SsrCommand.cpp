#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/corrections/SsrReport.h"
#include "tools/halvex/corrections/SsrSet.h"
#include "tools/halvex/corrections/SsrStream.h"
#include "tools/halvex/sets/SetNames.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

struct Options {
    std::vector<std::string> inputs;
    std::string time;
    std::string folder;
    bool json = false;
};

/// Reports on streams and sets one after another.
class SsrRun {
public:
    explicit SsrRun(const Options& options) : m_options(options) {
        if (!options.time.empty()) m_time = parseTime(options.time);
    }

    void run() {
        if (!m_options.folder.empty()) {
            std::error_code error;
            std::filesystem::create_directories(m_options.folder, error);
            if (error) throw Failure(m_options.folder + ": the folder cannot be made: " + error.message());
        }
        std::optional<Failure> wrong;
        for (const std::string& input : m_options.inputs) {
            try {
                report(input);
            } catch (const Failure& failure) {
                if (!wrong) wrong = failure;
            }
        }
        if (m_options.json) std::cout << m_all.dump() << "\n";
        if (wrong) throw Failure(*wrong);
    }

private:
    void report(const std::string& name) {
        ByteInput input;
        const bool opened = input.open(name);
        if (opened && rtcm3::isStream(input)) return reportStream(std::move(input));
        const std::string base = setBase(name);
        std::error_code ignored;
        if (std::filesystem::exists(base + "t", ignored)) return reportSet(base);
        if (!opened) throw Failure(input.error().value_or(FormatError{name, 0, "cannot be opened"}));
        throw Failure(name + ": byte 0: neither an RTCM 3 stream nor a file of an indexed set");
    }

    void reportSet(const std::string& base) {
        if (!m_options.folder.empty()) throw Failure(base + ": is a set already: --archive takes streams");
        SsrReport report;
        const std::string fault = readSsrSet(base, [&report](const CHalvexSSRCorr::Message& message) {
            if (!isDisabled(*message)) report.add(*message);
        });
        print({{"file", base}, {"kind", "SSR set"}}, base + "\n  SSR set\n", report, {});
        if (!fault.empty()) throw Failure(fault);
    }

    void reportStream(ByteInput input) {
        const std::string name = input.name();
        SsrStream stream(std::move(input), m_time);
        std::optional<SsrSetWriter> writer;
        SsrReport report;
        rtcm3::SsrMessages read;
        Progress progress("reading " + name);
        while (stream.next(read)) {
            progress.update(stream.frames().input().bytesRead(), stream.frames().input().fileSize());
            if (!m_options.folder.empty() && !writer) {
                if (stream.isDateAssumed()) {
                    throw Failure(name + ": nothing in the stream tells its date: give it with --rtcm-time");
                }
                writer.emplace(setOf(name));
            }
            for (const CHalvexSSRCorr::Message& message : read.messages) {
                report.add(*message);
                if (writer) writer->add(message);
            }
        }
        Json json = {{"file", name}, {"kind", "SSR stream"}, {"dateAssumed", stream.isDateAssumed()}};
        std::string head = name + "\n  SSR stream\n";
        if (stream.isDateAssumed() && report.messages() != 0) {
            head += "  nothing in the stream tells its week: that of now is assumed (--rtcm-time gives it)\n";
        }
        if (writer) {
            writer->close();
            json["set"] = {{"set", writer->base()}, {"records", writer->records()}, {"bytes", writer->bytes()}};
            head += "  set " + writer->base() + ", " + std::to_string(writer->records()) + " records\n";
        }
        print(std::move(json), head, report, stream.counts());
        if (stream.frames().error()) throw Failure(*stream.frames().error());
        if (report.messages() == 0) throw Failure(name + ": there are no corrections in the stream");
    }

    static bool isDisabled(const CALN::SSRCorrMsgBaseT& message) {
        return message.system != CALN::eCALSATSYSTEM_NONE &&
               CSatelliteSystemDisablingHelper::IsSatSystemDisabled(message.system);
    }

    /// The set of a stream: the name of its file without folder and suffixes.
    [[nodiscard]] std::string setOf(const std::string& name) const {
        std::filesystem::path file = name == "-" ? "stream" : std::filesystem::path(name).filename();
        if (file.extension() == ".gz") file = file.stem();
        return (std::filesystem::path(m_options.folder) / file.stem()).string();
    }

    void print(Json json, const std::string& head, const SsrReport& report, const StreamCounts& counts) {
        if (m_options.json) {
            report.addTo(json);
            for (const auto& [what, count] : counts) json["other"][what] = count;
            tellDisabledSystems(json);
            m_all.push_back(std::move(json));
            return;
        }
        std::cout << head << report.text();
        for (const auto& [what, count] : counts) {
            if (count != 0) std::cout << "  " << std::to_string(count) << " " << what << "\n";
        }
        std::cout.flush();
    }

    const Options& m_options;
    SMjdTime m_time;
    Json m_all = Json::array();
};

}  // namespace

void addSsrCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command = addSatelliteCommand(
        app, "ssr", "which satellites the state-space corrections of RTCM 3 streams cover, and how current they are",
        "halvex ssr corrections.rtcm3 --rtcm-time 2021-01-01 --archive archive");
    command
        ->add_option("STREAM", options->inputs,
                     "RTCM 3 streams, plain or gzip, - for standard input; sets that --archive made")
        ->required();
    command->add_option("--rtcm-time", options->time,
                        "about when the streams begin, within half a week [from the stream, else now]");
    command->add_option("--archive", options->folder,
                        "folder for an indexed set of each stream's messages, made when missing");
    command->add_flag("--json", options->json, "as JSON, an object for each input in an array");
    command->callback([options] { SsrRun(*options).run(); });
}

}  // namespace halvex::tool
