#include <halvex/HalvexRTKBasics.h>
#include <cstdio>

int main() {
    CHalvexObservation satellite(CPrnID(5, CPrnID::PRN_GPS));
    satellite.setPseudorangeC(0, 21345678.901);
    satellite.setPhase(0, 112170914.250, true);

    CHalvexStationObservation epoch(345600000, 2111);  // milliseconds of week, GPS week
    epoch.setSiteID(42);
    epoch.AddObservation(satellite, true);

    std::vector<unsigned char> bytes(epoch.getSize());
    epoch.saveData(bytes.data(), bytes.size());
    CHalvexStationObservation again;
    again.loadData(bytes.data(), bytes.size());

    CGPSTime time(again.getGPSWeek(), again.getGPSFraction() / 1000.0);
    time.AdjustGPS2UTC(CGPSLeapSeconds::getInstance());
    std::printf("%d satellite, the same: %s, %s UTC\n", again.GetNbSVs(), again == epoch ? "yes" : "no",
                static_cast<const char*>(time.Format("%Y-%m-%d %H:%M:%S")));
}
