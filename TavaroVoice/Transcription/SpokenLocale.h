#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// A language as its users write it ("en_US.UTF-8", "de", "pt-br", "zh-Hans-CN") as BCP 47 has it ("en-US", "de",
/// "pt-BR", "zh-Hans-CN"). None for what names no language, as "C" and "POSIX" do not.
std::optional<std::string> localeIdentifier(std::string_view text);

/// "en" of "en-US".
std::string languageOfLocale(std::string_view locale);

/// What the user's environment says; American English where it says nothing.
std::string usersLocale();

}
