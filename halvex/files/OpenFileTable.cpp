#include "halvex/files/OpenFileTable.h"

#include <algorithm>
#include <filesystem>
#include <string>

#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/os/File.h"

namespace halvex {
namespace {

/// Descriptors that are left to the rest of the process.
constexpr std::uint64_t kLeftToOthers = 64;

/// Names of failing files that are remembered; callers may invent names without end.
constexpr std::size_t kFailing = 4096;

std::uint64_t roomWithin(std::uint64_t limit) {
    return std::max<std::uint64_t>(limit > 2 * kLeftToOthers ? limit - kLeftToOthers : limit / 2, 1);
}

bool isLackOfDescriptors(std::error_code error) {
    return error == std::errc::too_many_files_open || error == std::errc::too_many_files_open_in_system;
}

}  // namespace

OpenFileTable::File* OpenFileTable::find(const CString& name) {
    const auto found = m_files.find(name);
    if (found == m_files.end()) return nullptr;
    File& file = *found->second;
    if (!file.suspended) {
        m_byAge.splice(m_byAge.end(), m_byAge, file.age);
        return &file;
    }
    std::error_code gone;
    if (std::filesystem::file_size(name.str(), gone) >= file.sizeWhenSuspended && !gone &&
        openBuffer(name, file.buffer, false, nullptr)) {
        keep(file);
        return &file;
    }
    m_files.erase(found);
    return nullptr;
}

OpenFileTable::File* OpenFileTable::open(const CString& name, std::uint32_t version, bool overwrite) {
    auto file = std::make_unique<File>();
    file->name = name;
    std::uint32_t found = version;
    if (!openBuffer(name, file->buffer, overwrite, version != 0 ? &found : nullptr)) return nullptr;
    if (found != version) {
        file->buffer.Close();
        found = version;
        if (!openBuffer(name, file->buffer, true, &found)) return nullptr;
    }
    keep(*file);
    return m_files.emplace(name, std::move(file)).first->second.get();
}

void OpenFileTable::close(File& file) {
    file.buffer.Close();
    m_byAge.erase(file.age);
    m_files.erase(m_files.find(file.name));
    setOpenFiles();
}

void OpenFileTable::write(File& file, std::span<const Bytes> pieces) {
    const bool isNothing = std::all_of(pieces.begin(), pieces.end(), [](Bytes piece) { return piece.empty(); });
    if (isNothing) return;
    if (file.buffer.WriteUnbuffered(pieces)) {
        worked(file.name);
        return;
    }
    // Together or not at all is for the call; what fits alone is still written.
    if (pieces.size() > 1) {
        for (const Bytes& piece : pieces) write(file, {&piece, 1});
        return;
    }
    failed(file.name, "written", file.buffer.GetLastError(), m_failedWrites);
}

bool OpenFileTable::openBuffer(const CString& name, CFileWriteBuffer& buffer, bool overwrite, std::uint32_t* version) {
    // What stands behind a NUL would be cut off silently.
    if (name.str().find('\0') != std::string::npos) {
        failed(name, "opened", std::make_error_code(std::errc::invalid_argument), m_failedOpens);
        return false;
    }
    if (m_byAge.size() >= roomWithin(os::openFilesLimit())) makeRoom();
    const auto tryOnce = [&] { return buffer.Open(name, 1, 0, overwrite, os::kShareReadWrite, version); };
    bool opened = tryOnce();
    while (!opened && isLackOfDescriptors(buffer.GetLastError()) && makeRoom()) opened = tryOnce();
    if (!opened) failed(name, "opened", buffer.GetLastError(), m_failedOpens);
    return opened;
}

bool OpenFileTable::makeRoom() {
    if (os::raiseOpenFilesLimit()) return true;
    if (m_byAge.empty()) return false;
    File& oldest = *m_byAge.front();
    oldest.sizeWhenSuspended = oldest.buffer.GetFileSizeEx();
    oldest.suspended = true;
    oldest.buffer.Close();
    m_byAge.pop_front();
    setOpenFiles();
    return true;
}

void OpenFileTable::keep(File& file) {
    file.suspended = false;
    file.age = m_byAge.insert(m_byAge.end(), &file);
    setOpenFiles();
}

void OpenFileTable::failed(const CString& name, const char* what, std::error_code error, CMonitorElement& counter) {
    counter.Increment();
    if (m_failing.size() >= kFailing) m_failing.clear();
    if (!m_failing.insert(name).second) return;
    ILogging::getInstance().Log("CDecoupledFileWrite", ILogging::kError, "file '{0}' cannot be {1}: {2}", name.str(),
                                what, error.message());
}

void OpenFileTable::worked(const CString& name) {
    if (!m_failing.empty()) m_failing.erase(name);
}

}  // namespace halvex
