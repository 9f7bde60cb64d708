#pragma once

#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

/// What an export took on this machine.
struct ExportMeasure {
    std::string kind; // what its cost depends on, as of `kindOf`
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t frames = 0;
    double seconds = 0; // from its start to its end
    std::int64_t estimatedBytes = 0;
    std::int64_t bytes = 0;

    static constexpr auto fields = std::tuple{
        field("kind", &ExportMeasure::kind),       field("width", &ExportMeasure::width),
        field("height", &ExportMeasure::height),   field("frames", &ExportMeasure::frames),
        field("seconds", &ExportMeasure::seconds), field("estimatedBytes", &ExportMeasure::estimatedBytes),
        field("bytes", &ExportMeasure::bytes),
    };
    bool operator==(ExportMeasure const&) const = default;

    /// The codec, or "gif".
    static std::string kindOf(ExportSettings const& settings);
};
static_assert(listsEveryField<ExportMeasure>);

/// What an export will probably take: from the least to the most.
struct ExportEstimate {
    struct Span {
        double least = 0;
        double most = 0;
    };

    Span bytes;
    std::optional<Span> seconds; // none before the first export here

    /// From what those before it took. A film like one that was measured is certain to a fifth; another size, codec or
    /// kind of film makes it less certain.
    static ExportEstimate of(ExportSettings const& settings, double duration, std::span<ExportMeasure const> measures);
};

}
