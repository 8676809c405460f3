#include <iostream>
#include <memory>

#include "halvex/files/ProductsFileName.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/sets/SetNames.h"

namespace halvex::tool {
namespace {

struct Options {
    std::string site;
    std::string time;
    std::string period = "01D";
    std::string source = "R";
    std::string type = "daily";
    std::string letters = "lower";
    std::string change;
    std::string compression = "gz";
    bool hatanaka = false;
    bool longName = false;
};

void printNames(const Options& options) {
    const StationName station = stationName(options.site, "", "");
    const SMjdTime time = parseTime(options.time);
    RnxLongFileNameParam parameters(station.country, station.monument, station.receiver, options.period,
                                    options.source.empty() ? 'S' : options.source.front());
    std::string longName;
    CProductsFileName::CreateRinexLongFileName(station.site.c_str(), parameters, time.GetGpsWeek(),
                                               time.GetGpsSeconds(), longName);
    const auto type = options.type == "subhourly" ? CProductsFileName::RINEX_SUBHOURLY
                      : options.type == "hourly"  ? CProductsFileName::RINEX_HOURLY
                                                  : CProductsFileName::RINEX_DAILY;
    const auto letters =
        options.letters == "upper" ? CProductsFileName::SITECODE_UPPER : CProductsFileName::SITECODE_LOWER;
    std::string shortName;
    CProductsFileName::CreateRinexFileName(station.site.c_str(), time.GetGpsWeek(), time.GetGpsSeconds(), shortName,
                                           letters, type);
    std::cout << longName << "\n" << shortName << "\n";
}

void printChanged(const Options& options) {
    const auto type = options.compression == "zip"  ? CProductsFileName::TARGET_ZIP
                      : options.compression == "Z"  ? CProductsFileName::TARGET_UNIX_COMPRESS
                      : options.compression == "gz" ? CProductsFileName::TARGET_GZIP
                                                    : CProductsFileName::TARGET_NONE;
    CString changed;
    if (CProductsFileName::ChangeRinexFileName(options.change.c_str(), type, options.longName, changed,
                                               options.hatanaka, false) == 0) {
        throw Failure("an empty name cannot be changed", Failure::kWrongUsage);
    }
    std::cout << changed.str() << "\n";
}

}  // namespace

void addNameCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command =
        addCommand(app, "name", "product file names of a site and a time, or of a compressed file",
                   "halvex name ESBC00DNK 2020-06-25T13:45 --period 01H --type hourly\n"
                   "  halvex name --change ESBC00DNK_R_20201771300_01H_30S_MO.rnx --compression gz --long");
    auto* site = command->add_option("SITE", options->site, "site code, 4 characters or 9 as ESBC00DNK");
    auto* time = command->add_option("TIME", options->time, "GPS time")->needs(site);
    command->add_option("--period", options->period, "file period of the long name")->capture_default_str();
    command->add_option("--source", options->source, "data source letter of the long name")->capture_default_str();
    command->add_option("--type", options->type, "span of the short name")
        ->check(CLI::IsMember({"subhourly", "hourly", "daily"}))
        ->capture_default_str();
    command->add_option("--letters", options->letters, "site code of the short name")
        ->check(CLI::IsMember({"lower", "upper"}))
        ->capture_default_str();
    auto* change =
        command->add_option("--change", options->change, "a RINEX file name to be compressed")->excludes(site);
    command->add_option("--compression", options->compression, "kind of compression")
        ->check(CLI::IsMember({"none", "zip", "gz", "Z"}))
        ->capture_default_str()
        ->needs(change);
    command->add_flag("--long", options->longName, "--change: it is a long name")->needs(change);
    command->add_flag("--hatanaka", options->hatanaka, "--change: Hatanaka compression before a zip")->needs(change);
    command->callback([options, time, change] {
        if (change->count() != 0) return printChanged(*options);
        if (time->count() == 0) throw Failure("give SITE and TIME, or --change NAME", Failure::kWrongUsage);
        printNames(*options);
    });
}

}  // namespace halvex::tool
