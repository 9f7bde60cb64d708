// The search for private text on screens. "stills": how well single pictures are read; "corpus": how much of what
// scenes show is found and covered; "films": whether it can be read in their exports; "session": what it costs on ten
// minutes of work, of which a number says fewer. "pictures FOLDER" draws the scenes for the eye; "movie FILE SECOND" is
// for any movie.
#include "CodingSession.h"
#include "StillReading.h"

#include <Tests/Vision/Corpus/CheckedFilm.h>

#include <TavaroMedia/Frames/PNG.h>
#include <TavaroVision/Reading/Private/TextReader.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <span>
#include <string_view>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

double secondsSince(std::chrono::steady_clock::time_point began) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
}

ScanRequest requestFor(fs::path const& movie) { return {.movie = movie, .settings = sceneSettings(), .key = {{1, 2}}}; }

void print(std::string const& name, SceneJudgement const& judged) {
    auto const figure = [&](char const* what, double value, char const* unit) {
        std::printf("%s.%s %.4g %s\n", name.c_str(), what, value, unit);
    };
    figure("secrets", judged.secrets, "secrets");
    figure("found", judged.share(), "of them");
    figure("legible", judged.legibleFrames, ("frames of " + std::to_string(judged.frames)).c_str());
    figure("false_covers", judged.falseCoversAMinute(), "a minute");
    figure("covered", judged.secretArea > 0 ? judged.coveredArea / judged.secretArea : 0,
           "times the area of the secrets");
}

void printLines(char const* what, std::vector<std::string> const& lines) {
    for (auto const& line : lines) std::printf("scan.%s 1 %s\n", what, line.c_str());
}

/// The frames at which something is missed or legible, with what is covered on them, where $TAVARO_PICTURES says.
void leavePictures(ScreenScene const& scene, SceneJudgement const& judged, std::vector<ScreenFinding> const& findings) {
    auto const* folder = std::getenv("TAVARO_PICTURES");
    if (!folder) return;
    DrawnScreen screen(scene.width, scene.height);
    for (auto const time : judged.doubtful) {
        draw(scene.at(time), screen);
        for (auto const& finding : findings)
            screen.fill(coveredAt(finding, time, scene.width, scene.height), {255, 0, 160});
        auto const name =
            scene.happens + " " + scene.look + " " + std::to_string(static_cast<int>(1000 * time)) + " ms.png";
        writePNG(fs::path(folder) / name, screen.picture().view(), PNGPacking::quick);
    }
}

/// All scenes, or those that happen so.
void measureCorpus(fs::path const& folder, std::string_view only, std::string_view look) {
    std::map<std::string, SceneJudgement> byKind;
    SceneJudgement total;
    double took = 0;
    for (auto const& scene : scenesOf(only)) {
        if (scene.look.find(look) == std::string::npos) continue;
        auto const movie = folder / "scene.mp4";
        writeMovie(scene, movie);
        auto const began = std::chrono::steady_clock::now();
        auto const outcome = scanMovie(requestFor(movie), [](ScanProgress const&) {}, {});
        took += secondsSince(began);
        auto const judged = judge(scene, outcome.findings);
        std::printf("scan.scene %.2f s for %.0f s, found %d of %d, legible %d of %d, false %d: %s, %s\n",
                    secondsSince(began), scene.seconds, judged.found, judged.secrets, judged.legibleFrames,
                    judged.frames, judged.falseCovers, scene.happens.c_str(), scene.look.c_str());
        std::fflush(stdout);
        leavePictures(scene, judged, outcome.findings);
        for (std::size_t i = 0; i < judged.doubtful.size(); ++i)
            printReading(scene, movie, judged.doubtful[i], judged.doubtfulSecrets[i]);
        byKind[scene.happens] += judged;
        total += judged;
    }
    for (auto const& [kind, judged] : byKind) print("scan." + kind, judged);
    print("scan.corpus", total);
    std::printf("scan.corpus.time %.3f of the movies' length\n", total.seconds > 0 ? took / total.seconds : 0);
    printLines("missed", total.missed);
    printLines("legible", total.legible);
    printLines("wrong", total.wrong);
}

