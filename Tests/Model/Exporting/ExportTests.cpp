#include "../../Render/Export/TestTake.h"

#include <Tavaro/Model/Exporting/PreparedExport.h>
#include <Tavaro/Model/Project/OpenProject.h>

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <gtest/gtest.h>

using namespace tavaro;

namespace {

std::string refusalOf(ExportChoices const& choices) {
    try {
        requireUsable(choices);
        return "";
    } catch (Error const& error) {
        return error.what();
    }
}

}

TEST(ExportChoices, whatIsNotSaidFollowsFromThePresetElseFromTheProject) {
    DemoProject project;
    project.exportSettings = {.size = {1000, 500}, .fps = 24, .presetID = "x"};
    EXPECT_EQ(settingsFor({}, project), project.exportSettings);
    EXPECT_EQ(settingsFor({.output = "film.mp4"}, project), project.exportSettings);
    for (auto const& preset : ExportPreset::all())
        EXPECT_EQ(settingsFor({.preset = preset.id}, project), preset.settings());

    auto const faster = settingsFor({.preset = "web", .fps = 50, .audio = false}, project);
    EXPECT_EQ(faster.fps, 50);
    EXPECT_EQ(faster.size, ExportPreset::withID("web")->size);
    EXPECT_FALSE(faster.includesAudio || faster.presetID); // it is the preset's no more

    EXPECT_EQ(settingsFor({.codec = VideoCodecChoice::proRes422}, project).container, ExportContainer::mov);
    EXPECT_EQ(settingsFor({.output = "film.MOV"}, project).container, ExportContainer::mov);
    project.canvas = {1080, 1920};
    EXPECT_EQ(settingsFor({.output = "film.gif"}, project).size, (Size2{540, 960}));
    project.exportSettings.container = ExportContainer::gif;
    EXPECT_EQ(settingsFor({.output = "film.gif"}, project).size, (Size2{1000, 500}));
}

TEST(ExportChoices, whatCannotBeMetIsRefusedWithASentence) {
    EXPECT_EQ(refusalOf({.preset = "vhs"}), "There is no preset “vhs”; `tavaro presets` lists them.");
    EXPECT_EQ(refusalOf({.size = Size2{15, 100}}), "Each side of a film has 16 to 8192 pixels; 15 × 100 cannot be.");
    EXPECT_EQ(refusalOf({.fps = 241}), "A film has 1 to 240 frames a second; 241 cannot be.");
    EXPECT_EQ(refusalOf({.bitrate = 1}), "A film has 50000 to 2000000000 bits a second; 1 cannot be.");
    EXPECT_EQ(refusalOf({.output = "film.avi"}), "“film.avi” has none of the endings .mp4, .mov and .gif.");
    EXPECT_EQ(refusalOf({.container = ExportContainer::mov, .output = "film.mp4"}),
              "mov does not go with the name “film.mp4”.");
    EXPECT_EQ(refusalOf({.fps = 240, .container = ExportContainer::mov, .output = "film.mov"}), "");
}

TEST(ExportJob, writesWhatItsPlanSaysAndTellsHowFarItIs) {
    TestTake const take("model-export", 30);
    auto const prepared = std::make_shared<PreparedExport>(
        take.package, take.project,
        ExportChoices{.size = Size2{161, 90}, .fps = 30, .output = take.output("film.mp4").string()});
    EXPECT_EQ(prepared->oddSize(), (Size2{161, 90}));
    auto plan = prepared->plan();
    MainQueue queue;
    auto job = exportJob(queue, prepared);
    ExportProgress last;
    job.onProgress([&](ExportProgress const& progress) {
        EXPECT_LE(last.framesWritten, progress.framesWritten);
        last = progress;
    });
    job.start();
    auto film = job.wait();
    EXPECT_EQ(last.framesWritten, plan.frames);
    EXPECT_EQ(film.bytes, static_cast<std::int64_t>(std::filesystem::file_size(take.output("film.mp4"))));
    auto const info = MovieReader(film.path).info();
    EXPECT_EQ((Size2{info.width, info.height}), (Size2{plan.width, plan.height}));
    EXPECT_NEAR(info.duration, plan.duration, 1.0 / 30);
    film.bytes.reset();
    EXPECT_EQ(film, plan);
    EXPECT_EQ(prepared->plan().path, take.output("film 2.mp4")); // the first name is taken now
}

TEST(ExportJob, thatIsCancelledOrGoesAwayLeavesNoFile) {
    TestTake const take("model-cancel");
    for (bool const goesAway : {false, true}) {
        MainQueue queue;
        std::optional<Job<ExportedFilm, ExportProgress>> job(
            exportJob(queue, std::make_shared<PreparedExport>(
                                 take.package, take.project,
                                 ExportChoices{.size = Size2{640, 360}, .output = take.output("film.mp4").string()})));
        bool hasBegun = false;
        job->onProgress([&](ExportProgress const& progress) { hasBegun |= progress.framesWritten > 0; });
        job->start();
        queue.runUntil([&] { return hasBegun || job->isFinished(); });
        if (goesAway) {
            job.reset();
        } else {
            job->cancel();
            try {
                job->wait();
                ADD_FAILURE() << "was not cancelled";
            } catch (ExportError const& error) {
                EXPECT_EQ(error.kind(), ExportError::Kind::cancelled);
            }
        }
        EXPECT_EQ(take.filesLeft(), 0);
    }
}

TEST(ExportChoices, aProjectRemembersThemAsAStepThatCanBeTakenBack) {
    TestTake const take("model-remember");
    take.package.save(take.project);
    OpenProject open(take.package.url());
    rememberExportSettings(open, ExportPreset::withID("web")->settings());
    EXPECT_EQ(open.document().exportSettings.presetID, "web");
    EXPECT_EQ(settingsFor({}, open.document()), ExportPreset::withID("web")->settings());
    EXPECT_EQ(open.undoName(), "Export Settings");
}
