#include <TavaroCore/Privacy/Private/LabelledValues.h>

#include <TavaroCore/Privacy/Characters.h>

#include <algorithm>
#include <string>

namespace tavaro {

namespace {

/// Reads on from a label to its value.
class ValueReader {
public:
    ValueReader(std::string_view text, std::span<Word const> words, SecretLabel const& label)
        : text_(text)
        , words_(words)
        , label_(label)
        , at_(words[label.end - 1].end) {}

    std::optional<LabelledValue> read() {
        if (isOfSomethingElse() || !passProperties()) return std::nullopt;
        passClosingMarks();
        if (!passSeparator()) return std::nullopt;
        passWordsBeforeValue();
        separatedAs_ = value_.form;
        readValue();
        if (value_.end <= value_.start) return std::nullopt;
        value_.label = label_.kind;
        value_.isAlone = isAlone();
        value_.isInCall = isInCall();
        value_.isOfShell = isOfShell();
        return isVerb() ? std::nullopt : std::optional(value_);
    }

    /// Whether nothing follows the label but the sign that its value comes.
    bool isLast() {
        if (isOfSomethingElse() || !passProperties()) return false;
        passClosingMarks();
        auto at = pastBlanks(text_, at_);
        if (at < text_.size() && isAnyOf(text_[at], ":=")) ++at;
        if (at < text_.size() && text_[at] == '"') ++at;
        return pastBlanks(text_, at) == text_.size();
    }

private:
    char at(std::size_t place) const { return place < text_.size() ? text_[place] : '\0'; }
    std::string_view wordText(std::size_t i) const {
        return text_.substr(words_[i].start, words_[i].end - words_[i].start);
    }

    /// "Pass UTF8 to …", "do not pass iso8859-1 encoded …"
    bool isVerb() const {
        bool const isWord = label_.end == label_.first + 1 && wordText(label_.first).substr(1) == "ass";
        return value_.form == ValueForm::adjacent && isWord && !value_.isAlone;
    }

    /// "public key", "</password>", "no password", "${PASSWORD", "Event::Pass".
    bool isOfSomethingElse() const {
        auto const start = words_[label_.first].start;
        auto first = label_.first;
        while (first > 0 && words_[first].isJoined) --first;
        auto const ahead = text_.substr(0, start), aheadOfName = text_.substr(0, words_[first].start);
        if (ahead.ends_with("</") || ahead.ends_with("::") || aheadOfName.ends_with("${")) return true;
        constexpr std::string_view others[] = {"public",   "Public", "PUBLIC", "no",   "foreign", "FOREIGN",
                                               "forgot",   "reset",  "arn",    "host", "Host",    "Socket",
                                               "cache",    "Cache",  "CACHE",  "hash", "sort",    "registry",
                                               "Registry", "ssh",    "SSH",    "gpg",  "GPG",     "PGP"};
        for (auto i = label_.first; i > 0 && words_[i].start - words_[i - 1].end <= 1; --i) {
            if (std::find(std::begin(others), std::end(others), wordText(i - 1)) != std::end(others)) return true;
            if (!words_[i - 1].isJoined) break;
        }
        return false;
    }

    /// Words joined to the label; false when they say that the value only is about the secret.
    bool passProperties() {
        for (auto i = label_.end; i < words_.size() && words_[i].isJoined; ++i) {
            bool const isWord = !isDigit(text_[words_[i].start]);
            if (text_[words_[i].start - 1] == '.' && words_[i].start > words_[i - 1].end && isWord) return false;
            if (namesProperty(wordText(i))) return false;
            value_.isOfLongerName |= isWord && !isVariant(wordText(i));
            at_ = words_[i].end;
            next_ = i + 1;
        }
        next_ = std::max(next_, label_.end);
        if (at(at_) == '(' || at(at_) == '[') return false; // "getToken(", "tokens["
        auto const next = pastBlanks(text_, at_);
        bool const isSentence = next == at_ + 1 && next_ < words_.size() && words_[next_].start == next;
        return !(isSentence && namesProperty(wordText(next_)));
    }

