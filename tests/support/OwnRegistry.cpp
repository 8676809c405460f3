#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

/// No test sees what the user has in his registry: it is a file that is not there.
[[maybe_unused]] const bool kOwnRegistry = [] {
    const auto name = "halvex-test-registry-" + std::to_string(::getpid());
    return ::setenv("HALVEX_REGISTRY", (std::filesystem::temp_directory_path() / name / "none").c_str(), 1) == 0;
}();

}  // namespace
