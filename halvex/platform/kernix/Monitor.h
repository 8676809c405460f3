#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/Replaceable.h"

namespace halvex {
class MonitorNode;
struct MonitorRegister;
}  // namespace halvex

/// The process's monitoring tree: every living container by its path, with the elements in it. Any thread may ask while
/// others register, unregister or update; what is asked about a container is never half of it.
class HALVEX_EXPORT CMonitorTree {
public:
    /// One element at one moment.
    struct Entry {
        std::string path;     ///< of the container
        std::string element;  ///< name in the container
        double value = 0.0;   ///< of a timer: seconds that the last run took
        bool isTimer = false;
        double totalSeconds = 0.0;  ///< timers only: sum over all runs
        std::uint64_t runs = 0;     ///< timers only
    };

    CMonitorTree();
    ~CMonitorTree();
    CMonitorTree(const CMonitorTree&) = delete;
    CMonitorTree& operator=(const CMonitorTree&) = delete;

    /// The tree in force.
    static CMonitorTree& getInstance();
    /// Puts `tree` in its place for containers built from now on and returns the one before; null brings the process's
    /// own back. The caller keeps it alive as long as it is installed; containers that registered in it may outlive it.
    static CMonitorTree* setInstance(CMonitorTree* tree);

    /// Value of one element; empty when there is no such container or element.
    [[nodiscard]] std::optional<double> value(std::string_view path, std::string_view element) const;
    /// All elements, by path, in the order in which a container's elements were built.
    [[nodiscard]] std::vector<Entry> snapshot() const;
    /// The snapshot in the OpenMetrics text format (version 1.0.0), up to and with "# EOF". Path and element are
    /// labels.
    [[nodiscard]] std::string openMetrics() const;

private:
    friend class CMonitorElementContainer;
    std::shared_ptr<halvex::MonitorRegister> m_register;
};

/// Installs a tree for a scope.
class ScopedMonitorTree : public os::ScopedService<CMonitorTree> {
public:
    explicit ScopedMonitorTree(CMonitorTree& tree) : ScopedService(&CMonitorTree::setInstance, tree) {}
};

/// A group of elements under one path such as "LeapSeconds/Automatic", in the tree for as long as it lives. A path that
/// is taken gets a number behind it: the second "Queue/Raw" is "Queue/Raw#2", until it dies.
class HALVEX_EXPORT CMonitorElementContainer {
public:
    explicit CMonitorElementContainer(std::string_view basePath);
    ~CMonitorElementContainer();
    CMonitorElementContainer(const CMonitorElementContainer&) = delete;
    CMonitorElementContainer& operator=(const CMonitorElementContainer&) = delete;

    /// The path under which it stands in the tree.
    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    friend class halvex::MonitorNode;
    std::shared_ptr<halvex::MonitorRegister> m_register;
    std::string m_path;
};

namespace halvex {

/// What elements have in common: a name in a container, which they enter when they are built and leave when they die.
/// A container outlives its elements: declare it before them.
class HALVEX_EXPORT MonitorNode {
public:
    MonitorNode(const MonitorNode&) = delete;
    MonitorNode& operator=(const MonitorNode&) = delete;
    [[nodiscard]] const std::string& name() const { return m_name; }

protected:
    MonitorNode(CMonitorElementContainer& container, std::string_view name);
    /// Not virtual on purpose: a derived class leaves the tree first thing in its own destructor.
    ~MonitorNode() = default;
    void enter();
    void leave();

private:
    friend class ::CMonitorTree;
    virtual void fill(CMonitorTree::Entry& entry) const = 0;

    CMonitorElementContainer& m_container;
    std::string m_name;
};

}  // namespace halvex

/// A named number. Any thread may update or read; an update is one atomic operation, without a lock.
class HALVEX_EXPORT CMonitorElement final : public halvex::MonitorNode {
public:
    CMonitorElement(CMonitorElementContainer& container, std::string_view name);
    ~CMonitorElement();

    void Set(double value) { m_value.store(value, std::memory_order_relaxed); }
    void Increment(double by = 1.0) { m_value.fetch_add(by, std::memory_order_relaxed); }
    [[nodiscard]] double value() const { return m_value.load(std::memory_order_relaxed); }

private:
    void fill(CMonitorTree::Entry& entry) const override;
    std::atomic<double> m_value{0.0};
};

/// A named number that is worked out when somebody asks for it, by a function that any thread may call at any time.
class HALVEX_EXPORT CMonitorReading final : public halvex::MonitorNode {
public:
    CMonitorReading(CMonitorElementContainer& container, std::string_view name, std::function<double()> value);
    ~CMonitorReading();

private:
    void fill(CMonitorTree::Entry& entry) const override;
    std::function<double()> m_value;
};

/// How long something takes, how often it ran. Runs on several threads may overlap.
class HALVEX_EXPORT CMonitorTimer final : public halvex::MonitorNode {
public:
    /// One run: it counts when it is stopped, at the latest when it goes out of scope. It must not outlive its timer.
    class HALVEX_EXPORT Run {
    public:
        explicit Run(CMonitorTimer& timer) : m_timer(&timer), m_start(std::chrono::steady_clock::now()) {}
        ~Run() { stop(); }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        void stop();

    private:
        CMonitorTimer* m_timer;  ///< null once stopped
        std::chrono::steady_clock::time_point m_start;
    };

    CMonitorTimer(CMonitorElementContainer& container, std::string_view name);
    ~CMonitorTimer();

    [[nodiscard]] Run start() { return Run(*this); }
    [[nodiscard]] double lastSeconds() const { return m_last.load(std::memory_order_relaxed); }
    [[nodiscard]] double totalSeconds() const { return m_total.load(std::memory_order_relaxed); }
    [[nodiscard]] std::uint64_t runs() const { return m_runs.load(std::memory_order_relaxed); }

private:
    void fill(CMonitorTree::Entry& entry) const override;
    std::atomic<double> m_last{0.0};
    std::atomic<double> m_total{0.0};
    std::atomic<std::uint64_t> m_runs{0};
};
