#pragma once

#include <cstddef>
#include <functional>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/SatelliteSystem.h"

namespace MDB {

/// Satellite identifier of the computation library: system code and number. Plain value without locks.
class HALVEX_EXPORT CPrnIdZ9 {
public:
    constexpr CPrnIdZ9() = default;
    constexpr CPrnIdZ9(CALN::eCALSATSYSTEM system, unsigned char number) : m_id(system, number) {}
    constexpr explicit CPrnIdZ9(const CALN::SCalSatID& id) : m_id(id) {}

    [[nodiscard]] constexpr CALN::SCalSatID getCalSatID() const { return m_id; }
    [[nodiscard]] constexpr CALN::eCALSATSYSTEM getSystem() const { return m_id.system; }
    [[nodiscard]] constexpr unsigned char getNumber() const { return m_id.number; }
    void setFromCalSatID(const CALN::SCalSatID& id) { m_id = id; }
    /// The system is a known one and the number within 1 and the system's maximum.
    [[nodiscard]] bool isValid() const;

    friend constexpr bool operator==(const CPrnIdZ9&, const CPrnIdZ9&) = default;
    /// By system, then by number.
    friend constexpr auto operator<=>(const CPrnIdZ9&, const CPrnIdZ9&) = default;

private:
    CALN::SCalSatID m_id;
};

}  // namespace MDB

template <>
struct std::hash<MDB::CPrnIdZ9> {
    std::size_t operator()(const MDB::CPrnIdZ9& id) const noexcept {
        return static_cast<std::size_t>(id.getSystem()) << 8 | id.getNumber();
    }
};
