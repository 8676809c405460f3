#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <system_error>

#include "halvex/platform/kernix/FileWriteBuffer.h"
#include "halvex/platform/kernix/Monitor.h"
#include "halvex/platform/os/CString.h"

namespace halvex {

/// The files that CDecoupledFileWrite has open, by name, within the process's limit of open files. One thread at a
/// time.
class OpenFileTable {
public:
    /// One file of the table. It may have been closed for a while to make room for others.
    struct File {
        CString name;
        CFileWriteBuffer buffer;
        std::uint64_t sizeWhenSuspended = 0;
        bool suspended = false;
        std::list<File*>::iterator age;  ///< its place among the open ones
    };
    using Bytes = std::span<const unsigned char>;

    /// Null when the file is not in the table. One that was closed to make room is opened again; when it is gone or
    /// shorter by then, it leaves the table.
    File* find(const CString& name);
    /// Opens a file that is not in the table; null when it cannot be. A version other than 0 that is not the file's, or
    /// `overwrite`, empties it.
    File* open(const CString& name, std::uint32_t version, bool overwrite);
    void close(File& file);

    /// Each whole or not at all; what cannot be written is counted.
    void write(File& file, std::span<const Bytes> pieces);
    void write(File& file, Bytes bytes) { write(file, {&bytes, 1}); }

    [[nodiscard]] std::uint64_t failures() const {
        return static_cast<std::uint64_t>(m_failedOpens.value() + m_failedWrites.value());
    }

private:
    bool openBuffer(const CString& name, CFileWriteBuffer& buffer, bool overwrite, std::uint32_t* version);
    /// False when nothing can be done.
    bool makeRoom();
    void keep(File& file);
    void setOpenFiles() { m_openFiles.Set(static_cast<double>(m_byAge.size())); }
    void failed(const CString& name, const char* what, std::error_code error, CMonitorElement& counter);
    void worked(const CString& name);

    CMonitorElementContainer m_container{"DecoupledFileWrite"};
    CMonitorElement m_openFiles{m_container, "OpenFiles"};
    CMonitorElement m_failedOpens{m_container, "FailedOpens"};
    CMonitorElement m_failedWrites{m_container, "FailedWrites"};
    std::map<CString, std::unique_ptr<File>> m_files;
    std::list<File*> m_byAge;     ///< the open ones; the one that was used last stands last
    std::set<CString> m_failing;  ///< logged, and not working since
};

}  // namespace halvex
