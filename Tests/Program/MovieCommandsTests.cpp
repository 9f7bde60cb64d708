#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <gmock/gmock.h>

#include <chrono>
#include <set>
#include <thread>

using namespace tavaro;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
namespace fs = std::filesystem;

namespace {

class MovieCommands : public ProcessFixture {
protected:
    /// Four seconds of moving picture, 640 × 360 at 30 frames a second.
    void makeMovie(std::string const& name) {
        ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=640x360:rate=30:duration=4", "-pix_fmt", "yuv420p", path(name)});
    }
    std::string importMovie() {
        makeMovie("clip.mp4");
        auto const outcome = tavaro({"import", path("clip.mp4"), "-o", path("tour")});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        return path("tour.recproj");
    }
    void expectFailure(Outcome const& outcome, std::string const& sentence) {
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_THAT(outcome.error, HasSubstr(sentence));
        EXPECT_THAT(outcome.out, Not(HasSubstr("recproj")));
    }
};

}

TEST_F(MovieCommands, aForeignMovieWithAHandWrittenLogBecomesAFilm) {
    makeMovie("clip.mp4");
    write("log.json", R"({"clicks":[{"t":1.2,"position":{"x":0.4,"y":0.5}},{"t":1.6,"position":{"x":0.42,"y":0.5}}],
                          "cursorSamples":[{"t":0,"position":{"x":0.9,"y":0.9}},{"t":1.1,"position":{"x":0.4,"y":0.5}}]})");
    ASSERT_EQ(tavaro({"import", path("clip.mp4"), "--events", path("log.json"), "-o", path("tour.recproj")}).exitCode,
              0);

    auto const polished = tavaro({"polish", path("tour.recproj"), "--mode", "desktopApp"});
    EXPECT_EQ(polished.exitCode, 0) << polished.error;
    EXPECT_THAT(polished.out, HasSubstr("Added 1 zoom\n"));
    EXPECT_THAT(polished.out, HasSubstr("Highlighted 2 clicks\n"));

    auto const outline = tavaro({"info", path("tour.recproj")});
    EXPECT_THAT(outline.out, HasSubstr("\nclips      ████████"));
    EXPECT_THAT(outline.out, HasSubstr("\nzooms      "));
    EXPECT_THAT(outline.out, HasSubstr("\nclicks     "));
    EXPECT_THAT(outline.out, HasSubstr(", automatic"));

    ASSERT_EQ(
        tavaro({"frame", path("tour.recproj"), "--at", "1.8", "--max-width", "480", "-o", path("f.png")}).exitCode, 0);
    EXPECT_THAT(read("f.png").substr(0, 8), "\x89PNG\r\n\x1a\n");

    auto const exported =
        tavaro({"export", path("tour.recproj"), "--size", "640x360", "--fps", "30", "-o", path("tour.mp4")});
    ASSERT_EQ(exported.exitCode, 0) << exported.error;
    EXPECT_THAT(exported.out, HasSubstr(path("tour.mp4")));
    auto const info = MovieReader(path("tour.mp4")).info();
    EXPECT_EQ(info.width, 640);
    EXPECT_EQ(info.height, 360);
    EXPECT_NEAR(info.duration, 4, 1.0 / 30);

    auto const again =
        tavaro({"export", path("tour.recproj"), "--size", "640x360", "--fps", "30", "-o", path("tour.mp4")});
    EXPECT_THAT(again.error + again.out, HasSubstr("tour")); // never overwritten: refused, or under another name
    EXPECT_EQ(MovieReader(path("tour.mp4")).info(), info);
}

