#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/Replaceable.h"

/// The process's log. A message has a source name, a numeric level and a text with brace placeholders ("{}", "{0}",
/// format specifications as in std::format). It is rendered in one piece and handed to the sink. Any thread may log;
/// logging never throws: a text that does not fit its arguments is logged as it stands.
class HALVEX_EXPORT ILogging {
public:
    static constexpr int kInformation = 1;
    static constexpr int kNotice = 2;
    static constexpr int kError = 3;

    /// One value for a placeholder.
    using Argument = std::variant<std::int64_t, std::uint64_t, double, std::string_view>;

    /// Where rendered messages go. Called from any thread at once.
    class HALVEX_EXPORT Sink {
    public:
        virtual ~Sink();
        virtual void write(std::string_view source, int level, std::string_view message) = 0;
    };

    virtual ~ILogging();
    static ILogging& getInstance();

    template <class... Arguments>
    void Log(std::string_view source, int level, std::string_view message, const Arguments&... arguments) {
        const Argument list[] = {toArgument(arguments)..., Argument{}};
        LogArguments(source, level, message, std::span(list, sizeof...(Arguments)));
    }
    virtual void LogArguments(std::string_view source, int level, std::string_view message,
                              std::span<const Argument> arguments) = 0;

    /// Installs `sink` and returns the one before; null brings the default back, which writes level 2 and above to
    /// standard error. The caller keeps the object alive as long as it is installed.
    static Sink* setSink(Sink* sink);

private:
    template <std::signed_integral T>
    static Argument toArgument(T value) {
        return static_cast<std::int64_t>(value);
    }
    template <std::unsigned_integral T>
    static Argument toArgument(T value) {
        return static_cast<std::uint64_t>(value);
    }
    static Argument toArgument(double value) { return value; }
    static Argument toArgument(std::string_view value) { return value; }
};

/// Installs a log sink for a scope.
class ScopedLogSink : public os::ScopedService<ILogging::Sink> {
public:
    explicit ScopedLogSink(ILogging::Sink& sink) : ScopedService(&ILogging::setSink, sink) {}
};
