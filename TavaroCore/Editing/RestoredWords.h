#pragma once

#include <span>

namespace tavaro {

struct DemoProject;
struct UUID;

/// Shows words of the transcript again that the edit has cut out, where they were: right behind the clip that ends
/// before them in the recording, or else right before the one that begins after them. Words that are shown already are
/// passed over, as are those that no clip is beside.
///
///     said     so um  we start               [so][we start]   →   [so um we start]
///
/// - Neighbouring words come back together, with the silence around them: all of it up to the words that are shown,
/// when
///   a cut of words took it (at most 0.7 s); else 0.08 s.
/// - What is cut between them and the clip stays cut.
/// - Recorded sound comes with the picture; items that the cut took are not brought back.
///
/// Gives by how many seconds the output got longer.
double restoreWords(DemoProject& project, std::span<UUID const> words);

}
