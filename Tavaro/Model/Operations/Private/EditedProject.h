#pragma once

#include <TavaroCore/Values/TimeRange.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct DemoProject;
struct TranscriptWord;
struct VideoClip;

namespace operations {

/// Throw `OperationError` for times that the edit does not have.
void expectInside(DemoProject const& project, double at);
void expectSpan(DemoProject const& project, TimeRange const& range);

/// Whether the text can name a clip: by its id, or by a time at which it is shown.
bool namesClip(std::string const& text);
/// The clip that is named by its id or by a time at which it is shown. Throws `OperationError`.
VideoClip const& clipNamed(DemoProject const& project, std::string const& what);

/// Throws `OperationError` without a transcript.
std::vector<TranscriptWord> const& wordsOf(DemoProject const& project);

/// "1:05.50"
std::string shownTime(double seconds);
/// "1:05.50–1:07.00"
std::string shownSpan(TimeRange const& range);
/// "1 click", "2 clicks"
std::string counted(std::size_t count, std::string_view noun);

}

}
