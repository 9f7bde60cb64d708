#pragma once

#include <TavaroCore/Privacy/Private/Words.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace tavaro {

/// What a label announces, and so what its value can look like.
enum class LabelKind {
    password, // chosen by people: also a plain word
    phrase,   // several words
    secret,   // made by a machine, mostly
    weak,     // "key": a secret only where it looks like one
    code,     // a few digits
};

struct SecretLabel {
    LabelKind kind = LabelKind::secret;
    std::size_t first = 0; // words of the line
    std::size_t end = 0;
};

/// The label that begins with a word of a plain line, in any of some twenty languages, whatever joins its words and
/// however a reader of pictures takes its letters.
std::optional<SecretLabel> labelAt(std::string_view text, std::span<Word const> words, std::size_t first);

/// "_TIMEOUT", "-file", "Policy": words after a label that say that the value is about the secret.
bool namesProperty(std::string_view word);

/// "is", "lautet", "est": words between a label and its value in a sentence.
bool isCopula(std::string_view word);

}
