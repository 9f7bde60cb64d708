#pragma once

#include <TavaroCore/Records/Fields.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct Speech;

/// What a package keeps of a spoken line beside its sound, since no field of the document has room for it.
struct StoredLine {
    struct Word {
        std::string text;
        double start = 0; // seconds of the sound
        double end = 0;

        static constexpr auto fields = std::tuple{
            field("text", &Word::text),
            field("start", &Word::start),
            field("end", &Word::end),
        };
        bool operator==(Word const&) const = default;
    };

    double duration = 0;     // seconds
    std::vector<Word> words; // in order; empty where the voice does not tell their times

    static constexpr auto fields = std::tuple{
        field("duration", &StoredLine::duration),
        field("words", &StoredLine::words),
    };
    bool operator==(StoredLine const&) const = default;
};
static_assert(listsEveryField<StoredLine::Word>);
static_assert(listsEveryField<StoredLine>);

/// Writes the sound of a line into the folder of a package's assets, with the times of its words. Once the sound has
/// its name, both are complete. Throws `MediaError` and `FileError`.
StoredLine storeLine(std::filesystem::path const& assets, std::string const& lineAsset, Speech const& speech);

/// What is kept of a line, if its sound is there. Where only the words are lost or damaged, the sound itself tells how
/// long it is.
std::optional<StoredLine> storedLine(std::filesystem::path const& assets, std::string const& lineAsset);

/// The same from the bytes of the file; none where they make no sense.
std::optional<StoredLine> decodeStoredLine(std::string_view bytes);

}
