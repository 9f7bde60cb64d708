#include "../../Render/Export/TestTake.h"

#include <Tavaro/Model/Exporting/ExportController.h>
#include <Tavaro/Model/Project/OpenProject.h>

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <gtest/gtest.h>

#include <utility>

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
    EXPECT_EQ(refusalOf({.range = TimeRange{1, 0}}), "The part of the film to write has no length.");
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

TEST(ExportController, writesOneFilmAtATimeAndSaysHowFarItIs) {
    TestTake const take("model-controller", 30);
    auto const requested = [&](char const* name) {
        return ExportRequest{
            take.package, take.project, {.size = Size2{160, 90}, .output = take.output(name).string()}};
    };
    MainQueue queue;
    ExportController exporter(queue);
    double share = 0;
    bool isTold = true;
    auto const observation = exporter.observe([&](std::optional<RunningExport> const& running) {
        isTold = isTold && running.has_value() == exporter.isExporting();
        if (!running) return;
        EXPECT_LE(share, running->share);
        EXPECT_EQ(running->package, take.package.url());
        share = running->share;
    });
    std::optional<std::string> second;
    exporter.start(requested("film.mp4"), {.over = [&](ExportOutcome const& first) {
                       EXPECT_EQ(first.value().path, take.output("film.mp4"));
                       EXPECT_GT(std::exchange(share, 0), 0.9);
                       exporter.start(requested("film.mp4"),
                                      {.over = [&](ExportOutcome const& film) { second = film.value().path; }});
                   }});
    try {
        exporter.start(requested("film.mp4"));
        ADD_FAILURE() << "two at once";
    } catch (ExportError const& error) {
        EXPECT_EQ(error.kind(), ExportError::Kind::alreadyExporting);
        EXPECT_STREQ(error.what(), "Tavaro is already exporting.");
    }
    queue.runUntil([&] { return second.has_value(); });
    EXPECT_EQ(second, take.output("film 2.mp4"));
    EXPECT_TRUE(isTold && !exporter.isExporting());

    EXPECT_THROW(exporter.start({take.package, take.project, {.preset = "vhs"}}), Error);
    EXPECT_FALSE(exporter.isExporting());
}

TEST(ExportController, whatIsCancelledOrCannotBeMadeFailsByItsOutcome) {
    TestTake const take("model-controller-cancel");
    MainQueue queue;
    ExportController exporter(queue);
    std::optional<ExportError::Kind> kind;
    auto const exported = [&](DemoProject const& project) {
        kind.reset();
        exporter.start({take.package, project, {.size = Size2{640, 360}, .output = take.output("film.mp4").string()}},
                       {.over = [&](ExportOutcome const& outcome) {
                           try {
                               outcome.value();
                           } catch (ExportError const& error) {
                               kind = error.kind();
                           }
                       }});
    };
    exported(take.project);
    queue.runUntil([&] { return exporter.running()->progress.framesWritten > 0; });
    exporter.cancel();
    queue.runUntil([&] { return !exporter.isExporting(); });
    EXPECT_EQ(kind, ExportError::Kind::cancelled);

    auto without = take.project;
    without.timeline.clips[0].asset = "gone.mp4";
    exported(without);
    queue.runUntil([&] { return !exporter.isExporting(); });
    EXPECT_EQ(kind, ExportError::Kind::missingAsset);
    EXPECT_EQ(take.filesLeft(), 0);
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