    /// "PASSWORD_PROD", "secret_key_base": still the secret itself.
    static bool isVariant(std::string_view word) {
        constexpr std::string_view variants[] = {"admin", "app",        "base",  "db",      "dev",    "id",   "key",
                                                 "keys",  "live",       "local", "main",    "master", "new",  "old",
                                                 "prod",  "production", "root",  "staging", "test",   "user", "value"};
        std::string lowered(word);
        std::transform(lowered.begin(), lowered.end(), lowered.begin(), lower);
        return std::binary_search(std::begin(variants), std::end(variants), lowered);
    }

    /// The quote, bracket and backslashes behind a label: `\"token\"`, `['token']`, `$env['token']`.
    void passClosingMarks() {
        while (isAnyOf(at(at_), "\\\"'`])*") && at_ < text_.size()) {
            isQuotedLabel_ |= isQuote(text_[at_]);
            isBracketed_ |= text_[at_] == ']';
            ++at_;
        }
    }

    bool passSeparator() {
        auto const blanks = pastBlanks(text_, at_) - at_;
        auto const place = at_ + blanks;
        auto const rest = text_.substr(place);
        if (rest.empty()) return false;
        if (auto const end = endOfPrompt(rest); end > 0 && blanks == 1) return take(place + end, ValueForm::colon);
        if (rest.starts_with("value=\"") || rest.starts_with("value='")) return take(place + 6, ValueForm::quoted);
        if (rest.starts_with("::") || rest.starts_with("==") || rest.starts_with("=~")) return false;
        if (rest.starts_with(":=")) return take(place + 2, ValueForm::assigned);
        if (rest.starts_with("://")) return false;
        if (rest.starts_with("=>")) return take(place + 2, ValueForm::assigned);
        if (rest.starts_with("||=")) return take(place + 3, ValueForm::assigned);
        if (rest[0] == ':') return take(place + 1, ValueForm::colon);
        if (rest[0] == '=') return take(place + 1, isSetting(blanks) ? ValueForm::setting : ValueForm::assigned);
        if (rest[0] == '>' && blanks == 0) return isInTag() && take(place + 1, ValueForm::tag);
        if (rest[0] == ',' && isQuotedLabel_ && !isBracketed_) return takeArgument(place + 1);
        if (rest[0] == '|' || blanks > 1 || at(at_) == '\t') return take(place + (rest[0] == '|'), ValueForm::cell);
        if (blanks != 1 || isQuotedLabel_) return false;
        return takeWord(place);
    }

    /// "Secret Access Key [None]: x", "Password (again): x": past what a program asks, and its colon; 0 if nothing.
    static std::size_t endOfPrompt(std::string_view rest) {
        constexpr std::size_t longest = 32;
        if (rest[0] != '[' && rest[0] != '(') return 0;
        auto const close = rest.substr(0, longest).find(rest[0] == '[' ? "]:" : "):");
        return close == rest.npos ? 0 : close + 2;
    }

    /// `<password>`, `<entry key="password">`
    bool isInTag() const {
        auto const ahead = text_.substr(0, words_[label_.first].start);
        auto const open = ahead.rfind('<');
        return open != ahead.npos && ahead.find('>', open) == ahead.npos;
    }

    bool take(std::size_t place, ValueForm form) {
        at_ = pastBlanks(text_, place);
        value_.form = form;
        return at_ < text_.size();
    }

    /// `define('PASSWORD', 'x')`
    bool takeArgument(std::size_t place) {
        return take(place, ValueForm::quoted) && isQuote(text_[at_]) && std::count(text_.begin(), text_.end(), '(') > 0;
    }

