#include "MarkedText.h"

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Privacy/TextFindings.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace tavaro {

namespace {

constexpr std::string_view opening = "⟦", closing = "⟧", bar = "¦", lineBreak = "⏎";

/// Adds what a mark holds, "+kind value", to the line.
MarkedSecret readMark(std::string_view mark, std::size_t number, std::string& line) {
    MarkedSecret secret{.line = number, .start = line.size()};
    secret.isInCatalogue = !mark.starts_with('+');
    if (!secret.isInCatalogue) mark.remove_prefix(1);
    auto const blank = mark.find(' ');
    secret.kind = enumNamed<SensitiveKind>(mark.substr(0, blank)).value();
    std::string value(mark.substr(blank + 1));
    value.erase(value.find(bar), bar.size());
    line += value;
    secret.end = line.size();
    return secret;
}

MarkedText parsed(std::string const& entry) {
    auto const tab = entry.find('\t');
    MarkedText result{entry.substr(0, tab), {}, {}};
    std::string_view rest(entry);
    rest.remove_prefix(tab + 1);
    std::string line;
    std::size_t number = 0;
    while (!rest.empty()) {
        if (rest.starts_with(opening)) {
            auto const end = rest.find(closing);
            if (end == rest.npos) throw std::runtime_error("A mark has no end in: " + entry);
            result.secrets.push_back(readMark(rest.substr(opening.size(), end - opening.size()), number, line));
            rest.remove_prefix(end + closing.size());
        } else if (rest.starts_with(lineBreak)) {
            result.text += line + "\n";
            line.clear();
            ++number;
            rest.remove_prefix(lineBreak.size());
        } else {
            line += rest.front();
            rest.remove_prefix(1);
        }
    }
    result.text += line;
    return result;
}

/// Keys, tokens and secrets are one family.
SensitiveKind familyOf(SensitiveKind kind) {
    using enum SensitiveKind;
    return kind == apiKey || kind == token || kind == privateKey ? secret : kind;
}

std::vector<std::string> linesOf(std::string const& text) {
    std::vector<std::string> lines(1);
    for (char const c : text) {
        if (c == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += c;
        }
    }
    return lines;
}

/// What each byte of a text's lines is, as the marks or as the findings have it.
using Bytes = std::vector<std::vector<std::optional<SensitiveKind>>>;

void mark(Bytes& bytes, std::size_t line, std::size_t start, std::size_t end, SensitiveKind kind) {
    for (auto i = start; i < end; ++i) bytes[line][i] = familyOf(kind);
}

void judge(MarkedText const& text, SensitiveTextClassifier& classifier, Judgement& judgement) {
    constexpr std::ptrdiff_t mostAround = 2;
    auto const lines = linesOf(text.text);
    Bytes marked, found;
    for (auto const& line : lines) marked.emplace_back(line.size());
    found = marked;
    for (auto const& secret : text.secrets) mark(marked, secret.line, secret.start, secret.end, secret.kind);
    auto& tally = judgement.byFormat[text.format];
    for (auto const& finding : findingsIn(text.text, classifier, {})) {
        auto const line = static_cast<std::size_t>(finding.line - 1),
                   start = static_cast<std::size_t>(finding.column - 1);
        auto const end = start + static_cast<std::size_t>(finding.length);
        mark(found, line, start, end, finding.kind);
        auto const first = marked[line].begin() + static_cast<std::ptrdiff_t>(start);
        auto const hits = std::count(first, first + finding.length, familyOf(finding.kind));
        bool const isRight = hits > 0 && finding.length - hits <= mostAround;
        ++tally.findings;
        tally.right += isRight;
        if (!isRight) {
            judgement.wrong.push_back(text.format + ": " + std::string(nameOf(finding.kind)) + " [" +
                                      lines[line].substr(start, end - start) + "] in " + lines[line]);
        }
    }
    for (auto const& secret : text.secrets) {
        auto const first = found[secret.line].begin() + static_cast<std::ptrdiff_t>(secret.start);
        auto const length = static_cast<std::ptrdiff_t>(secret.end - secret.start);
        bool const isFound = std::count(first, first + length, familyOf(secret.kind)) == length;
        tally += Tally{1, isFound, secret.isInCatalogue, isFound && secret.isInCatalogue};
        if (isFound) continue;
        auto const& line = lines[secret.line];
        judgement.missed.push_back(text.format + (secret.isInCatalogue ? ": " : ": +") +
                                   std::string(nameOf(secret.kind)) + " [" +
                                   line.substr(secret.start, secret.end - secret.start) + "] in " + line);
    }
}

}

std::vector<MarkedText> readMarkedTexts(std::string const& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("There is no corpus at " + path);
    std::vector<MarkedText> texts;
    for (std::string line; std::getline(file, line);) texts.push_back(parsed(line));
    return texts;
}

Tally& Tally::operator+=(Tally const& other) {
    secrets += other.secrets;
    found += other.found;
    inCatalogue += other.inCatalogue;
    foundInCatalogue += other.foundInCatalogue;
    findings += other.findings;
    right += other.right;
    return *this;
}

Tally Judgement::total() const {
    Tally sum;
    for (auto const& [format, tally] : byFormat) sum += tally;
    return sum;
}

Judgement judge(std::vector<MarkedText> const& texts, RedactionSettings const& settings) {
    SensitiveTextClassifier classifier(settings);
    Judgement judgement;
    for (auto const& text : texts) judge(text, classifier, judgement);
    return judgement;
}

}
