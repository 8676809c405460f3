#include "halvex/observations/HalvexUniqueID.h"

#include <ostream>

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/kernix/Logging.h"

namespace {

bool refused(const char* source, const void* buffer, std::size_t size, std::size_t needed) {
    ILogging& log = ILogging::getInstance();
    if (buffer == nullptr) {
        log.Log(source, ILogging::kError, "buffer is null");
    } else if (size < needed) {
        log.Log(source, ILogging::kError, "buffer too small '{0}','{1}'", size, needed);
    } else {
        return false;
    }
    return true;
}

}  // namespace

bool CHalvexUniqueID::loadData(const unsigned char* buffer, std::size_t size) {
    if (refused("CHalvexUniqueID::loadData", buffer, size, sizeof m_id)) return false;
    m_id = halvex::loadLittleEndian<std::int64_t>(buffer);
    return true;
}

void CHalvexUniqueID::saveData(unsigned char* buffer, std::size_t size) const {
    if (refused("CHalvexUniqueID::saveData", buffer, size, sizeof m_id)) return;
    halvex::storeLittleEndian(buffer, m_id);
}

std::string CHalvexUniqueSiteID::GetOutputFormat(char separator) const {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    getID(low, high);
    return std::to_string(high) + separator + std::to_string(low);
}

bool CHalvexUniqueSiteID::isSSRBasedRTProductID() const {
    std::uint32_t product = 0;
    return getUniqueSSRBasedRTProductID(product);
}

bool CHalvexUniqueSiteID::getUniqueSSRBasedRTProductID(std::uint32_t& product) const {
    std::uint32_t high = 0;
    getID(product, high);
    if (high == kProductMarker) return true;
    product = 0;
    return false;
}

std::ostream& operator<<(std::ostream& stream, const CHalvexUniqueSiteID& site) {
    return stream << site.GetOutputFormat(',');
}
