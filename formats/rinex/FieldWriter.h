#pragma once

#include <cmath>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "formats/rinex/FieldReader.h"
#include "formats/rinex/HeaderText.h"

namespace halvex::rinex {

/// Prints the fields that a list of fields names behind the epoch that stands in the text already: D19.12, four to a
/// line. Takes the values that a FieldReader gives.
class FieldWriter {
public:
    static constexpr bool kReads = false;

    explicit FieldWriter(std::string& text) : m_text(text) {}

    /// True when every number has found place in its columns.
    [[nodiscard]] bool good() const { return m_good; }
    void endLine() {
        m_text.erase(m_text.find_last_not_of(' ') + 1);
        m_text += '\n';
    }

    void spare() { field({}); }
    /// Text beside the epoch.
    void word(const std::string& text) { field(' ' + text); }
    void number(double value, std::string_view /*name*/ = {}) {
        constexpr double kSmallest = 1e-99;  // exponents have two digits
        constexpr double kLargest = 1e99;
        if (std::fabs(value) < kSmallest) value = 0.0;
        m_good = m_good && std::fabs(value) < kLargest;
        field(scientific(value, PrintedFields::kWidth, 12));
    }
    void kilometres(double metres, std::string_view /*name*/) { number(metres / 1000.0); }
    void optional(double value, double /*blank*/ = 0.0) { number(value); }
    void optionalKnown(double value, double /*unknown*/ = 0.0) { number(value); }
    void transmissionTime(double value, double /*unknown*/) { number(value); }
    void secondsOfWeek(double value, std::string_view /*name*/) { number(value); }
    template <std::integral T>
    void integer(T value, std::string_view /*name*/, std::type_identity_t<T> /*blank*/ = 0) {
        number(static_cast<double>(value));
    }
    void week(const CALN::CALX_SAT_EPHEMERIS_COMMON& record, int /*gpsWeekOfWeek0*/) { number(record.week); }
    // Messages without a week: the epoch tells it.
    void weekOfToe(const CALN::CALX_SAT_EPHEMERIS_COMMON& /*record*/, int /*gpsWeekOfWeek0*/) {}
    void weekOfEpoch(const CALN::CALX_SAT_EPHEMERIS_COMMON& /*record*/, int /*gpsWeekOfWeek0*/) {}

private:
    static constexpr std::size_t kFirstColumn = 4;

    void field(const std::string& text) {
        if (++m_index % PrintedFields::kPerLine == 0) {
            endLine();
            m_text.append(kFirstColumn, ' ');
        }
        m_text += left(text, PrintedFields::kWidth);
    }

    std::string& m_text;
    std::size_t m_index = 0;
    bool m_good = true;
};

}  // namespace halvex::rinex
