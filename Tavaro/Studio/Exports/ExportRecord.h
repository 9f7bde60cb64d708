#pragma once

#include <Tavaro/Model/Exporting/ExportChoices.h>
#include <Tavaro/Studio/Exports/ExportMeasure.h>

#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/UUID.h>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// `interrupted`: the program ended before it was done.
enum class ExportState { waiting, running, done, failed, cancelled, interrupted };

constexpr std::array<std::string_view, 6> namesOf(ExportState) {
    return {"waiting", "running", "done", "failed", "cancelled", "interrupted"};
}

constexpr bool hasEnded(ExportState state) { return state != ExportState::waiting && state != ExportState::running; }

/// An export as it is listed and remembered.
struct ExportRecord {
    UUID id;
    std::string package; // the project
    std::string name;    // its, as it was then
    std::string title;   // where the film goes
    std::string detail;  // what it is made as
    ExportChoices choices;
    bool hasCaptions = false;             // beside it, in a file of their own
    std::optional<std::string> typedName; // of the file, where the user gave one
    ExportState state = ExportState::waiting;
    std::string path; // of what was written; before, what is to be
    std::optional<std::int64_t> bytes;
    Date endedAt;
    std::string sentence;    // why it failed, or what is to be known beside the film
    bool checksFilm = false; // reads it again, whether anything private is legible
    std::string checked;     // what that came to; empty until then
    bool isLegible = false;  // something private is

    static constexpr auto fields = std::tuple{
        field("id", &ExportRecord::id),
        field("package", &ExportRecord::package),
        field("name", &ExportRecord::name),
        field("title", &ExportRecord::title),
        field("detail", &ExportRecord::detail),
        field("choices", &ExportRecord::choices),
        field("hasCaptions", &ExportRecord::hasCaptions),
        field("typedName", &ExportRecord::typedName),
        field("state", &ExportRecord::state),
        field("path", &ExportRecord::path),
        field("bytes", &ExportRecord::bytes),
        field("endedAt", &ExportRecord::endedAt),
        field("sentence", &ExportRecord::sentence),
        field("checksFilm", &ExportRecord::checksFilm),
        field("checked", &ExportRecord::checked),
        field("isLegible", &ExportRecord::isLegible),
    };
    bool operator==(ExportRecord const&) const = default;
};
static_assert(listsEveryField<ExportRecord>);

/// What the program remembers of its exports, in one file. What cannot be read counts as nothing.
struct ExportMemory {
    std::vector<ExportRecord> exports; // those under way in their order, then the newest first
    std::vector<ExportMeasure> measures;

    static constexpr auto fields =
        std::tuple{field("exports", &ExportMemory::exports), field("measures", &ExportMemory::measures)};
    bool operator==(ExportMemory const&) const = default;

    /// "exports.json" in the user's state folder.
    static std::filesystem::path usualFile();
    /// Any thread. Those under way count as interrupted, since whoever wrote them has ended.
    static ExportMemory read(std::filesystem::path const& file);
    /// Any thread. Where it cannot be written, that is logged.
    void write(std::filesystem::path const& file) const;
};
static_assert(listsEveryField<ExportMemory>);

}
