#pragma once

#include <Tavaro/Studio/Exports/ExportMeasure.h>

#include <TavaroCore/Export/ExportSettings.h>

#include <QString>

/// What exports are, in words.
namespace tavaro::exportText {

/// "1920 × 1080 · 60 fps"
QString picture(ExportSettings const& settings);
/// The same with "· MP4, H.264".
QString all(ExportSettings const& settings);
/// "12–20 MB"; one size where both are as good as the same.
QString size(ExportEstimate::Span const& bytes);
/// "40 s–1 min"; "" where nobody knows.
QString time(std::optional<ExportEstimate::Span> const& seconds);
/// "40 s", "3 min", "1 h 20 min"
QString about(double seconds);

}
