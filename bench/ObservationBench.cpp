// Saving and loading a station epoch of 40 satellites, beside a floor that moves the same fields with unchecked memcpy.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "halvex/observations/HalvexStationObservation.h"

namespace {

constexpr int kSatellites = 40;

CHalvexStationObservation typicalEpoch() {
    CHalvexStationObservation epoch(345600000, 2111);
    for (int i = 0; i < kSatellites; ++i) {
        CHalvexObservation observation(
            CPrnID(static_cast<unsigned char>(i % 20 + 1), i < 20 ? CPrnID::PRN_GPS : CPrnID::PRN_GALILEO));
        for (unsigned slot = 0; slot < CHalvexObservation::kSlots; ++slot) {
            observation.setPhase(slot, 1.1e8 + i, true);
            observation.setPseudorangeC(slot, 2.1e7 + i);
            if (i < 20 && slot < 2) observation.setPseudorangeP(slot, 2.1e7 + i);
            observation.setDoppler(slot, -1234.567F);
            observation.setCNO(slot, 45.25F);
            observation.setContLockCount(slot, 65535);
        }
        epoch.AddObservation(observation, false);
    }
    return epoch;
}

/// The same fields in plain structures, moved without a look at any length.
struct FloorSlot {
    double phase = 0.0, pseudorangeC = 0.0, pseudorangeP = 0.0;
    float doppler = 0.0F, cno = 0.0F;
    std::uint16_t lockCount = 0;
    std::uint32_t flags = 0;
};
struct FloorSatellite {
    std::uint8_t number = 0, type = 0, validity = 0;
    FloorSlot slots[3];
};
constexpr std::uint32_t kPhase = 0x4000, kC = 0x8000, kDoppler = 0x10000, kCno = 0x400000, kP = 0x1000000;

template <class T>
void put(unsigned char*& to, const T& value) {
    std::memcpy(to, &value, sizeof value);
    to += sizeof value;
}
template <class T>
void get(const unsigned char*& from, T& value) {
    std::memcpy(&value, from, sizeof value);
    from += sizeof value;
}

unsigned char* floorSave(const std::vector<FloorSatellite>& satellites, unsigned char* to) {
    for (const FloorSatellite& satellite : satellites) {
        put(to, satellite.number);
        put(to, satellite.type);
        put(to, satellite.validity);
        for (const FloorSlot& slot : satellite.slots) {
            put(to, slot.flags);
            if ((slot.flags & kPhase) != 0) put(to, slot.phase);
            if ((slot.flags & kC) != 0) put(to, slot.pseudorangeC);
            if ((slot.flags & kP) != 0) put(to, slot.pseudorangeP);
            if ((slot.flags & kDoppler) != 0) put(to, slot.doppler);
            if ((slot.flags & kCno) != 0) put(to, slot.cno);
            put(to, slot.lockCount);
        }
    }
    return to;
}

void floorLoad(const unsigned char* from, std::vector<FloorSatellite>& satellites) {
    for (FloorSatellite& satellite : satellites) {
        get(from, satellite.number);
        get(from, satellite.type);
        get(from, satellite.validity);
        for (FloorSlot& slot : satellite.slots) {
            get(from, slot.flags);
            if ((slot.flags & kPhase) != 0) get(from, slot.phase);
            if ((slot.flags & kC) != 0) get(from, slot.pseudorangeC);
            if ((slot.flags & kP) != 0) get(from, slot.pseudorangeP);
            if ((slot.flags & kDoppler) != 0) get(from, slot.doppler);
            if ((slot.flags & kCno) != 0) get(from, slot.cno);
            get(from, slot.lockCount);
        }
    }
}

std::vector<unsigned char> savedEpoch() {
    const CHalvexStationObservation epoch = typicalEpoch();
    std::vector<unsigned char> bytes(epoch.getSize());
    epoch.saveData(bytes.data(), bytes.size());
    return bytes;
}

constexpr std::size_t kHead = 16;  // an epoch without optional values

void BM_FloorSave(benchmark::State& state) {
    std::vector<FloorSatellite> satellites(kSatellites);
    std::vector<unsigned char> bytes = savedEpoch();
    floorLoad(bytes.data() + kHead, satellites);
    for (auto _ : state) {
        benchmark::DoNotOptimize(floorSave(satellites, bytes.data() + kHead));
        benchmark::ClobberMemory();
    }
}
void BM_Save(benchmark::State& state) {
    const CHalvexStationObservation epoch = typicalEpoch();
    std::vector<unsigned char> bytes(epoch.getSize());
    for (auto _ : state) {
        epoch.saveData(bytes.data(), bytes.size());
        benchmark::ClobberMemory();
    }
}
void BM_FloorLoad(benchmark::State& state) {
    std::vector<FloorSatellite> satellites(kSatellites);
    const std::vector<unsigned char> bytes = savedEpoch();
    for (auto _ : state) {
        floorLoad(bytes.data() + kHead, satellites);
        benchmark::ClobberMemory();
    }
}
void BM_Load(benchmark::State& state) {
    CHalvexStationObservation epoch = typicalEpoch();
    const std::vector<unsigned char> bytes = savedEpoch();
    for (auto _ : state) {
        benchmark::DoNotOptimize(epoch.loadData(bytes.data(), bytes.size()));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_FloorSave);
BENCHMARK(BM_Save);
BENCHMARK(BM_FloorLoad);
BENCHMARK(BM_Load);

}  // namespace

BENCHMARK_MAIN();
