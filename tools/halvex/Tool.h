#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "formats/io/FormatError.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::tool {

using Json = nlohmann::ordered_json;

/// What ends a subcommand early: bad input or a machine that refuses (exit status 1) or wrong usage (2). The text is
/// one line: file, line or byte offset, what is wrong, what to do.
class Failure : public std::runtime_error {
public:
    static constexpr int kBadInput = 1;
    static constexpr int kWrongUsage = 2;

    explicit Failure(const std::string& text, int status = kBadInput) : std::runtime_error(text), m_status(status) {}
    explicit Failure(const FormatError& error) : Failure(error.text()) {}
    [[nodiscard]] int status() const { return m_status; }

private:
    int m_status;
};

/// Ends a subcommand with a status whose reason has been told already.
struct Ended {
    int status;
};

/// Adds a subcommand whose help ends with an example.
CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& what, const std::string& example);

/// Adds every subcommand to the program.
void addArchiveCommand(CLI::App& app);
void addReplayCommand(CLI::App& app);
void addInfoCommand(CLI::App& app);
void addRawCommand(CLI::App& app);
void addNameCommand(CLI::App& app);
void addOrbitsCommand(CLI::App& app);
void addSkyCommand(CLI::App& app);
void addVisibilityCommand(CLI::App& app);
void addSimulateCommand(CLI::App& app);
void addMetricsCommand(CLI::App& app);
void addCorrectionsCommand(CLI::App& app);
void addSsrCommand(CLI::App& app);
void addNetworkCommand(CLI::App& app);
void addStatusCommand(CLI::App& app);
void addSystemsCommand(CLI::App& app);
void addNmeaCommand(CLI::App& app);
void addUrlCommand(CLI::App& app);
void addDemoCommand(CLI::App& app);

/// A GPS time as people write it: "2020-06-25T12:00:30.5" (date alone, blank instead of T, missing seconds allowed) or
/// "2111:388830.5" (GPS week and seconds of week). Failure (2) when it is none.
[[nodiscard]] SMjdTime parseTime(const std::string& text);
/// "2020-06-25T12:00:30.500", milliseconds only where there are any.
[[nodiscard]] std::string formatTime(const SMjdTime& time);

/// Rows of text in columns as wide as they need to be; numbers (the columns marked '>') to the right.
class Table {
public:
    Table(std::vector<std::string> head, std::string alignment)
        : m_rows{std::move(head)}, m_alignment(std::move(alignment)) {}
    void add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }
    [[nodiscard]] bool empty() const { return m_rows.size() < 2; }
    [[nodiscard]] std::string text(std::string_view indent = "") const;

private:
    std::vector<std::vector<std::string>> m_rows;
    std::string m_alignment;
};

/// A progress bar on standard error, when that is a terminal and the work takes more than a second.
class Progress {
public:
    explicit Progress(std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void update(std::uint64_t done, std::uint64_t total);

private:
    std::string m_what;
    bool m_terminal;
    bool m_shown = false;
    std::int64_t m_start;
    std::int64_t m_last = 0;
};

}  // namespace halvex::tool
