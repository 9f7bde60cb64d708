#include <TavaroCore/Privacy/Private/WrappedValues.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/KeyFiles.h>
#include <TavaroCore/Privacy/Private/LabelledValues.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>

namespace tavaro {

namespace {

using Expected = LinesAbove::Expected;

LabelKind labelOf(Expected expected) {
    switch (expected) {
    case Expected::password: return LabelKind::password;
    case Expected::phrase: return LabelKind::phrase;
    case Expected::code: return LabelKind::code;
    default: return LabelKind::secret;
    }
}

Expected expectedBehind(LabelKind label) {
    switch (label) {
    case LabelKind::password: return Expected::password;
    case LabelKind::phrase: return Expected::phrase;
    case LabelKind::code: return Expected::code;
    case LabelKind::secret: return Expected::secret;
    case LabelKind::weak: break;
    }
    return Expected::nothing;
}

/// The line without blanks, the dash of a list, quotes, and `value:` before it.
ExpectedValue bareValue(std::string_view text) {
    std::size_t start = pastBlanks(text, 0), end = text.size();
    if (text.substr(start).starts_with("- ")) start = pastBlanks(text, start + 2);
    for (std::string_view const label : {"value:", "value =", "value=", "\"value\":"}) {
        if (text.substr(start).starts_with(label)) start = pastBlanks(text, start + label.size());
    }
    while (start < end && isQuote(text[start])) ++start;
    while (end > start && (isBlank(text[end - 1]) || isAnyOf(text[end - 1], "\"',;"))) --end;
    return {SensitiveKind::secret, start, end};
}

bool isTokenText(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return isAlphanumeric(c) || isAnyOf(c, "+/_-.="); });
}

std::optional<ExpectedValue> restOfSecret(std::string_view text) {
    constexpr std::size_t shortest = 6;
    auto const value = bareValue(text);
    auto const rest = text.substr(value.start, value.end - value.start);
    auto const equals = rest.find('=');
    bool const isSetting = equals != rest.npos && rest.find_first_not_of('=', equals) != rest.npos;
    auto const hasDigit = std::any_of(rest.begin(), rest.end(), isDigit);
    auto const hasCapital = std::any_of(rest.begin(), rest.end(), isUpper);
    bool const isRest = rest.size() >= shortest && isTokenText(rest) && !isSetting && (hasDigit || hasCapital) &&
                        !SensitiveText::isDottedIdentifier(rest);
    return isRest && (hasDigit || !SensitiveText::isName(rest)) ? std::optional(value) : std::nullopt;
}

}

std::optional<ExpectedValue> valueExpected(std::string_view text, LinesAbove const& above) {
    if (above.expected == Expected::nothing || above.expected == Expected::bodyOfPublicFile) return std::nullopt;
    if (above.expected == Expected::bodyOfKeyFile) {
        auto const body = bodyOfKeyFile(text, KeyFilePlace::inside);
        if (!body) return std::nullopt;
        return ExpectedValue{SensitiveKind::privateKey, body->start, body->end};
    }
    if (above.expected == Expected::restOfSecret) return restOfSecret(text);
    auto const value = bareValue(text);
    bool const isNamed = text.substr(0, value.start).find("value") != text.npos;
    LabelledValue const labelled{labelOf(above.expected), isNamed ? ValueForm::colon : ValueForm::nextLine, value.start,
                                 value.end, true};
    if (value.end <= value.start || !isSecret(labelled, text)) return std::nullopt;
    return value;
}

bool isSecretThatWraps(std::string_view fromFinding, std::size_t length) {
    constexpr std::size_t shortest = 20;
    auto const finding = fromFinding.substr(0, length);
    return length >= shortest && length == fromFinding.size() && isTokenText(finding) && !finding.ends_with('=') &&
           SensitiveText::looksRandom(finding);
}

LinesAbove expectedBelow(std::string_view text, LinesAbove const& above, bool endsWithSecret) {
    if (beginsPublicFile(text)) return {Expected::bodyOfPublicFile};
    if (endsFile(text)) return {};
    if (beginningOfKeyFile(text) || text.starts_with("Private-Lines:")) return {Expected::bodyOfKeyFile};
    bool const isInFile = above.expected == Expected::bodyOfKeyFile || above.expected == Expected::bodyOfPublicFile;
    bool const isHeader = text.starts_with("Proc-Type:") || text.starts_with("DEK-Info:") || text.empty();
    if (isInFile && (isHeader || bodyOfKeyFile(text, KeyFilePlace::inside))) return above;
    if (bodyOfKeyFile(text, KeyFilePlace::unknown)) return {Expected::bodyOfKeyFile};
    constexpr std::size_t longestLabelLine = 60;
    auto const last = text.find_last_not_of(" \t\"");
    bool const mayAnnounce = text.size() <= longestLabelLine || (last != text.npos && isAnyOf(text[last], ":="));
    if (auto const label = mayAnnounce ? labelAtEnd(text, wordsOf(text)) : std::nullopt)
        return {expectedBehind(*label)};
    if (endsWithSecret) return {Expected::restOfSecret};
    bool const isList = above.expected == Expected::secret && valueExpected(text, above);
    return isList ? above : LinesAbove{};
}

}
