#include <filesystem>
#include <memory>

#include "halvex/files/IndexedRead.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/sets/SetNames.h"
#include "tools/halvex/sets/StationSet.h"

namespace halvex::tool {

void addRawCommand(CLI::App& app) {
    struct Options {
        std::string set, out;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command = addCommand(app, "raw", "write the blocks of a set one after another, without times",
                                   "halvex raw archive/ESBC00DNK_R_20201770000_01D_30S_MO esbc.raw");
    command->add_option("SET", options->set, "indexed set (base name, or any file of the set)")->required();
    command->add_option("OUT", options->out, "file to write")->required();
    command->callback([options] {
        const std::string base = setBase(options->set);
        const SetReader check(base);  // tells a wrong version or a missing file in words
        std::error_code ignored;
        for (const char* file : {"t", "i", "h"}) {
            if (std::filesystem::equivalent(options->out, base + file, ignored)) {
                throw Failure(options->out + ": is the set itself", Failure::kWrongUsage);
            }
        }
        if (!CIndexedReadFile::TransformTimeInfoFileToRaw((base + "t").c_str(), options->out.c_str())) {
            throw Failure(base + "t: not all of it went into " + options->out +
                          ": the last record is cut off or empty, or the file takes no more");
        }
        if (check.cutOff() != 0)
            throw Failure(base + "t: the last record is cut off; everything before it was written");
    });
}

}  // namespace halvex::tool
