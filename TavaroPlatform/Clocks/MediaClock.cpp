#include <TavaroPlatform/Clocks/MediaClock.h>

#include <chrono>

namespace tavaro {

double mediaClockNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}
