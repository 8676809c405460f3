#include "halvex/platform/kernix/ActiveObject.h"

#include <array>
#include <chrono>
#include <system_error>

#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/os/Thread.h"

CActiveObject::CActiveObject(std::string_view name, ThreadFunction function, void* parameter, std::uint32_t stopTimeout)
    : m_name(name), m_function(function), m_parameter(parameter), m_stopTimeout(stopTimeout) {}

CActiveObject::~CActiveObject() {
    StopThread();
}

bool CActiveObject::StartThread(const char* file, int line, const char* caller) {
    const std::lock_guard lock(m_mutex);
    if (m_thread.joinable()) return true;
    m_stop.Clear();
    m_ended.Clear();
    try {
        m_thread = std::thread([this] {
            m_function(m_parameter);
            m_ended.Set();
        });
    } catch (const std::system_error& error) {
        ILogging::getInstance().Log("CActiveObject::StartThread", ILogging::kError,
                                    "{0}({1}): {2}: thread '{3}' cannot be started: {4}", file, line, caller, m_name,
                                    error.what());
        return false;
    }
    return true;
}

bool CActiveObject::StopThread() {
    const std::lock_guard lock(m_mutex);
    if (!m_thread.joinable()) return true;
    m_stop.Set();
    const std::array<os::Event*, 1> ended{&m_ended};
    const bool inTime = os::waitAny(ended, std::chrono::milliseconds(m_stopTimeout)).has_value();
    if (!inTime) {
        ILogging::getInstance().Log("CActiveObject::StopThread", ILogging::kError,
                                    "thread '{0}' has not ended within {1} ms, waiting on", m_name, m_stopTimeout);
    }
    m_thread.join();
    return inTime;
}

void CActiveObject::SetThreadName(std::uint32_t threadId, std::string_view name) {
    os::setThreadName(threadId, name);
}
