#pragma once

#include <TavaroCore/Values/TimeRange.h>

namespace tavaro {

struct DemoProject;

/// Edits of a span of the output, beside `removeTimeRange`: each changes the clips and moves every timed item with the
/// picture. Times are output seconds; an end within 0.001 s of a clip's edge means that edge. Gaps that were between
/// clips are closed first, with the items in step. Numbers that are not finite throw `EditError::badNumber`.

/// A factor of playback outside this range is moved to its nearer end: slower shows single frames, faster only a blur.
inline constexpr double slowestRate = 0.25;
inline constexpr double fastestRate = 16;

/// Keeps the range only; it then begins at 0. A range that shows nothing throws `EditError::nothingShown`, since an
/// edit without a picture cannot be exported.
void keepTimeRange(DemoProject& project, TimeRange const& range);

/// Plays the range `rate` times as fast, on top of the speed that its clips have.
///
///     clips    [AAAAAAAAAAAA]               [AAAA][aa][AAAA]
///     sound    [MMMMMMMMMMMM]    rate 2  →  [MMMM][mm][MMMM]
///     range        [----)
///
/// Clips are split at its ends; items inside are stretched or squeezed, those behind it move. Audio clips of every
/// track are split at the ends too and play as fast as the picture (whoever mixes them keeps their pitch).
void changeSpeed(DemoProject& project, TimeRange const& range, double rate);

/// Inserts time: the frame on show at `at` is held for `duration` seconds, and everything from `at` on moves later.
///
///     clips    [AAAAAAAA]               [AAAA][hold][AAAA]
///     sound    [MMMMMMMM]     at |   →  [MMMM]      [MMMM]
///     music    [~~~~~~~~]               [~~~~~~~~]
///
/// A held frame is a clip of speed 0, so it is trimmed, split, cut and deleted like any other. What was recorded with
/// the picture (microphone, system and camera sound) pauses with it; music and voice-over that are playing go on.
/// At the very end the last frame is held. A time that no clip shows throws `EditError::nothingShown`; a duration
/// under 0.001 s changes nothing.
void insertTime(DemoProject& project, double at, double duration);

}
