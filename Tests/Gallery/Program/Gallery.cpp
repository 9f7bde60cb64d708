// Draws the gallery: every background, frame, pointer, camera, look, layout, overlay and caption on one sheet, and the
// small pictures that the suite compares with.

#include <algorithm>
#include <cctype>
#include <filesystem>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <unistd.h>

#include <TavaroMedia/Frames/PNG.h>

#include "../Stage/Canvas.h"
#include "../Stage/Scenes.h"
#include "../Stage/Stage.h"
#include "../Stage/StoredPicture.h"

namespace {

using namespace tavaro;
using namespace tavaro::gallery;
namespace fs = std::filesystem;

constexpr int columns = 5;
constexpr int cell = 480; // longer side of a picture
constexpr int gap = 28;
constexpr int label = 34;
constexpr int heading = 76;
constexpr int cellHeight = cell * 9 / 16;

struct Sheet {
    int rows = 0;
    int familyCount = 0;
};

Sheet measured() {
    Sheet sheet;
    for (auto const& family : families()) {
        auto const count =
            std::count_if(scenes().begin(), scenes().end(), [&](Scene const& scene) { return scene.family == family; });
        sheet.rows += static_cast<int>((count + columns - 1) / columns);
        ++sheet.familyCount;
    }
    return sheet;
}

/// The canvas that fills a cell.
Size2 cellCanvas(Scene const& scene) {
    auto const whole = scene.canvas(cell);
    if (whole.height <= cellHeight) return whole;
    return scene.canvas(static_cast<int>(std::max(whole.width, whole.height) * cellHeight / whole.height));
}

void writeSheet(Stage const& stage, fs::path const& file) {
    auto const sheet = measured();
    Canvas canvas(columns * (cell + gap) + gap,
                  sheet.familyCount * heading + sheet.rows * (cellHeight + label + gap) + gap);
    canvas.box(0, 0, 1e5, 1e5, 0, {0xF8FAFC});
    int x = gap, y = -(cellHeight + label);
    std::string family;
    for (auto const& scene : scenes()) {
        if (scene.family != family || x + cell > columns * (cell + gap) + gap) {
            y += cellHeight + label + gap;
            x = gap;
        }
        if (scene.family != family) {
            family = scene.family;
            canvas.text(std::string(1, static_cast<char>(std::toupper(family[0]))) + family.substr(1) + "s", gap,
                        y + 22, {30, true}, {0x0F172A});
            y += heading;
        }
        auto const size = cellCanvas(scene);
        auto const picture = drawn(scene, stage, {size.width * 2, size.height * 2}, CompositorBackend::cpu);
        canvas.picture(reduced(picture.view()).view(), x + (cell - static_cast<int>(size.width)) / 2, y);
        canvas.text(scene.name.substr(family.size() + 1), x + 2, y + cellHeight + 8, {17}, {0x475569});
        x += cell + gap;
    }
    writePNG(file, canvas.image().view());
    fmt::print("{}\n", file.string());
}

void store(Stage const& stage, fs::path const& folder) {
    for (auto const& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == ".png") fs::remove(entry.path());
    for (auto const& scene : scenes()) {
        auto const canvas = drawn(scene, stage, scene.canvas(storedCanvas), CompositorBackend::cpu);
        writePNG(folder / (scene.name + ".png"), coarsened(reduced(canvas.view()).view()).view());
    }
    fmt::print("{} pictures in {}\n", scenes().size(), folder.string());
}

}

int main(int argc, char** argv) {
    CLI::App app{"Draws the gallery of everything that a frame can show.", "gallery"};
    std::string sheet;
    std::string pictures;
    app.add_option("--sheet", sheet, "the PNG to draw all scenes on");
    app.add_option("--store", pictures, "the folder whose pictures the suite compares with; they are replaced");
    CLI11_PARSE(app, argc, argv);
    try {
        Stage const stage(fs::temp_directory_path() / fmt::format("tavaro-gallery-{}", getpid()));
        if (!sheet.empty()) writeSheet(stage, sheet);
        if (!pictures.empty()) store(stage, pictures);
    } catch (std::exception const& error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
