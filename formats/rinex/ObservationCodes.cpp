#include "formats/rinex/ObservationCodes.h"

#include <algorithm>

namespace halvex::rinex {
namespace {

bool has(const std::vector<std::string>& types, std::string_view type) {
    return std::find(types.begin(), types.end(), type) != types.end();
}

/// Attribute of a GPS or GLONASS signal on band 1 or 2; `precise` is the system's letter for P code.
char attributeOfP(char type, char band, const std::vector<std::string>& types, char civil1, char civil2, char precise) {
    const bool band1 = band == '1';
    const char civil = band1 ? civil1 : civil2;
    if (type == 'C') return civil;
    if (type == 'P') return precise;
    const bool civilListed = has(types, band1 ? "C1" : "C2");
    const bool preciseListed = has(types, band1 ? "P1" : "P2");
    if (band1) return preciseListed && !civilListed ? precise : civil;
    if (preciseListed) return precise;
    // Without any code beside it a GPS phase on L2 comes from codeless tracking of P(Y), a GLONASS one from C/A.
    return civilListed || civil == 'C' ? civil : precise;
}

char attributeOf(char type, char band, CALN::eCALSATSYSTEM system, const std::vector<std::string>& types) {
    const auto isOneOf = [band](std::string_view bands) { return bands.find(band) != std::string_view::npos; };
    switch (system) {
        case CALN::eCALSATSYSTEM_GPS:
            if (isOneOf("12")) return attributeOfP(type, band, types, 'C', 'X', 'W');
            return type != 'P' && band == '5' ? 'X' : ' ';
        case CALN::eCALSATSYSTEM_GLONASS:
            return isOneOf("12") ? attributeOfP(type, band, types, 'C', 'C', 'P') : ' ';
        default:
            break;
    }
    if (type == 'P') return ' ';
    switch (system) {
        case CALN::eCALSATSYSTEM_GALILEO:
            return isOneOf("15678") ? 'X' : ' ';
        case CALN::eCALSATSYSTEM_SBAS:
            return band == '1' ? 'C' : band == '5' ? 'X' : ' ';
        case CALN::eCALSATSYSTEM_BEIDOU:
            return isOneOf("1267") ? 'I' : ' ';
        case CALN::eCALSATSYSTEM_QZSS:
            return band == '1' ? 'C' : isOneOf("256") ? 'X' : ' ';
        case CALN::eCALSATSYSTEM_NAVIC:
            return band == '5' ? 'A' : ' ';
        default:
            return ' ';
    }
}

}  // namespace

std::optional<ObservationCode> parseObservationCode(std::string_view text, CALN::eCALSATSYSTEM system, double version) {
    if (text.size() < 2 || text.size() > 3) return std::nullopt;
    ObservationCode code{text[0], text[1], text.size() == 3 ? text[2] : ' '};
    const bool known = std::string_view("CLDSXI").find(code.type) != std::string_view::npos && code.band >= '1' &&
                       code.band <= '9' && (code.attribute == ' ' || (code.attribute >= 'A' && code.attribute <= 'Z'));
    if (!known) return std::nullopt;
    constexpr double kFirstWithBand2 = 3.025;  // between 3.02 and 3.03
    if (system == CALN::eCALSATSYSTEM_BEIDOU && version < kFirstWithBand2 && code.band == '1' &&
        std::string_view("CLDS").find(code.type) != std::string_view::npos &&
        std::string_view("IQX").find(code.attribute) != std::string_view::npos) {
        code.band = '2';
    }
    return code;
}

std::vector<ObservationCode> codesOfTypes(const std::vector<std::string>& types, CALN::eCALSATSYSTEM system) {
    std::vector<ObservationCode> codes;
    for (const std::string& text : types) {
        ObservationCode code{!text.empty() ? text[0] : ' ', text.size() > 1 ? text[1] : ' ', ' '};
        if (std::string_view("CPLDS").find(code.type) != std::string_view::npos) {
            code.attribute = attributeOf(code.type, code.band, system, types);
        }
        if (code.attribute != ' ') {
            if (code.type == 'P') code.type = 'C';
            if (system == CALN::eCALSATSYSTEM_BEIDOU && code.band == '1') code.band = '2';
        }
        codes.push_back(code);
    }
    return codes;
}

}  // namespace halvex::rinex
