#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "halvex/files/CustomURL.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {
namespace {

struct Options {
    std::string urlTemplate, text, time, letters;
    std::optional<std::string> site;
    bool json = false;
};

struct Placeholder {
    std::size_t at;
    std::string text;
};

std::vector<Placeholder> placeholdersOf(const std::string& text) {
    std::vector<Placeholder> result;
    for (std::size_t at = text.find('%'); at != text.npos;) {
        const bool hasWidth = at + 1 < text.size() && text[at + 1] >= '0' && text[at + 1] <= '9';
        result.push_back({at, text.substr(at, hasWidth ? 3 : 2)});
        at = text.find('%', at + result.back().text.size());
    }
    return result;
}

/// The template when it is valid; else a Failure tells where it is not.
const char* checkedTemplate(const Options& options) {
    for (const auto& [at, placeholder] : placeholdersOf(options.urlTemplate)) {
        if (CCustomURL::VerifyCustomURL(placeholder.c_str(), options.letters.c_str()) == 0) {
            throw Failure(options.urlTemplate + ": byte " + std::to_string(at) + ": '" + placeholder +
                          "' is no placeholder; halvex url --help lists them");
        }
    }
    return options.urlTemplate.c_str();
}

void expand(const Options& options) {
    const char* urlTemplate = checkedTemplate(options);
    const CTimeBase time(parseTime(options.time));
    const CString url = CCustomURL::getCustomURL(time, options.site ? options.site->c_str() : nullptr, urlTemplate,
                                                 options.letters.c_str());
    if (options.json) {
        std::cout << Json{{"url", url.str()}, {"time", formatTime(time)}}.dump(-1, ' ', false,
                                                                               Json::error_handler_t::replace)
                  << "\n";
    } else {
        std::cout << url.str() << "\n";
    }
}

void verify(const Options& options) {
    checkedTemplate(options);
    std::string letters;
    for (const Placeholder& placeholder : placeholdersOf(options.urlTemplate)) {
        const char letter = placeholder.text.back();
        if (letters.find(letter) == letters.npos) letters += letter;
    }
    if (options.json) {
        std::cout << Json{{"valid", true}, {"letters", letters}}.dump() << "\n";
    } else {
        std::cout << "valid" << (letters.empty() ? ", without placeholders" : ", letters " + letters) << "\n";
    }
}

void parse(const Options& options) {
    const char* urlTemplate = checkedTemplate(options);
    CTimeBase time(parseTime(options.time));
    if (!CCustomURL::ExtractTimeFromString(time, urlTemplate, options.text.c_str())) {
        throw Failure(options.text + ": no time comes out of it by " + options.urlTemplate +
                      ": it is too short, a number is out of its range, or the template has a letter that cannot be "
                      "read (S, a, b, h, t, w)");
    }
    if (options.json) {
        std::cout
            << Json{{"time", formatTime(time)}, {"week", time.GetGpsWeek()}, {"seconds", time.GetGpsSeconds()}}.dump()
            << "\n";
    } else {
        std::cout << formatTime(time) << "\n";
    }
}

}  // namespace

void addUrlCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command =
        addCommand(app, "url", "URLs and file names from templates, and times back out of them",
                   "halvex url expand 'ftp://host/%Y/%j/%S%j%H.%2yo.gz' --time 2020-06-25T12:00 --site ESBC\n\n"
                   "Placeholders, each with a digit before the letter for the width:\n"
                   "  Y year  y without century  M m month  D d day  j day of year  U W week of year  G GPS week\n"
                   "  w a day of week  b month's name  h H hour (number, letter)  t minute  S site");
    command->require_subcommand(1);
    const auto add = [&](const char* name, const char* what, const char* example, void (*run)(const Options&)) {
        CLI::App* sub = addCommand(*command, name, what, example);
        sub->add_option("TEMPLATE", options->urlTemplate, "text with placeholders such as %Y")->required();
        sub->add_flag("--json", options->json, "machine-readable output");
        sub->callback([options, run] { run(*options); });
        return sub;
    };
    CLI::App* expandCommand = add("expand", "the template at a time",
                                  "halvex url expand '%S%j%H.%2yo' --time 2020-06-25T12:00 --site ESBC", expand);
    expandCommand->add_option("--time", options->time, "as it is to be printed")->required();
    expandCommand->add_option("--site", options->site, "name for %S; without, %S stays");
    CLI::App* verifyCommand = add("verify", "whether the template is valid, and its letters",
                                  "halvex url verify '%Y/%j/%S%j%H.%2yo'", verify);
    for (CLI::App* sub : {expandCommand, verifyCommand}) {
        sub->add_option("--letters", options->letters, "further letters that are allowed; they stay as they are");
    }
    CLI::App* parseCommand = add("parse", "the time out of a text (a day of month or year counts one too many)",
                                 "halvex url parse '%Y/%j' 2020/177 --time 2020-01-01T12:00", parse);
    parseCommand->add_option("TEXT", options->text, "what the template once gave")->required();
    parseCommand->add_option("--time", options->time, "what is not in the text; without, 2000-01-01T00:00:00")
        ->default_str("2000-01-01");
    parseCommand->preparse_callback([options](std::size_t) { options->time = "2000-01-01"; });
}

}  // namespace halvex::tool
