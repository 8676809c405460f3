#include "halvex/platform/kernix/Monitor.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>

namespace halvex {

/// Shared by a tree and the containers in it, so that either may die first.
struct MonitorRegister {
    std::mutex mutex;  // guards what follows, and through it the life of every element that is asked
    std::map<std::string, std::vector<const MonitorNode*>, std::less<>> containers;
};

MonitorNode::MonitorNode(CMonitorElementContainer& container, std::string_view name)
    : m_container(container), m_name(name) {}

void MonitorNode::enter() {
    MonitorRegister& entries = *m_container.m_register;
    const std::lock_guard lock(entries.mutex);
    entries.containers[m_container.m_path].push_back(this);
}

void MonitorNode::leave() {
    MonitorRegister& entries = *m_container.m_register;
    const std::lock_guard lock(entries.mutex);
    std::erase(entries.containers[m_container.m_path], this);
}

namespace {

CMonitorTree& processTree() {
    static CMonitorTree tree;
    return tree;
}

os::Replaceable<CMonitorTree>& currentTree() {
    static os::Replaceable<CMonitorTree> tree(&processTree());
    return tree;
}

/// Inside the quotes of a label.
std::string escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (character == '\n') {
            result += "\\n";
            continue;
        }
        if (character == '\\' || character == '"') result += '\\';
        result += character;
    }
    return result;
}

std::string number(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0.0 ? "+Inf" : "-Inf";
    return fmt::format("{}", value);  // shortest form that reads back the same, never in a locale
}

}  // namespace
}  // namespace halvex

CMonitorTree::CMonitorTree() : m_register(std::make_shared<halvex::MonitorRegister>()) {}
CMonitorTree::~CMonitorTree() = default;

CMonitorTree& CMonitorTree::getInstance() {
    return halvex::currentTree().get();
}

CMonitorTree* CMonitorTree::setInstance(CMonitorTree* tree) {
    return halvex::currentTree().exchange(tree != nullptr ? tree : &halvex::processTree());
}

std::optional<double> CMonitorTree::value(std::string_view path, std::string_view element) const {
    const std::lock_guard lock(m_register->mutex);
    const auto container = m_register->containers.find(path);
    if (container == m_register->containers.end()) return std::nullopt;
    for (const halvex::MonitorNode* node : container->second) {
        if (node->name() != element) continue;
        Entry entry;
        node->fill(entry);
        return entry.value;
    }
    return std::nullopt;
}

std::vector<CMonitorTree::Entry> CMonitorTree::snapshot() const {
    std::vector<Entry> entries;
    const std::lock_guard lock(m_register->mutex);
    for (const auto& [path, nodes] : m_register->containers) {
        for (const halvex::MonitorNode* node : nodes) {
            Entry& entry = entries.emplace_back();
            entry.path = path;
            entry.element = node->name();
            node->fill(entry);
        }
    }
    return entries;
}

std::string CMonitorTree::openMetrics() const {
    using halvex::escaped;
    using halvex::number;
    std::string values;
    std::string timers;
    for (const Entry& entry : snapshot()) {
        const std::string labels =
            fmt::format("{{container=\"{}\",element=\"{}\"}}", escaped(entry.path), escaped(entry.element));
        if (!entry.isTimer) {
            values += fmt::format("halvex_value{} {}\n", labels, number(entry.value));
            continue;
        }
        timers += fmt::format("halvex_run_seconds_count{0} {1}\nhalvex_run_seconds_sum{0} {2}\n", labels, entry.runs,
                              number(entry.totalSeconds));
    }
    std::string text;
    if (!values.empty()) {
        text += "# TYPE halvex_value gauge\n# HELP halvex_value Value of a monitoring element.\n" + values;
    }
    if (!timers.empty()) {
        text +=
            "# TYPE halvex_run_seconds summary\n# UNIT halvex_run_seconds seconds\n"
            "# HELP halvex_run_seconds How often a timed step ran and how long it took in all.\n" +
            timers;
    }
    return text + "# EOF\n";
}

CMonitorElementContainer::CMonitorElementContainer(std::string_view basePath)
    : m_register(CMonitorTree::getInstance().m_register), m_path(basePath) {
    const std::lock_guard lock(m_register->mutex);
    for (unsigned next = 2; !m_register->containers.try_emplace(m_path).second; ++next) {
        m_path = fmt::format("{}#{}", basePath, next);
    }
}

CMonitorElementContainer::~CMonitorElementContainer() {
    const std::lock_guard lock(m_register->mutex);
    m_register->containers.erase(m_path);
}

CMonitorElement::CMonitorElement(CMonitorElementContainer& container, std::string_view name)
    : MonitorNode(container, name) {
    enter();
}
CMonitorElement::~CMonitorElement() {
    leave();
}
void CMonitorElement::fill(CMonitorTree::Entry& entry) const {
    entry.value = value();
}

void CMonitorTimer::Run::stop() {
    if (m_timer == nullptr) return;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    m_timer->m_last.store(seconds, std::memory_order_relaxed);
    m_timer->m_total.fetch_add(seconds, std::memory_order_relaxed);
    m_timer->m_runs.fetch_add(1, std::memory_order_relaxed);
    m_timer = nullptr;
}

CMonitorReading::CMonitorReading(CMonitorElementContainer& container, std::string_view name,
                                 std::function<double()> value)
    : MonitorNode(container, name), m_value(std::move(value)) {
    enter();
}

CMonitorReading::~CMonitorReading() {
    leave();
}

void CMonitorReading::fill(CMonitorTree::Entry& entry) const {
    entry.value = m_value();
}

CMonitorTimer::CMonitorTimer(CMonitorElementContainer& container, std::string_view name)
    : MonitorNode(container, name) {
    enter();
}
CMonitorTimer::~CMonitorTimer() {
    leave();
}

void CMonitorTimer::fill(CMonitorTree::Entry& entry) const {
    entry.isTimer = true;
    entry.value = lastSeconds();
    entry.totalSeconds = totalSeconds();
    entry.runs = runs();
}
