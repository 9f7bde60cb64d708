#include <filesystem>

#include <gtest/gtest.h>
#include <unistd.h>

#include <TavaroMedia/Frames/PNG.h>

#include "../Stage/Scenes.h"
#include "../Stage/Stage.h"
#include "../Stage/StoredPicture.h"

namespace tavaro::gallery {

namespace {

namespace fs = std::filesystem;

fs::path const stored = TAVARO_GALLERY_PICTURES;

/// The scenes of one family.
class Gallery : public testing::TestWithParam<std::string> {
protected:
    Stage stage_{fs::path(testing::TempDir()) / ("tavaro-gallery-" + GetParam() + "-" + std::to_string(getpid()))};

    template<class Look> void forEachScene(Look const& look) {
        int count = 0;
        for (auto const& scene : scenes()) {
            if (scene.family != GetParam()) continue;
            look(scene);
            ++count;
        }
        EXPECT_GT(count, 0);
    }
};

TEST_P(Gallery, isDrawnByTheFastPathAsByTheFormulas) {
    forEachScene([&](Scene const& scene) {
        auto const wanted = drawn(scene, stage_, scene.canvas(240), CompositorBackend::reference);
        auto const got = drawn(scene, stage_, scene.canvas(240), CompositorBackend::cpu);
        EXPECT_LE(pictureDifference(wanted.view(), got.view()).largest, 1) << scene.name;
    });
}

TEST_P(Gallery, looksAsItDidWhenItWasLastLookedAt) {
    forEachScene([&](Scene const& scene) {
        auto const file = stored / (scene.name + ".png");
        ASSERT_TRUE(fs::exists(file)) << "look at the gallery, then store it: ./dev gallery accept";
        auto const picture = reduced(drawn(scene, stage_, scene.canvas(storedCanvas), CompositorBackend::cpu).view());
        auto const wanted = readPNG(file);
        ASSERT_EQ(wanted.width(), picture.width()) << scene.name;
        ASSERT_EQ(wanted.height(), picture.height()) << scene.name;
        auto const difference = pictureDifference(wanted.view(), picture.view());
        // Half a step is lost in storing; decoders and fonts of another machine may round otherwise.
        if (difference.largest <= 24 && difference.mean <= 3) return;
        auto const sheet = fs::current_path() / ("gallery-" + scene.name + ".png");
        writePNG(sheet, comparison(wanted.view(), picture.view()).view());
        ADD_FAILURE() << scene.name << " differs by " << difference.largest << ", in the mean by " << difference.mean
                      << "; stored, drawn and difference: " << sheet;
    });
}

INSTANTIATE_TEST_SUITE_P(Scenes, Gallery, testing::ValuesIn(families()), [](auto const& info) { return info.param; });

}

}
