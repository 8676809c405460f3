#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "formats/rinex/ObservationReader.h"
#include "tests/support/TemporaryFolder.h"

namespace halvex::test {

/// A header record: content filled to 60 columns, then its label.
inline std::string record(std::string content, std::string_view label) {
    content.resize(60, ' ');
    return content.append(label) + '\n';
}

inline std::string version(const std::string& number, const std::string& system = "M") {
    return record("     " + number + "           OBSERVATION DATA    " + system, "RINEX VERSION / TYPE");
}

inline std::string endOfHeader() {
    return record("", "END OF HEADER");
}

/// What stands behind the header of a RINEX file.
inline std::string bodyOf(const std::string& name) {
    const std::string text = readFile(name);
    const std::string end = endOfHeader();
    const std::size_t at = text.find(end);
    return at == std::string::npos ? "(no header)" : text.substr(at + end.size());
}

/// A reader of the text; the file's name in error messages is "f".
inline rinex::ObservationReader readerOf(const std::string& text) {
    LineReader lines;
    lines.openBytes("f", text);
    rinex::ObservationReader reader;
    static_cast<void>(reader.open(std::move(lines)));
    return reader;
}

/// Cut or damaged anywhere, the text gives epochs or records and errors, of those a few lines, and comes to an end.
template <class Story>
void expectEnd(const std::string& text, long mostErrors, const Story& story) {
    for (std::size_t i = 0; i < text.size(); i += 1 + text.size() / 4000) {
        story(text.substr(0, i));
        for (const char c : {'\n', ' ', '9', '>', '\xff'}) {
            std::string damaged = text;
            damaged[i] = c;
            const std::string told = story(damaged);
            EXPECT_LE(std::count(told.begin(), told.end(), '\n'), mostErrors) << i;
        }
    }
}

}  // namespace halvex::test