TEST_F(MovieCommands, polishOptionsReachTheDirector) {
    auto const project = importMovie();
    EXPECT_EQ(tavaro({"polish", project, "--no-background", "--no-click-highlights"}).exitCode, 0);
    auto const document = ProjectPackage(project).load();
    EXPECT_TRUE(document.background.isNone());
    EXPECT_EQ(document.cursor.clickEffect, ClickEffect::none);
    auto const report = tavaro({"polish", project, "--json"});
    EXPECT_THAT(report.out, HasSubstr("\"zoomsAdded\":0"));

    auto const backup = ProjectPackage(project).loadBackup();
    EXPECT_EQ(tavaro({"polish", project, "--json"}).out, report.out);
    EXPECT_EQ(ProjectPackage(project).loadBackup(), backup) << "nothing changed, so the way back stays";

    auto const directed = tavaro({"polish", project, "--camera-director", "dynamic", "--report"});
    EXPECT_EQ(directed.exitCode, 0) << directed.error;
    EXPECT_THAT(directed.out, HasSubstr("zooms added              0\n"));
    auto withCue = ProjectPackage(project).load();
    EXPECT_EQ(withCue.cameraDirectorStyle, CameraDirectorStyle::dynamic);
    withCue.layoutCues = {{.time = 1}, {.time = 2, .isAutomatic = true}};
    ProjectPackage(project).save(withCue);
    EXPECT_EQ(tavaro({"polish", project, "--camera-director", "off"}).exitCode, 0);
    EXPECT_EQ(ProjectPackage(project).load().layoutCues.size(), 1u) << "what the director laid goes with it";
    EXPECT_EQ(tavaro({"polish", project, "--camera-director", "wild"}).exitCode, 2);
}

TEST_F(MovieCommands, whatIsPrivateInATextIsListedWithoutItsValue) {
    write("screen.txt", "a quiet line\nMail to maria@firma.example, badge EMP-0042\n");
    auto const plain = tavaro({"scan-text", path("screen.txt"), "--pattern", "EMP-\\d+", "--pattern", "(open"});
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_THAT(plain.out, HasSubstr("2:9  Email  m••••••"));
    EXPECT_THAT(plain.out, HasSubstr("2:36  Custom  E••••••"));
    EXPECT_THAT(plain.error, HasSubstr("“(open” is left out"));
    auto const json = tavaro({"scan-text", path("screen.txt"), "--json"});
    EXPECT_THAT(json.out, HasSubstr("\"kind\":\"email\""));
    for (auto const& outcome : {plain, json}) EXPECT_THAT(outcome.out, testing::Not(HasSubstr("maria")));
    EXPECT_THAT(tavaro({"scan-text", path("screen.txt"), "--kinds", "card"}).out, HasSubstr("Nothing private"));
    expectFailure(tavaro({"scan-text", path("absent.txt")}), "There is no file");
    std::string utf16;
    for (char const c : std::string_view("Mail to maria@firma.example\n")) utf16.append({c, '\0'});
    write("marked.txt", "\xFF\xFE" + utf16);
    EXPECT_THAT(tavaro({"scan-text", path("marked.txt")}).out, HasSubstr("1:9  Email"));
    write("unmarked.txt", utf16);
    expectFailure(tavaro({"scan-text", path("unmarked.txt")}), "it has NUL bytes");
    write("quiet.txt", "a quiet line\n");
    EXPECT_EQ(tavaro({"scan-text", path("quiet.txt"), "--json"}).out, "[]\n");
    EXPECT_EQ(tavaro({"scan-text", path("screen.txt"), "--kinds", "shoes"}).exitCode, 2);
}

TEST_F(MovieCommands, whatIsNoMovieIsRefusedAndLeavesNothing) {
    makeMovie("clip.mp4");
    auto const whole = read("clip.mp4");
    write("cut.mp4", whole.substr(0, 900));
    write("empty.mp4", "");
    write("text.mp4", "this is no movie");
    ffmpeg({"-f", "lavfi", "-i", "sine=duration=1", path("sound.m4a")});
    for (std::string const name : {"cut.mp4", "empty.mp4", "text.mp4", "sound.m4a", "absent.mp4"}) {
        auto const outcome = tavaro({"import", path(name), "-o", path("tour.recproj")});
        EXPECT_EQ(outcome.exitCode, 1) << name;
        EXPECT_GT(outcome.error.size(), 20u) << name;
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << name << ": " << outcome.error;
        EXPECT_FALSE(fs::exists(path("tour.recproj"))) << name;
    }
    expectFailure(tavaro({"import", path("sound.m4a"), "-o", path("tour.recproj")}), "no video track");
}

