#pragma once

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// Lines of screen text whose privacy is known, shared by the tests and the benchmark.
namespace tavaro {

struct CorpusLine {
    std::optional<SensitiveKind> kind; // of the secret in it; none for a harmless line
    std::string text;
    std::size_t start = 0; // of the secret, in bytes
    std::size_t end = 0;
};

/// Takes every occurrence out; the place of the first.
inline std::size_t taken(std::string& text, std::string_view mark) {
    auto const first = text.find(mark);
    for (auto at = first; at != std::string::npos; at = text.find(mark, at)) text.erase(at, mark.size());
    return first;
}

/// The secrets are made up. Each stands in brackets and is broken by a bar in the file, so that nobody's scanner takes
/// it for a leak.
inline std::vector<CorpusLine> readCorpus(std::string const& folder) {
    std::vector<CorpusLine> corpus;
    auto const read = [&](std::string const& name, auto add) {
        std::ifstream file(folder + "/" + name);
        if (!file) throw std::runtime_error("There is no corpus in " + folder);
        for (std::string line; std::getline(file, line);) add(line);
    };
    read("secret.txt", [&](std::string const& line) {
        auto const tab = line.find('\t');
        CorpusLine entry{enumNamed<SensitiveKind>(line.substr(0, tab)).value(), line.substr(tab + 1)};
        taken(entry.text, "¦");
        entry.start = taken(entry.text, "⟦");
        entry.end = taken(entry.text, "⟧");
        if (entry.end > entry.text.size()) throw std::runtime_error("No secret is marked in: " + line);
        corpus.push_back(std::move(entry));
    });
    read("harmless.txt", [&](std::string const& line) { corpus.push_back({std::nullopt, line}); });
    return corpus;
}

struct CorpusScore {
    double precision = 0;
    double recall = 0;
    std::vector<std::string> wrong; // lines with a secret that was missed, or a finding without reason
};

/// A secret is found when one finding of its kind covers all of it; every other finding, in any line, is a false alarm.
inline CorpusScore score(SensitiveTextClassifier& classifier, std::vector<CorpusLine> const& corpus) {
    double found = 0, secrets = 0, falseAlarms = 0;
    CorpusScore result;
    for (auto const& line : corpus) {
        auto const matches = classifier.matches(line.text);
        auto const covers = [&](SensitiveMatch const& match) {
            return match.kind == line.kind && match.start <= line.start && match.end() >= line.end;
        };
        auto const hits = std::count_if(matches.begin(), matches.end(), covers);
        auto const others = static_cast<std::ptrdiff_t>(matches.size()) - hits;
        bool const isMissed = line.kind && hits == 0;
        if (isMissed || others > 0) result.wrong.push_back(line.text);
        if (line.kind) ++secrets;
        found += static_cast<double>(hits);
        falseAlarms += static_cast<double>(others);
    }
    result.recall = found / secrets;
    result.precision = found / (found + falseAlarms);
    return result;
}

}
