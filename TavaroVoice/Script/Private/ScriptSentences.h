#pragma once

#include <TavaroVoice/Script/AutoDirectorScript.h>

#include <TavaroCore/Project/DemoMode.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What a narrator says. Numbers of lines count those of their kind, from 0.
namespace tavaro::sentences {

/// Where on the picture: "top left", "left side", "centre" …
std::string region(UnitPoint2 const& position);

/// `product` is its name; where none is known, it is spoken of as what the mode shows.
std::string opening(AutoDirectorScript::Style style, DemoMode mode, std::optional<std::string> const& product);
std::string closing(AutoDirectorScript::Style style, DemoMode mode, std::optional<std::string> const& product);
/// For a film whose first action takes a while to come.
std::string_view walkThrough();

std::string click(std::size_t number, UnitPoint2 const& position);
/// 0 looks for something, 1 fills in several things, 2 enters one; then on in turn.
std::string typing(std::size_t number);
std::string drag(std::size_t number);
/// `keys` as they are logged: "⌃", "⇧", "P".
std::string shortcut(std::span<std::string const> keys);
/// Of a shortcut whose line comes right behind one of its kind.
std::string nextShortcut(std::size_t number, std::span<std::string const> keys, bool isSame,
                         std::string_view lineBefore);
std::string appSwitch(std::size_t number, std::string const& app, bool isReturn, std::string_view lineBefore);

/// A shortcut as it is said: "Control Shift P".
std::string shortcutName(std::span<std::string const> keys);

/// Seconds that a voice takes for a line.
double spokenSeconds(std::string_view line);

}
