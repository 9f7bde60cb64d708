#include "StillReading.h"

#include <Tests/Vision/Corpus/ScreenScenes.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroVision/Reading/Private/TextLines.h>
#include <TavaroVision/Reading/Private/TextReader.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>

namespace tavaro {

namespace {

struct Read {
    PixelBox box;
    std::string text;
    std::vector<PixelBox> covers; // of words with a finding
};

struct Figures {
    int secrets = 0;
    int found = 0;
    std::size_t lines = 0;
    double finding = 0; // seconds
    double reading = 0;
    int pictures = 0;
};

double secondsSince(std::chrono::steady_clock::time_point began) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
}

std::vector<Read> classified(std::vector<ReadLine> const& lines) {
    SensitiveTextClassifier classifier(sceneSettings());
    LinesAbove above;
    std::vector<Read> result;
    for (auto const& line : lines) {
        Read read{line.box, {}, {}};
        std::vector<std::pair<std::size_t, std::size_t>> places;
        for (auto const& word : line.words) {
            if (!read.text.empty()) read.text += ' ';
            places.emplace_back(read.text.size(), read.text.size() + word.text.size());
            read.text += word.text;
        }
        for (auto const& match : classifier.matches(read.text, above)) {
            for (std::size_t i = 0; i < places.size(); ++i) {
                if (places[i].first < match.end() && match.start < places[i].second)
                    read.covers.push_back(line.words[i].box);
            }
        }
        result.push_back(std::move(read));
    }
    return result;
}

void look(DesktopPicture const& desktop, ScreenScene const& scene, TextReader& reader, Figures& figures) {
    DrawnScreen screen(desktop.width, desktop.height);
    draw(desktop, screen);
    auto const gray = screen.gray();
    GrayView const view{gray.data(), desktop.width, desktop.height, desktop.width};
    auto began = std::chrono::steady_clock::now();
    auto const lines = textLines(view, {0, 0, desktop.width, desktop.height});
    figures.finding += secondsSince(began);
    std::vector<LineImage> images;
    for (auto const& line : lines) images.push_back(lineImage(view, line));
    began = std::chrono::steady_clock::now();
    auto const reads = classified(reader.read(images, {}));
    figures.reading += secondsSince(began);
    figures.lines += lines.size();
    ++figures.pictures;
    std::map<std::size_t, std::vector<ShownLetter>> bySecret;
    for (auto const& letter : shownLetters(desktop, screen)) bySecret[letter.secret].push_back(letter);
    for (auto const& entry : bySecret) {
        auto const secret = entry.first;
        auto const& letters = entry.second;
        auto const whole = std::ranges::count_if(letters, [](auto const& letter) { return letter.seen > 0.9; });
        if (static_cast<std::size_t>(whole) != scene.secrets[secret].value.size()) continue;
        auto const& value = scene.secrets[secret].value;
        auto const covered = std::ranges::count_if(letters, [&](ShownLetter const& letter) {
            if (value[static_cast<std::size_t>(&letter - letters.data())] == ' ') return true; // between words
            return std::ranges::any_of(reads, [&](Read const& read) {
                return std::ranges::any_of(read.covers, [&](PixelBox const& box) {
                    return areaOf(overlapOf(box, letter.box)) > 0.25 * areaOf(letter.box);
                });
            });
        });
        ++figures.secrets;
        bool const isFound = double(covered) >= 0.9 * double(whole);
        figures.found += isFound;
        if (isFound) continue;
        auto const& place = letters.front().box;
        std::printf("scan.still.missed %s, %s: %s [%s] %ld of %ld letters at %d,%d read as:", scene.happens.c_str(),
                    scene.look.c_str(), scene.secrets[secret].format.c_str(), scene.secrets[secret].value.c_str(),
                    covered, whole, place.x, place.y);
        for (auto const& read : reads) {
            auto const isThere = [&](ShownLetter const& letter) {
                return areaOf(overlapOf(read.box, letter.box)) > 0.25 * areaOf(letter.box);
            };
            if (std::ranges::any_of(letters, isThere)) std::printf(" [%s]", read.text.c_str());
        }
        std::printf("\n");
    }
}

}

void measureStills(std::string_view only) {
    TextReader reader;
    Figures figures;
    for (auto const& scene : scenesOf(only)) {
        for (double const share : {0.45, 0.95}) look(scene.at(share * scene.seconds), scene, reader, figures);
    }
    std::printf("scan.stills.secrets %d secrets\nscan.stills.found %.4f of them\n", figures.secrets,
                double(figures.found) / std::max(figures.secrets, 1));
    std::printf("scan.stills.lines %.1f lines a picture\nscan.stills.finding %.2f ms a picture\nscan.stills.reading "
                "%.2f ms a line\n",
                double(figures.lines) / figures.pictures, 1000 * figures.finding / figures.pictures,
                1000 * figures.reading / double(figures.lines));
}

}
