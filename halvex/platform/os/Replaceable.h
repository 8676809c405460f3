#pragma once

#include <atomic>
#include <utility>

namespace os {

/// One process-wide service that a host or a test may put its own object in place of. Holds a plain pointer: whoever
/// installs an object owns it and keeps it alive until it has been replaced and every call into it has returned.
/// Reading is one atomic load; any thread may read or replace.
template <class Service>
class Replaceable {
public:
    constexpr explicit Replaceable(Service* initial) : m_service(initial) {}

    [[nodiscard]] Service& get() const { return *m_service.load(std::memory_order_acquire); }
    /// Installs `service` and returns what stood there before. `service` must not be null.
    Service* exchange(Service* service) { return m_service.exchange(service, std::memory_order_acq_rel); }

private:
    std::atomic<Service*> m_service;
};

/// Installs a service for the life of this object through `install`, a function such as os::setClock that takes the new
/// object and returns the one before it.
template <class Service>
class ScopedService {
public:
    using Install = Service* (*)(Service*);
    ScopedService(Install install, Service& service) : m_install(install), m_before(install(&service)) {}
    ~ScopedService() { m_install(m_before); }
    ScopedService(const ScopedService&) = delete;
    ScopedService& operator=(const ScopedService&) = delete;

private:
    Install m_install;
    Service* m_before;
};

}  // namespace os
