#include "../../Media/Audio/TestSounds.h"

#include <Tavaro/Model/Making/ImportedMovie.h>
#include <Tavaro/Model/Making/NewProject.h>
#include <Tavaro/Model/Making/Polish.h>

#include <TavaroCore/Editing/SilenceRemoval.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <unistd.h>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

class SoundOfProjects : public testing::Test {
protected:
    SoundOfProjects() { fs::create_directories(folder); }
    ~SoundOfProjects() override { fs::remove_all(folder); }

    fs::path const folder = fs::path(testing::TempDir()) / ("tavaro-sound-of-projects-" + std::to_string(getpid()));

    /// A small grey movie, ten pictures a second, with that sound if any.
    fs::path movie(double seconds, Sound const& sound) const {
        MovieWriter writer(folder / "screen.mp4", {.width = 64,
                                                   .height = 48,
                                                   .fps = 10,
                                                   .bitrate = 100'000,
                                                   .sound = sound.empty() ? MovieSound::none : MovieSound::aac});
        Image const image(64, 48);
        std::size_t heard = 0;
        for (int n = 0; n < seconds * 10; ++n) {
            auto picture = writer.picture();
            fillPicture(picture, image.view());
            writer.append(std::move(picture), n / 10.0);
            auto const count = std::min<std::size_t>(audioRate / 10, sound.size() - heard);
            if (count > 0) writer.appendAudio(std::span(sound).subspan(heard, count));
            heard += count;
        }
        writer.finish();
        return folder / "screen.mp4";
    }

    DemoProject imported(fs::path const& file, std::string const& events = "") const {
        ImportRequest request{.movie = file, .package = folder / "film.recproj"};
        if (!events.empty()) {
            request.events = folder / "log.json";
            writeFileAtomically(request.events, events);
        }
        MainQueue queue;
        auto job = importJob(queue, request);
        job.start();
        job.wait();
        return ProjectPackage(request.package).load();
    }

    static std::vector<TimeRange> silences(DemoProject project) {
        std::vector<TimeRange> ranges;
        for (auto const& span : polished(std::move(project), {}).project.silences) ranges.push_back(span.range());
        return ranges;
    }
};

/// Speech over the noise of a room, with pauses from 3 to 6 and from 8 to 11 s.
Sound talkWithPauses() {
    auto talk = syllables(15, 0.3);
    std::fill(talk.begin() + 3 * audioRate, talk.begin() + 6 * audioRate, StereoSample{});
    std::fill(talk.begin() + 8 * audioRate, talk.begin() + 11 * audioRate, StereoSample{});
    return sum(talk, noise(15, 0.004));
}

}

TEST_F(SoundOfProjects, aFilmThatSoundsThroughoutIsOfferedNoSilence) {
    EXPECT_TRUE(silences(imported(movie(20, tone(20, 440, 0.2)))).empty());
}

TEST_F(SoundOfProjects, theSilencesOfAFilmAreItsPauses) {
    auto const found = silences(imported(movie(15, talkWithPauses())));
    ASSERT_EQ(found.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        double const from = i == 0 ? 3 : 8;
        EXPECT_GE(found[i].start, from) << "nothing spoken is cut";
        EXPECT_LE(found[i].end(), from + 3);
        EXPECT_GE(found[i].duration, 2) << "and most of the pause is";
    }
}

TEST_F(SoundOfProjects, aFilmWithoutSoundAndALogWithLevelsStayAsTheyAre) {
    auto const silent = movie(5, {});
    EXPECT_TRUE(imported(silent).metadata->micLevels.empty());
    fs::remove_all(folder / "film.recproj");
    EXPECT_EQ(imported(movie(5, tone(5, 440)), R"({"micLevels": [0, 0.5]})").metadata->micLevels,
              (std::vector<float>{0, 0.5}));
}

TEST_F(SoundOfProjects, aMicrophoneBesideTheMovieIsMeasuredWhereItIsInItAndTheSystemsSoundIsNot) {
    NewProject made{.movie = movie(6, {}), .importMode = ImportMode::copy};
    writeSound(folder / "microphone.caf", tone(2, 300, 0.3));
    writeSound(folder / "system.caf", tone(6, 300, 0.3));
    made.sounds = {{AudioRole::microphone, {folder / "microphone.caf", 3, 2}},
                   {AudioRole::system, {folder / "system.caf", 0, 6}}};
    ProjectPackage const package(folder / "take.recproj");
    auto const levels = createProject(package, made).metadata->micLevels;
    ASSERT_EQ(levels.size(), 60u);
    for (std::size_t i = 0; i < levels.size(); ++i)
        EXPECT_NEAR(levels[i], i >= 30 && i < 50 ? 0.212 : 0, 0.002) << "tenth " << i;
    made.sounds.erase(made.sounds.begin());
    auto const heard = createProject(ProjectPackage(folder / "other.recproj"), made).metadata->micLevels;
    EXPECT_NEAR(heard.at(5), 0.212, 0.002) << "without a microphone, what is heard";
}

TEST_F(SoundOfProjects, anImportCancelledWhileItMeasuresLeavesNothing) {
    ImportRequest const request{.movie = movie(20, tone(20, 440)), .package = folder / "film.recproj"};
    NewProject made{.movie = request.movie, .importMode = ImportMode::copy};
    std::vector<double> reports;
    made.measured = [&](double done) {
        reports.push_back(done);
        if (reports.size() == 5) throw Error("enough");
    };
    EXPECT_THROW(createProject(ProjectPackage(request.package), made), Error);
    EXPECT_EQ(reports.size(), 5u);
    EXPECT_TRUE(std::ranges::is_sorted(reports) && reports.back() > 0 && reports.back() < 1);
    EXPECT_FALSE(fs::exists(request.package));
}

TEST_F(SoundOfProjects, thePointerOfALogFromElsewhereStandsAtItsClicks) {
    auto const project = imported(movie(8, {}), R"({
        "clicks": [{"t": 4.5, "position": {"x": 0.3, "y": 0.6}}],
        "cursorSamples": [{"t": 0, "position": {"x": 0.5, "y": 0.5}}, {"t": 1, "position": {"x": 0.3, "y": 0.6}},
                          {"t": 7, "position": {"x": 0.9, "y": 0.1}}]})");
    auto const log = polished(project, {}).project.metadata;
    for (double const t : {2.0, 4.5, 6.0}) EXPECT_NEAR(log->cursorPosition(t)->x, 0.3, 0.5 / 1920) << t;
}
