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
};

/// The secrets are made up. Each is broken by a bar in the file, so that nobody's scanner takes it for a leak.
inline std::vector<CorpusLine> readCorpus(std::string const& folder) {
    std::vector<CorpusLine> corpus;
    auto const read = [&](std::string const& name, auto add) {
        std::ifstream file(folder + "/" + name);
        if (!file) throw std::runtime_error("There is no corpus in " + folder);
        for (std::string line; std::getline(file, line);) add(line);
    };
    read("secret.txt", [&](std::string line) {
        std::string const bar = "¦";
        for (auto at = line.find(bar); at != std::string::npos; at = line.find(bar)) line.erase(at, bar.size());
        auto const tab = line.find('\t');
        corpus.push_back({enumNamed<SensitiveKind>(line.substr(0, tab)).value(), line.substr(tab + 1)});
    });
    read("harmless.txt", [&](std::string const& line) { corpus.push_back({std::nullopt, line}); });
    return corpus;
}

struct CorpusScore {
    double precision = 0;
    double recall = 0;
    std::vector<std::string> wrong; // lines that were missed, or flagged without reason
};

/// A secret line counts as found when a finding of its kind lies in it.
inline CorpusScore score(SensitiveTextClassifier& classifier, std::vector<CorpusLine> const& corpus) {
    double found = 0, secrets = 0, falseAlarms = 0;
    CorpusScore result;
    for (auto const& [kind, text] : corpus) {
        auto const matches = classifier.matches(text);
        bool const isRight = kind ? std::any_of(matches.begin(), matches.end(),
                                                [&, kind = kind](auto const& match) { return match.kind == *kind; })
                                  : matches.empty();
        if (!isRight) result.wrong.push_back(text);
        if (kind) ++secrets;
        if (kind && isRight) ++found;
        if (!kind && !isRight) ++falseAlarms;
    }
    result.recall = found / secrets;
    result.precision = found / (found + falseAlarms);
    return result;
}

}
