#pragma once

namespace tavaro {

/// Seconds on the media clock: steady, never set back, the same for every process of this machine. Any thread.
double mediaClockNow();

}
