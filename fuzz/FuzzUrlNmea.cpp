#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "formats/nmea/SentenceCheck.h"
#include "fuzz/Require.h"
#include "halvex/files/CustomURL.h"
#include "halvex/status/NMEAFormat.h"

namespace {

using halvex::fuzz::require;

/// A template in the first line and a text in the rest.
void urls(std::string_view bytes) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    const std::string urlTemplate(bytes.substr(0, end));
    const std::string text(bytes.substr(std::min(end + 1, bytes.size())));
    const CTimeBase start(2020, 6, 25, 12, 0, 30.5);
    CTimeBase time = start;
    const bool parsed = CCustomURL::ExtractTimeFromString(time, urlTemplate.c_str(), text.c_str());
    require(parsed || time == start);
    const bool valid = CCustomURL::VerifyCustomURL(urlTemplate.c_str()) != 0;
    require(valid || !parsed);
    const CString url = CCustomURL::getCustomURL(time, text.c_str(), urlTemplate.c_str());
    require(valid || url.IsEmpty());
    std::array<char, 64> buffer;
    buffer.fill('~');
    const bool fits = CCustomURL::getCustomURL(time, text.c_str(), urlTemplate.c_str(), buffer.data(), 32);
    require(buffer[32] == '~' && fits == (valid && url.str().size() < 32));
    require(std::string(buffer.data()) == (fits ? url.str() : std::string()));
}

/// The values of a solution as raw bytes: what is written is a good frame within its limit.
void solutions(std::string_view bytes) {
    std::array<double, 14> values{};
    std::memcpy(values.data(), bytes.data(), std::min(bytes.size(), sizeof values));
    std::int32_t quality = 0;
    std::memcpy(&quality, values.data(), sizeof quality);
    ADD_POST_RESULTS results;
    std::copy(values.begin() + 7, values.end(), results.values);
    std::array<char, CNMEAFormat::kLongestSentence + 1> buffer;
    buffer.fill('~');
    std::uint16_t length = 0;
    const CGPSTime time(2111, 5.0);
    if (CNMEAFormat().convertToTavroProp(time, values[1], values[2], values[3], quality, static_cast<float>(quality), 9,
                                         "GP", buffer.data(), length, values[4], results, 1.0F)) {
        const std::string_view line(buffer.data(), length);
        require(line.ends_with("\r\n") && buffer[length] == '\0');
        require(line.find("nan") == line.npos && line.find("inf") == line.npos);
    }
    require(buffer.back() == '~');
    CString text;
    const CNMEAFormat format;
    if (format.convertToLLQ(time, values[1], values[2], values[3], 1, 1.0F, 9, text, values[4], 0, 0, quality, 0)) {
        require(!halvex::nmea::faultOf(text.str().substr(0, text.str().size() - 2)));
    }
}

}  // namespace

/// A byte that chooses, and a template with a text, a sentence, or the values of a solution.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 3) {
        case 0:
            urls(bytes);
            break;
        case 1: {
            const std::string_view id = halvex::nmea::sentenceId(bytes);
            const auto fault = halvex::nmea::faultOf(bytes);
            require(fault || id.size() == 3);
            break;
        }
        default:
            solutions(bytes);
    }
    return 0;
}
