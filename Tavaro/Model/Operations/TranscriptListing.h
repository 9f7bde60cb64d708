#pragma once

#include <TavaroCore/Records/Fields.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

struct DemoProject;

/// A word of the transcript as it is listed.
struct ListedWord {
    std::size_t number = 0; // as operations on words take it
    std::string text;
    std::optional<double> shownAt; // output seconds; none where the edit does not show it

    static constexpr auto fields = std::tuple{
        field("number", &ListedWord::number),
        field("text", &ListedWord::text),
        field("shownAt", &ListedWord::shownAt),
    };
    bool operator==(ListedWord const&) const = default;
};
static_assert(listsEveryField<ListedWord>);

/// Throws `OperationError` without a transcript.
std::vector<ListedWord> listWords(DemoProject const& project);

}
