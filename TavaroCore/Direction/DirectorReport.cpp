#include <TavaroCore/Direction/DirectorReport.h>

#include <string_view>

#include <fmt/format.h>

namespace tavaro {

std::vector<std::string> DirectorReport::summaryLines() const {
    std::vector<std::string> lines;
    auto const count = [&](std::string_view verb, std::int64_t n, std::string_view noun) {
        if (n >= 1) lines.push_back(fmt::format("{} {} {}{}", verb, n, noun, n > 1 ? "s" : ""));
    };
    count("Added", zoomsAdded, "zoom");
    if (cursorSamplesSmoothed >= 1) lines.emplace_back("Smoothed cursor path");
    count("Highlighted", clicksDetected, "click");
    if (silencesFound >= 1) lines.push_back(fmt::format("Found {:.1f}s of silence", silenceSecondsRemovable));
    count("Added", overlaysAdded, "overlay");
    if (lines.empty()) lines.emplace_back("Applied polish defaults");
    if (captionCues >= 1) lines.push_back(fmt::format("Generated {} caption lines", captionCues));
    return lines;
}

}
