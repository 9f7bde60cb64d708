#include "CheckedFilm.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroVision/Reading/Private/TextLines.h>
#include <TavaroVision/Reading/Private/TextReader.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace tavaro {

namespace {

constexpr int enlarged = 3;
constexpr std::size_t legibleLetters = 4;
constexpr int momentsOfEach = 8;

struct GrayPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    GrayView view() const { return {pixels.data(), width, height, width}; }
};

double brightness(Image const& image, int x, int y) {
    auto const* pixel = image.row(std::clamp(y, 0, image.height() - 1)) + 4 * std::clamp(x, 0, image.width() - 1);
    return 0.2126 * pixel[0] + 0.7152 * pixel[1] + 0.0722 * pixel[2];
}

GrayPicture enlargedPart(Image const& image, PixelBox const& part) {
    GrayPicture result{part.width * enlarged, part.height * enlarged, {}};
    for (int row = 0; row < result.height; ++row) {
        for (int column = 0; column < result.width; ++column) {
            double const x = part.x + (column + 0.5) / enlarged - 0.5, y = part.y + (row + 0.5) / enlarged - 0.5;
            auto const left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
            auto const across = [&](int at) {
                return brightness(image, left, at) * (left + 1 - x) + brightness(image, left + 1, at) * (x - left);
            };
            result.pixels.push_back(
                static_cast<std::uint8_t>(across(top) * (top + 1 - y) + across(top + 1) * (y - top)));
        }
    }
    return result;
}

std::string readText(GrayPicture const& picture, TextReader& reader) {
    std::vector<LineImage> images;
    for (auto const& line : textLines(picture.view(), {0, 0, picture.width, picture.height}))
        images.push_back(lineImage(picture.view(), line));
    std::string text;
    for (auto const& line : reader.read(images, {})) {
        for (auto const& word : line.words) text += word.text + " ";
        text += "\n";
    }
    return text;
}

/// The longest piece of the value that the text has.
std::string longestShared(std::string const& value, std::string const& text) {
    std::string longest;
    for (std::size_t start = 0; start < value.size(); ++start) {
        while (start + longest.size() < value.size() &&
               text.find(value.substr(start, longest.size() + 1)) != std::string::npos)
            longest = value.substr(start, longest.size() + 1);
    }
    return longest;
}

/// Around the lines of a secret on the screen: no more than a little of what is beside it.
std::map<std::size_t, PixelBox> placesOf(std::size_t secret, std::vector<ShownLetter> const& letters) {
    std::map<std::size_t, PixelBox> places;
    for (auto const& letter : letters) {
        if (letter.secret != secret || letter.seen < 0.5) continue;
        auto const& box = letter.box;
        auto& place = places.try_emplace(letter.line, box).first->second;
        int const left = std::min(place.x, box.x), right = std::max(place.right(), box.right());
        place = {left, box.y, right - left, box.height};
    }
    for (auto& [line, place] : places) place = {place.x - 12, place.y - 4, place.width + 24, place.height + 8};
    return places;
}

}

std::filesystem::path exportCovered(ScreenScene const& scene, std::filesystem::path const& recording,
                                    std::vector<ScreenFinding> const& findings, std::filesystem::path const& folder) {
    ProjectPackage const package(folder / "Scene.recproj");
    package.createDirectories();
    std::filesystem::copy_file(recording, package.assetURL("screen.mp4"),
                               std::filesystem::copy_options::overwrite_existing);
    DemoProject project;
    project.sourceSize = {scene.width, scene.height};
    project.canvas = project.sourceSize;
    project.screen = {};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = scene.seconds}};
    project.metadata.edit().captureSize = project.sourceSize;
    auto& redactions = project.redactions.edit();
    for (auto const& finding : findings) redactions.push_back(trackOf(finding));
    ExportSettings const settings{
        .size = project.sourceSize, .fps = scene.fps, .bitrateOverride = 40'000'000, .includesAudio = false};
    return Exporter(project, package, settings, {.encoder = EncoderChoice::software}).exportMovie(folder / "film.mp4");
}

ReadAgain readAgain(ScreenScene const& scene, std::filesystem::path const& film,
                    std::vector<std::size_t> const& secrets, TextReader& reader) {
    ReadAgain result;
    MovieReader movie(film);
    FrameConverter converter;
    DrawnScreen screen(1, 1);
    Image image;
    int const step = std::max(1, scene.frames() / momentsOfEach);
    for (int n = step / 2; n < scene.frames(); n += step) {
        converter.convert(movie.frame((n + 0.5) / scene.fps), image);
        auto const letters = shownLetters(scene.frame(n), screen);
        for (auto const secret : secrets) {
            auto const& value = scene.secrets[secret].value;
            for (auto const& [line, place] : placesOf(secret, letters)) {
                ++result.looks;
                auto const shared = longestShared(value, readText(enlargedPart(image, place), reader));
                if (shared.size() < std::min(legibleLetters, value.size())) continue;
                result.legible.push_back(scene.happens + ", " + scene.look + ": [" + shared + "] of [" + value +
                                         "] at " + std::to_string(double(n) / scene.fps) + " s, " +
                                         std::to_string(place.x) + "," + std::to_string(place.y));
            }
        }
    }
    return result;
}

ReadAgain& ReadAgain::operator+=(ReadAgain const& other) {
    looks += other.looks;
    legible.insert(legible.end(), other.legible.begin(), other.legible.end());
    return *this;
}

std::vector<ScreenFinding> knownFindings(ScreenScene const& scene) {
    DrawnScreen screen(1, 1);
    std::vector<ScreenFinding> findings;
    std::map<std::pair<std::size_t, std::size_t>, std::size_t> open; // by secret and line
    double const frame = 1.0 / scene.fps;
    for (int n = 0; n < scene.frames(); ++n) {
        std::map<std::pair<std::size_t, std::size_t>, PixelBox> places;
        for (auto const& letter : shownLetters(scene.frame(n), screen)) {
            auto const& box = letter.box;
            auto& place = places.try_emplace({letter.secret, letter.line}, box).first->second;
            int const left = std::min(place.x, box.x), right = std::max(place.right(), box.right());
            place = {left, box.y, right - left, box.height};
        }
        std::erase_if(open, [&](auto const& entry) { return !places.contains(entry.first); });
        for (auto const& [key, place] : places) {
            auto const [entry, isNew] = open.try_emplace(key, findings.size());
            if (isNew) findings.push_back({.kind = scene.secrets[key.first].kind, .start = n * frame});
            auto& finding = findings[entry->second];
            finding.end = (n + 1) * frame;
            finding.keyframes.push_back({n * frame,
                                         {double(place.x) / scene.width, double(place.y) / scene.height,
                                          double(place.width) / scene.width, double(place.height) / scene.height}});
        }
    }
    return findings;
}

}
