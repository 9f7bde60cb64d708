#include <filesystem>

#include <gtest/gtest.h>
#include <unistd.h>

#include "../Stage/Scenes.h"
#include "../Stage/Stage.h"
#include "../Stage/StoredPicture.h"

namespace tavaro::gallery {

namespace {

namespace fs = std::filesystem;

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

INSTANTIATE_TEST_SUITE_P(Scenes, Gallery, testing::ValuesIn(families()), [](auto const& info) { return info.param; });

}

}
