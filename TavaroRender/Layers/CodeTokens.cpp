#include <TavaroRender/Layers/Private/CodeTokens.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace tavaro {

namespace {

/// What a family of languages shares. Words are separated by blanks, with one at either end.
struct Grammar {
    std::string_view names;
    std::string_view keywords;
    std::string_view lineComments; // their beginnings
    std::string_view blockBegin;
    std::string_view blockEnd;
    std::string_view quotes = "\"'";
    std::string_view longQuotes; // characters whose triple quotes a string that spans lines
    bool ignoresCase = false;
    bool isMarkup = false;
};

constexpr auto grammars = std::to_array<Grammar>({
    {" c h cpp c++ cc hpp cxx objc m mm ",
     " alignas auto bool break case catch char class co_await co_return co_yield concept const consteval constexpr "
     "continue default delete do double else enum explicit export extern false final float for friend goto if inline "
     "int long mutable namespace new noexcept nullptr operator override private protected public register requires "
     "return short signed sizeof static struct switch template this throw true try typedef typename union unsigned "
     "using virtual void volatile while #include #define #if #ifdef #ifndef #else #endif #pragma ",
     " // ", "/*", "*/"},
    {" js javascript jsx mjs ts typescript tsx ",
     " abstract any as async await boolean break case catch class const continue debugger declare default delete do "
     "else enum export extends false finally for from function get if implements import in instanceof interface let "
     "new null number of private protected public readonly return set static string super switch this throw true try "
     "type typeof undefined var void while yield ",
     " // ", "/*", "*/", "\"'`", "`"},
    {" swift kotlin kt java scala dart groovy cs c# csharp ",
     " abstract actor any as associatedtype async await base bool boolean break byte case catch char class companion "
     "const continue data default defer deinit do double else enum extends extension false fileprivate final finally "
     "float for fun func get guard if implements import in init inout instanceof int interface internal is lateinit "
     "lazy let long mutating namespace new nil null object open operator out override package private protected "
     "protocol public readonly rethrows return sealed self set short some static struct subscript super suspend "
     "switch this throw throws true try typealias using val var virtual void weak when where while ",
     " // ", "/*", "*/", "\"'", "\""},
    {" go golang ",
     " any bool break byte case chan const continue default defer else error fallthrough false for func go goto if "
     "import int interface map nil package range return rune select string struct switch true type uint var ",
     " // ", "/*", "*/", "\"'`", "`"},
    {" rust rs ",
     " as async await bool break const continue crate dyn else enum extern false fn for i32 i64 if impl in let loop "
     "match mod move mut pub ref return self Self static str struct super trait true type u8 u32 u64 unsafe use usize "
     "where while ",
     " // ", "/*", "*/", "\""},
    {" py python python3 ",
     " and as assert async await break case class continue def del elif else except False finally for from global if "
     "import in is lambda match None nonlocal not or pass raise return self True try while with yield ",
     " # ", "", "", "\"'", "\"'"},
    {" rb ruby elixir ex lua r perl pl ",
     " alias and begin break case class def defined? defmodule do else elsif end ensure false for fn function if in "
     "local module my next nil not or redo repeat require rescue retry return self sub super then true undef unless "
     "until use when while yield ",
     " # -- ", "", ""},
    {" sh bash zsh shell console terminal fish dockerfile makefile ",
     " alias break case cat cd continue cp do done echo elif else esac exit export fi for function if in local mkdir "
     "mv read return rm set source sudo then unset until while FROM RUN COPY CMD ENV WORKDIR ",
     " # ", "", ""},
    {" sql psql mysql sqlite ",
     " add all alter and as asc begin between by case commit constraint create cross default delete desc distinct drop "
     "else end exists false foreign from full group having if in index inner insert into is join key left like limit "
     "not null offset on or order outer primary references returning right select set table then true union unique "
     "update using values view when where with ",
     " -- ", "/*", "*/", "\"'", "", true},
    {" css scss less ", " @media @import @keyframes @font-face @supports important ", " // ", "/*", "*/"},
    {" json json5 ", " true false null ", "", "", ""},
    {" yaml yml toml ini conf properties ", " true false null yes no on off ", " # ; ", "", "", "\"'", "\"'"},
    {" html xml svg xhtml vue ", "", "", "<!--", "-->", "\"'", "", false, true},
    {" php ",
     " abstract array as break case catch class const continue default do echo else elseif extends false final fn for "
     "foreach function if implements interface match namespace new null private protected public require return "
     "static switch this throw true try use var while ",
     " // # ", "/*", "*/"},
});

constexpr Grammar unknown{
    "",
    " and as async await break case catch class const continue def default do else enum export extends false False "
    "final finally fn for foreach from func function if implements import in include interface let match module mut "
    "namespace new nil None null or override package private protected pub public return self static struct super "
    "switch then this throw throws true True try type use using var void when where while with yield ",
    " // # ", "/*", "*/"};

std::string lowered(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

bool lists(std::string_view words, std::string_view word) {
    if (word.empty() || word.find(' ') != std::string_view::npos) return false;
    return words.find(' ' + std::string(word) + ' ') != std::string_view::npos;
}

Grammar const& grammarOf(std::string_view language) {
    auto const name = lowered(language);
    auto const found =
        std::find_if(grammars.begin(), grammars.end(), [&](Grammar const& it) { return lists(it.names, name); });
    return found == grammars.end() ? unknown : *found;
}

bool isLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_' || static_cast<signed char>(c) < 0;
}
bool isDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }
bool isBlankByte(char c) { return c == ' ' || c == '\n'; }

