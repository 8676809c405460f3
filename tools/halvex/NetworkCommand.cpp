#include <fmt/format.h>

#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include "formats/rtcm3/Ephemerides.h"
#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/network/MessageListing.h"
#include "tools/halvex/network/NetworkSummary.h"
#include "tools/halvex/orbits/Sky.h"
#include "tools/halvex/streams/Streams.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

/// Lists the network and text messages of one stream as they come, and what there is to say of them at its end.
class Listing {
public:
    Listing(const std::string& name, const SMjdTime& time, bool json) : m_name(name) {
        ByteInput input;
        if (!input.open(name)) throw Failure(input.error().value_or(FormatError{name, 0, "cannot be opened"}));
        if (!rtcm3::isStream(input)) throw Failure(name + ": is no RTCM 3 stream: no frame at its beginning");
        m_reference = datedReader(name, time).reference();
        m_frames.open(std::move(input));
        if (json) {
            m_printer.emplace(Json{{"file", name}}, "messages");
        } else {
            std::cout << name << "\n";
        }
    }

    void run() {
        Progress progress("reading " + m_name);
        while (const auto frame = m_frames.next()) {
            progress.update(m_frames.input().bytesRead(), m_frames.input().fileSize());
            date(*frame);
            if (rtcm3::isNetworkMessage(frame->number)) {
                take(*frame);
            } else {
                m_summary.addStation(*frame);
            }
        }
        finish();
        if (m_frames.error()) throw Failure(*m_frames.error());
    }

private:
    /// What says the date may come as late as this, on standard input.
    void date(const rtcm3::Frame& frame) {
        if (m_reference.time.IsSet()) return;
        rtcm3::Ephemeris ephemeris;
        if (const auto time = rtcm3::timeOfMessage(frame)) {
            m_reference.time = *time;
        } else if (rtcm3::readEphemeris(frame, m_reference, ephemeris) && ephemeris.tellsTime) {
            m_reference.time = ephemeris.referenceTime;
        }
    }

    void take(const rtcm3::Frame& frame) {
        rtcm3::NetworkMessage message;
        if (!rtcm3::readNetworkMessage(frame, message)) {
            ++m_badMessages;
            return;
        }
        const ListedMessage list = listed(message);
        const auto system = rtcm3::systemOfNetworkMessage(frame.number);
        if (list.epoch && CSatelliteSystemDisablingHelper::IsSatSystemDisabled(system)) return;
        m_unknownSatellites += list.unknownSatellites;
        std::optional<SMjdTime> time;
        const bool dated = m_reference.time.IsSet();
        if (list.epoch) {
            // Without a date any will do to see how the epochs follow on one another.
            time = rtcm3::instantOf(*list.epoch, dated ? m_reference.time : m_anyDate);
            if (time) (dated ? m_reference.time : m_anyDate) = *time;
        }
        m_summary.add(frame.number, message, list, time);
        print(frame, list, dated ? time : std::nullopt);
    }

    void print(const rtcm3::Frame& frame, const ListedMessage& list, const std::optional<SMjdTime>& time) {
        std::vector<Field> fields = list.fields;
        if (time) {
            fields.push_back({"time", formatTime(*time), ""});
        } else if (list.epoch) {
            const bool ofWeek = list.epoch->scale == rtcm3::EpochScale::gpsWeek;
            fields.push_back({ofWeek ? "secondsOfWeek" : "secondsOfMoscowDay",
                              static_cast<double>(list.epoch->milliseconds) / 1000.0, ""});
        }
        if (list.more) fields.push_back({"more", true, ""});
        if (!m_printer) {
            std::cout << fmt::format("{:>9}  {}  {}", frame.offset, frame.number, fieldsText(fields));
            for (const auto& satellite : list.satellites) std::cout << "; " << fieldsText(satellite);
            std::cout << '\n';
            return;
        }
        Json json = {{"offset", frame.offset}, {"message", frame.number}};
        json.update(fieldsJson(fields));
        if (list.epoch) {
            json["satellites"] = Json::array();
            for (const auto& satellite : list.satellites) json["satellites"].push_back(fieldsJson(satellite));
        }
        m_printer->add(json);
    }

    void finish() {
        const StreamCounts counts{{"bytes in no frame", m_frames.unframedBytes()},
                                  {"wrong check sums", m_frames.badChecks()},
                                  {"messages that are cut off", m_badMessages + m_summary.badMessages()},
                                  {"satellites of no known number", m_unknownSatellites}};
        const bool dated = m_reference.time.IsSet();
        if (m_printer) {
            Json tail = {{"frames", m_frames.frames()}};
            tail.update(m_summary.json(dated));
            for (const auto& [what, count] : counts) tail["other"][what] = count;
            tellDisabledSystems(tail);
            m_printer->finish(tail);
            return;
        }
        std::cout << m_summary.text(dated);
        for (const auto& [what, count] : counts) {
            if (count != 0) std::cout << fmt::format("  {} {}\n", count, what);
        }
    }

    std::string m_name;
    rtcm3::TimeReference m_reference;
    SMjdTime m_anyDate = latestPlausible();
    rtcm3::FrameReader m_frames;
    NetworkSummary m_summary;
    std::optional<EpochPrinter> m_printer;
    std::uint64_t m_badMessages = 0;
    std::uint64_t m_unknownSatellites = 0;
};

}  // namespace

void addNetworkCommand(CLI::App& app) {
    struct Options {
        std::vector<std::string> streams;
        std::string time;
        bool json = false;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command = addSatelliteCommand(
        app, "network", "network and text messages of RTCM 3 streams, and what stations they are of",
        "halvex network network.rtcm3 --rtcm-time 2021-09-22");
    command->add_option("STREAM", options->streams, "RTCM 3 streams, - for standard input")->required();
    command->add_option(
        "--rtcm-time", options->time,
        "about when the streams begin, within half a week (half a day if GLONASS is first) [from each stream]");
    command->add_flag("--json", options->json, "as JSON, an object on a line for each stream");
    command->callback([options] {
        const SMjdTime time = options->time.empty() ? SMjdTime() : parseTime(options->time);
        std::string wrong;
        for (const std::string& stream : options->streams) {
            try {
                Listing(stream, time, options->json).run();
            } catch (const Failure& failure) {
                if (wrong.empty()) wrong = failure.what();
            }
        }
        if (!wrong.empty()) throw Failure(wrong);
    });
}

}  // namespace halvex::tool
