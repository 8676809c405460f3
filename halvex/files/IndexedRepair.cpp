#include "halvex/files/IndexedRepair.h"

#include <array>
#include <cstdint>
#include <optional>

#include "halvex/files/IndexedRead.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"
#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/os/File.h"

namespace halvex {
namespace {

constexpr std::uint64_t kVersionSize = sizeof kIndexedFileVersion;

enum class Content { unusable, otherVersion, none, records };

/// One of the two files, its size as it was found.
struct VersionedFile {
    os::File file;
    std::uint64_t size = 0;
    Content content = Content::unusable;

    explicit VersionedFile(const char* name) {
        std::array<unsigned char, kVersionSize> word{};
        std::size_t count = 0;
        if (file.openForWriting(name, os::kShareReadWrite) || file.size(size) || file.readAt(0, word, count)) return;
        if (count < word.size()) {
            content = Content::none;
        } else {
            const bool ours = loadLittleEndian<std::uint32_t>(word.data()) == kIndexedFileVersion;
            content = ours ? Content::records : Content::otherVersion;
        }
    }

    /// A record header or index entry, if the file holds it whole.
    template <class Record>
    std::optional<Record> at(std::uint64_t position) const {
        if (position < kVersionSize || position > size || Record::kSavedSize > size - position) return std::nullopt;
        std::array<unsigned char, Record::kSavedSize> bytes{};
        std::size_t count = 0;
        if (file.readAt(position, bytes, count) || count < bytes.size()) return std::nullopt;
        return Record::load(bytes.data());
    }
    std::optional<CIndexedFileIndex> entry(std::uint64_t number) const {
        return at<CIndexedFileIndex>(kVersionSize + number * CIndexedFileIndex::kSavedSize);
    }
};

/// Where a walk over the records may begin: at the last record that the index knows.
std::uint64_t lastIndexedRecord(const VersionedFile& timeInfo, const VersionedFile& index, std::uint64_t entries) {
    for (std::uint64_t number = entries; number > 0; --number) {
        const auto entry = index.entry(number - 1);
        if (!entry) continue;
        const auto header = timeInfo.at<CIndexedFileRecordHeader>(entry->position);
        if (header && header->week == entry->week && header->milliseconds == entry->milliseconds) {
            return entry->position;
        }
    }
    return kVersionSize;
}

std::uint64_t endOfWholeRecords(const VersionedFile& timeInfo, std::uint64_t position) {
    while (const auto header = timeInfo.at<CIndexedFileRecordHeader>(position)) {
        if (header->recordSize() > timeInfo.size - position) break;
        position += header->recordSize();
    }
    return position;
}

void cut(VersionedFile& file, std::uint64_t end, const char* name, const char* source, const char* message) {
    if (end >= file.size || file.file.truncate(end)) return;
    ILogging::getInstance().Log(source, ILogging::kNotice, message, name, file.size - end);
}

}  // namespace

void cutIncompleteRecord(const char* timeInfoFile, const char* indexFile, const char* source) {
    VersionedFile timeInfo(timeInfoFile);
    if (timeInfo.content == Content::unusable || timeInfo.content == Content::otherVersion) return;
    VersionedFile index(indexFile);
    std::uint64_t entries =
        index.content == Content::records ? (index.size - kVersionSize) / CIndexedFileIndex::kSavedSize : 0;

    std::uint64_t end = 0;  // a file without its version word has no records; whoever opens it next writes the word
    if (timeInfo.content == Content::records) {
        end = endOfWholeRecords(timeInfo, lastIndexedRecord(timeInfo, index, entries));
        cut(timeInfo, end, timeInfoFile, source, "incomplete last record cut off file {}, {} bytes");
    }
    if (index.content != Content::records) return;
    for (; entries > 0; --entries) {
        const auto last = index.entry(entries - 1);
        if (!last || last->position < end) break;
    }
    cut(index, kVersionSize + entries * CIndexedFileIndex::kSavedSize, indexFile, source,
        "index entries without a record cut off file {}, {} bytes");
}

}  // namespace halvex
