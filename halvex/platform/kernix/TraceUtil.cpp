#include "halvex/platform/kernix/TraceUtil.h"

#include "halvex/platform/kernix/Logging.h"

namespace {

void traceToLogger(std::uint32_t category, std::string_view text) {
    ILogging::getInstance().Log("Trace", ILogging::kInformation, "[{}] {}", category, text);
}

std::atomic<CTraceUtil::Sink> currentSink{&traceToLogger};

}  // namespace

std::atomic<std::uint32_t> CTraceUtil::s_enabled{0};

std::uint32_t CTraceUtil::SetEnabled(std::uint32_t mask) {
    return s_enabled.exchange(mask);
}

void CTraceUtil::Trace(std::uint32_t category, std::string_view text) {
    if (IsEnabled(category)) currentSink.load()(category, text);
}

CTraceUtil::Sink CTraceUtil::SetSink(Sink sink) {
    return currentSink.exchange(sink != nullptr ? sink : &traceToLogger);
}
