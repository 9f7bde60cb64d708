#pragma once

#include <TavaroCore/Values/TimeRange.h>

namespace tavaro {

struct DemoProject;

/// The three edits that every change of the output's length is made of. Each moves every timed item of the document
/// (zooms, overlays, silences, caption cues and their words, layout cues, audio clips, voice-over segments) by one
/// rule. Times are output seconds. Camera moves, redactions, the transcript, faces and the recording's log stay as
/// they are. Times that are not finite change nothing.

/// Cuts [start, start + duration) out of the picture and closes the gap.
///
///     clips    [AAAAAA][BBBBBB]            [AAA][BBB]
///     zooms       [=====]    [==]    →       [=]  [==]
///     cut         [#######)
///
/// - A span of 0.0001 s or less changes nothing.
/// - An end of the span that lies within 0.001 s of a clip's edge means that edge.
/// - Items lose what lay in the cut, by `TimelineMath::map`; items of which 0.001 s or less is left go. A zoom that
///   gets shorter than its ramps has both scaled to fit. Words of a caption go with their time; where its text was its
///   words, it becomes the words that are left, and a caption without any goes.
/// - Audio clips are cut by `TimelineMath::split`, with hard ends at the cut. A voice-over segment that is cut inside
///   is shortened and marked `isDirty`.
/// - Layout cues and voice-over anchors inside the cut move to its start.
/// - Gaps that were between clips are closed, with the items in step.
void removeTimeRange(DemoProject& project, double start, double duration);

/// Makes room: every item that starts at or after `at` (with 0.000000001 s to spare) moves later by `duration`; an item
/// that starts before stays as it is, even where it spans `at`. A caption's words stay with it. The clips are the
/// caller's to move. A duration of 0.000001 s or less changes nothing.
void rippleInsert(DemoProject& project, double at, double duration);

/// Stretches the items of a span: `ratio` above 1 makes it last longer. The clips are the caller's to retime.
///
///     items    [=]  [==]  [=]               [=]  [=====]    [=]
///     range        [----)         ratio 2 →      [--------)
///
/// - Starts and ends inside the range are stretched, those behind it move; no item that the range reaches gets shorter
///   than 0.05 s, and the ramps of such a zoom take at most half of it each.
/// - Audio clips that lie in the range play `audioRateMultiplier` times as fast: 1 ÷ ratio keeps their sound under the
///   same picture. A clip that only reaches into the range keeps its speed, so split it at the range's ends first.
/// - A voice-over segment lasts as long as its audio then does; one without audio keeps its length.
/// - Nothing happens when the ratio is not positive or within 0.000000001 of 1, or when the range is empty.
void timeWarp(DemoProject& project, TimeRange const& range, double ratio, double audioRateMultiplier);

}
