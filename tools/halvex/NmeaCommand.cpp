#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <numbers>

#include "formats/io/LineReader.h"
#include "formats/nmea/SentenceCheck.h"
#include "halvex/status/NMEAFormat.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/solutions/SolutionReader.h"

namespace halvex::tool {
namespace {

struct Options {
    std::string file = "-";
    std::vector<std::string> sentences{"GGA"};
    std::string talker = "GP";
    std::string hemisphere;
    std::int32_t falseEasting = 0, falseNorthing = 0, zone = 0;
    bool gpsTime = false;
    bool check = false;
    bool json = false;
};

/// One sentence of a solution; false when its values do not give one.
bool write(const Options& options, Solution& s, const std::string& sentence, char* buffer, std::uint16_t& length) {
    constexpr double kRadians = std::numbers::pi / 180.0;
    constexpr double kSmallestStep = 10.0;  // [ms], so that hundredths never round up to a hundred
    const CNMEAFormat format;
    CGPSTime time(s.time);
    time.RoundTo(kSmallestStep);
    const double latitude = s.latitude * kRadians;
    const double longitude = s.longitude * kRadians;
    const char* talker = options.talker.c_str();
    if (sentence == "GGA") {
        return format.convertToGGA(time, latitude, longitude, s.height, s.quality, s.satellites, talker, buffer, length,
                                   s.separation, s.hdop, s.age, s.station);
    }
    if (sentence == "GGQ") {
        return format.ConvertToGGQ(time, latitude, longitude, s.height, s.separation, s.quality, s.coordinateQuality,
                                   s.satellites, talker, buffer, length);
    }
    if (sentence == "LLQ") {
        const std::int32_t hemisphere = options.hemisphere.empty() ? 0 : options.hemisphere == "north" ? 1 : 2;
        return format.convertToLLQ(time, latitude, longitude, s.height, s.quality, s.coordinateQuality, s.satellites,
                                   talker, buffer, length, s.separation, options.falseEasting, options.falseNorthing,
                                   options.zone, hemisphere);
    }
    return format.convertToTavroProp(time, latitude, longitude, s.height, s.quality, s.coordinateQuality, s.satellites,
                                     talker, buffer, length, s.separation, s.results, s.figure);
}

void writeAll(const Options& options) {
    SolutionReader reader(options.file, options.gpsTime);
    char buffer[CNMEAFormat::kLongestSentence];
    while (auto solution = reader.next()) {
        for (const std::string& sentence : options.sentences) {
            std::uint16_t length = 0;
            if (!write(options, *solution, sentence, buffer, length)) {
                throw Failure(reader.place() + ": its values give no " + sentence + " sentence");
            }
            std::cout.write(buffer, length);
        }
    }
}

void checkAll(const Options& options) {
    LineReader reader;
    if (!reader.open(options.file)) throw Failure(*reader.error());
    std::map<std::string, std::uint64_t, std::less<>> kinds;
    std::uint64_t count = 0;
    while (const auto line = reader.next()) {
        if (line->empty()) continue;
        if (const auto fault = nmea::faultOf(*line)) {
            throw Failure(FormatError{reader.name(), reader.lineNumber(), *fault});
        }
        ++kinds[std::string(nmea::sentenceId(*line))];
        ++count;
    }
    if (reader.error()) throw Failure(*reader.error());
    if (count == 0) throw Failure(options.file + ": there are no sentences in it");
    if (options.json) {
        std::cout << Json{{"sentences", count}, {"kinds", kinds}}.dump() << "\n";
        return;
    }
    Table table({"", "good"}, "<>");
    for (const auto& [kind, number] : kinds) table.add({kind, std::to_string(number)});
    std::cout << table.text();
}

bool isTalker(const std::string& text) {
    return text.size() == 2 && std::all_of(text.begin(), text.end(),
                                           [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

}  // namespace

void addNmeaCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command =
        addCommand(app, "nmea", "positions as NMEA sentences, and a check of sentences",
                   "halvex nmea positions.csv --sentence GGA --sentence LLQ\n  halvex nmea --check sentences.txt");
    command->add_option("FILE", options->file, "positions, as JSON lines or CSV with a header, or sentences to check")
        ->capture_default_str();
    auto* check = command->add_flag("--check", options->check, "FILE has sentences: are they as they should be?");
    command->add_flag("--json", options->json, "--check: machine-readable output")->needs(check);
    const auto add = [&](auto* option) { return option->capture_default_str()->excludes(check); };
    add(command->add_option("--sentence", options->sentences, "GGA, GGQ, LLQ, LMM, in the order given"))
        ->delimiter(',')
        ->check(CLI::IsMember({"GGA", "GGQ", "LLQ", "LMM"}));
    add(command->add_option("--talker", options->talker, "two capitals"));
    command->add_flag("--gps", options->gpsTime, "times in FILE are GPS time; without, UTC")->excludes(check);
    add(command->add_option("--zone", options->zone, "LLQ: UTM zone; 0: that of each point"))->check(CLI::Range(0, 60));
    add(command->add_option("--hemisphere", options->hemisphere, "LLQ: without, that of each point"))
        ->check(CLI::IsMember({"north", "south"}));
    add(command->add_option("--false-easting", options->falseEasting, "LLQ [m]; 0: that of UTM"));
    add(command->add_option("--false-northing", options->falseNorthing, "LLQ [m]; 0: that of UTM"));
    command->callback([options] {
        if (options->check) return checkAll(*options);
        if (!isTalker(options->talker)) {
            throw Failure("--talker is two capitals such as GP or GN", Failure::kWrongUsage);
        }
        writeAll(*options);
    });
}

}  // namespace halvex::tool
