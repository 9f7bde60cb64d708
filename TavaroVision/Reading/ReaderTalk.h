#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroVision/Reading/ReadText.h>

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What is said to the program `tavaro-reader` and by it. It is sent pictures of lines: width and height of four bytes
/// each, the low one first, then the pixels row by row. It says a line of JSON when it is ready, and one for each
/// picture.
namespace tavaro {

struct LineImage;

/// A worker broke down over a line: it crashed, hung, or said nothing that makes sense. Another try may work.
class ReaderLost : public Error {
public:
    using Error::Error;
};

/// A letter as the reader sees it, in pixels of the picture that it was sent. Where it begins is right to about a
/// quarter of a letter; its width often is not.
struct SeenLetter {
    std::string text;
    int x = 0;
    int width = 0;
    double confidence = 0;   // 0…1
    bool beginsWord = false; // as the reader thinks, which is often wrong in keys

    static constexpr auto fields = std::tuple{
        field("text", &SeenLetter::text),
        field("x", &SeenLetter::x),
        field("width", &SeenLetter::width),
        field("confidence", &SeenLetter::confidence),
        field("beginsWord", &SeenLetter::beginsWord),
    };
    bool operator==(SeenLetter const&) const = default;
};
static_assert(listsEveryField<SeenLetter>);

struct ReaderReply {
    std::vector<SeenLetter> letters;    // from left to right
    std::optional<std::string> failure; // why it cannot read anything

    static constexpr auto fields = std::tuple{
        field("letters", &ReaderReply::letters),
        field("failure", &ReaderReply::failure),
    };
};
static_assert(listsEveryField<ReaderReply>);

/// Larger pictures of lines are neither made nor read.
inline constexpr int widestLineImage = 1 << 14;
inline constexpr int highestLineImage = 256;
inline constexpr std::size_t longestReaderReply = std::size_t{1} << 20; // bytes

using LineImageHead = std::array<char, 8>;
LineImageHead headOf(LineImage const& image);

struct LineImageSize {
    int width = 0;
    int height = 0;
    std::size_t pixels() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
};
/// None for a picture that is empty or too large.
std::optional<LineImageSize> sizeOf(LineImageHead const& head);

/// Throws `ReaderLost` for a line that is no reply.
ReaderReply readReaderReply(std::string_view line);

/// What a reader says as words in the picture of the line's image: with text, without spaces, in order, inside of the
/// line, sure from 0 to 1. What is otherwise is mended where that is possible, else left out. Words are what has a
/// space's width without ink between it, wherever the reader puts spaces.
ReadLine readLine(LineImage const& image, std::span<SeenLetter const> letters);

}
