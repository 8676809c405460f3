#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "halvex/observations/HalvexStationObservation.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "tests/formats/RinexText.h"
#include "tools/halvex/Program.h"

namespace halvex::test {

namespace fs = std::filesystem;
using nlohmann::json;
using Arguments = std::vector<std::string>;

inline Arguments operator+(Arguments arguments, const Arguments& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

/// What a run of the tool gave.
struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs the tool within the test, its output caught, or handed to `sink`.
inline ToolRun runTool(const Arguments& arguments, std::streambuf* sink = nullptr) {
    const std::ostringstream out, err;
    std::streambuf* const outBefore = std::cout.rdbuf(sink != nullptr ? sink : out.rdbuf());
    std::streambuf* const errBefore = std::cerr.rdbuf(err.rdbuf());
    const int status = tool::runProgram(arguments);
    std::cout.rdbuf(outBefore);
    std::cerr.rdbuf(errBefore);
    return {status, out.str(), err.str()};
}

inline std::size_t lines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// What a run that succeeds tells as JSON.
inline json jsonOf(const Arguments& arguments) {
    const ToolRun run = runTool(arguments + Arguments{"--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    return json::parse(run.out, nullptr, false);
}

/// The run has failed, and said why in one line with that part.
inline void expectFault(const ToolRun& run, const std::string& part, int status = 1) {
    EXPECT_EQ(run.status, status) << part << run.err;
    EXPECT_TRUE(lines(run.err) == 1 && run.err.find(part) != std::string::npos) << part << '\n' << run.err;
}

/// Makes a simulated station's file in the folder and gives its name.
inline std::string simulate(const TemporaryFolder& folder, const std::string& start, const std::string& hours,
                            const std::string& interval, const std::string& site = "SIMU00XXX") {
    const std::string name = folder.path(site + "-" + start + ".rnx");
    const ToolRun run = runTool(
        {"simulate", "--out", name, "--start", start, "--hours", hours, "--interval", interval, "--site", site});
    EXPECT_EQ(run.status, 0) << run.err;
    return name;
}

inline std::string header() {
    return version("3.05") + record("ABCD", "MARKER NAME") + record("G    2 C1C L1C", "SYS / # / OBS TYPES") +
           record("    30.000", "INTERVAL") + endOfHeader();
}
/// An epoch of one satellite at a time of 2021-01-01 as "00 00 30" (seconds in two columns).
inline std::string epoch(const std::string& time, const std::string& values = "  20000000.123 7 105000000.456 7") {
    return "> 2021 01 01 " + time + ".0000000  0  1\nG05" + values + "\n";
}

/// A record of a set's time-info file: its stamp and the epoch in it.
struct Record {
    SMjdTime stamp;
    SMjdTime time;
    std::string block;
};

/// The records of a set, read without the tool.
inline std::vector<Record> recordsOf(const std::string& base) {
    const std::string file = readFile(base + "t");
    const auto* bytes = reinterpret_cast<const unsigned char*>(file.data());
    std::vector<Record> records;
    for (std::size_t at = 4; at + CIndexedFileRecordHeader::kSavedSize <= file.size();) {
        const auto head = CIndexedFileRecordHeader::load(bytes + at);
        if (head.recordSize() > file.size() - at) break;
        CHalvexStationObservation station;
        EXPECT_TRUE(station.loadData(bytes + at + CIndexedFileRecordHeader::kSavedSize, head.size));
        records.push_back({SMjdTime(head.week, head.milliseconds / 1000.0),
                           SMjdTime(station.getGPSWeek(), station.getGPSFraction() / 1000.0),
                           file.substr(at + CIndexedFileRecordHeader::kSavedSize, head.size)});
        at += head.recordSize();
    }
    return records;
}

/// Names of the files below a folder.
inline std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace halvex::test