    /// "--password x", "password is x", "the password for the door: x", "password x"
    bool takeWord(std::size_t place) {
        auto const start = words_[label_.first].start;
        auto begin = start;
        while (begin > 0 && !isBlank(text_[begin - 1])) --begin;
        if (text_[begin] == '-' && at(place) != '-') return take(place, ValueForm::flag);
        if (isQuote(text_[place])) return take(place, ValueForm::sentence);
        constexpr std::size_t mostWords = 6;
        for (auto i = next_; i < words_.size() && i < next_ + mostWords; ++i) {
            auto const end = words_[i].end;
            auto const gap = text_.substr(words_[i - 1].end, words_[i].start - words_[i - 1].end);
            if (gap.find_first_not_of(" \t'-") != gap.npos) break;
            bool const isIs = isCopula(wordText(i));
            if (isQuote(at(end)) || at(end) == '=') break; // another label
            if (at(pastBlanks(text_, end)) == ':' && at(end) != '\\') {
                auto const next = pastBlanks(text_, pastBlanks(text_, end) + 1);
                if (next > pastBlanks(text_, end) + 1) return take(next, ValueForm::sentence);
            }
            if (isIs && i + 1 < words_.size() && !isCopula(wordText(i + 1))) return take(end, ValueForm::sentence);
        }
        return take(place, ValueForm::adjacent);
    }

    /// "X=y", "--x=y", "a=b;x=y", "?x=y"; "x = y" is code as well.
    bool isSetting(std::size_t blanks) const {
        auto const after = words_[next_ - 1].end;
        return blanks == 0 && after < text_.size() && !isBlank(at(pastBlanks(text_, at_) + 1));
    }

    /// What is between separator and value: the scheme of a header, a type, an anchor, a number of a format.
    void passWordsBeforeValue() {
        constexpr std::string_view schemes[] = {"Basic ",  "basic ",  "Token ", "token ",  "ApiKey ",
                                                "apikey ", "Apikey ", "N'",     "Bearer ", "bearer ",
                                                "base64:", "1 ",      "is "};
        for (auto const scheme : schemes) {
            if (!text_.substr(at_).starts_with(scheme)) continue;
            auto const next = pastBlanks(text_, at_ + scheme.size());
            if (scheme == "base64:") break;
            at_ = scheme == "N'" ? at_ + 1 : next;
            break;
        }
        if (at(at_) == '&' && isLetter(at(at_ + 1))) passUntilBlank(); // an anchor of YAML
        if (value_.form == ValueForm::colon) passType();
    }

    void passUntilBlank() {
        auto const blank = text_.find(' ', at_);
        if (blank != text_.npos) at_ = pastBlanks(text_, blank);
    }

    /// `token: String = "x"`
    void passType() {
        auto end = at_;
        while (isAlphanumeric(at(end)) || isAnyOf(at(end), "_.?<>[]") || isBeyondASCII(at(end))) {
            if (end == text_.size()) return;
            ++end;
        }
        auto const sign = pastBlanks(text_, end);
        auto const quote = pastBlanks(text_, sign + 1);
        if (end > at_ && at(sign) == '=' && sign + 1 < text_.size() && isQuote(at(quote))) at_ = quote;
    }

    void readValue() {
        auto quote = at_;
        while (at(quote) == '\\') ++quote;
        if (isQuote(at(quote))) return readQuoted(quote, quote - at_);
        if (isAnyOf(at(quote), "frbuRLN@$") && isQuote(at(quote + 1)) && at(quote + 2) != at(quote + 1)) {
            return readQuoted(quote + 1, 0); // f"x", b'x', @"x"
        }
        value_.start = at_;
        if (label_.kind == LabelKind::code && isDigit(at(at_))) {
            value_.end = endOfCode();
        } else if (label_.kind == LabelKind::phrase && isRestWords()) {
            value_.end = text_.size();
        } else if (value_.form == ValueForm::tag) {
            value_.end = std::min(text_.find('<', at_), text_.size());
        } else if (value_.form == ValueForm::cell) {
            value_.end = endOfCell();
        } else {
            value_.end = endOfPlain();
        }
        while (value_.end > value_.start && isBlank(text_[value_.end - 1])) --value_.end;
    }

    /// Nothing but words up to the line's end, behind a sign that they come.
    bool isRestWords() const {
        auto const rest = text_.substr(at_);
        constexpr std::ptrdiff_t fewestBlanks = 9; // of the phrases that wallets have
        bool const isLoose = value_.form == ValueForm::flag || value_.form == ValueForm::adjacent;
        if (isLoose && std::count(rest.begin(), rest.end(), ' ') < fewestBlanks) return false;
        return std::all_of(rest.begin(), rest.end(),
                           [](char c) { return isAlphanumeric(c) || isBeyondASCII(c) || isAnyOf(c, " -'"); });
    }

