#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// Cuts a stream of bytes at its newlines. Keeps no more than one line of the longest length, whatever comes.
class LineSplitter {
public:
    explicit LineSplitter(std::size_t longest) : longest_(longest) {}

    void feed(std::string_view bytes);
    /// The next line that is complete, without its newline; of one that is too long, an empty text. Good until the next
    /// call of either.
    std::optional<std::string_view> next();
    /// Of the line that `next` gave last: what it began with where it was too long, else empty.
    std::string_view tooLongBeginning() const { return given_; }
    /// What came behind the last newline, for a stream that ends without one.
    std::string_view rest() const { return std::string_view(text_).substr(begin_); }
    /// Whether the line that is coming in is too long already.
    bool isTooLong() const { return isTooLong_; }

private:
    static constexpr std::size_t keptBytes = 4096; // of a line that is too long

    void dropUsed();

    std::size_t const longest_;
    std::string text_;
    std::size_t begin_ = 0;    // of the next line
    std::size_t searched_ = 0; // no newline between `begin_` and here
    bool isTooLong_ = false;   // its bytes up to `begin_` are gone
    std::string beginning_;    // of the one that is too long, as it comes in
    std::string given_;
};

}