TEST_F(MovieCommands, aMovieCutShortIsUsedAndToldOf) {
    ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=320x180:rate=30:duration=4", "-movflags", "+faststart",
            path("whole.mp4")});
    auto const whole = read("whole.mp4");
    write("cut.mp4", whole.substr(0, whole.size() / 2));
    auto const sentence = HasSubstr("is cut short: its pictures end at 0:0");
    auto const imported = tavaro({"import", path("cut.mp4"), "-o", path("cut")});
    EXPECT_EQ(imported.exitCode, 0);
    EXPECT_THAT(imported.error, AllOf(HasSubstr("“cut.mp4”"), sentence));

    EXPECT_EQ(tavaro({"export", path("cut.recproj"), "--json", "--size", "64x64", "-o", path("cut-film.mp4")}).error,
              "")
        << "the edit shows nothing of what is missing";

    ASSERT_EQ(tavaro({"import", path("whole.mp4"), "-o", path("tour")}).error, "");
    auto const exporting = [&](std::string const& film) {
        return tavaro({"export", path("tour.recproj"), "--json", "--size", "64x64", "-o", path(film)});
    };
    EXPECT_EQ(exporting("before.mp4").error, "");
    write("tour.recproj/assets/whole.mp4", whole.substr(0, whole.size() / 2));
    auto const exported = exporting("after.mp4");
    EXPECT_EQ(exported.exitCode, 0);
    EXPECT_THAT(exported.error, AllOf(HasSubstr("“whole.mp4”"), sentence));
}

TEST_F(MovieCommands, eventsThatDoNotFitSayWhere) {
    makeMovie("clip.mp4");
    write("log.json", R"({"clicks":[{"t":1},{"t":"soon"}]})");
    expectFailure(tavaro({"import", path("clip.mp4"), "--events", path("log.json"), "-o", path("tour.recproj")}),
                  "clicks[1].t: expected a number, found a string");
    EXPECT_FALSE(fs::exists(path("tour.recproj")));
}

TEST_F(MovieCommands, aProjectWithoutItsMovieSaysWhichOneIsMissing) {
    auto const project = importMovie();
    fs::remove(project + "/assets/clip.mp4");
    expectFailure(tavaro({"frame", project, "--at", "1", "-o", path("f.png")}),
                  "Missing asset 'clip.mp4' in the project.");
    expectFailure(tavaro({"export", project, "-o", path("tour.mp4")}), "Missing asset 'clip.mp4' in the project.");
    EXPECT_FALSE(fs::exists(path("tour.mp4")));
    EXPECT_FALSE(fs::exists(path("f.png")));
}

TEST_F(MovieCommands, damagedAndMissingProjectsAreExplained) {
    expectFailure(tavaro({"info", path("absent.recproj")}), "there is no such project");
    fs::create_directories(path("bad.recproj"));
    write("bad.recproj/project.json", R"({"zoomEvents":[{"scale":[]}]})");
    expectFailure(tavaro({"polish", path("bad")}),
                  path("bad.recproj") + "”: zoomEvents[0].scale: expected a number, found an array");
}

TEST_F(MovieCommands, placesThatCannotBeWrittenAreNamed) {
    auto const project = importMovie();
    write("file", "in the way");
    expectFailure(tavaro({"import", path("clip.mp4"), "-o", path("file/tour.recproj")}), "file/tour");
    expectFailure(tavaro({"export", project, "-o", path("file/tour.mp4")}), "Could not write the export");
    expectFailure(tavaro({"frame", project, "--at", "0", "-o", path("file/f.png")}),
                  path("file") + "' is not a folder");
    expectFailure(tavaro({"frame", project, "--at", "0", "-o", path("none/f.png")}),
                  "there is no folder '" + path("none") + "'");
    expectFailure(tavaro({"import", path("clip.mp4"), "-o", project}), "exists already");
}

