#pragma once

namespace tavaro {

/// Handles the events of this thread, and sleeps before when there are none; five milliseconds at most.
void sleepUntilEvent();

}
