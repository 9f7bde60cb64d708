#pragma once

#include <TavaroCore/Errors/Error.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A line of a narration, on one line of text.
struct ScriptLine {
    std::optional<double> time; // output seconds at which it begins
    std::string text;

    bool operator==(ScriptLine const&) const = default;
};

/// A text that is no script.
class ScriptTextError : public Error {
public:
    enum class Kind { noText, tooManyLines, lineTooLong };
    ScriptTextError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    Kind const kind;
};

/// Each line with its time in hundredths, "0:03.20  Now I fill in the details."; `readScript` reads it again.
std::string scriptText(std::span<ScriptLine const> lines);

/// Reads a script as people write it, of any encoding. Where it begins with a time ("0:03", "[1:02:03.5]",
/// "0:01–0:03"), times begin lines, which come back in the order of their times; one below without a time follows, one
/// that is indented goes on. Without times each line is one, or each paragraph where blank lines set them apart. What
/// has nothing to say, such as "---", is left out. Throws `ScriptTextError`.
std::vector<ScriptLine> readScript(std::string_view bytes);

}