/// Scenes as they are exported, with covers and without: how many of the places of what was found can be read.
void measureFilms(fs::path const& folder, std::string_view only, std::string_view look) {
    TextReader reader;
    ReadAgain covered, uncovered;
    for (auto const& scene : scenesOf(only)) {
        if (scene.look.find(look) == std::string::npos) continue;
        auto const began = std::chrono::steady_clock::now();
        auto const movie = folder / "scene.mp4";
        writeMovie(scene, movie);
        auto const findings = scanMovie(requestFor(movie), [](ScanProgress const&) {}, {}).findings;
        auto const found = judge(scene, findings).foundSecrets;
        auto const film = exportCovered(scene, movie, findings, folder);
        auto const inFilm = readAgain(scene, film, found, reader), inTake = readAgain(scene, movie, found, reader);
        fs::remove(film);
        std::printf("scan.film %.1f s, %zu of %d places legible, uncovered %zu: %s, %s\n", secondsSince(began),
                    inFilm.legible.size(), inFilm.looks, inTake.legible.size(), scene.happens.c_str(),
                    scene.look.c_str());
        std::fflush(stdout);
        covered += inFilm;
        uncovered += inTake;
    }
    std::printf(
        "scan.films.places %d places\nscan.films.legible %zu of them\nscan.films.legible_uncovered %zu of them\n",
        covered.looks, covered.legible.size(), uncovered.legible.size());
    printLines("read", covered.legible);
}

/// Any movie: what is found in it, and what is read at a second of it.
void lookAtMovie(fs::path const& movie, std::string const& second) {
    auto const began = std::chrono::steady_clock::now();
    auto const outcome = scanMovie(requestFor(movie), [](ScanProgress const&) {}, {});
    std::printf("scan.movie.time %.2f s\n", secondsSince(began));
    for (auto const& finding : outcome.findings) {
        auto const& area = finding.keyframes.front().rect;
        std::printf("scan.movie.finding 1 %s %s from %.3f to %.3f s at %.3f,%.3f\n",
                    std::string(nameOf(finding.kind)).c_str(), finding.masked.c_str(), finding.start, finding.end,
                    area.x, area.y);
    }
    if (!second.empty()) printPage(movie, std::stod(second));
}

void drawScenes(fs::path const& folder) {
    fs::create_directories(folder);
    for (auto const& scene : allScenes()) {
        DrawnScreen screen(scene.width, scene.height);
        for (int part = 1; part < 4; ++part) {
            draw(scene.at(scene.seconds * part / 4), screen);
            writePNG(folder / (scene.happens + " " + scene.look + " " + std::to_string(part) + ".png"),
                     screen.picture().view(), PNGPacking::quick);
        }
    }
}

struct WorkFolder {
    WorkFolder() : path(fs::temp_directory_path() / ("tavaro-bench-scan-" + std::to_string(getpid()))) {
        fs::create_directories(path);
    }
    ~WorkFolder() { fs::remove_all(path); }
    fs::path path;
};

void measure(std::span<char* const> arguments) {
    if (arguments.size() == 3 && std::string_view(arguments[0]) == "film")
        return filmSession(arguments[1], std::stod(arguments[2]));
    WorkFolder const folder;
    auto const has = [&](std::string_view name) { return arguments.empty() || name == arguments[0]; };
    std::string const second = arguments.size() > 1 ? arguments[1] : "",
                      look = arguments.size() > 2 ? arguments[2] : "";
    if (!arguments.empty() && std::string_view(arguments[0]) == "pictures")
        return drawScenes(second.empty() ? "." : second);
    if (!arguments.empty() && std::string_view(arguments[0]) == "movie") return lookAtMovie(second, look);
    if (has("stills")) measureStills(second, look);
    if (has("corpus")) measureCorpus(folder.path, second, look);
    if (has("films")) measureFilms(folder.path, second, look);
    if (has("session")) measureSession(folder.path, second.empty() ? 10 : std::stod(second));
}

}

}

int main(int count, char* arguments[]) {
    try {
        tavaro::measure({arguments + 1, static_cast<std::size_t>(count - 1)});
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
