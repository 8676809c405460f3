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

/// The text, with something else where `from` stands first.
inline std::string with(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

/// The text as a file whose name in error messages is "f".
inline LineReader linesOf(const std::string& text) {
    LineReader lines;
    lines.openBytes("f", text);
    return lines;
}

template <class Reader = rinex::ObservationReader>
Reader readerOf(const std::string& text) {
    Reader reader;
    static_cast<void>(reader.open(linesOf(text)));
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
