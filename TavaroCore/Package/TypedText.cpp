#include <TavaroCore/Package/TypedText.h>

#include <TavaroCore/Recording/MaskedTyping.h>
#include <TavaroCore/Records/JSONError.h>
#include <TavaroCore/Records/JSONReader.h>

#include <algorithm>
#include <vector>

namespace tavaro {

namespace {

constexpr std::string_view formerField = "characters";

enum class Wanted { formerField, allTyping };

/// A part of the text, and what comes in its place.
struct Replacement {
    char const* begin;
    char const* end;
    std::string_view by;
};
using Replacements = std::vector<Replacement>;

/// One object on the way through the text, and what is known of it so far.
struct Object {
    bool isKeystroke = false;
    bool isShortcut = false;
    char const* memberEnd = nullptr; // of the member before; null before the second
    bool hasKeptMember = false;
    Replacements keys; // what a keystroke's keys become unless it is a shortcut, which may be said behind them
};

/// Walks a text once and gathers what has to go.
class TypingSearch {
public:
    TypingSearch(std::string_view json, Wanted wanted) : reader_(json), wanted_(wanted) {}

    Replacements run() {
        value(Place::anywhere);
        reader_.expectEnd();
        return std::move(found_);
    }

private:
    enum class Place { anywhere, keystrokeList, keystroke };

    void value(Place place) {
        constexpr int deepest = 2000; // deeper than what documents can be read from
        if (++depth_ > deepest) throw JSONError(JSONError::Kind::malformed, "the JSON is nested too deeply");
        switch (reader_.type()) {
        case JSONReader::Type::object: object(place); break;
        case JSONReader::Type::array: array(place); break;
        default: reader_.skip();
        }
        --depth_;
    }

    void array(Place place) {
        auto const inside = place == Place::keystrokeList ? Place::keystroke : Place::anywhere;
        for (bool has = reader_.enterArray(); has; has = reader_.nextElement()) value(inside);
    }

    void object(Place place) {
        Object object{.isKeystroke = place == Place::keystroke};
        char const* removedFrom = nullptr; // the first member's begin while none was kept
        for (bool has = reader_.enterObject(); has; has = reader_.nextMember()) {
            char const* const begin = reader_.position();
            if (removedFrom) found_.push_back({removedFrom, begin, {}});
            removedFrom = nullptr;
            bool const isTypedText = member(object);
            char const* const end = reader_.position();
            if (isTypedText && object.hasKeptMember) found_.push_back({object.memberEnd, end, {}});
            if (isTypedText && !object.hasKeptMember) removedFrom = begin;
            object.hasKeptMember = object.hasKeptMember || !isTypedText;
            object.memberEnd = end;
        }
        if (removedFrom) found_.push_back({removedFrom, object.memberEnd, {}});
        if (!object.isShortcut) found_.insert(found_.end(), object.keys.begin(), object.keys.end());
    }

    /// True for one that has to go.
    bool member(Object& object) {
        auto const key = reader_.key();
        if (key == formerField) return formerText();
        if (key == "keystrokes") {
            value(Place::keystrokeList);
        } else if (object.isKeystroke && key == "isShortcut" && reader_.type() == JSONReader::Type::boolean) {
            object.isShortcut = reader_.boolean();
        } else if (object.isKeystroke && key == "keys" && reader_.type() == JSONReader::Type::array) {
            keys(object.keys);
        } else {
            value(Place::anywhere);
        }
        return false;
    }

    /// Numbers are none: an asset may be called "characters", and have a duration.
    bool formerText() {
        using enum JSONReader::Type;
        auto const type = reader_.type();
        reader_.skip();
        return type == string || type == array || type == object;
    }

    void keys(Replacements& found) {
        for (bool has = reader_.enterArray(); has; has = reader_.nextElement()) {
            char const* const begin = reader_.position();
            if (reader_.type() != JSONReader::Type::string) {
                value(Place::anywhere);
                continue;
            }
            auto const name = reader_.string();
            bool const stays = name == maskedKey || isModifierName(name);
            if (wanted_ == Wanted::allTyping && !stays) found.push_back({begin, reader_.position(), "\"•\""});
        }
    }

    JSONReader reader_;
    Wanted wanted_;
    Replacements found_;
    int depth_ = 0;
};

bool holds(std::string_view text, std::string_view word) { return text.find(word) != text.npos; }

/// As no document that was written here has them.
bool holdsEscapedLetters(std::string_view text) {
    constexpr std::string_view ascii = "\\u00";
    for (auto at = text.find(ascii); at != text.npos; at = text.find(ascii, at + 1)) {
        auto const row = text.substr(at + ascii.size(), 1);
        if (row == "6" || row == "7") return true;
    }
    return false;
}

bool mayHold(std::string_view text, std::string_view word) { return holds(text, word) || holdsEscapedLetters(text); }

std::optional<std::string> replaced(std::string_view text, Replacements replacements) {
    if (replacements.empty()) return std::nullopt;
    std::ranges::sort(replacements, {}, &Replacement::begin);
    std::string result;
    result.reserve(text.size());
    char const* at = text.data();
    for (auto const& each : replacements) {
        result.append(at, each.begin).append(each.by);
        at = each.end;
    }
    return result.append(at, text.data() + text.size());
}

}

bool holdsFormerTypedText(std::string_view json) {
    if (!mayHold(json, formerField)) return false;
    try {
        return !TypingSearch(json, Wanted::formerField).run().empty();
    } catch (JSONError const&) {
        return false;
    }
}

std::optional<std::string> withoutFormerTypedText(std::string_view json) {
    return replaced(json, TypingSearch(json, Wanted::formerField).run());
}

std::optional<std::string> withoutTypedText(std::string_view json) {
    return replaced(json, TypingSearch(json, Wanted::allTyping).run());
}

bool mayHoldTypedText(std::string_view text) { return mayHold(text, formerField) || holds(text, "keystrokes"); }

}
