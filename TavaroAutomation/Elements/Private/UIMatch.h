#pragma once

#include <TavaroAutomation/Elements/UIElement.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// Finds elements by the titles that people read.
///
/// Titles are compared as people compare them: case, white space, mnemonics ("_File", "&File"), what follows a tab (the
/// shortcut), and the kind of quotes and dashes do not count. What is equal then is exact. What is equal without
/// accents, a colon at the end and an ellipsis comes next, then titles that contain the text. Among equals win, in this
/// order: what is visible, the role (controls, then fields, then rows, then cells), what is enabled, a title that
/// begins with the text, one with a word that does, the shorter title, and what is listed first.
struct UIMatch {
    struct Wanted {
        std::string title;
        std::string role; // any where empty; its case does not count
    };

    /// The place in the list of what is meant; none where no title contains the text.
    static std::optional<std::size_t> find(std::vector<UIElement> const& elements, Wanted const& wanted);
    /// Whether people read the same: not only a part of it.
    static bool isSame(std::string_view title, std::string_view other);
    /// Compared in the same way; nothing is a part of every title.
    static bool contains(std::string_view title, std::string_view part);
    /// Titles that are there, at most eight, those first that are most alike.
    static std::vector<std::string> suggestions(std::vector<UIElement> const& elements, Wanted const& wanted);
};

}
