#include "tools/halvex/sets/StationSet.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/kernix/FileReadBuffer.h"
#include "halvex/time/TimeBase.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {
namespace {

constexpr std::uint32_t kShared = 3;
constexpr std::uint32_t kVersion = 2;

std::string timeInfoName(const std::string& base) {
    return base + "t";
}

bool exists(const std::string& name) {
    std::error_code ignored;
    return std::filesystem::exists(name, ignored);
}

/// Failure unless the time-info file is one that this version reads: opening it blindly would delete it.
void checkVersion(const std::string& name) {
    CFileReadBuffer file;
    if (!file.Open(name.c_str(), kShared)) {
        throw Failure(fmt::format("{}: cannot be read: {}", name, file.GetLastError().message()));
    }
    const unsigned char* word = file.GetData(0, sizeof kVersion);
    if (word == nullptr) throw Failure(name + ": byte 0: ends inside the version word");
    if (const auto version = loadLittleEndian<std::uint32_t>(word); version != kVersion) {
        throw Failure(fmt::format("{}: byte 0: version {}, this tool reads {}; the file is left as it is", name,
                                  version, kVersion));
    }
}

/// Where the whole records of a time-info file end.
std::uint64_t wholeEnd(const std::string& name) {
    constexpr std::uint64_t kHeaderSize = 10;
    CFileReadBuffer file;
    std::uint64_t end = sizeof kVersion;
    if (!file.Open(name.c_str(), kShared)) return end;
    std::uint64_t position = 0;
    std::uint64_t size = 0;
    const unsigned char* data = nullptr;
    for (bool more = CIndexedReadFile::getFirstBlock(file, position, data, size); more;
         more = CIndexedReadFile::getNextBlock(file, position, data, size)) {
        end += kHeaderSize + size;
    }
    return end;
}

class BlockNotify final : public IIndexedReadNotify {
public:
    void OnIndexedBlock(const unsigned char* data, std::uint64_t size) override {
        if (onBlock && !(*onBlock)({data, static_cast<std::size_t>(size)})) {
            stopped = true;
            file->cancelRead();
        }
    }
    void OnIndexedReadEnd() override {}

    CIndexedReadFile* file = nullptr;
    const SetReader::OnBlock* onBlock = nullptr;
    bool stopped = false;
};

}  // namespace

void EpochClock::set(const SMjdTime& time) {
    CTimeBase(time).ToSystemTime(m_now);
}

SMjdTime epochTime(const CHalvexStationObservation& station) {
    return {static_cast<int>(station.getGPSWeek()), station.getGPSFraction() / 1000.0};
}

SetWriter::SetWriter(std::string base, const rinex::ObservationHeader& header, EpochClock& clock,
                     CDecoupledFileWrite* writer)
    : m_base(std::move(base)), m_clock(clock), m_writer(writer) {
    std::error_code absent;
    const bool continued = std::filesystem::file_size(timeInfoName(m_base), absent) >= sizeof kVersion && !absent;
    if (continued) checkVersion(timeInfoName(m_base));
    std::error_code error;
    bool opened = false;
    if (m_writer != nullptr) {
        m_failedBefore = m_writer->FailedOperations();
        opened = m_requests.emplace(*m_writer).Open(m_base.c_str(), error);
    } else {
        opened = m_file.Open(m_base.c_str(), false);
        error = m_file.GetLastError();
    }
    if (!opened && error != std::errc::device_or_resource_busy) {
        throw Failure(fmt::format("{}: the set cannot be opened: {}", timeInfoName(m_base), error.message()));
    }
    check(error);
    m_header.emplace(m_base, header);
    if (!continued) return;
    SetReader before(m_base);
    CHalvexStationObservation station;
    before.read(SMjdTime(), [&](std::span<const unsigned char> block) {
        if (station.loadData(block.data(), block.size())) m_last = epochTime(station);
        return true;
    });
}

void SetWriter::check(std::error_code error) const {
    if (error == std::errc::device_or_resource_busy) {
        throw Failure(m_base + ": another program writes this set; archive again when it is done");
    }
    if (error) {
        throw Failure(
            fmt::format("{}: cannot be written: {}; what stands before it is whole", m_base, error.message()));
    }
}

