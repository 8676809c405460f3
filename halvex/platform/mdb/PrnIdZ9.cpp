#include "halvex/platform/mdb/PrnIdZ9.h"

namespace MDB {

bool CPrnIdZ9::isValid() const {
    const halvex::SatelliteSystem* system = halvex::systemOfCode(m_id.system);
    return system != nullptr && m_id.number >= 1 && m_id.number <= system->maxNumber;
}

}  // namespace MDB
