#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "fuzz/Require.h"
#include "halvex/HalvexRTKBasics.h"

namespace {

using halvex::fuzz::require;
namespace fs = std::filesystem;

/// A folder in memory where there is one, for as long as the program runs.
class Folder {
public:
    Folder() {
        std::error_code none;
        const fs::path root = fs::is_directory("/dev/shm", none) ? fs::path("/dev/shm") : fs::temp_directory_path();
        std::string name = (root / "halvex-fuzz-XXXXXX").string();
        require(::mkdtemp(name.data()) != nullptr);
        m_path = name;
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    [[nodiscard]] std::string path(const char* name) const { return (m_path / name).string(); }

private:
    fs::path m_path;
};

void write(const std::string& name, std::string_view content) {
    std::ofstream(name, std::ios::binary) << content;
}

std::string read(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class StandingClock final : public os::Clock {
public:
    [[nodiscard]] SYSTEMTIME utcTime() const override { return {2020, 6, 0, 25, 12, 0, 30, 500}; }
    [[nodiscard]] SYSTEMTIME localTime() const override { return utcTime(); }
    [[nodiscard]] std::uint64_t tickCount() const override { return 1; }

private:
    os::ScopedClock m_scope{*this};
};
constexpr std::uint16_t kNowWeek = 2111;
constexpr std::uint32_t kNowMilliseconds = 388830500;

class Blocks final : public IIndexedReadNotify {
public:
    void OnIndexedBlock(const unsigned char* block, std::uint64_t size) override {
        blocks.emplace_back(reinterpret_cast<const char*>(block), size);
        bytes += size;
    }
    void OnIndexedReadEnd() override { ++ends; }

    std::vector<std::string> blocks;
    std::uint64_t bytes = 0;
    int ends = 0;
};

/// What a time-info file holds, read without the library.
struct Content {
    struct Record {
        std::uint64_t time;  // week << 32 | milliseconds
        std::string block;
    };
    bool ours = false;  // of the right version
    std::vector<Record> records;
    std::size_t rest = 0;  // bytes behind the last whole record

    explicit Content(std::string_view file) {
        const auto number = [file](std::size_t at, int bytes) {
            std::uint64_t value = 0;
            while (bytes-- > 0)
                value = value << 8 | static_cast<unsigned char>(file[at + static_cast<std::size_t>(bytes)]);
            return value;
        };
        if (file.size() < 4 || number(0, 4) != 2) return;
        ours = true;
        std::size_t at = 4;
        while (file.size() - at >= 10) {
            const std::uint64_t size = number(at + 6, 4);
            if (size > file.size() - at - 10) break;
            records.push_back({number(at, 2) << 32 | number(at + 2, 4), std::string(file.substr(at + 10, size))});
            at += 10 + size;
        }
        rest = file.size() - at;
    }
    [[nodiscard]] std::vector<std::string> blocksFrom(std::uint64_t time) const {
        auto first =
            std::find_if(records.begin(), records.end(), [=](const Record& each) { return each.time >= time; });
        std::vector<std::string> blocks;
        for (; first != records.end(); ++first) blocks.push_back(first->block);
        return blocks;
    }
};

std::vector<std::string> replay(const std::string& name, std::uint64_t time) {
    Blocks target;
    CIndexedReadFile reader(&target);
    if (!reader.Open(name.c_str())) return {};
    require(reader.Read(static_cast<std::uint32_t>(time >> 32), static_cast<std::uint32_t>(time)) && target.ends == 1);
    require(target.bytes <= fs::file_size(name));
    return target.blocks;
}

/// The readers against what the file holds. No index is found under this name.
void testReading(const std::string& name, const std::string& bytes) {
    const Content content(bytes);
    {
        CFileReadBuffer file;
        require(file.Open(name.c_str()));
        std::uint64_t position = 0, size = 0;
        const unsigned char* data = nullptr;
        std::size_t count = 0;
        for (bool more = CIndexedReadFile::getFirstBlock(file, position, data, size); more;
             more = CIndexedReadFile::getNextBlock(file, position, data, size)) {
            require(std::string(reinterpret_cast<const char*>(data), size) == content.records[count++].block);
        }
        require(count == content.records.size() && data == nullptr && size == 0);
    }
    {
        const std::string rawName = name + ".raw";
        const bool whole = CIndexedReadFile::TransformTimeInfoFileToRaw(name.c_str(), rawName.c_str());
        std::string raw;
        bool empty = content.records.empty();
        for (const Content::Record& each : content.records) {
            empty = each.block.empty();
            if (empty) break;
            raw += each.block;
        }
        require(whole == (!empty && content.rest < CIndexedFileRecordHeader::kSavedSize));
        require(!content.ours || read(rawName) == raw);
    }
    Blocks target;
    CIndexedReadFile reader(&target);
    require(reader.Open(name.c_str()) == content.ours);
    require(fs::exists(name) == (content.ours || bytes.empty()));
    if (!content.ours) return;
    std::uint32_t week = 0, milliseconds = 0;
    require(reader.getFirstBlockTime(week, milliseconds) == (bytes.size() >= 4 + 10));
    if (!content.records.empty()) require(content.records[0].time == (std::uint64_t{week} << 32 | milliseconds));
    require(reader.Read(0, 0) && target.blocks == content.blocksFrom(0));
    for (std::size_t i = 0; i < std::min<std::size_t>(content.records.size(), 4); ++i) {
        const std::uint64_t time = content.records[i].time;
        require(time >> 32 == 0 || replay(name, time) == content.blocksFrom(time));
    }
}

/// Appends a block and finds it again, through the index file's last entry.
void append(const std::string& base, std::string_view block) {
    CIndexedWriteFile writer;
    require(writer.Open(base.c_str(), false));
    writer.AddBlock(reinterpret_cast<const unsigned char*>(block.data()), static_cast<std::uint32_t>(block.size()));
    writer.Close();
    require(!writer.GetLastError());

    const std::string index = read(base + "i");
    const std::string timeInfo = read(base + "t");
    require(index.size() >= 4 + CIndexedFileIndex::kSavedSize && timeInfo.ends_with(block));
    const auto entry = CIndexedFileIndex::load(reinterpret_cast<const unsigned char*>(index.data()) + index.size() -
                                               CIndexedFileIndex::kSavedSize);
    require(entry.week == kNowWeek && entry.milliseconds == kNowMilliseconds);
    require(entry.position + CIndexedFileRecordHeader::kSavedSize + block.size() == timeInfo.size());
    require((index.size() - 4) % CIndexedFileIndex::kSavedSize == 0);
}

}  // namespace

/// Two files of an indexed set: a byte of switches, two bytes with the length of the time-info file, its bytes, and the
/// index file's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const halvex::fuzz::SilentLog silent;
    static const StandingClock clock;
    static const Folder folder;
    if (size < 3) return 0;
    const bool versions = (data[0] & 1) != 0;  // the version words are put in front
    const std::string_view rest(reinterpret_cast<const char*>(data) + 3, size - 3);
    const std::size_t length = std::min<std::size_t>(rest.size(), data[1] + 256U * data[2]);
    const std::string_view version(versions ? "\2\0\0\0" : "", versions ? 4 : 0);
    const std::string timeInfo = std::string(version).append(rest.substr(0, length));
    const std::string index = std::string(version).append(rest.substr(length));

    const std::string base = folder.path("set");
    const std::string timeInfoName = base + "t";
    write(timeInfoName, timeInfo);
    testReading(timeInfoName, timeInfo);

    // With an index: a hostile one leads anywhere in the file, but nowhere else.
    write(timeInfoName, timeInfo);
    write(timeInfoName + "i", index);
    const Content content(timeInfo);
    for (std::size_t i = 0; i < std::min<std::size_t>(content.records.size(), 4); ++i) {
        replay(timeInfoName, content.records[i].time);
    }
    os::deleteFile((timeInfoName + "i").c_str());

    // Appended to without an index, every whole record stays.
    write(timeInfoName, timeInfo);
    os::deleteFile((base + "i").c_str());
    append(base, "one");
    append(base, "another");
    std::vector<std::string> expected = content.blocksFrom(0);
    expected.insert(expected.end(), {"one", "another"});
    require(replay(timeInfoName, 0) == expected);

    // With a hostile index, at least the new block is there.
    write(timeInfoName, timeInfo);
    write(base + "i", index);
    append(base, "one");
    append(base, "another");
    return 0;
}