void SetWriter::checkLost() const {
    const std::uint64_t lost = m_writer->FailedOperations() - m_failedBefore;
    if (lost == 0) return;
    // Others that stand behind the lost ones may have been written: continuing this set would not bring them back.
    throw Failure(fmt::format("{}: {} writes failed, see the log; remove the set and archive again", m_base, lost));
}

bool SetWriter::add(const CHalvexStationObservation& station, const rinex::EpochBuilder& builder) {
    const SMjdTime time = epochTime(station);
    if (m_last && time <= *m_last) return false;
    m_last = time;
    for (const CALN::SCalSatID& satellite : builder.satellites()) {
        m_header->note(time, satellite, builder.signals(satellite));
    }
    m_header->flush();
    // Zeros, so that the same epoch is the same block: an epoch without clock offsets does not fill its size.
    m_block.assign(station.getSize(), 0);
    station.saveData(m_block.data(), m_block.size());
    m_clock.set(time);
    if (m_requests) {
        checkLost();
        if (!m_requests->AddBlock(m_block)) throw Failure(m_base + ": the writer takes no more requests");
    } else {
        m_file.AddBlock(m_block.data(), static_cast<std::uint32_t>(m_block.size()));
        check(m_file.GetLastError());
    }
    ++m_epochs;
    m_bytes += m_block.size();
    return true;
}

void SetWriter::close() {
    if (m_requests) {
        m_requests->Close();
        m_writer->WaitUntilIdle();
        checkLost();
        return;
    }
    m_file.Flush();
    check(m_file.GetLastError());
    m_file.Close();
    check(m_file.GetLastError());
}

SetReader::SetReader(const std::string& base) : m_base(base) {
    const std::string name = timeInfoName(base);
    if (!exists(name)) throw Failure(base + ": no such set: there is no file " + name);
    checkVersion(name);
    std::error_code ignored;
    m_size = std::filesystem::file_size(name, ignored);

    auto notify = std::make_unique<BlockNotify>();
    m_file = std::make_unique<CIndexedReadFile>(notify.get());
    notify->file = m_file.get();
    m_notify = std::move(notify);

    // The reader looks for its index at the name it opened followed by "i", which is not where a set has it. A folder
    // with two links gives both files the names that belong together; without one, reading merely starts from the
    // front.
    std::string view = (std::filesystem::temp_directory_path(ignored) / "halvex-XXXXXX").string();
    if (mkdtemp(view.data()) != nullptr) {
        m_view = view;
        std::filesystem::create_symlink(std::filesystem::absolute(name), m_view + "/set", ignored);
        std::filesystem::create_symlink(std::filesystem::absolute(base + "i"), m_view + "/seti", ignored);
    }
    if ((m_view.empty() || !m_file->Open((m_view + "/set").c_str())) && !m_file->Open(name.c_str())) {
        throw Failure(name + ": cannot be read as an indexed set");
    }
}

SetReader::~SetReader() {
    m_file.reset();
    std::error_code ignored;
    if (!m_view.empty()) std::filesystem::remove_all(m_view, ignored);
}

std::uint64_t SetReader::read(const SMjdTime& from, const OnBlock& onBlock) {
    auto& notify = static_cast<BlockNotify&>(*m_notify);
    notify.onBlock = &onBlock;
    notify.stopped = false;
    std::uint32_t week = 0;
    std::uint32_t milliseconds = 0;
    // The index compares milliseconds of week alone: a time before the set would be found in the set's own week.
    const std::optional<SMjdTime> first = firstTime();
    if (from.IsSet() && first && from > *first) {
        week = static_cast<std::uint32_t>(from.GetGpsWeek());
        milliseconds = static_cast<std::uint32_t>(from.GetGpsWeekMilliseconds());
    }
    m_file->Read(week, milliseconds);
    notify.onBlock = nullptr;
    return notify.stopped || m_file->isEndOfFile() ? 0 : cutOff();
}

std::uint64_t SetReader::cutOff() const {
    const std::uint64_t end = wholeEnd(timeInfoName(m_base));
    return m_size > end ? m_size - end : 0;
}

std::optional<SMjdTime> SetReader::firstTime() {
    std::uint32_t week = 0;
    std::uint32_t milliseconds = 0;
    if (!m_file->getFirstBlockTime(week, milliseconds)) return std::nullopt;
    return SMjdTime(static_cast<int>(week), milliseconds / 1000.0);
}

}  // namespace halvex::tool
