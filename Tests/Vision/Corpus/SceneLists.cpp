#include "ScreenScenes.h"

#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Movie/MovieWriter.h>

namespace tavaro {

std::vector<ScreenScene> quickScenes() {
    SceneLook const small{
        .name = "dark 15 px", .colors = darkColors, .textSize = 15, .width = 1280, .height = 720, .seconds = 4};
    auto const changed = [&](PageColors const& colors, std::string const& name, double seconds, std::uint32_t seed) {
        auto look = small;
        look.colors = colors;
        look.name = name;
        look.seconds = seconds;
        look.seed = seed;
        return look;
    };
    return {
        restingScene(changed(lightColors, "light 15 px", 4, 0)),
        printingScene(changed(blackColors, "black 15 px", 5, 0)),
        scrollingScene(changed(darkColors, "dark 15 px", 5, 2)),
        typingScene(changed(sandColors, "sand 15 px", 6, 4)),
        movingScene(changed(lightColors, "light 15 px", 5, 0)),
    };
}

std::vector<ScreenScene> allScenes() {
    std::vector<SceneLook> const looks{
        {.name = "dark 13 px", .colors = darkColors, .textSize = 13, .seed = 1},
        {.name = "light 14 px", .colors = lightColors, .textSize = 14, .seed = 2},
        {.name = "black 17 px", .colors = blackColors, .textSize = 17, .seed = 3},
        {.name = "sand 12 px", .colors = sandColors, .textSize = 12, .seed = 4},
        {.name = "light 24 px", .colors = lightColors, .textSize = 24, .seed = 5},
        {.name = "dark 2x 14 px",
         .colors = darkColors,
         .textSize = 14,
         .scale = 2,
         .width = 2560,
         .height = 1440,
         .seed = 6},
    };
    struct Kind {
        ScreenScene (*make)(SceneLook const&);
        double seconds;
    };
    static constexpr Kind kinds[]{{restingScene, 30}, {printingScene, 30},  {scrollingScene, 30}, {typingScene, 30},
                                  {movingScene, 30},  {switchingScene, 30}, {playingScene, 5},    {harmlessScene, 10}};
    std::vector<ScreenScene> scenes;
    for (auto const& kind : kinds) {
        for (auto look : looks) {
            look.seconds = kind.seconds;
            look.fps = look.seed % 3 == 0 ? 60 : 30;
            scenes.push_back(kind.make(look));
        }
    }
    return scenes;
}

std::vector<ScreenScene> scenesOf(std::string_view kind) {
    if (kind == "quick") return quickScenes();
    auto scenes = allScenes();
    std::erase_if(scenes, [&](ScreenScene const& scene) { return !kind.empty() && scene.happens != kind; });
    return scenes;
}

void writeMovie(ScreenScene const& scene, std::filesystem::path const& file) {
    MovieWriter writer(file,
                       {.intent = MovieIntent::live, .width = scene.width, .height = scene.height, .fps = scene.fps});
    DrawnScreen screen(scene.width, scene.height);
    std::optional<DesktopPicture> shown;
    std::optional<EncoderPicture> picture;
    for (int n = 0; n < scene.frames(); ++n) {
        if (auto wanted = scene.frame(n); !shown || !(wanted == *shown)) {
            draw(wanted, screen);
            picture.emplace(writer.picture());
            fillPicture(*picture, screen.pixels(), PixelOrder::bgra);
            shown = std::move(wanted);
        }
        writer.append(picture->shared(), double(n) / scene.fps);
    }
    writer.finish();
}

}
