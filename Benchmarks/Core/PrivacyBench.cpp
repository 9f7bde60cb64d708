// The search for private text: how fast it reads ordinary lines with every kind on, and how well it judges the corpora.
// With paths of files it prints what it finds in each line of them instead, but for mail addresses.
#include <Tests/Core/Privacy/Corpus.h>
#include <Tests/Core/Privacy/MarkedText.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Privacy/TextFindings.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
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

void printTally(std::string const& name, Tally const& tally) {
    std::printf("%s.secrets %d secrets\n%s.recall %.3f ratio\n", name.c_str(), tally.secrets, name.c_str(),
                tally.recall());
    std::printf("%s.recall.catalogue %.3f ratio\n", name.c_str(), tally.recallInCatalogue());
    std::printf("%s.findings %d findings\n%s.precision %.3f ratio\n", name.c_str(), tally.findings, name.c_str(),
                tally.precision());
}

enum class Lines { shown, counted };

/// Of texts that are held out, only numbers are printed.
void judgeMarked(std::string const& corpus, Lines lines) {
    auto const judgement = judge(readMarkedTexts(TAVARO_PRIVACY_CORPUS "/" + corpus + ".txt"));
    auto const name = "privacy." + corpus;
    printTally(name, judgement.total());
    for (auto const& [format, tally] : judgement.byFormat) {
        std::printf("%s.%s found %d of %d, %d of %d in the catalogue; right %d of %d\n", name.c_str(), format.c_str(),
                    tally.found, tally.secrets, tally.foundInCatalogue, tally.inCatalogue, tally.right, tally.findings);
    }
    if (lines == Lines::counted) return;
    for (auto const& text : judgement.missed) std::printf("%s.missed 1 %s\n", name.c_str(), text.c_str());
    for (auto const& text : judgement.wrong) std::printf("%s.wrong 1 %s\n", name.c_str(), text.c_str());
}

/// Reads files of harmless text, such as those that a system's packages install.
void measureBulk(std::span<char* const> paths) {
    SensitiveTextClassifier classifier({});
    std::size_t lines = 0, findings = 0;
    auto const began = std::chrono::steady_clock::now();
    for (char const* path : paths) {
        std::ifstream file(path);
        std::string const text{std::istreambuf_iterator<char>(file), {}};
        lines += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
        for (auto const& finding : findingsIn(text, classifier, {})) {
            if (finding.kind == SensitiveKind::email) continue;
            ++findings;
            std::printf("%s:%ld:%ld %ld %s\n", path, finding.line, finding.column, finding.length,
                        nameOf(finding.kind).data());
        }
    }
    std::printf("privacy.bulk %.4f findings/1000 lines\n",
                static_cast<double>(findings) * 1000 / static_cast<double>(lines));
    std::printf("privacy.bulk.lines %zu lines\nprivacy.bulk.speed %.0f lines/s\n", lines,
                static_cast<double>(lines) /
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
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
    judgeMarked("development", Lines::shown);
    judgeMarked("held-out", Lines::counted);
}

}

}

int main(int count, char* arguments[]) {
    try {
        if (count > 1) {
            tavaro::measureBulk({arguments + 1, static_cast<std::size_t>(count - 1)});
        } else {
            tavaro::measure();
        }
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
