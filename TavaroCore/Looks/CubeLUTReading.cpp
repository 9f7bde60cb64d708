#include <TavaroCore/Looks/CubeLUT.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include <TavaroCore/Errors/Excerpt.h>

namespace tavaro {

namespace {

using Triple = std::array<double, 3>;

constexpr std::size_t longestQuote = 120; // bytes of a bad line that the sentence repeats
constexpr std::size_t longestNumber = 20;
constexpr double leastSpan = 1e-6; // of a domain that values can be divided by

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

/// Takes the first word off a line; the rest begins with the second one.
std::string_view takeWord(std::string_view& line) {
    auto const end = std::find_if(line.begin(), line.end(), isSpace);
    auto const word = line.substr(0, static_cast<std::size_t>(end - line.begin()));
    line = trimmed(line.substr(word.size()));
    return word;
}

/// Too close to zero to be told from it, rather than too large: what the reader of numbers reports as one.
bool isTiny(std::string_view number) {
    auto const exponent = number.find_first_of("eE");
    if (exponent != std::string_view::npos) return number.substr(exponent + 1).starts_with('-');
    auto const digit = number.find_first_of("123456789");
    return digit != std::string_view::npos && number.find('.') < digit;
}

/// A finite number that a float can hold.
std::optional<double> number(std::string_view word) {
    if (word.starts_with('+')) {
        word.remove_prefix(1);
        if (word.starts_with('-')) return std::nullopt;
    }
    double value = 0;
    auto const* const end = word.data() + word.size();
    auto const [stop, problem] = std::from_chars(word.data(), end, value);
    if (stop != end) return std::nullopt;
    if (problem == std::errc::result_out_of_range) return isTiny(word) ? std::optional(0.0) : std::nullopt;
    if (problem != std::errc() || !(std::abs(value) <= std::numeric_limits<float>::max())) return std::nullopt;
    return value;
}

std::optional<Triple> triple(std::string_view line) {
    Triple result{};
    for (auto& value : result) {
        auto const read = number(takeWord(line));
        if (!read) return std::nullopt;
        value = *read;
    }
    return line.empty() ? std::optional(result) : std::nullopt;
}

std::string unquoted(std::string_view title) {
    if (title.size() >= 2 && title.front() == '"' && title.back() == '"') title = title.substr(1, title.size() - 2);
    return std::string(title);
}

class Reader {
public:
    CubeLUT read(std::string_view text) {
        if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
        while (!text.empty()) {
            auto const end = std::min(text.find_first_of("\r\n"), text.size());
            readLine(trimmed(text.substr(0, end)));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        checkSize();
        bringToUnitDomain();
        return std::move(table_);
    }

private:
    void readLine(std::string_view line) {
        if (line.empty() || line.front() == '#') return;
        auto const isNumber = line.front() <= '9'; // no keyword begins with what a number can begin with
        if (isNumber || !readKeyword(line)) readEntry(line);
    }

    bool readKeyword(std::string_view line) {
        auto rest = line;
        auto const keyword = takeWord(rest);
        if (keyword == "TITLE")
            table_.title = unquoted(rest);
        else if (keyword == "LUT_3D_SIZE")
            readSize(line, rest);
        else if (keyword == "DOMAIN_MIN")
            domainMin_ = requiredTriple(line, rest);
        else if (keyword == "DOMAIN_MAX")
            domainMax_ = requiredTriple(line, rest);
        else
            return keyword == "LUT_1D_SIZE" || keyword == "LUT_3D_INPUT_RANGE" || keyword == "LUT_1D_INPUT_RANGE";
        return true;
    }

    void readSize(std::string_view line, std::string_view word) {
        long long value = 0;
        auto const* const end = word.data() + word.size();
        auto const [stop, problem] = std::from_chars(word.data(), end, value);
        if (word.empty() || stop != end) throw CubeLUT::ParseError::badLine(line);
        if (problem == std::errc::result_out_of_range)
            value = word.starts_with('-') ? 0 : std::numeric_limits<long long>::max();
        size_ = value;
        sizeWord_ = word;
    }

    static Triple requiredTriple(std::string_view line, std::string_view rest) {
        auto const result = triple(rest);
        if (!result) throw CubeLUT::ParseError::badLine(line);
        return *result;
    }

    void readEntry(std::string_view line) {
        auto const entry = triple(line);
        if (!entry) throw CubeLUT::ParseError::badLine(line);
        count_ += 3;
        // More than any table holds is only counted.
        constexpr std::size_t most = 3ULL * CubeLUT::largestSize * CubeLUT::largestSize * CubeLUT::largestSize;
        if (count_ > most) return;
        for (double const value : *entry) table_.values.push_back(static_cast<float>(value));
    }

    void checkSize() {
        if (size_ < 2) throw CubeLUT::ParseError::missingSize();
        if (size_ > CubeLUT::largestSize) throw CubeLUT::ParseError::tooLarge(sizeWord_);
        table_.size = static_cast<int>(size_);
        auto const n = static_cast<std::size_t>(size_);
        if (count_ != 3 * n * n * n) throw CubeLUT::ParseError::wrongCount(3 * n * n * n, count_);
    }

    void bringToUnitDomain() {
        for (std::size_t c = 0; c < 3; ++c) {
            auto const low = domainMin_[c];
            auto const span = domainMax_[c] - low;
            if ((low == 0 && span == 1) || !(span > leastSpan)) continue;
            for (auto i = c; i < table_.values.size(); i += 3) {
                auto const value = (static_cast<double>(table_.values[i]) - low) / span;
                constexpr double most = std::numeric_limits<float>::max();
                table_.values[i] = static_cast<float>(std::clamp(value, -most, most));
            }
        }
    }

    CubeLUT table_;
    long long size_ = 0;
    std::string_view sizeWord_;
    std::size_t count_ = 0; // of numbers
    Triple domainMin_{0, 0, 0};
    Triple domainMax_{1, 1, 1};
};

}

CubeLUT CubeLUT::parse(std::string_view text) { return Reader().read(text); }

CubeLUT::ParseError CubeLUT::ParseError::missingSize() {
    return {Kind::missingSize, "This isn't a 3D .cube file (no LUT_3D_SIZE)."};
}

CubeLUT::ParseError CubeLUT::ParseError::badLine(std::string_view line) {
    return {Kind::badLine, "Couldn't read this line of the .cube file: " + excerpt(line, longestQuote)};
}

CubeLUT::ParseError CubeLUT::ParseError::tooLarge(std::string_view size) {
    return {Kind::tooLarge,
            fmt::format("{}³ LUT is larger than Tavaro supports ({}³).", excerpt(size, longestNumber), largestSize)};
}

CubeLUT::ParseError CubeLUT::ParseError::wrongCount(std::size_t expected, std::size_t actual) {
    return {Kind::wrongCount, fmt::format("The .cube file should have {} entries but has {}", expected, actual)};
}

}
