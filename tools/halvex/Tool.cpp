#include "tools/halvex/Tool.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

#include "formats/rinex/EpochLine.h"

namespace halvex::tool {
namespace {

/// Takes a whole number off the front of `text`.
template <class Number>
bool take(std::string_view& text, Number& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool skip(std::string_view& text, std::string_view oneOf) {
    if (text.empty() || oneOf.find(text.front()) == std::string_view::npos) return false;
    text.remove_prefix(1);
    return true;
}

std::int64_t milliseconds() {
    using namespace std::chrono;
    return duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& what, const std::string& example) {
    CLI::App* command = app.add_subcommand(name, what);
    command->footer("Example:\n  " + example);
    return command;
}

SMjdTime parseTime(const std::string& text) {
    const Failure failure("'" + text + "' is no time: write 2020-06-25T12:00:30 or week:seconds as 2111:388830",
                          Failure::kWrongUsage);
    std::string_view rest = text;
    int first = 0;
    if (!take(rest, first)) throw failure;
    double seconds = 0.0;
    if (skip(rest, ":")) {
        constexpr double kWeek = 604800.0;
        if (!take(rest, seconds) || !rest.empty() || first < 0 || first > 9999 ||
            !(seconds >= 0.0 && seconds < kWeek)) {
            throw failure;
        }
        return {first, seconds};
    }
    int month = 0, day = 0, hour = 0, minute = 0;
    if (!skip(rest, "-") || !take(rest, month) || !skip(rest, "-") || !take(rest, day)) throw failure;
    if (skip(rest, "T ")) {
        if (!take(rest, hour) || !skip(rest, ":") || !take(rest, minute)) throw failure;
        if (skip(rest, ":") && !take(rest, seconds)) throw failure;
    }
    const std::optional<SMjdTime> time = rinex::checkedTime(first, month, day, hour, minute, seconds);
    constexpr int kFirstYear = 1980;
    constexpr int kLastYear = 2200;
    if (!rest.empty() || !time || first < kFirstYear || first > kLastYear) throw failure;
    return *time;
}

std::string formatTime(const SMjdTime& time) {
    SMjdTime rounded = time;
    rounded.RoundTo(1.0, SMjdTime::kUnitMillisecond);
    const SMjdCalendar date = rounded.GetCalendar();
    const auto ms = static_cast<int>(std::lround(date.second * 1000.0));
    std::string text = fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", date.year, date.month, date.day, date.hour,
                                   date.minute, ms / 1000);
    if (ms % 1000 != 0) text += fmt::format(".{:03}", ms % 1000);
    return text;
}

std::string Table::text(std::string_view indent) const {
    std::vector<std::size_t> widths;
    for (const auto& row : m_rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    for (const auto& row : m_rows) {
        std::string line(indent);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool right = i < m_alignment.size() && m_alignment[i] == '>';
            const std::string fill(widths[i] - row[i].size(), ' ');
            line += (i == 0 ? "" : "  ") + (right ? fill + row[i] : row[i] + fill);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

Progress::Progress(std::string what)
    : m_what(std::move(what)), m_terminal(isatty(STDERR_FILENO) != 0), m_start(milliseconds()) {}

Progress::~Progress() {
    if (m_shown) fmt::print(stderr, "\r\033[K");
}

void Progress::update(std::uint64_t done, std::uint64_t total) {
    constexpr std::int64_t kShowAfter = 1000;
    constexpr std::int64_t kEvery = 200;
    if (!m_terminal || total == 0) return;
    const std::int64_t now = milliseconds();
    if (now - m_start < kShowAfter || now - m_last < kEvery) return;
    m_last = now;
    m_shown = true;
    constexpr std::uint64_t kWidth = 30;
    const std::uint64_t filled = std::min(kWidth, kWidth * done / total);
    fmt::print(stderr, "\r{} [{}{}] {:3} %", m_what, std::string(filled, '#'), std::string(kWidth - filled, ' '),
               std::min<std::uint64_t>(100, 100 * done / total));
}

}  // namespace halvex::tool
