#pragma once

#include <span>
#include <string_view>

namespace tavaro {

/// Somewhere that films go, in the words of who sends them there, with the presets that suit it.
struct ExportPlace {
    struct Way {
        char const* preset; // by its id
        char const* title;
    };

    char const* id;
    char const* title;
    char const* detail;
    char const* icon;
    std::span<Way const> ways; // the usual one first

    /// The table, in the order it is shown. Every preset is in one of them.
    static std::span<ExportPlace const> all();
    /// Null where there is none of that id.
    static ExportPlace const* withID(std::string_view id);
    /// The one that has the preset; null where none has.
    static ExportPlace const* ofPreset(std::string_view preset);

    /// Null where the place does not have it.
    Way const* way(std::string_view preset) const;
};

}
