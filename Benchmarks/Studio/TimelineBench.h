#pragma once

namespace tavaro {

/// What the timeline costs on the main thread with 5,000 zooms, 5,000 captions and 200 clips in three hours, and with
/// as many a minute in half an hour, drawn by Qt's software renderer.
void benchTimeline();

}
