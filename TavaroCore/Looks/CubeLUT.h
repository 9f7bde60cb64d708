#pragma once

#include <TavaroCore/Errors/Error.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A three-dimensional colour table, as colourists pass them on in .cube files: what each encoded colour becomes.
struct CubeLUT {
    using Color = std::array<float, 3>;

    static constexpr int largestSize = 65;

    int size = 0;              // entries along each axis, 2…65
    std::vector<float> values; // 3 for each entry (red, green, blue), entries with red running fastest
    std::optional<std::string> title;

    bool operator==(CubeLUT const&) const = default;

    /// The table that changes nothing.
    static CubeLUT identity(int size);

    /// Reads a .cube file in time and memory linear in its length. Lines may end in any way and numbers be written with
    /// an exponent; a title loses its quotes. Values of another domain than 0…1 are brought to it. Throws `ParseError`.
    static CubeLUT parse(std::string_view text);

    /// The colour's place in the table, read trilinearly; colours outside 0…1 count as the nearest inside. Tables may
    /// hold values outside 0…1, and so may the result.
    Color apply(Color const& color) const;

    class ParseError;
};

/// Text that is not a table which can be used.
class CubeLUT::ParseError : public Error {
public:
    enum class Kind { missingSize, badLine, tooLarge, wrongCount };

    static ParseError missingSize();
    static ParseError badLine(std::string_view line);
    static ParseError tooLarge(std::string_view size);
    static ParseError wrongCount(std::size_t expected, std::size_t actual);

    Kind kind() const { return kind_; }

private:
    ParseError(Kind kind, std::string const& sentence) : Error(sentence), kind_(kind) {}
    Kind kind_;
};

}
