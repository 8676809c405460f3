#include "halvex/platform/kernix/Assert.h"

#include "halvex/platform/kernix/Logging.h"

namespace {

class LoggingHandler final : public IAssertHandler {
public:
    void failed(std::string_view expression, std::string_view source) override {
        ILogging::getInstance().Log(source, ILogging::kError, "assertion failed: {}", expression);
    }
};

LoggingHandler loggingHandler;

os::Replaceable<IAssertHandler>& handler() {
    static os::Replaceable<IAssertHandler> instance(&loggingHandler);
    return instance;
}

}  // namespace

IAssertHandler::~IAssertHandler() = default;

IAssertHandler* IAssertHandler::set(IAssertHandler* installed) {
    return handler().exchange(installed != nullptr ? installed : &loggingHandler);
}

void SYS_Assert(std::string_view expression, std::string_view source) {
    handler().get().failed(expression, source);
}
