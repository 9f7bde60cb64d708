#include <TavaroCore/Direction/SmartDirector.h>
#include <TavaroCore/Overlays/Overlay.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <gtest/gtest.h>

#include <random>

using namespace tavaro;

namespace {

KeystrokeEvent shortcut(double t, std::string key) {
    return {.t = t, .keys = {"⌃", std::move(key)}, .isShortcut = true};
}

std::vector<Overlay> keycaps(std::vector<KeystrokeEvent> strokes) {
    RecordingMetadata recording;
    recording.keystrokes = std::move(strokes);
    return SmartDirector::keystrokeOverlays(recording);
}

std::vector<std::string> const& keysOf(Overlay const& overlay) {
    return std::get<OverlayKind::Keycap>(overlay.kind.content).keys;
}

}

TEST(KeystrokeOverlays, shortcutsAreShownAndTypingIsNot) {
    auto const overlays = keycaps({{.t = 0.5, .keys = {"h"}}, shortcut(1, "S"), {.t = 2, .keys = {"i"}}});
    ASSERT_EQ(overlays.size(), 1u);
    EXPECT_EQ(keysOf(overlays[0]), (std::vector<std::string>{"⌃", "S"}));
    EXPECT_EQ(overlays[0].start, 1);
    EXPECT_TRUE(overlays[0].isAutomatic);
    EXPECT_TRUE(keycaps({{.t = 1, .keys = {}, .isShortcut = true}}).empty());
}

TEST(KeystrokeOverlays, quickRepeatsStayOneKeycapAndSlowOnesAppearAgain) {
    auto const quick = keycaps({shortcut(1, "Z"), shortcut(1.3, "Z"), shortcut(1.9, "Z")});
    ASSERT_EQ(quick.size(), 1u);
    EXPECT_NEAR(quick[0].range().end(), 1.9 + 1.4, 1e-9);
    auto const slow = keycaps({shortcut(1, "Z"), shortcut(2, "Z")});
    ASSERT_EQ(slow.size(), 2u);
    EXPECT_EQ(slow[0].range().end(), slow[1].start);
}

TEST(KeystrokeOverlays, whatFollowsAtOnceWaitsUntilTheFirstWasRead) {
    auto const overlays = keycaps({shortcut(1, "C"), shortcut(1.2, "V")});
    ASSERT_EQ(overlays.size(), 2u);
    EXPECT_NEAR(overlays[1].start, 1.6, 1e-9);
}

TEST(KeystrokeOverlays, noneOverlapAndEachCanBeRead) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        std::mt19937 random(seed);
        std::exponential_distribution<double> pause(1 + seed % 8);
        std::vector<KeystrokeEvent> strokes;
        for (double t = pause(random); t < 60; t += pause(random)) {
            strokes.push_back(shortcut(t, std::string(1, static_cast<char>('A' + random() % 3))));
        }
        auto const overlays = keycaps(strokes);
        double before = 0;
        for (auto const& overlay : overlays) {
            EXPECT_GE(overlay.start, before - 1e-9) << "seed " << seed;
            EXPECT_GE(overlay.duration, 0.6 - 1e-9) << "seed " << seed;
            before = overlay.range().end();
        }
        EXPECT_EQ(overlays.empty(), strokes.empty());
    }
}
