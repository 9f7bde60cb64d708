#include "StillReading.h"

#include <Tests/Vision/Corpus/ScreenScenes.h>

#include <TavaroMedia/Frames/BrightnessReader.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroVision/Reading/Private/TextLines.h>
#include <TavaroVision/Reading/Private/TextReader.h>
#include <TavaroVision/Scanning/Private/ScreenClassifier.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>

namespace tavaro {

namespace {

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

std::string textOf(ReadLine const& line) {
    std::string text;
    for (auto const& word : line.words) text += (text.empty() ? "" : " ") + word.text;
    return text;
}

/// What a single picture says, and what of it is private.
struct Still {
    std::vector<ReadLine> lines;
    std::vector<PixelBox> covers;

    Still(GrayView const& view, TextReader& reader, Figures& figures) {
        auto began = std::chrono::steady_clock::now();
        auto const found = textLines(view, {0, 0, view.width, view.height});
        figures.finding += secondsSince(began);
        std::vector<LineImage> images;
        for (auto const& line : found) images.push_back(lineImage(view, line));
        began = std::chrono::steady_clock::now();
        lines = reader.read(images, {});
        figures.reading += secondsSince(began);
        figures.lines += found.size();
        ++figures.pictures;
        classify(found);
    }

    bool isCovered(ShownLetter const& letter) const {
        return std::ranges::any_of(covers, [&](PixelBox const& box) {
            return areaOf(overlapOf(box, letter.box)) > 0.25 * areaOf(letter.box);
        });
    }

    /// All that is read in the rows of those letters.
    void printRows(std::vector<ShownLetter> const& letters) const {
        for (auto const& line : lines) {
            auto const isInRow = [&](ShownLetter const& letter) {
                int const middle = letter.box.y + letter.box.height / 2;
                return line.box.y <= middle && middle < line.box.bottom();
            };
            if (std::ranges::any_of(letters, isInRow)) std::printf(" [%s]", textOf(line).c_str());
        }
        std::printf("\n");
    }

private:
    void classify(std::vector<TextLine> const& found) {
        std::vector<std::vector<ReadWord>> words;
        for (auto const& line : lines) {
            words.push_back(line.words);
            for (auto& word : words.back()) {
                word.box.x -= line.box.x;
                word.box.y -= line.box.y;
            }
        }
        std::vector<PlacedLine> placed;
        for (std::size_t i = 0; i < lines.size(); ++i)
            placed.push_back({lines[i].box, found[i].letterHeight, words[i]});
        for (auto const& text : ScreenClassifier(sceneSettings()).privateTexts(placed)) {
            auto const& box = lines[text.line].box;
            covers.push_back({box.x + text.left, box.y, text.right - text.left, box.height});
        }
    }
};

using LettersOfSecrets = std::map<std::size_t, std::vector<ShownLetter>>;

LettersOfSecrets lettersBySecret(DesktopPicture const& desktop) {
    DrawnScreen screen(1, 1);
    LettersOfSecrets bySecret;
    for (auto const& letter : shownLetters(desktop, screen)) bySecret[letter.secret].push_back(letter);
    return bySecret;
}

void look(DesktopPicture const& desktop, ScreenScene const& scene, TextReader& reader, Figures& figures) {
    DrawnScreen screen(desktop.width, desktop.height);
    draw(desktop, screen);
    auto const gray = screen.gray();
    Still const still({gray.data(), desktop.width, desktop.height, desktop.width}, reader, figures);
    for (auto const& [secret, letters] : lettersBySecret(desktop)) {
        auto const& value = scene.secrets[secret].value;
        auto const whole = std::ranges::count_if(letters, [](auto const& letter) { return letter.seen > 0.9; });
        if (static_cast<std::size_t>(whole) != value.size()) continue;
        auto const covered = std::ranges::count_if(letters, [&, &letters = letters](ShownLetter const& letter) {
            bool const isSpace = value[static_cast<std::size_t>(&letter - letters.data())] == ' '; // between words
            return isSpace || still.isCovered(letter);
        });
        ++figures.secrets;
        bool const isFound = double(covered) >= 0.9 * double(whole);
        figures.found += isFound;
        if (isFound) continue;
        std::printf("scan.still.missed %s, %s: %s [%s] %ld of %ld letters at %d,%d read as:", scene.happens.c_str(),
                    scene.look.c_str(), scene.secrets[secret].format.c_str(), value.c_str(), covered, whole,
                    letters.front().box.x, letters.front().box.y);
        still.printRows(letters);
    }
}

}

void printPage(std::filesystem::path const& movie, double seconds) {
    TextReader reader;
    Figures figures;
    MovieReader frames(movie);
    auto const frame = frames.frame(seconds);
    BrightnessReader brightness;
    auto const view = brightness.view(frame);
    Still const still({view.pixels, view.width, view.height, view.stride}, reader, figures);
    for (auto const& line : still.lines) {
        bool const isPrivate = std::ranges::any_of(
            still.covers, [&](PixelBox const& box) { return areaOf(overlapOf(box, line.box)) > 0; });
        std::printf("scan.movie.line 1 %s %d,%d [%s]\n", isPrivate ? "private" : "open", line.box.x, line.box.y,
                    textOf(line).c_str());
    }
}

void printReading(ScreenScene const& scene, std::filesystem::path const& movie, double seconds, std::size_t secret) {
    TextReader reader;
    Figures figures;
    MovieReader frames(movie);
    auto const frame = frames.frame(seconds);
    BrightnessReader brightness;
    auto const view = brightness.view(frame);
    Still const still({view.pixels, view.width, view.height, view.stride}, reader, figures);
    std::printf("scan.read 1 [%s] at %.2f s as:", scene.secrets[secret].value.c_str(), seconds);
    still.printRows(lettersBySecret(scene.at(seconds))[secret]);
}

void measureStills(std::string_view only, std::string_view wanted) {
    TextReader reader;
    Figures figures;
    for (auto const& scene : scenesOf(only)) {
        if (scene.look.find(wanted) == std::string::npos) continue;
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
