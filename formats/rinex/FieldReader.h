#pragma once

#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "halvex/platform/caln/EphemerisRecord.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::rinex {

/// The numbers of one record of a navigation file: four to a line, the epoch standing in the place of the first.
struct PrintedFields {
    static constexpr std::size_t kPerLine = 4;
    static constexpr std::size_t kMost = 10 * kPerLine;
    static constexpr std::size_t kWidth = 19;

    SMjdTime epoch;
    std::size_t firstColumn = 4;         ///< of a line's first field, 0-based: 3 in version 2
    std::array<double, kMost> values{};  ///< 0 where blank
    std::uint64_t present = 0;           ///< a bit for each that is not blank
    std::array<std::string, 3> words;    ///< what stands in place of the numbers beside the epoch, in some records

    [[nodiscard]] bool has(std::size_t index) const { return (present >> index & 1U) != 0; }
    [[nodiscard]] std::size_t columnOf(std::size_t index) const { return firstColumn + index % kPerLine * kWidth; }
    /// The columns of a field, 1-based as people count them.
    [[nodiscard]] std::string columnsOf(std::size_t index) const {
        const std::size_t first = columnOf(index);
        return "columns " + std::to_string(first + 1) + " to " + std::to_string(first + kWidth);
    }
};

/// Gives the printed fields to a list of fields, one after the other; keeps the first fault that it meets.
class FieldReader {
public:
    static constexpr bool kReads = true;

    struct Fault {
        std::size_t line = 0;  ///< of the record, from 0
        std::string message;
    };

    explicit FieldReader(const PrintedFields& fields) : m_fields(fields) {}

    [[nodiscard]] const std::optional<Fault>& fault() const { return m_fault; }
    /// A fault in the field taken last.
    void fault(std::string message) {
        if (!m_fault) m_fault = Fault{m_index / PrintedFields::kPerLine, std::move(message)};
    }

    void spare() { ++m_index; }
    /// Text beside the epoch.
    void word(std::string& text) { text = m_fields.words[m_index++]; }
    /// A number that the message cannot do without.
    void number(double& value, std::string_view name) {
        value = take();
        if (!m_fields.has(m_index)) missing(name);
    }
    void kilometres(double& metres, std::string_view name) {
        number(metres, name);
        metres *= 1000.0;
    }
    void optional(double& value, double blank = 0.0) {
        const double printed = take();
        value = m_fields.has(m_index) ? printed : blank;
    }
    /// The same for one that may be marked as unknown (0.999999999999E+09).
    void optionalKnown(double& value, double unknown = 0.0) {
        optional(value, unknown);
        constexpr double kUnknown = 9.99e8;
        if (value >= kUnknown) value = unknown;
    }
    /// Second of the week that the message names, or of a neighbouring one.
    void transmissionTime(double& value, double unknown) {
        optionalKnown(value, unknown);
        if (!(value >= -kWeek && value < 2 * kWeek)) fault(at() + "the transmission time is out of range");
    }
    void secondsOfWeek(double& value, std::string_view name) {
        number(value, name);
        if (!(value >= 0.0 && value < kWeek)) fault(at() + std::string(name) + " is no second of a week");
    }
    template <std::integral T>
    void integer(T& value, std::string_view name, std::type_identity_t<T> blank = 0) {
        double printed = blank;
        optional(printed, printed);
        if (printed != std::floor(printed)) return fault(at() + std::string(name) + " is no integer");
        const bool fits = printed >= static_cast<double>(std::numeric_limits<T>::min()) &&
                          printed <= static_cast<double>(std::numeric_limits<T>::max());
        if (!fits) return fault(at() + std::string(name) + " is out of range");
        value = static_cast<T>(printed);
    }
    /// The week of toe, which has been taken; `gpsWeekOfWeek0` is where the system's own weeks begin.
    void week(CALN::CALX_SAT_EPHEMERIS_COMMON& record, int gpsWeekOfWeek0) {
        integer(record.week, "the week");
        if (!m_fields.has(m_index)) return missing("the week");
        const int epochWeek = takeClock(record, gpsWeekOfWeek0);
        if (std::fabs((record.week - epochWeek) * kWeek + record.toe - record.toc) <= kWeek / 2) return;
        fault(at() + "week " + std::to_string(record.week) + " does not fit the epoch, which is in week " +
              std::to_string(epochWeek));
    }
    /// For messages without a week: the one that brings toe, which has been taken, within half a week of the epoch.
    void weekOfToe(CALN::CALX_SAT_EPHEMERIS_COMMON& record, int gpsWeekOfWeek0) {
        const int epochWeek = takeClock(record, gpsWeekOfWeek0);
        const double ahead = record.toe - record.toc;
        const int week = epochWeek + (ahead > kWeek / 2 ? -1 : ahead < -kWeek / 2 ? 1 : 0);
        if (week < 0 || week > kLastWeek) return fault("the epoch is in no week of the system");
        record.week = static_cast<unsigned short>(week);
    }
    /// For messages with one reference time: week and toe are the epoch's.
    void weekOfEpoch(CALN::CALX_SAT_EPHEMERIS_COMMON& record, int gpsWeekOfWeek0) {
        record.toe = m_fields.epoch.GetGpsSeconds();
        weekOfToe(record, gpsWeekOfWeek0);
    }

private:
    static constexpr double kWeek = 604800.0;
    static constexpr int kLastWeek = std::numeric_limits<unsigned short>::max();

    double take() { return m_fields.values[++m_index]; }
    [[nodiscard]] std::string at() const { return m_fields.columnsOf(m_index) + ": "; }
    void missing(std::string_view name) { fault(at() + std::string(name) + " is missing"); }
    /// Sets toc; the result is its week.
    int takeClock(CALN::CALX_SAT_EPHEMERIS_COMMON& record, int gpsWeekOfWeek0) const {
        record.toc = m_fields.epoch.GetGpsSeconds();
        return m_fields.epoch.GetGpsWeek() - gpsWeekOfWeek0;
    }

    const PrintedFields& m_fields;
    std::size_t m_index = 0;
    std::optional<Fault> m_fault;
};

}  // namespace halvex::rinex
