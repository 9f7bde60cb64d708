#pragma once

#include <TavaroCore/Privacy/Private/SecretLabels.h>
#include <TavaroCore/Privacy/Private/SecretValues.h>
#include <TavaroCore/Privacy/Private/Words.h>

#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace tavaro {

/// Calls `found` with the values of labels in a plain line that are secrets.
void forEachLabelledSecret(std::string_view text, std::span<Word const> words,
                           std::function<void(LabelledValue const&)> const& found);

/// The label that a line ends with, where its value is on the next one.
std::optional<LabelKind> labelAtEnd(std::string_view text, std::span<Word const> words);

}