    /// Up to the same quote behind as many backslashes.
    void readQuoted(std::size_t quote, std::size_t escapes) {
        bool const hadForm = value_.form == ValueForm::tag;
        if (!hadForm) value_.form = ValueForm::quoted;
        value_.start = value_.end = quote + 1;
        std::size_t backslashes = 0;
        for (auto i = quote + 1; i < text_.size(); ++i) {
            if (text_[i] == text_[quote] && (escapes ? backslashes == escapes : backslashes % 2 == 0)) {
                value_.end = i - (escapes ? escapes : 0);
                after_ = i + 1;
                return;
            }
            backslashes = text_[i] == '\\' ? backslashes + 1 : 0;
        }
        value_.end = text_.size(); // the quote is closed on another line
        isCutOff_ = true;
    }

    /// "719 254": digits, also in two groups.
    std::size_t endOfCode() const {
        auto end = at_;
        while (isDigit(at(end))) ++end;
        auto next = end + 1;
        while (isAnyOf(at(end), " -") && end < text_.size() && isDigit(at(next))) ++next;
        bool const isGroup = next - end - 1 == end - at_ && !isAlphanumeric(at(next));
        return isGroup ? next : isAlphanumeric(at(end)) ? endOfPlain() : end;
    }

    std::size_t endOfCell() const {
        for (auto i = at_; i < text_.size(); ++i) {
            if (text_[i] == '|' || text_[i] == '\t') return i;
            if (text_[i] == ' ' && at(i + 1) == ' ') return i;
        }
        return text_.size();
    }

    std::size_t endOfPlain() const {
        auto const start = words_[label_.first].start;
        bool const isParameter = text_.substr(0, start).find_first_of("?&#") != text_.npos || isFormBody();
        auto const scheme = text_.rfind("://", start);
        bool const isInAddress = scheme != text_.npos && text_.find(' ', scheme) > start;
        auto end = at_;
        for (; end < text_.size(); ++end) {
            char const c = text_[end];
            if (isParameter && text_.substr(end).starts_with("%2F")) break;
            if (isBlank(c) || isQuote(c) || c == ',' || (isParameter && c == '&')) break;
            if (c == ';' &&
                (end + 1 == text_.size() || !isAlphanumeric(text_[end + 1]) || text_.find('=', end) != text_.npos)) {
                break;
            }
            if ((c == '<' && at(end + 1) == '/') || (c == '@' && isInAddress)) break;
        }
        if (isAppPassword()) return at_ + 19;
        while (end > at_ && isClosing(end - 1)) --end;
        return end;
    }

    /// "a=b&password=x" without the address before it.
    bool isFormBody() const {
        auto const next = text_.find('&', at_);
        return next != text_.npos && text_.find('=', next) != text_.npos;
    }

    /// Four times four letters, as mail providers make passwords for programs.
    bool isAppPassword() const {
        auto const rest = text_.substr(at_, 19);
        if (rest.size() < 19 || isAlphanumeric(at(at_ + 19))) return false;
        for (std::size_t i = 0; i < rest.size(); ++i) {
            if (i % 5 == 4 ? rest[i] != ' ' : !isLower(rest[i])) return false;
        }
        return label_.kind == LabelKind::password;
    }

    /// A bracket that was opened before the value, or the end of a sentence.
    bool isClosing(std::size_t place) const {
        char const c = text_[place];
        auto const value = text_.substr(at_, place - at_);
        if (c == '.' || c == ';' || c == ':') return true;
        if (c == ')') return value.find('(') == value.npos;
        if (c == '}') return value.find('{') == value.npos;
        if (c == ']') return value.find('[') == value.npos;
        return c == '\\' && place + 1 == text_.size();
    }

