// The search for private text: how fast it reads ordinary lines with every kind on, and how well it judges the corpus.
#include <Tests/Core/Privacy/Corpus.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <vector>

namespace tavaro {

namespace {

constexpr std::size_t lineLength = 80;
constexpr int rounds = 7;

/// Ordinary lines of that length: the harmless ones of the corpus, end to end.
std::vector<std::string> ordinaryLines(std::vector<CorpusLine> const& corpus) {
    std::string text;
    for (auto const& line : corpus) {
        if (!line.kind) text += line.text + "  ";
    }
    std::vector<std::string> lines;
    for (std::size_t at = 0; at + lineLength <= text.size(); at += lineLength)
        lines.push_back(text.substr(at, lineLength));
    return lines;
}

double linesPerSecond(SensitiveTextClassifier& classifier, std::vector<std::string> const& lines) {
    std::vector<double> rates;
    for (int round = 0; round < rounds; ++round) {
        auto const began = std::chrono::steady_clock::now();
        int read = 0;
        for (; read < 4000; ++read) classifier.matches(lines[static_cast<std::size_t>(read) % lines.size()]);
        rates.push_back(read / std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
    }
    std::nth_element(rates.begin(), rates.begin() + rounds / 2, rates.end());
    return rates[rounds / 2];
}

void measure() {
    auto const corpus = readCorpus(TAVARO_PRIVACY_CORPUS);
    RedactionSettings settings;
    for (auto const kind : allCases<SensitiveKind>()) settings.kinds.insert(kind);
    SensitiveTextClassifier classifier(settings);
    auto const lines = ordinaryLines(corpus);
    std::printf("privacy.lines %.0f lines/s\n", linesPerSecond(classifier, lines));
    SensitiveTextClassifier unfiltered(settings, SensitiveTextClassifier::Prefilter::off);
    std::printf("privacy.lines.unfiltered %.0f lines/s\n", linesPerSecond(unfiltered, lines));
    auto const result = score(classifier, corpus);
    std::printf("privacy.precision %.3f ratio\nprivacy.recall %.3f ratio\n", result.precision, result.recall);
    for (auto const& line : result.wrong) std::printf("privacy.wrong 1 %s\n", line.c_str());
}

}

}

int main() {
    try {
        tavaro::measure();
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
