#include "halvex/platform/kernix/Logging.h"

#include <fmt/args.h>
#include <fmt/format.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

namespace {

class StandardErrorSink final : public ILogging::Sink {
public:
    StandardErrorSink() { m_logger.set_pattern("%Y-%m-%d %H:%M:%S.%e %L %v"); }

    void write(std::string_view source, int level, std::string_view message) override {
        if (level < ILogging::kNotice) return;
        const auto severity = level >= ILogging::kError ? spdlog::level::err : spdlog::level::warn;
        m_logger.log(severity, "{}: {}", source, message);
    }

private:
    spdlog::logger m_logger{"halvex", std::make_shared<spdlog::sinks::stderr_sink_mt>()};
};

StandardErrorSink& standardErrorSink() {
    static StandardErrorSink sink;
    return sink;
}

os::Replaceable<ILogging::Sink>& currentSink() {
    static os::Replaceable<ILogging::Sink> sink(&standardErrorSink());
    return sink;
}

std::string render(std::string_view message, std::span<const ILogging::Argument> arguments) {
    try {
        fmt::dynamic_format_arg_store<fmt::format_context> store;
        for (const ILogging::Argument& argument : arguments) {
            std::visit([&store](const auto& value) { store.push_back(value); }, argument);
        }
        return fmt::vformat(message, store);
    } catch (const fmt::format_error&) {
        return std::string(message);
    }
}

class Logger final : public ILogging {
public:
    void LogArguments(std::string_view source, int level, std::string_view message,
                      std::span<const Argument> arguments) override {
        currentSink().get().write(source, level, arguments.empty() ? std::string(message) : render(message, arguments));
    }
};

}  // namespace

ILogging::Sink::~Sink() = default;
ILogging::~ILogging() = default;

ILogging& ILogging::getInstance() {
    static Logger logger;
    return logger;
}

ILogging::Sink* ILogging::setSink(Sink* sink) {
    return currentSink().exchange(sink != nullptr ? sink : &standardErrorSink());
}
