#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace tavaro {

enum class CodeTokenKind { plain, keyword, type, function, string, number, comment, punctuation };

struct CodeToken {
    std::size_t begin = 0; // bytes
    std::size_t end = 0;
    CodeTokenKind kind = CodeTokenKind::plain;

    bool operator==(CodeToken const&) const = default;
};

/// The tokens of a program text, in order, without gaps. A language is known by its name or its files' suffix
/// ("Python", "py"); of another one the words, comments and strings that most languages share are found. Reads any text
/// in one pass: what is not closed ends with its line or, if it may span lines, with the text.
std::vector<CodeToken> codeTokens(std::string_view text, std::string_view language);

}