TEST_F(MovieCommands, aFullDiskStopsWithASentenceAndLeavesNoHalfFile) {
    auto const project = importMovie();
    auto const before = names(folder);
    auto const exported = tavaroWithFilesUpTo(20'000, {"export", project, "-o", path("tour.mp4")});
    EXPECT_EQ(exported.exitCode, 1);
    EXPECT_THAT(exported.error, HasSubstr("Could not write the export: "));
    auto const imported = tavaroWithFilesUpTo(20'000, {"import", path("clip.mp4"), "-o", path("second.recproj")});
    EXPECT_EQ(imported.exitCode, 1);
    EXPECT_EQ(names(folder), before);
}

TEST_F(MovieCommands, anImportKilledAtAnyInstantLeavesAWholeProjectOrNone) {
    makeMovie("clip.mp4");
    fs::create_directory(path("made"));
    ProjectPackage const package(path("made/tour.recproj"));
    auto const importing = [&] { return start(TAVARO_PROGRAM, {"import", path("clip.mp4"), "-o", package.url()}); };
    auto const began = std::chrono::steady_clock::now();
    ASSERT_EQ(importing().wait().exitCode, 0);
    auto const whole = std::chrono::steady_clock::now() - began;
    constexpr int kills = 30;
    for (int kill = 0; kill < kills; ++kill) {
        fs::remove_all(package.url());
        auto running = importing();
        std::this_thread::sleep_for(whole * kill / kills);
        running.send(SIGKILL);
        running.wait();
        if (!fs::exists(package.url())) continue;
        EXPECT_NO_THROW(package.load()) << "kill " << kill;
        EXPECT_EQ(fs::file_size(package.assetURL("clip.mp4")), fs::file_size(path("clip.mp4"))) << "kill " << kill;
    }
    fs::remove_all(package.url());
    fs::create_directory(path("made/.our.recproj")); // by which a name is tried
    ASSERT_EQ(importing().wait().exitCode, 0);
    EXPECT_THAT(names(path("made")), ElementsAre("tour.recproj")) << "the next import removes what was left";
}

TEST_F(MovieCommands, exportsToOneNameAtOnceLoseNoFilm) {
    ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=160x90:rate=10:duration=0.3", "-pix_fmt", "yuv420p", path("clip.mp4")});
    ASSERT_EQ(tavaro({"import", path("clip.mp4"), "-o", path("tour")}).exitCode, 0);
    fs::create_directory(path("films"));
    constexpr int rounds = 4, atOnce = 4;
    for (auto const ending : {".mp4", ".gif"}) {
        std::set<std::string> made;
        for (int round = 0; round < rounds; ++round) {
            std::vector<RunningProcess> exports;
            for (int i = 0; i < atOnce; ++i)
                exports.push_back(start(TAVARO_PROGRAM, {"export", path("tour.recproj"), "--json", "-o",
                                                         path(std::string("films/tour") + ending)}));
            for (auto& each : exports) {
                auto const outcome = each.wait();
                ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
                made.insert(outcome.out);
            }
        }
        EXPECT_EQ(made.size(), std::size_t{rounds * atOnce}) << "each is said to lie elsewhere";
    }
    EXPECT_EQ(names(path("films")).size(), std::size_t{2 * rounds * atOnce});
}

TEST_F(MovieCommands, anInterruptedExportLeavesNoFile) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer holds signals back while the main thread waits";
#endif
    auto const project = importMovie();
    fs::create_directories(path("films"));
    auto running = start(TAVARO_PROGRAM, {"export", project, "--preset", "youtube-4k", "-o", path("films/tour.mp4")});
    ASSERT_TRUE(becomesTrue([&] { return !names(path("films")).empty(); }));
    running.send(SIGINT);
    auto const outcome = running.wait();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.error, HasSubstr("Export cancelled."));
    EXPECT_THAT(names(path("films")), ElementsAre());
}

