#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <system_error>

#include "halvex/platform/Export.h"
#include "halvex/platform/kernix/ActiveObject.h"

/// Keeps a file with the monitoring tree in the OpenMetrics text format, for a collector that reads such files: a
/// running server is watched from outside without a port. The file is written when the object is made, at every
/// interval and when it is destroyed; a reader sees one state or the next, never half of one (new file beside it, then
/// rename).
class HALVEX_EXPORT CMonitorExport {
public:
    /// Starts a thread that exports the tree in force. A file that cannot be written is logged (level 3) once until it
    /// can be.
    CMonitorExport(std::string fileName, std::chrono::milliseconds interval);
    ~CMonitorExport();
    CMonitorExport(const CMonitorExport&) = delete;
    CMonitorExport& operator=(const CMonitorExport&) = delete;

    /// Writes the tree in force to the file, once.
    [[nodiscard]] static std::error_code Write(const std::string& fileName);

private:
    static std::uint32_t Export(void* exporter);
    void writeAndReport();

    const std::string m_fileName;
    const std::chrono::milliseconds m_interval;
    bool m_failing = false;  ///< the exporting thread's own
    CActiveObject m_thread;
};
