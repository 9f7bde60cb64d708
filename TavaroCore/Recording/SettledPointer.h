#pragma once

namespace tavaro {

struct RecordingMetadata;

/// Makes the pointer of a log from elsewhere stand where nothing says that it moved. Such logs often have a sample only
/// when the pointer moved, and a path drawn straight from each to the next would creep.
///
///     samples  x        x x x                      x
///     path     ────────/ / /───────────────────────/       each at most a second long, as far as smoothing reaches
///
/// A gap longer than the log's usual one is a rest: the pointer stays, and leaves just in time. It is at each click at
/// the click's time. Fills rests that begin within `duration`, the seconds of the recording, so that a log of any size
/// grows by at most sixty samples for each of them. The log is settled otherwise.
void settlePointer(RecordingMetadata& log, double duration);

}
