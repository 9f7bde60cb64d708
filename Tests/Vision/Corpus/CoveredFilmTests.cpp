#include "CheckedFilm.h"

#include <TavaroVision/Reading/Private/TextReader.h>

#include <gmock/gmock.h>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

struct WorkFolder {
    WorkFolder() : path(fs::path(testing::TempDir()) / ("tavaro-scenes-" + std::to_string(getpid()))) {
        fs::remove_all(path);
        fs::create_directories(path);
    }
    ~WorkFolder() { fs::remove_all(path); }
    fs::path path;
};

std::vector<ScreenFinding> scanned(fs::path const& movie) {
    return scanMovie({.movie = movie, .settings = sceneSettings(), .key = {{1, 2}}}, [](ScanProgress const&) {}, {})
        .findings;
}

}

// About fifty seconds.
TEST(CoveredFilm, whatScenesShowIsFoundAndCannotBeReadInTheirFilms) {
    SceneJudgement total;
    ReadAgain uncovered, covered;
    TextReader reader;
    for (auto const& scene : quickScenes()) {
        WorkFolder const folder;
        auto const movie = folder.path / "recording.mp4";
        writeMovie(scene, movie);
        auto const findings = scanned(movie);
        auto const judged = judge(scene, findings);
        total += judged;
        auto const film = exportCovered(scene, movie, findings, folder.path);
        covered += readAgain(scene, film, judged.foundSecrets, reader);
        if (scene.happens != "resting") continue;
        uncovered = readAgain(scene, movie, judged.foundSecrets, reader); // else the check proves nothing
    }
    EXPECT_GE(total.secrets, 20);
    EXPECT_EQ(total.found, total.secrets) << testing::PrintToString(total.missed);
    EXPECT_EQ(total.legibleFrames, 0) << testing::PrintToString(total.legible);
    EXPECT_EQ(total.falseCovers, 0) << testing::PrintToString(total.wrong);
    EXPECT_LT(total.coveredArea, 3 * total.secretArea);
    EXPECT_THAT(covered.legible, IsEmpty());
    EXPECT_GT(covered.looks, 40);
    EXPECT_GT(double(uncovered.legible.size()), 0.9 * uncovered.looks);
}

}
