#include "DisplayWatch.h"

#include <TavaroCapture/X11/Connection.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <chrono>
#include <cstdio>
#include <fmt/format.h>
#include <fstream>
#include <sched.h>
#include <thread>

namespace tavaro {

void watchForever(std::string const& display) {
    constexpr double between = 0.004;
    x11::Connection connection(display);
    sched_param const least{.sched_priority = sched_get_priority_min(SCHED_RR)};
    sched_setscheduler(0, SCHED_RR, &least);
    while (connection.isAlive()) {
        double const due = mediaClockNow() + between;
        std::this_thread::sleep_for(std::chrono::duration<double>(between));
        double const woken = mediaClockNow();
        connection.synchronize();
        double const answered = mediaClockNow();
        if (answered - due <= shortestStall) continue;
        fmt::print("{:.6f} {:.6f} {:.6f}\n", due, woken, answered);
        std::fflush(stdout);
    }
}

std::vector<DisplayStall> stallsIn(std::filesystem::path const& lines) {
    std::vector<DisplayStall> result;
    std::ifstream stream(lines);
    for (DisplayStall stall; stream >> stall.from >> stall.woken >> stall.to;) result.push_back(stall);
    return result;
}

}