class Tokenizer {
public:
    Tokenizer(std::string_view text, Grammar const& grammar) : text_(text), grammar_(grammar) {}

    std::vector<CodeToken> run() {
        while (at_ < text_.size()) step();
        return std::move(tokens_);
    }

private:
    char head() const { return text_[at_]; }
    std::string_view rest() const { return text_.substr(at_); }

    void take(std::size_t end, CodeTokenKind kind) {
        end = std::clamp(end, at_ + 1, text_.size());
        if (!tokens_.empty() && tokens_.back().kind == kind && kind == CodeTokenKind::plain) {
            tokens_.back().end = end;
        } else {
            tokens_.push_back({at_, end, kind});
        }
        at_ = end;
    }

    void step() {
        if (takeComment()) return;
        if (grammar_.isMarkup) {
            stepMarkup();
        } else if (grammar_.quotes.find(head()) != std::string_view::npos) {
            takeString();
        } else if (isDigit(head())) {
            takeNumber();
        } else if (isLetter(head()) ||
                   ((head() == '#' || head() == '@') && at_ + 1 < text_.size() && isLetter(text_[at_ + 1]))) {
            takeWord();
        } else {
            take(at_ + 1, isBlankByte(head()) ? CodeTokenKind::plain : CodeTokenKind::punctuation);
        }
    }

    /// Tags, their attributes and the quoted values of these; other text is plain.
    void stepMarkup() {
        if (head() == '<' || head() == '>') {
            isInTag_ = head() == '<';
            isTagName_ = isInTag_;
            take(at_ + 1, CodeTokenKind::punctuation);
        } else if (isInTag_ && (head() == '"' || head() == '\'')) {
            takeString();
        } else if (isInTag_ && isLetter(head())) {
            take(wordEnd("-:."), isTagName_ ? CodeTokenKind::keyword : CodeTokenKind::type);
            isTagName_ = false;
        } else {
            take(at_ + 1, isInTag_ && !isBlankByte(head()) ? CodeTokenKind::punctuation : CodeTokenKind::plain);
        }
    }

    bool takeComment() {
        if (!grammar_.blockBegin.empty() && rest().starts_with(grammar_.blockBegin)) {
            auto const end = text_.find(grammar_.blockEnd, at_ + grammar_.blockBegin.size());
            take(end == std::string_view::npos ? end : end + grammar_.blockEnd.size(), CodeTokenKind::comment);
            return true;
        }
        for (std::size_t begin = 1; begin < grammar_.lineComments.size();) {
            auto const end = grammar_.lineComments.find(' ', begin);
            auto const sign = grammar_.lineComments.substr(begin, end - begin);
            begin = end + 1;
            // "#" inside a word is part of an address or a colour.
            bool const isApart = sign != "#" || at_ == 0 || isBlankByte(text_[at_ - 1]);
            if (!isApart || !rest().starts_with(sign)) continue;
            take(text_.find('\n', at_), CodeTokenKind::comment);
            return true;
        }
        return false;
    }

    void takeString() {
        char const quote = head();
        bool const isLong = grammar_.longQuotes.find(quote) != std::string_view::npos;
        std::string const triple(3, quote);
        if (isLong && quote != '`' && rest().starts_with(triple)) {
            auto const end = text_.find(triple, at_ + 3);
            return take(end == std::string_view::npos ? end : end + 3, CodeTokenKind::string);
        }
        bool const spansLines = quote == '`';
        std::size_t end = at_ + 1;
        for (; end < text_.size() && text_[end] != quote && (spansLines || text_[end] != '\n'); ++end) {
            if (text_[end] == '\\') ++end;
        }
        take(end < text_.size() && text_[end] == '\n' ? end : end + 1, CodeTokenKind::string);
    }

    void takeNumber() {
        std::size_t end = at_;
        while (end < text_.size() && (isDigit(text_[end]) || isLetter(text_[end]) || text_[end] == '.')) ++end;
        take(end, CodeTokenKind::number);
    }

    std::size_t wordEnd(std::string_view also) const {
        std::size_t end = at_ + 1;
        while (end < text_.size() &&
               (isLetter(text_[end]) || isDigit(text_[end]) || also.find(text_[end]) != std::string_view::npos)) {
            ++end;
        }
        return end;
    }

    void takeWord() {
        auto const end = wordEnd("");
        auto const word = text_.substr(at_, end - at_);
        bool const isKeyword =
            grammar_.ignoresCase ? lists(grammar_.keywords, lowered(word)) : lists(grammar_.keywords, word);
        auto next = end;
        while (next < text_.size() && text_[next] == ' ') ++next;
        bool const isCalled = next < text_.size() && text_[next] == '(';
        bool const isCapital = std::isupper(static_cast<unsigned char>(word.front())) != 0;
        take(end, isKeyword   ? CodeTokenKind::keyword
                  : isCalled  ? CodeTokenKind::function
                  : isCapital ? CodeTokenKind::type
                              : CodeTokenKind::plain);
    }

    std::string_view text_;
    Grammar const& grammar_;
    std::size_t at_ = 0;
    bool isInTag_ = false;
    bool isTagName_ = false;
    std::vector<CodeToken> tokens_;
};

}

std::vector<CodeToken> codeTokens(std::string_view text, std::string_view language) {
    return Tokenizer(text, grammarOf(language)).run();
}

}
