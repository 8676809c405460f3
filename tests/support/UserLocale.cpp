#include <locale>
#include <stdexcept>

namespace {

/// Every test program runs in the user's locale, as a host's program may: nothing but regional formats may follow it.
[[maybe_unused]] const bool kInUserLocale = [] {
    try {
        std::locale::global(std::locale(""));
    } catch (const std::runtime_error&) {
        return false;  // a locale that this machine does not have
    }
    return true;
}();

}  // namespace
