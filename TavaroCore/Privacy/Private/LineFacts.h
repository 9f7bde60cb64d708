#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <string_view>

namespace tavaro {

/// What one look at a line tells; what cannot be in it is not searched for.
class LineFacts {
public:
    explicit LineFacts(std::string_view line);

    std::string_view line() const { return line_; }
    bool isASCII() const { return isASCII_; }
    /// ASCII digits; a line with other characters may have digits of other scripts, which the rules accept too.
    std::size_t digits() const { return digits_; }
    bool has(char c) const { return present_[static_cast<unsigned char>(c)]; }
    bool has(std::string_view literal) const {
        return mayHave(literal) && (literal.size() == 1 || line_.find(literal) != line_.npos);
    }
    /// In either case. True for every line that is not ASCII, as more than one character folds to ASCII letters: the
    /// kelvin sign to k, the long s to s, the sharp s to two of them.
    bool hasWord(std::string_view lowerCase) const;

private:
    bool mayHave(std::string_view literal) const;

    std::string_view line_;
    std::array<bool, 256> present_{};
    std::bitset<1024> pairs_; // of neighbours in lower case, by a hash
    std::size_t digits_ = 0;
    bool isASCII_ = true;
};

}
