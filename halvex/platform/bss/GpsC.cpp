#include "halvex/platform/bss/GpsC.h"

#include <mutex>

#include "halvex/platform/os/Published.h"

namespace BSS::TIM {
namespace {

struct Store {
    std::mutex writers;
    bool manualInForce = false;  // guarded by writers
    os::Published<4> values;     // counts now and future, week, day number
};

Store& store() {
    static Store instance;
    return instance;
}

}  // namespace

void GpsC::setGpsLeapSecondsData(std::int16_t ls, std::int16_t lsf, int week, int dayNumber, int kind) {
    if (kind != kKindManual && kind != kKindAutomatic) return;
    Store& central = store();
    const std::lock_guard lock(central.writers);
    if (kind == kKindAutomatic && central.manualInForce) return;
    central.manualInForce = kind == kKindManual && (ls != 0 || lsf != 0);
    central.values.publish({ls, lsf, week, dayNumber});
}

int GpsC::getUtcLeapSecond(UtcLeapSecond& result) {
    const auto [ls, lsf, week, dayNumber] = store().values.read();
    if (ls == 0 && lsf == 0) return -1;
    result = {static_cast<std::int16_t>(ls), static_cast<std::int16_t>(lsf), week, dayNumber,
              week > 0 && dayNumber >= 1 && dayNumber <= 7};
    return 0;
}

}  // namespace BSS::TIM
