#include "CheckedFilm.h"

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Privacy/TextFindings.h>

#include <gmock/gmock.h>

#include <numeric>

namespace tavaro {

namespace {

using testing::IsEmpty;

std::string joined(std::vector<SecretLine> const& lines) {
    return std::accumulate(lines.begin(), lines.end(), std::string(),
                           [](auto text, auto const& line) { return std::move(text) + line.text + "\n"; });
}

/// Secrets of a block of templates that are not found although every letter of it is known.
std::vector<std::string> missedIn(std::vector<std::string> const& block, std::uint32_t seed) {
    SecretPlanting planting(seed);
    std::vector<SecretLine> lines;
    for (auto line : block) {
        if (auto const bar = line.find('|'); bar != std::string::npos) line.replace(bar, 1, ": ");
        for (auto& planted : planting.planted(line)) lines.push_back(std::move(planted));
    }
    SensitiveTextClassifier classifier(sceneSettings());
    auto const findings = findingsIn(joined(lines), classifier, {});
    std::vector<std::string> missed;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        for (auto const& mark : lines[i].marks) {
            auto const covers = [&](TextFinding const& finding) {
                return finding.line == static_cast<std::int64_t>(i + 1) &&
                       finding.column <= static_cast<std::int64_t>(mark.start + 1) &&
                       finding.column + finding.length >= static_cast<std::int64_t>(mark.end + 1);
            };
            if (std::ranges::none_of(findings, covers)) missed.push_back(lines[i].text);
        }
    }
    return missed;
}

ScreenScene shortScene(ScreenScene (*make)(SceneLook const&), double seconds) {
    return make({.name = "test",
                 .colors = darkColors,
                 .textSize = 15,
                 .width = 1280,
                 .height = 720,
                 .fps = 15,
                 .seconds = seconds,
                 .seed = 0});
}

}

TEST(SceneTexts, whatIsPlantedIsPrivateToWhoeverCanReadAllOfIt) {
    for (auto const* name : {"terminal", "editor", "browser", "forms"}) {
        for (auto const& block : SecretPlanting::blocks(name)) {
            for (std::uint32_t seed = 0; seed < 20; ++seed)
                EXPECT_THAT(missedIn(block, seed), IsEmpty()) << name << ", seed " << seed;
        }
    }
}

TEST(SceneJudge, findsNoFaultWithFindingsThatFollowTheSecretsThemselves) {
    for (auto* make : {restingScene, printingScene, scrollingScene, typingScene, movingScene, switchingScene}) {
        auto const scene = shortScene(make, 8);
        auto const judged = judge(scene, knownFindings(scene));
        EXPECT_GE(judged.secrets, 2) << scene.happens;
        EXPECT_EQ(judged.found, judged.secrets) << scene.happens;
        EXPECT_EQ(judged.legibleFrames, 0) << testing::PrintToString(judged.legible);
        EXPECT_EQ(judged.falseCovers, 0) << testing::PrintToString(judged.wrong);
        EXPECT_LT(judged.coveredArea, 4 * judged.secretArea) << scene.happens;
    }
}

TEST(SceneJudge, seesWhatIsMissedLateTooShortAndFalse) {
    auto const scene = shortScene(restingScene, 4);
    auto const known = knownFindings(scene);
    EXPECT_EQ(judge(scene, {}).found, 0);
    auto const whole = judge(scene, known);

    auto late = known;
    late.front().start += 0.5;
    EXPECT_EQ(judge(scene, late).found, whole.found);
    EXPECT_NEAR(judge(scene, late).legibleFrames, (0.5 - 0.07) * scene.fps, 1);

    auto narrow = known;
    for (auto& finding : narrow) {
        for (auto& keyframe : finding.keyframes) keyframe.rect.width *= 0.85;
    }
    EXPECT_GT(judge(scene, narrow).legibleFrames, whole.frames / 4);

    auto more = known;
    more.push_back({.start = 1, .end = 2, .keyframes = {{1, {0.7, 0.9, 0.1, 0.05}}}});
    EXPECT_EQ(judge(scene, more).falseCovers, 1);
    EXPECT_NEAR(judge(scene, more).falseCoversAMinute(), 15, 0.1);
}

}
