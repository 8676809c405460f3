#pragma once

#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace halvex::test {

/// A value as it is printed in the file ("-.353" and "-0.353" are the same), and whether lock was lost before it.
struct PrintedValue {
    long long thousandths = 0;
    bool lost = false;
};

/// An epoch with observations (flags 0, 1 and 6). Satellites are named "G05"; observations by their three-character
/// code, or by the two-character type of RINEX 2. Fields whose value is blank are left out.
struct PrintedEpoch {
    std::string time;  ///< "2024 07 08 00 00 01.0000000", single digits and the year as printed
    char flag = '0';
    std::map<std::string, std::map<std::string, PrintedValue>> satellites;
};

/// Second reader of RINEX observation files for comparisons, made as unlike the house's own as can be: the whole file
/// as one text, std::getline, columns sliced into strings. It trusts the file and checks nothing; scale factors are not
/// taken off. Gives each epoch to `take`. False when the file cannot be read or its header names no types.
inline bool readIndependently(const std::string& name, const std::function<void(const PrintedEpoch&)>& take) {
    gzFile file = gzopen(name.c_str(), "rb");
    if (file == nullptr) return false;
    std::string whole;
    std::vector<char> piece(1 << 20);
    for (int n = 0; (n = gzread(file, piece.data(), static_cast<unsigned>(piece.size()))) > 0;) {
        whole.append(piece.data(), static_cast<std::size_t>(n));
    }
    gzclose(file);

    std::istringstream lines(whole);
    std::string line;
    const auto next = [&] {
        if (!std::getline(lines, line)) return false;
        line.resize(std::max<std::size_t>(line.find_last_not_of("\r ") + 1, 0));
        line.append(line.size() < 80 ? 80 - line.size() : 0, ' ');
        return true;
    };
    const auto stripped = [](std::string text) {
        std::erase(text, ' ');
        return text;
    };

    bool version2 = false;
    char fileSystem = 'G';
    std::map<char, std::vector<std::string>> types;  // RINEX 2: under 'M'
    char typesOf = 'M';
    int owed = 0;
    const auto header = [&] {
        const std::string label = line.substr(60, 20);
        if (label == "RINEX VERSION / TYPE") {
            version2 = line[5] == '2';
            fileSystem = line[40] == ' ' || line[40] == 'M' ? 'G' : line[40];
        }
        const bool list2 = label.starts_with("# / TYPES OF OBSERV");
        if (list2 || label.starts_with("SYS / # / OBS TYPES")) {
            if (owed <= 0) {
                typesOf = list2 ? 'M' : line[0];
                owed = std::stoi(line.substr(list2 ? 0 : 3, list2 ? 6 : 3));
                types[typesOf].clear();
            }
            std::istringstream words(line.substr(6, 54));
            for (std::string word; words >> word; --owed) types[typesOf].push_back(word);
        }
        return !label.starts_with("END OF HEADER");
    };
    while (next() && header()) {
    }
    if (types.empty()) return false;

    const std::size_t shift = version2 ? 0 : 3;
    while (next()) {
        if (stripped(line).empty()) continue;
        PrintedEpoch epoch;
        epoch.flag = line[28 + shift];
        epoch.time = line.substr(version2 ? 1 : 2, 25 + shift);
        const std::string counted = stripped(line.substr(29 + shift, 3));
        const int count = counted.empty() ? 0 : std::stoi(counted);
        if (epoch.flag >= '2' && epoch.flag <= '5') {
            for (int i = 0; i < count && next(); ++i) header();
            continue;
        }
        std::vector<std::string> names;
        for (int i = 0; version2 && i < count; ++i) {
            if (i > 0 && i % 12 == 0) next();
            names.push_back(line.substr(static_cast<std::size_t>(32 + 3 * (i % 12)), 3));
        }
        for (int i = 0; i < count; ++i) {
            std::string fields;
            std::string satellite;
            if (version2) {
                satellite = names[static_cast<std::size_t>(i)];
                if (satellite[0] == ' ') satellite[0] = fileSystem;
                for (std::size_t k = 0; k < types['M'].size(); k += 5) {
                    if (!next()) return false;
                    fields += line.substr(0, 80);
                }
            } else {
                if (!next()) return false;
                satellite = line.substr(0, 3);
                fields = line.substr(3);
            }
            if (satellite[1] == ' ') satellite[1] = '0';
            auto& values = epoch.satellites[satellite];
            std::size_t column = 0;
            for (const std::string& type : types[version2 ? 'M' : satellite[0]]) {
                if (column >= fields.size()) break;
                const std::string field = (fields.substr(column, 16) + std::string(16, ' ')).substr(0, 16);
                column += 16;
                const std::string digits = stripped(field.substr(0, 14));
                double number = 0.0;
                std::from_chars(digits.data() + digits.starts_with('+'), digits.data() + digits.size(), number);
                const bool lost = field[14] != ' ' && (field[14] - '0') % 2 != 0;
                if (!digits.empty()) values[type] = {std::llround(number * 1000.0), lost};
            }
        }
        take(epoch);
    }
    return true;
}

}  // namespace halvex::test
