#include "halvex/status/SatelliteSystemDisablingHelper.h"

#include <atomic>

#include "halvex/platform/kernix/Registry.h"

namespace {

constexpr const char* kKey = "SOFTWARE\\Tavro Ostwerk\\GPS Halvex";
constexpr const char* kName = "DisabledSatSystems";

// The mask below and kLoaded above it: in one atomic, so that a first read, which is slow, cannot undo a mask that was
// set while it went on.
constexpr std::uint64_t kLoaded = std::uint64_t{1} << 32;
std::atomic<std::uint64_t> cached{0};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

constexpr std::uint64_t loaded(std::int32_t mask) {
    return kLoaded | static_cast<std::uint32_t>(mask);
}
constexpr std::int32_t maskOf(std::uint64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

/// Unsigned arithmetic wraps around, so that every int has its bit.
constexpr std::uint32_t bitOf(int system) {
    return std::uint32_t{1} << ((static_cast<std::uint32_t>(system) - 1U) % 32U);
}

}  // namespace

std::int32_t CSatelliteSystemDisablingHelper::GetSatSystemDisableMask() {
    std::uint64_t value = cached.load();
    if (value != 0) return maskOf(value);
    const std::uint64_t read = loaded(REG::GetLong(kKey, kName, 0, false));
    return maskOf(cached.compare_exchange_strong(value, read) ? read : value);
}

bool CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(std::int32_t mask, bool persist) {
    const bool stored = !persist || REG::WriteLong(kKey, kName, mask);
    cached.store(loaded(mask));
    return stored;
}

bool CSatelliteSystemDisablingHelper::IsSatSystemDisabled(int system) {
    return IsSatSystemDisabled(system, GetSatSystemDisableMask());
}

bool CSatelliteSystemDisablingHelper::IsSatSystemDisabled(const CALN::SCalSatID& satellite) {
    return IsSatSystemDisabled(static_cast<int>(satellite.system));
}

bool CSatelliteSystemDisablingHelper::IsSatSystemDisabled(const MDB::CPrnIdZ9& satellite) {
    return IsSatSystemDisabled(satellite.getCalSatID());
}

bool CSatelliteSystemDisablingHelper::SetSatSystemDisabled(int system, bool disabled, bool persist) {
    const auto mask = static_cast<std::uint32_t>(GetSatSystemDisableMask());
    const std::uint32_t changed = disabled ? mask | bitOf(system) : mask & ~bitOf(system);
    return SetSatSystemDisableMask(static_cast<std::int32_t>(changed), persist);
}

int CSatelliteSystemDisablingHelper::GetFirstEnabledSatSystem() {
    const std::int32_t mask = GetSatSystemDisableMask();
    for (int system = CALN::eCALSATSYSTEM_GPS; system <= CALN::eCALSATSYSTEM_RESERVED; ++system) {
        if (!IsSatSystemDisabled(system, mask)) return system;
    }
    return 0;
}

bool CSatelliteSystemDisablingHelper::IsSatSystemDisabled(int system, std::int32_t mask) {
    return (static_cast<std::uint32_t>(mask) & bitOf(system)) != 0;
}