    bool isAlone() const {
        if (isCutOff_) return true;
        auto place = std::max(after_, value_.end);
        while (isAnyOf(at(place), "\\\"'`,;)}]>|.") && place < text_.size()) ++place;
        place = pastBlanks(text_, place);
        if (place >= text_.size() || isAnyOf(text_[place], "#|&<>})]\\")) return true;
        auto const rest = text_.substr(place);
        if (rest.starts_with("//") || rest.starts_with("--") || rest.starts_with("/>")) return true;
        return isOfShell() || isNextName(place);
    }

    /// "user: maria", "user=maria", "'user' => 'maria'", "user = 'maria'"
    bool isNextName(std::size_t place) const {
        auto next = place;
        while (next < text_.size() && !isBlank(text_[next]) && !isAnyOf(text_[next], ":=")) ++next;
        if (next == place || next == text_.size()) return false;
        if (isAnyOf(text_[next], ":=")) return true;
        auto const sign = text_.substr(pastBlanks(text_, next));
        return sign.starts_with("=>") || (sign.starts_with("= ") && isAfterComma(place));
    }

    bool isAfterComma(std::size_t place) const {
        auto before = place;
        while (before > 0 && isBlank(text_[before - 1])) --before;
        return before > 0 && text_[before - 1] == ',';
    }

    /// "PASSWORD=x command", "--password=x argument", "--password x argument"
    bool isOfShell() const {
        if (separatedAs_ != ValueForm::setting) return separatedAs_ == ValueForm::flag;
        auto begin = words_[label_.first].start;
        while (begin > 0 && !isBlank(text_[begin - 1])) --begin;
        auto const name = text_.substr(begin, words_[next_ - 1].end - begin);
        return name.starts_with("--") || std::none_of(name.begin(), name.end(), isLower);
    }

    bool isInCall() const {
        bool const isAssignment = value_.form == ValueForm::setting || value_.form == ValueForm::assigned;
        char const next = at(value_.end);
        if (isAssignment && (next == ')' || (next == ',' && mayBeIdentifier()))) return true;
        auto const before = text_.substr(0, words_[label_.first].start);
        return std::count(before.begin(), before.end(), '(') > std::count(before.begin(), before.end(), ')');
    }

    /// What a call over several lines may pass on: a name, which has no digit, or one and letters of one case.
    bool mayBeIdentifier() const {
        auto const text = text_.substr(value_.start, value_.end - value_.start);
        auto const isOther = [](char c) { return !isAlphanumeric(c) && !isAnyOf(c, "-!#@"); };
        if (std::any_of(text.begin(), text.end(), isOther)) return true;
        auto const digits = std::count_if(text.begin(), text.end(), isDigit);
        bool const isOfBothCases =
            std::any_of(text.begin(), text.end(), isUpper) && std::any_of(text.begin(), text.end(), isLower);
        return digits == 0 || (digits == 1 && !isOfBothCases);
    }

    std::string_view text_;
    std::span<Word const> words_;
    SecretLabel label_;
    ValueForm separatedAs_ = ValueForm::colon; // whatever quotes there are
    std::size_t at_ = 0;
    std::size_t next_ = 0;  // the word after the label and what is joined to it
    std::size_t after_ = 0; // past the quote that closes the value
    bool isQuotedLabel_ = false;
    bool isBracketed_ = false;
    bool isCutOff_ = false;
    LabelledValue value_;
};

}

void forEachLabelledSecret(std::string_view text, std::span<Word const> words,
                           std::function<void(LabelledValue const&)> const& found) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        auto const label = labelAt(text, words, i);
        if (!label) continue;
        auto const value = ValueReader(text, words, *label).read();
        if (value && isSecret(*value, text)) found(*value);
        i = label->end - 1;
    }
}

std::optional<LabelKind> labelAtEnd(std::string_view text, std::span<Word const> words) {
    std::optional<LabelKind> kind;
    for (std::size_t i = 0; i < words.size(); ++i) {
        auto const label = labelAt(text, words, i);
        if (!label) continue;
        if (ValueReader(text, words, *label).isLast()) kind = label->kind;
        i = label->end - 1;
    }
    return kind;
}

}
