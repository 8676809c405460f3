#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/Require.h"
#include "halvex/files/ProductsFileName.h"

/// A byte of switches and a file name: what fits into a buffer is the start of what the string form gives.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using halvex::fuzz::require;
    if (size < 2) return 0;
    const std::string name(reinterpret_cast<const char*>(data) + 2, size - 2);
    const auto type = static_cast<CProductsFileName::TargetFileType>(data[0] & 3);
    const auto flag = [&](int bit) { return (data[0] >> bit & 1) != 0; };
    std::array<char, 256> buffer;
    buffer.fill('~');
    const std::size_t room = std::min<std::size_t>(data[1], buffer.size() - 1);
    CString whole;
    int inBuffer = 0, inString = 0;
    if (flag(2)) {
        inBuffer =
            CProductsFileName::ChangeRinexFileName(name.c_str(), type, flag(3), buffer.data(), room, flag(4), flag(5));
        inString = CProductsFileName::ChangeRinexFileName(name.c_str(), type, flag(3), whole, flag(4), flag(5));
    } else {
        inBuffer =
            CProductsFileName::ChangeMdbFileName(name.c_str(), type, flag(3), buffer.data(), room, flag(4), flag(5));
        inString = CProductsFileName::ChangeMdbFileName(name.c_str(), type, flag(3), whole, flag(4), flag(5));
    }
    require(inBuffer == inString && std::all_of(buffer.begin() + room, buffer.end(), [](char c) { return c == '~'; }));
    if (room > 0) require(std::string(buffer.data()) == whole.str().substr(0, room - 1));

    std::string site;
    const RnxLongFileNameParam parameters(name, data[0], data[1], name, 'R');
    CProductsFileName::CreateRinexLongFileName(name.c_str(), parameters, data[0] * data[1], data[1] * 1e4, site);
    require(!site.empty());
    return 0;
}
