#include "halvex/platform/kernix/MonitorExport.h"

#include <array>
#include <utility>

#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/kernix/Monitor.h"
#include "halvex/platform/kernix/Watchdog.h"
#include "halvex/platform/os/File.h"
#include "halvex/platform/os/Thread.h"

namespace {

constexpr std::uint32_t kStopTimeout = 3000;  // [ms]

}  // namespace

CMonitorExport::CMonitorExport(std::string fileName, std::chrono::milliseconds interval)
    : m_fileName(std::move(fileName)),
      m_interval(interval),
      m_thread("CMonitorExport", &CMonitorExport::Export, this, kStopTimeout) {
    m_thread.StartThread("MonitorExport.cpp", __LINE__, "CMonitorExport::CMonitorExport");
}

CMonitorExport::~CMonitorExport() {
    m_thread.StopThread();
}

std::error_code CMonitorExport::Write(const std::string& fileName) {
    const std::string text = CMonitorTree::getInstance().openMetrics();
    return os::replaceFile(fileName, {reinterpret_cast<const unsigned char*>(text.data()), text.size()});
}

std::uint32_t CMonitorExport::Export(void* exporter) {
    auto& self = *static_cast<CMonitorExport*>(exporter);
    CActiveObject::SetThreadName(os::currentThreadId(), "CMonitorExport");
    CWatchdogClient watchdog("MonitorExport", 0);
    const std::array<os::Event*, 1> events{&self.m_thread.GetStopHandle()};
    do {
        self.writeAndReport();
    } while (!os::waitAny(events, self.m_interval));
    self.writeAndReport();
    return 0;
}

void CMonitorExport::writeAndReport() {
    const std::error_code error = Write(m_fileName);
    if (error && !m_failing) {
        ILogging::getInstance().Log("CMonitorExport", ILogging::kError, "file '{0}' cannot be written: {1}", m_fileName,
                                    error.message());
    }
    m_failing = static_cast<bool>(error);
}
