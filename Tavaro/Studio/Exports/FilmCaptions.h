#pragma once

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/TimeRange.h>

#include <filesystem>
#include <optional>
#include <string_view>

namespace tavaro {

inline constexpr std::string_view captionsEnding = ".srt";

/// Throws `Error` where the film has no captions.
void requireCaptions(DemoProject const& project);

/// The captions of the film, or of that part of it, as a SubRip file in the times of what is exported: under that name,
/// or where it is taken the next free one, which it returns. Throws `FileError` and `Error` as `requireCaptions`.
std::filesystem::path writeFilmCaptions(std::filesystem::path const& file, DemoProject const& project,
                                        std::optional<TimeRange> const& part);

}
