#include <TavaroCore/Records/JSONReader.h>

#include <TavaroCore/Records/Decimal.h>
#include <TavaroCore/Records/JSONError.h>

#include <bitset>
#include <charconv>
#include <cmath>
#include <cstring>

#include <fmt/format.h>
#include <simdjson.h>

namespace tavaro {

namespace {

constexpr std::size_t deepestNesting = 1024;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::uint64_t eightBytes(char const* from) {
    std::uint64_t bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

// Eight characters at once, little-endian.
bool areDigits(std::uint64_t text) {
    return (((text + 0x4646464646464646) | (text - 0x3030303030303030)) & 0x8080808080808080) == 0;
}
std::uint32_t valueOfDigits(std::uint64_t text) {
    constexpr std::uint64_t mask = 0x000000FF000000FF, hundredAndMillion = 0x000F424000000064,
                            oneAndTenThousand = 0x0000271000000001;
    text -= 0x3030303030303030;
    text = text * 10 + (text >> 8);
    return static_cast<std::uint32_t>(((text & mask) * hundredAndMillion + (text >> 16 & mask) * oneAndTenThousand) >>
                                      32);
}
/// Whether one of them is a quote, a backslash, or a control character.
bool endPlainText(std::uint64_t text) {
    constexpr std::uint64_t ones = 0x0101010101010101, highs = 0x8080808080808080;
    auto const hasZero = [](std::uint64_t x) { return (x - ones) & ~x & highs; };
    return hasZero(text ^ ones * '"') | hasZero(text ^ ones * '\\') | ((text - ones * 0x20) & ~text & highs);
}

void appendUTF8(std::string& out, std::uint32_t point) {
    auto const append = [&](std::uint32_t byte) { out += static_cast<char>(byte); };
    if (point < 0x80) return append(point);
    if (point < 0x800) {
        append(0xC0 | point >> 6);
    } else {
        if (point < 0x10000) {
            append(0xE0 | point >> 12);
        } else {
            append(0xF0 | point >> 18);
            append(0x80 | (point >> 12 & 0x3F));
        }
        append(0x80 | (point >> 6 & 0x3F));
    }
    append(0x80 | (point & 0x3F));
}

}

std::string_view JSONReader::nameOf(Type type) {
    constexpr std::string_view names[] = {"an object", "an array", "a string", "a number", "true or false", "null"};
    return names[static_cast<int>(type)];
}

void JSONReader::failMalformed() { throw JSONError(JSONError::Kind::malformed, "the text is not valid JSON"); }

void JSONReader::failMemory() { throw JSONError(JSONError::Kind::tooLarge, "it would take more than 1 GiB of memory"); }

void JSONReader::failType(Type wanted) const {
    throw JSONError(JSONError::Kind::wrongType, fmt::format("expected {}, found {}", nameOf(wanted), nameOf(type())));
}

JSONReader::JSONReader(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {
    skipSpace();
    while (end_ != at_ && isSpace(end_[-1])) --end_;
    if (at_ == end_) throw JSONError(JSONError::Kind::malformed, "the text is empty");
    if (!simdjson::validate_utf8(at_, static_cast<std::size_t>(end_ - at_)))
        throw JSONError(JSONError::Kind::malformed, "the text is not valid UTF-8");
    bool const isScalar = *at_ == '"' || *at_ == '-' || isDigit(*at_) || *at_ == 't' || *at_ == 'f' || *at_ == 'n';
    if (isScalar) throw JSONError(JSONError::Kind::wrongType, "expected an object, found a single value");
    bool const isOpen = *at_ == '{' || *at_ == '[';
    if (!isOpen || (end_[-1] != '}' && end_[-1] != ']')) failMalformed();
}

JSONReader::Type JSONReader::type() const {
    switch (at_ == end_ ? '\0' : *at_) {
    case '{': return Type::object;
    case '[': return Type::array;
    case '"': return Type::string;
    case 't':
    case 'f': return Type::boolean;
    case 'n': return Type::null;
    case '-': return Type::number;
    default:
        if (at_ != end_ && isDigit(*at_)) return Type::number;
        failMalformed();
    }
}

void JSONReader::object(FunctionRef<void(std::string_view)> visit) {
    for (bool has = enterObject(); has; has = nextMember()) {
        auto const name = key();
        auto const* const value = at_;
        visit(name);
        if (at_ == value) skip();
    }
}

void JSONReader::array(FunctionRef<void(std::size_t)> visit) {
    std::size_t index = 0;
    for (bool has = enterArray(); has; has = nextElement()) {
        auto const* const value = at_;
        visit(index++);
        if (at_ == value) skip();
    }
}

std::optional<JSONReader::Halves> JSONReader::halves() const {
    constexpr std::ptrdiff_t fewest = 1 << 20; // bytes; less is read sooner than a thread starts
    constexpr std::string_view border = "},{";
    if (end_ - at_ < fewest || *at_ != '[') return std::nullopt;
    auto const* const close = static_cast<char const*>(std::memchr(at_, ']', static_cast<std::size_t>(end_ - at_)));
    if (!close || close - at_ < fewest || close[-1] != '}') return std::nullopt;
    std::string_view const elements(at_ + 1, static_cast<std::size_t>(close - at_ - 1));
    auto const middle = elements.find(border, elements.size() / 2);
    if (middle == elements.npos) return std::nullopt;
    return Halves{elements.substr(0, middle + 1), elements.substr(middle + 2)};
}

bool JSONReader::anotherElement() {
    skipSpace();
    if (at_ == end_) return false;
    if (*at_++ != ',') failMalformed();
    skipSpace();
    return true;
}

std::string_view JSONReader::key() {
    if (*at_ != '"') failMalformed();
    auto const name = text();
    skipSpace();
    if (at_ == end_ || *at_ != ':') failMalformed();
    ++at_;
    skipSpace();
    return name;
}

std::string_view JSONReader::string() {
    if (*at_ != '"') failType(Type::string);
    return text();
}

/// Past the plain characters of a text, to its quote or its first escape.
char const* JSONReader::skipText() {
    while (end_ - at_ >= 8 && !endPlainText(eightBytes(at_))) at_ += 8;
    while (at_ != end_ && *at_ != '"' && *at_ != '\\') {
        if (static_cast<unsigned char>(*at_) < 0x20) failMalformed();
        ++at_;
    }
    if (at_ == end_) failMalformed();
    return at_;
}

std::string_view JSONReader::text() {
    auto const* const begin = ++at_;
    auto const* const end = skipText();
    if (*end == '\\') return unescaped(begin);
    ++at_;
    return {begin, static_cast<std::size_t>(end - begin)};
}

std::string_view JSONReader::unescaped(char const* begin) {
    auto& out = unescaped_.emplace_back();
    for (;;) {
        auto const* const end = skipText();
        out.append(begin, end);
        ++at_;
        if (*end == '"') {
            takeMemory(sizeof(std::string) + out.capacity());
            return out;
        }
        appendEscape(out);
        begin = at_;
    }
}

void JSONReader::appendEscape(std::string& out) {
    constexpr std::string_view letters = "\"\\/bfnrt", meanings = "\"\\/\b\f\n\r\t";
    if (at_ == end_) failMalformed();
    char const letter = *at_++;
    if (auto const known = letters.find(letter); known != std::string_view::npos) {
        out += meanings[known];
        return;
    }
    if (letter != 'u') failMalformed();
    auto point = hexEscape();
    if (point >= 0xD800 && point < 0xDC00) {
        if (end_ - at_ < 6 || at_[0] != '\\' || at_[1] != 'u') failMalformed(); // half a pair is no character
        at_ += 2;
        auto const low = hexEscape();
        if (low < 0xDC00 || low > 0xDFFF) failMalformed();
        point = 0x10000 + ((point - 0xD800) << 10) + (low - 0xDC00);
    } else if (point >= 0xDC00 && point <= 0xDFFF) {
        failMalformed();
    }
    appendUTF8(out, point);
}

std::uint32_t JSONReader::hexEscape() {
    std::uint32_t value = 0;
    if (end_ - at_ < 4) failMalformed();
    auto const [stopped, code] = std::from_chars(at_, at_ + 4, value, 16);
    if (code != std::errc{} || stopped != at_ + 4) failMalformed();
    at_ += 4;
    return value;
}

JSONReader::Number JSONReader::scanNumber() const {
    constexpr std::ptrdiff_t digitsThatFit = 19;
    Number number;
    auto const* at = at_;
    number.isNegative = *at == '-';
    at += number.isNegative;
    if (!isDigit(*at)) number.isNegative ? failMalformed() : failType(Type::number);
    auto const* const whole = at;
    while (isDigit(*at)) number.digits = number.digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
    auto wholeDigits = at - whole;
    if (*whole == '0' && wholeDigits-- > 1) failMalformed();
    std::ptrdiff_t fractionDigits = 0;
    if (*at == '.') {
        auto const* const fraction = ++at;
        for (; end_ - at >= 8 && areDigits(eightBytes(at)); at += 8)
            number.digits = number.digits * 100'000'000 + valueOfDigits(eightBytes(at));
        while (isDigit(*at)) number.digits = number.digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
        fractionDigits = at - fraction;
        if (fractionDigits == 0) failMalformed();
        number.isWhole = false;
    }
    number.isExact = wholeDigits + fractionDigits <= digitsThatFit;
    number.exponent = -fractionDigits;
    if (*at == 'e' || *at == 'E') {
        ++at;
        bool const isSmall = *at == '-';
        if (*at == '-' || *at == '+') ++at;
        if (!isDigit(*at)) failMalformed();
        std::int64_t exponent = 0;
        for (; isDigit(*at); ++at) exponent = std::min<std::int64_t>(exponent * 10 + (*at - '0'), 100'000'000);
        number.exponent += isSmall ? -exponent : exponent;
        number.isWhole = false;
    }
    number.end = at;
    return number;
}

double JSONReader::valueOf(Number const& number) const {
    if (number.isExact) {
        if (auto const value = nearestDouble(number.digits, number.exponent))
            return number.isNegative ? -*value : *value;
    }
    double value = 0;
    auto const code = std::from_chars(at_, number.end, value).ec;
    if (code == std::errc{}) return value;
    // Too small is zero, too large is nothing that can be held.
    auto const length = number.end - at_;
    if (number.exponent + length < 0) return number.isNegative ? -0.0 : 0.0;
    throw JSONError(JSONError::Kind::wrongType, "the number cannot be held in 64-bit floating point");
}

double JSONReader::number() {
    auto const number = scanNumber();
    double const value = valueOf(number);
    at_ = number.end;
    return value;
}

std::int64_t JSONReader::integer() {
    if (auto const whole = wholeNumber()) return *whole;
    auto const number = scanNumber();
    double const real = valueOf(number);
    if (real != std::floor(real)) throw JSONError(JSONError::Kind::wrongType, "expected a whole number");
    if (std::abs(real) >= 0x1p63) throw JSONError(JSONError::Kind::wrongType, "the number does not fit in 64 bits");
    at_ = number.end;
    return static_cast<std::int64_t>(real);
}

std::optional<std::int64_t> JSONReader::wholeNumber() {
    auto const number = scanNumber();
    std::int64_t value = 0;
    if (!number.isWhole || std::from_chars(at_, number.end, value).ec != std::errc{}) return std::nullopt;
    if (value == 0 && number.isNegative) return std::nullopt; // only a real one is written back with its sign
    at_ = number.end;
    return value;
}

bool JSONReader::boolean() {
    if (*at_ == 't') {
        takeWord("true");
        return true;
    }
    if (*at_ != 'f') failType(Type::boolean);
    takeWord("false");
    return false;
}

void JSONReader::takeWord(std::string_view word) {
    auto const rest = static_cast<std::size_t>(end_ - at_);
    if (rest < word.size() || std::string_view(at_, word.size()) != word) failMalformed();
    at_ += word.size();
}

void JSONReader::skip() {
    std::bitset<deepestNesting> isObject;
    std::size_t depth = 0;
    for (;;) {
        bool hasValue = false; // inside the one just entered
        switch (type()) {
        case Type::object:
        case Type::array: {
            if (depth == deepestNesting) throw JSONError(JSONError::Kind::malformed, "the JSON is nested too deeply");
            bool const entersObject = *at_ == '{';
            hasValue = entersObject ? enterObject() : enterArray();
            if (hasValue) isObject[depth++] = entersObject;
            break;
        }
        case Type::string: text(); break;
        case Type::number: at_ = scanNumber().end; break;
        case Type::boolean: boolean(); break;
        case Type::null: takeWord("null"); break;
        }
        while (!hasValue) {
            if (depth == 0) return;
            hasValue = isObject[depth - 1] ? nextMember() : nextElement();
            if (!hasValue) --depth;
        }
        if (isObject[depth - 1]) key();
    }
}

void JSONReader::expectEnd() const {
    if (at_ != end_) throw JSONError(JSONError::Kind::malformed, "something follows the end of the JSON");
}

}
