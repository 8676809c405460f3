#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Passes every file of a folder through a fuzzer's entry function, and every start of it up to 512 bytes: a
/// cut-off input is the likeliest damage of all.
int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    std::size_t files = 0;
    for (const auto& file : std::filesystem::directory_iterator(arguments[1])) {
        std::ifstream in(file.path(), std::ios::binary);
        const std::vector<char> text(std::istreambuf_iterator<char>(in), {});
        if (text.empty()) continue;
        std::printf("%s\n", file.path().c_str());
        const std::vector<std::uint8_t> bytes(text.begin(), text.end());
        for (std::size_t size = 0; size < std::min<std::size_t>(bytes.size(), 512); ++size) {
            const std::vector<std::uint8_t> start(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            LLVMFuzzerTestOneInput(start.data(), size);
        }
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        ++files;
    }
    return files > 0 ? 0 : 1;
}
