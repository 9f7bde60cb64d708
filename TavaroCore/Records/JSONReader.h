#pragma once

#include <TavaroCore/Records/FunctionRef.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// Walks one JSON text once, front to back, without building a tree or an index, which for an hour's log would be
/// larger than the log. The reader always stands on one value. `object` and `array` step it through the values inside;
/// a value that a visitor does not read is skipped. Every function throws `JSONError` when the text is malformed or the
/// value has another type, and before the values made of it take more memory than a document may. The text must outlive
/// the reader.
class JSONReader {
public:
    /// A few bytes of text can mean a record of hundreds, so that a small file from elsewhere could fill a machine.
    static constexpr std::uint64_t mostMemory = std::uint64_t{1} << 30;

    explicit JSONReader(std::string_view text);
    JSONReader(JSONReader const&) = delete;
    JSONReader& operator=(JSONReader const&) = delete;

    enum class Type { object, array, string, number, boolean, null };
    Type type() const;
    /// "a number", "true or false": as sentences call it.
    static std::string_view nameOf(Type type);

    /// Calls `visit(key)` for each member; the key stays good until the reader ends.
    void object(FunctionRef<void(std::string_view)> visit);
    /// Calls `visit(index)` for each element.
    void array(FunctionRef<void(std::size_t)> visit);

    /// The same walk in single steps: enter, then for each member its key, its value, and `nextMember`. False means
    /// that the object or array is over and the reader stands behind it.
    bool enterObject() { return enter('{', '}', Type::object); }
    bool enterArray() { return enter('[', ']', Type::array); }
    bool nextMember() { return next('}'); }
    bool nextElement() { return next(']'); }
    std::string_view key();
    /// Steps over the key when it is the one expected, prepared as `,"name":`; else stays.
    template<std::size_t size> bool takeKey(std::array<char, size> const& name) {
        constexpr std::size_t length = size - 1; // without the comma
        if (static_cast<std::size_t>(end_ - at_) <= length || !stands(name.data() + 1, length)) return false;
        at_ += length;
        skipSpace();
        return true;
    }

    /// Good until the reader ends.
    std::string_view string();
    /// The same as a value of its own.
    std::string keptString() {
        auto const text = string();
        takeMemory(text.size());
        return std::string(text);
    }
    double number();
    /// Accepts a number with a zero fraction ("3.0") as well.
    std::int64_t integer();
    /// A number that is written whole and fits in 64 bits; none, and stays, when it is another number.
    std::optional<std::int64_t> wholeNumber();
    bool boolean();
    /// Where in the text the reader stands.
    char const* position() const { return at_; }

    /// For who makes values of the text: counts what they are about to take.
    void takeMemory(std::uint64_t bytes) {
        memory_ += bytes;
        if (memory_ > mostMemory) failMemory();
    }
    /// The same for one more element of a list, where the list has to grow for it: until the elements have moved, their
    /// old place is taken, too.
    template<class List> void takeMemoryToGrow(List const& list) {
        constexpr std::uint64_t allocation = 32;
        if (list.size() < list.capacity()) return;
        takeMemory(allocation + 2 * (list.capacity() + 1) * sizeof(typename List::value_type));
    }

    /// The same for one element of a set or map, with what that takes beside it.
    void takeMemoryOfNode(std::uint64_t bytes) {
        constexpr std::uint64_t links = 64;
        takeMemory(bytes + links);
    }

    /// Steps over a null; false, and stays, when the value is something else.
    bool takeNull() { return *at_ == 'n' && (takeWord("null"), true); }
    void skip();

    /// Fails when anything but white space follows the one value.
    void expectEnd() const;

    /// The elements of a long array of objects that hold neither arrays nor brackets in texts, in two parts.
    struct Halves {
        std::string_view first;
        std::string_view second;
    };
    /// None when the value is not such an array; whether its elements are well formed is for their readers to find out.
    std::optional<Halves> halves() const;
    /// A reader of elements with commas between, standing on the first; it must not outlive this one's text. It may
    /// take half of the memory that is left.
    JSONReader elements(std::string_view text) const {
        return {text.data(), text.data() + text.size(), memory_ + (mostMemory - memory_) / 2};
    }
    /// Steps to the next element; false behind the last.
    bool anotherElement();
    /// Steps over the array that the halves are of.
    void stepOver(Halves const& halves) { at_ = halves.second.data() + halves.second.size() + 1; }

private:
    JSONReader(char const* begin, char const* end, std::uint64_t memory) : at_(begin), end_(end), memory_(memory) {}

    struct Number {
        std::uint64_t digits = 0;
        std::int64_t exponent = 0;
        bool isNegative = false;
        bool isWhole = true; // neither a fraction nor an exponent is written
        bool isExact = true; // `digits` holds all of them
        char const* end = nullptr;
    };

#pragma GCC diagnostic push
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wstringop-overread" // GCC 12 with sanitizers takes a key for a single character
#endif
    bool stands(char const* text, std::size_t length) const { return std::memcmp(at_, text, length) == 0; }
#pragma GCC diagnostic pop
    static bool isSpace(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }
    void skipSpace() {
        while (at_ != end_ && isSpace(*at_)) ++at_;
    }
    bool enter(char open, char close, Type type) {
        if (*at_ != open) failType(type);
        ++at_;
        skipSpace();
        if (*at_ != close) return true;
        ++at_;
        return false;
    }
    bool next(char close) {
        if (at_ != end_ && isSpace(*at_)) skipSpace();
        if (at_ == end_) failMalformed();
        char const found = *at_++;
        if (found == ',') {
            skipSpace();
            return true;
        }
        if (found != close) failMalformed();
        return false;
    }
    void takeWord(std::string_view word);
    Number scanNumber() const;
    double valueOf(Number const& number) const;
    std::string_view text();
    std::string_view unescaped(char const* begin);
    char const* skipText();
    void appendEscape(std::string& out);
    std::uint32_t hexEscape();
    [[noreturn]] void failType(Type wanted) const;
    [[noreturn]] static void failMalformed();
    [[noreturn]] static void failMemory();

    // The last byte of the text is its closing bracket, so whatever cannot contain a bracket ends before `end_`.
    char const* at_;
    char const* end_;
    std::deque<std::string> unescaped_;
    std::uint64_t memory_ = 0;
};

}
