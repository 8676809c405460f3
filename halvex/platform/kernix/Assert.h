#pragma once

#include <string_view>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/Replaceable.h"

/// Receives conditions that a programming error broke. Called from any thread.
class HALVEX_EXPORT IAssertHandler {
public:
    virtual ~IAssertHandler();
    virtual void failed(std::string_view expression, std::string_view source) = 0;

    /// Installs `handler` and returns the one before; null brings the default back, which logs at level 3. The caller
    /// keeps the object alive as long as it is installed.
    static IAssertHandler* set(IAssertHandler* handler);
};

/// Reports a broken condition by its text and the place that found it, then returns: in every build the caller goes on
/// with its documented fallback.
HALVEX_EXPORT void SYS_Assert(std::string_view expression, std::string_view source);

/// Installs a handler for a scope.
class ScopedAssertHandler : public os::ScopedService<IAssertHandler> {
public:
    explicit ScopedAssertHandler(IAssertHandler& handler) : ScopedService(&IAssertHandler::set, handler) {}
};
