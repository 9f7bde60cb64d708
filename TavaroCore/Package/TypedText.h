#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What was typed during a recording, as texts of logs have it. Each function decides on the parsed text, wherever in
/// it the field is and however it is spelled. A text is a document, or any other JSON with a list "keystrokes" in it.
namespace tavaro {

/// Whether keystrokes hold the field "characters", in which earlier versions kept what was typed. False for what is not
/// JSON. Costs a search of the text where there is none, which is at most some milliseconds.
bool holdsFormerTypedText(std::string_view json);

/// The text without that field; all else stays to the byte. None when there is nothing to take out. Throws `JSONError`
/// for what is not JSON.
std::optional<std::string> withoutFormerTypedText(std::string_view json);

/// The same, and each key of plain typing reads "•", so that it shows when and how much was typed, not what. Shortcuts
/// and modifiers stay.
std::optional<std::string> withoutTypedText(std::string_view json);

/// Whether a text that is not quite JSON could hold typed text all the same.
bool mayHoldTypedText(std::string_view text);

}