TEST_F(MovieCommands, aFilmHasTheEndingOfItsContainer) {
    auto const project = importMovie();
    auto const written = [&](Arguments arguments) {
        arguments.insert(arguments.begin(), {"export", project, "--size", "64x36", "--fps", "5"});
        auto const outcome = tavaro(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        return outcome.out;
    };
    EXPECT_EQ(written({"-o", path("film")}), path("film.mp4") + "\n");
    EXPECT_EQ(written({"-o", path("film"), "--container", "mov"}), path("film.mov") + "\n");
    EXPECT_EQ(written({"-o", path("film"), "--codec", "proRes422"}), path("film 2.mov") + "\n");
    EXPECT_EQ(written({"-o", path("film.MOV")}), path("film.MOV") + "\n");
    EXPECT_EQ(written({}), path("Movies/Tavaro/Exports/tour 36p.mp4") + "\n");
}

TEST_F(MovieCommands, aFilmForAFolderGoesIntoItUnderItsSuggestedName) {
    auto const project = importMovie();
    fs::create_directory(path("films"));
    for (auto const* name : {"films", "films/", "new/"}) {
        auto const outcome = tavaro({"export", project, "--estimate", "--size", "640x360", "-o", path(name)});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_THAT(outcome.out, HasSubstr((fs::path(path(name)) / "tour 360p.mp4").string() + "\n"));
    }
}

TEST_F(MovieCommands, aNameThatEndsInGIFMakesOneInTheShapeOfTheCanvas) {
    auto const project = importMovie();
    auto document = ProjectPackage(project).load();
    document.canvas = {1080, 1920};
    ProjectPackage(project).save(document);
    auto const planned = tavaro({"export", project, "--estimate", "-o", path("tour.gif")});
    EXPECT_THAT(planned.out, HasSubstr("540 × 960, 15 frames/s, GIF, 60 frames of 0:04.00, about 2"));
    EXPECT_THAT(planned.out, HasSubstr(path("tour.gif") + "\n"));
    EXPECT_FALSE(fs::exists(path("tour.gif")));
    auto const written = tavaro({"export", project, "--size", "97x65", "--json", "-o", path("tour.gif")});
    EXPECT_EQ(written.exitCode, 0) << written.error;
    EXPECT_THAT(written.out, HasSubstr("\"width\":96"));
    auto const info = MovieReader(path("tour.gif")).info();
    EXPECT_EQ(info.codec, "gif");
    EXPECT_EQ(info.height, 64);
    EXPECT_NEAR(info.duration, 4, 0.011);
}

TEST_F(MovieCommands, anEstimateCountsWhatTheOptionsAskFor) {
    auto const project = importMovie();
    auto const bytes = [&](Arguments options) {
        options.insert(options.begin(), {"export", project, "--estimate", "--json", "--fps", "30"});
        auto const out = tavaro(options).out;
        return std::stoll(out.substr(out.find("estimatedBytes") + 16));
    };
    EXPECT_EQ(bytes({"--bitrate", "800000"}) - bytes({"--bitrate", "800000", "--no-audio"}), 4 * 24'000);
    EXPECT_EQ(bytes({"--preset", "web"}) - bytes({"--preset", "web", "--bitrate", "2000000"}), 4 * 250'000);
}

TEST_F(MovieCommands, aFramePastTheEndIsRefused) {
    auto const project = importMovie();
    EXPECT_EQ(tavaro({"frame", project, "--at", "4", "-o", path("last.png")}).exitCode, 0);
    expectFailure(tavaro({"frame", project, "--at", "4.1", "-o", path("f.png")}),
                  "There is no frame at 0:04.10: the video ends at 0:04.00.");
    EXPECT_FALSE(fs::exists(path("f.png")));
    auto document = ProjectPackage(project).load();
    document.intro = TitleCard{.text = "Hello", .duration = 1};
    ProjectPackage(project).save(document);
    EXPECT_EQ(tavaro({"frame", project, "--at", "4.9", "-o", path("f.png")}).exitCode, 0) << "a card counts";
}

TEST_F(MovieCommands, aPictureThatIsThereIsOnlyReplacedWhereThatIsAskedFor) {
    auto const project = importMovie();
    write("mine.png", "mine");
    for (Arguments const& what : {Arguments{"--at", "1"}, {"--sheet", "2", "--max-width", "200"}}) {
        Arguments words{"frame", project, "-o", path("mine.png")};
        words.insert(words.end(), what.begin(), what.end());
        expectFailure(tavaro(words), "mine.png”: something with that name exists already. --overwrite replaces it.");
        EXPECT_EQ(read("mine.png"), "mine");
        words.push_back("--overwrite");
        EXPECT_EQ(tavaro(words).exitCode, 0);
        EXPECT_NO_THROW(readPNG(path("mine.png")));
        write("mine.png", "mine");
    }
}

TEST_F(MovieCommands, aSheetShowsMomentsOfTheWhole) {
    auto const project = importMovie();
    auto const sheet = tavaro({"frame", project, "--sheet", "6", "--max-width", "800", "-o", path("s.png"), "--json"});
    ASSERT_EQ(sheet.exitCode, 0) << sheet.error;
    EXPECT_THAT(sheet.out, HasSubstr("\"times\":[0.33"));
    auto const image = readPNG(path("s.png"));
    EXPECT_LE(image.width(), 800);
    EXPECT_GT(image.width(), 700);
    auto const frame = tavaro({"frame", project, "--at", "1", "--max-width", "320", "-o", path("f.png"), "--json"});
    EXPECT_THAT(frame.out, HasSubstr("\"path\":\"" + path("f.png") + "\",\"times\":[1],\"width\":320}"));
}

TEST_F(MovieCommands, wrongUsageIsToldApartFromFailure) {
    importMovie();
    for (auto const& arguments : std::vector<Arguments>{{},
                                                        {"dance"},
                                                        {"export"},
                                                        {"polish", "p", "--mode", "cinema"},
                                                        {"record", "--seconds", "-4"},
                                                        {"record", "--seconds", "nan"},
                                                        {"record", "--area", "1,2"},
                                                        {"record", "--area", "10,10,0,0"},
                                                        {"record", "--window", "nobody"},
                                                        {"import", "clip.mp4", "-o", ""},
                                                        {"export", "p", "-o", "tour.avi"},
                                                        {"export", "p", "--encoder", "turbo"},
                                                        {"export", "p", "--size", "8x8"},
                                                        {"export", "p", "--fps", "241"},
                                                        {"export", path("tour"), "--container", "mov", "-o", "a.mp4"},
                                                        {"frame", "", "--at", "1", "-o", "f.png"},
                                                        {"frame", "p", "--at", "x", "-o", "f.png"},
                                                        {"frame", "p", "--at", "nan", "-o", "f.png"},
                                                        {"frame", "p", "--at", "1", "-o", "f.jpg"},
                                                        {"frame", "p", "--at", "1"},
                                                        {"frame", "p", "-o", "f.png"},
                                                        {"frame", "p", "--sheet", "0"},
                                                        {"frame", "p", "--sheet", "4", "--at", "1", "-o", "f.png"}}) {
        auto const outcome = tavaro(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_NE(outcome.error + outcome.out, "");
    }
    EXPECT_EQ(tavaro({"--help"}).exitCode, 0);
    EXPECT_THAT(tavaro({"--version"}).out,
                MatchesRegex("tavaro [0-9]+\\.[0-9]+\\.[0-9]+( \\([0-9a-f]{10,}(-dirty)?\\))?\n"));
    auto const presets = tavaro({"presets", "--json"});
    EXPECT_THAT(presets.out, HasSubstr(R"("id":"youtube-4k")"));
    EXPECT_EQ(tavaro({"export", "p.recproj", "--preset", "cinema"}).exitCode, 1);
}

TEST_F(MovieCommands, whatIsLoggedLeavesTheResultReadableForPrograms) {
    ProjectPackage const package(importMovie());
    package.importAsset(path("clip.mp4"));
    auto project = package.load();
    project.cameraAsset = project.timeline.clips.at(0).asset; // a camera's movie without a matte
    project.camera.isEnabled = true;
    project.camera.cutout = true;
    package.save(project);
    auto const outcome = tavaro({"frame", path("tour"), "--at", "1", "-o", path("frame.png"), "--json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_THAT(outcome.error, HasSubstr("matte"));
    EXPECT_THAT(outcome.out, testing::StartsWith("{"));
}
