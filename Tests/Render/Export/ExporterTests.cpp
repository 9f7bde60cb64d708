#include "TestTake.h"

#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Export/FilmPainter.h>

#include <Tests/Media/Files/FullDisk.h>

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <sstream>

namespace tavaro {

namespace {

std::string bytesOf(std::filesystem::path const& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

/// The sentence that the call fails with, or "no failure".
template<class Call> std::string failure(Call const& call) {
    try {
        call();
    } catch (ExportError const& error) {
        return error.what();
    }
    return "no failure";
}

/// Two clips out of order, one sped up, with a following zoom across the cut, a loupe, clicks and motion blur.
void edit(DemoProject& project) {
    project.timeline.clips = {{.asset = "screen.mp4", .start = 0, .sourceStart = 1.5, .duration = 0.6, .speed = 2},
                              {.asset = "screen.mp4", .start = 0.6, .sourceStart = 0.2, .duration = 0.9, .speed = 1}};
    project.zoomEvents = {{.start = 0.2,
                           .duration = 0.8,
                           .rampIn = 0.2,
                           .rampOut = 0.2,
                           .scale = 1.8,
                           .motionBlur = 0.6,
                           .followsCursor = true},
                          {.start = 1.0,
                           .duration = 0.5,
                           .rampIn = 0.1,
                           .rampOut = 0.1,
                           .center = {0.4, 0.4},
                           .scale = 2,
                           .style = ZoomStyle::loupe}};
    project.metadata.edit().clicks = {{.t = 0.4, .position = {0.5, 0.6}}, {.t = 2, .position = {0.3, 0.6}}};
}

TEST(Exporter, everyFrameOfTheMovieIsTheStillOfItsTime) {
    TestTake take("stills");
    edit(take.project);
    Exporter exporter(take.project, take.package, take.settings);
    auto const movie = exporter.exportMovie(take.output());
    auto const info = MovieReader(movie).info();
    EXPECT_EQ(info.frameCount, 45);
    EXPECT_NEAR(info.duration, 1.5, 1e-3);
    auto stills = filmPainter(take.project, take.package, take.settings);
    for (int const n : {0, 7, 17, 18, 19, 29, 36, 44}) {
        auto const still = stills.still(n / 30.0);
        auto const frame = movieFrame(movie, n, 30);
        EXPECT_GE(psnr(still.view(), frame.view()), 40) << "frame " << n;
    }
    auto const wrong = stills.still(17 / 30.0);
    EXPECT_LT(psnr(wrong.view(), movieFrame(movie, 20, 30).view()), 35) << "frames are told apart";
}

TEST(Exporter, clipsOfSeveralRecordingsShowTheirOwnFrames) {
    TestTake take("assets");
    std::filesystem::copy_file(take.package.assetURL("screen.mp4"), take.package.assetURL("second.mp4"));
    take.project.timeline.clips = {{.asset = "screen.mp4", .start = 0, .sourceStart = 0, .duration = 0.2},
                                   {.asset = "second.mp4", .start = 0.2, .sourceStart = 2, .duration = 0.2},
                                   {.asset = "screen.mp4", .start = 0.4, .sourceStart = 0.2, .duration = 0.2}};
    take.project.cursor.isVisible = false;
    Exporter exporter(take.project, take.package, take.settings);
    auto const movie = exporter.exportMovie(take.output());

    auto plain = take.project;
    plain.timeline.clips = {{.asset = "screen.mp4", .duration = 3}};
    auto source = filmPainter(plain, take.package, take.settings);
    for (auto const& [frame, second] : {std::pair{3, 0.1}, {8, 2 + 2 / 30.0}, {14, 0.2 + 2 / 30.0}}) {
        EXPECT_GE(psnr(movieFrame(movie, frame, 30).view(), source.still(second).view()), 40) << frame;
    }
}

TEST(Exporter, theNumberOfDrawingThreadsChangesNoByte) {
    TestTake take("threads");
    edit(take.project);
    std::vector<std::string> movies;
    for (int const threads : {1, 2, 5}) {
        Exporter exporter(take.project, take.package, take.settings,
                          {.renderer = {.threads = threads}, .encoderThreads = 1, .encoder = EncoderChoice::software});
        movies.push_back(bytesOf(exporter.exportMovie(take.output(std::to_string(threads) + ".mp4"))));
    }
    EXPECT_FALSE(movies[0].empty());
    EXPECT_TRUE(movies[0] == movies[1]);
    EXPECT_TRUE(movies[0] == movies[2]);
}

TEST(Exporter, everyCodecGoesIntoTheContainersThatTakeIt) {
    TestTake take("codecs", 12);
    for (auto const codec : {VideoCodecChoice::h264, VideoCodecChoice::hevc, VideoCodecChoice::proRes422}) {
        for (auto const container : {ExportContainer::mp4, ExportContainer::mov}) {
            take.settings.codec = codec;
            take.settings.container = container;
            auto const name =
                std::string(namesOf(codec)[std::size_t(codec)]) + "." + std::string(fileExtension(container));
            Exporter exporter(take.project, take.package, take.settings);
            auto const sentence = failure([&] { exporter.exportMovie(take.output(name)); });
            if (codec == VideoCodecChoice::proRes422 && container == ExportContainer::mp4) {
                EXPECT_EQ(sentence, "Could not write the export: ProRes 422 is stored in MOV files only");
                continue;
            }
            ASSERT_EQ(sentence, "no failure") << name;
            EXPECT_EQ(MovieReader(take.output(name)).info().frameCount, 12) << name;
        }
    }
}

TEST(Exporter, progressCountsUpToTheLastFrame) {
    TestTake take("progress", 30);
    Exporter exporter(take.project, take.package, take.settings);
    std::vector<ExportProgress> reports;
    exporter.exportMovie(take.output(), [&](ExportProgress const& progress) { reports.push_back(progress); });
    EXPECT_EQ(reports.front().stage, ExportStage::preparing);
    EXPECT_EQ(reports.back().stage, ExportStage::finishing);
    EXPECT_EQ(reports.back().framesWritten, 30);
    for (std::size_t i = 1; i < reports.size(); ++i) {
        EXPECT_GE(reports[i].framesWritten, reports[i - 1].framesWritten);
        EXPECT_EQ(reports[i].totalFrames, 30);
    }
}

TEST(Exporter, aCancelledExportSaysSoAndLeavesNoFile) {
    TestTake take("cancel");
    Exporter exporter(take.project, take.package, take.settings);
    auto const sentence = failure([&] {
        exporter.exportMovie(take.output(), [&](ExportProgress const& progress) {
            if (progress.framesWritten >= 5) exporter.cancel();
        });
    });
    EXPECT_EQ(sentence, "Export cancelled.");
    EXPECT_EQ(take.filesLeft(), 0);
}

TEST(Exporter, whatTheProgressThrowsEndsTheExportAndLeavesNoFile) {
    TestTake take("throws");
    Exporter exporter(take.project, take.package, take.settings);
    EXPECT_THROW(exporter.exportMovie(take.output(),
                                      [](ExportProgress const& progress) {
                                          if (progress.framesWritten >= 5)
                                              throw std::domain_error("the window is gone");
                                      }),
                 std::domain_error);
    EXPECT_EQ(take.filesLeft(), 0);
}

TEST(Exporter, aSecondExportIsRefusedWhileOneRuns) {
    TestTake take("busy", 30);
    Exporter first(take.project, take.package, take.settings);
    Exporter second(take.project, take.package, take.settings);
    std::string sentence;
    first.exportMovie(take.output("first.mp4"), [&](ExportProgress const&) {
        if (sentence.empty()) sentence = failure([&] { second.exportMovie(take.output("second.mp4")); });
    });
    EXPECT_EQ(sentence, "Tavaro is already exporting.");
    EXPECT_EQ(failure([&] { second.exportMovie(take.output("second.mp4")); }), "no failure") << "its turn has come";
}

TEST(Exporter, aFileThatIsThereIsKeptAndTheExportTakesTheNextName) {
    TestTake take("names", 6);
    std::ofstream(take.output()) << "precious";
    Exporter exporter(take.project, take.package, take.settings);
    EXPECT_EQ(exporter.exportMovie(take.output()), take.output("out 2.mp4"));
    EXPECT_EQ(bytesOf(take.output()), "precious");
}

TEST(Exporter, aFullDiskStopsTheExportWithASentenceAndLeavesNoFile) {
    TestTake take("full");
    auto const sentence = failure([&] {
        FullDisk const full(64 * 1024);
        Exporter(take.project, take.package, take.settings).exportMovie(take.output());
    });
    EXPECT_EQ(sentence.rfind("Could not write the export: ", 0), 0u) << sentence;
    EXPECT_EQ(take.filesLeft(), 0);
}

TEST(Exporter, aGIFShowsTheStillsAtItsOwnRateAndLastsAsLong) {
    TestTake take("gif");
    edit(take.project);
    take.settings.container = ExportContainer::gif;
    take.settings.fps = 15;
    Exporter exporter(take.project, take.package, take.settings);
    std::vector<ExportProgress> reports;
    auto const gif =
        exporter.exportFile(take.output("out.gif"), [&](auto const& progress) { reports.push_back(progress); });
    auto const info = MovieReader(gif).info();
    EXPECT_EQ(info.codec, "gif");
    EXPECT_NEAR(info.duration, 23 / 15.0, 0.011);
    auto stills = filmPainter(take.project, take.package, take.settings);
    for (int const n : {0, 8, 9, 14, 22})
        EXPECT_GE(psnr(stills.still(n / 15.0).view(), movieFrame(gif, n, 15).view()), 32) << n;
    EXPECT_EQ(reports.front().stage, ExportStage::preparing);
    EXPECT_EQ(reports.back().stage, ExportStage::finishing);
    EXPECT_EQ(reports.back().framesWritten, 23);
}

TEST(Exporter, aGIFThatStopsAtAnyStageLeavesNoFile) {
    TestTake take("gif-stops");
    take.settings.container = ExportContainer::gif;
    take.settings.fps = 15;
    for (auto const stage : {ExportStage::preparing, ExportStage::rendering}) {
        Exporter exporter(take.project, take.package, take.settings);
        auto const sentence = failure([&] {
            exporter.exportGIF(take.output("out.gif"), [&](ExportProgress const& progress) {
                if (progress.stage == stage) exporter.cancel();
            });
        });
        EXPECT_EQ(sentence, "Export cancelled.");
        EXPECT_EQ(take.filesLeft(), 0);
    }
    auto const sentence = failure([&] {
        FullDisk const full(10'000);
        Exporter(take.project, take.package, take.settings).exportGIF(take.output("out.gif"));
    });
    EXPECT_EQ(sentence, "Could not encode the GIF. The file would be larger than this disk or user may write.");
    EXPECT_EQ(take.filesLeft(), 0);
    take.settings.fps = 60;
    EXPECT_EQ(failure([&] { Exporter(take.project, take.package, take.settings).exportGIF(take.output("out.gif")); }),
              "Could not write the export: a GIF has 1 to 50 frames a second, not 60");
}

TEST(Exporter, mediaThatCannotBeUsedIsNamed) {
    TestTake take("media", 6);
    auto const exported = [&](DemoProject const& project, ExportSettings const& settings) {
        return failure([&] { Exporter(project, take.package, settings).exportMovie(take.output()); });
    };
    auto project = take.project;
    project.timeline.clips.push_back({.asset = "gone.mov", .start = 0.2, .duration = 1});
    EXPECT_EQ(exported(project, take.settings), "Missing asset 'gone.mov' in the project.");

    std::ofstream(take.package.assetURL("noise.mp4")) << "this is no movie";
    project.timeline.clips.back().asset = "noise.mp4";
    EXPECT_EQ(exported(project, take.settings),
              "Could not read the recording: it is damaged, or not a movie (noise.mp4)");

    project.timeline.clips.clear();
    EXPECT_EQ(exported(project, take.settings).rfind("Could not read the recording: ", 0), 0u);

    project = take.project;
    project.sourceSize = {};
    EXPECT_EQ(exported(project, take.settings),
              "Could not read the recording: the project gives its size as 0 × 0 pixels");

    project = take.project;
    project.background.content = BackgroundStyle::ImageFile{.assetName = "beach.png"};
    EXPECT_EQ(exported(project, take.settings), "Missing asset 'beach.png' in the project.");
    for (auto const* const name : {"beach.png", "beach.jpg"}) {
        std::ofstream(take.package.assetURL(name)) << "no picture";
        project.background.content = BackgroundStyle::ImageFile{.assetName = name};
        EXPECT_EQ(
            exported(project, take.settings)
                .rfind("The background picture '" + std::string(name) + "' cannot be used: it is damaged, or not a", 0),
            0u)
            << exported(project, take.settings);
    }

    auto settings = take.settings;
    settings.size = {0, 360};
    EXPECT_EQ(exported(take.project, settings).rfind("Could not write the export: a movie is at least 16", 0), 0u);
    settings = take.settings;
    settings.fps = 0;
    EXPECT_EQ(exported(take.project, settings).rfind("Could not write the export: a movie has 1 to 240", 0), 0u);
    settings = take.settings;
    settings.container = ExportContainer::gif;
    EXPECT_EQ(exported(take.project, settings).rfind("Could not write the export: a GIF is no movie", 0), 0u);
    EXPECT_EQ(take.filesLeft(), 0);
}

TEST(Exporter, aFolderThatCannotBeMadeIsNamed) {
    TestTake take("folder", 6);
    std::ofstream(take.output("file")) << "not a folder";
    auto const sentence = failure([&] {
        Exporter(take.project, take.package, take.settings).exportMovie(take.output("file") / "deep" / "out.mp4");
    });
    EXPECT_EQ(sentence.rfind("Could not write the export: the folder '", 0), 0u) << sentence;
}

TEST(Exporter, anOddSizeIsRoundedDownToEvenSides) {
    TestTake take("odd", 6);
    take.settings.size = {641, 361};
    Exporter exporter(take.project, take.package, take.settings);
    auto const info = MovieReader(exporter.exportMovie(take.output())).info();
    EXPECT_EQ(info.width, 640);
    EXPECT_EQ(info.height, 360);
}

}

}
