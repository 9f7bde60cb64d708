#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

/// Puts what is no plain file wherever a command reads one.
class SpecialFiles : public ProcessFixture {
protected:
    struct Kind {
        char const* name;
        std::function<void(fs::path const&)> make;
    };
    std::vector<Kind> const kinds{
        {"a pipe that nobody writes to", [](fs::path const& file) { ASSERT_EQ(mkfifo(file.c_str(), 0600), 0); }},
        {"a device without an end", [](fs::path const& file) { fs::create_symlink("/dev/zero", file); }},
        {"a folder", [](fs::path const& file) { fs::create_directory(file); }},
        {"a socket",
         [](fs::path const& file) {
             sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
             std::strncpy(address.sun_path, file.c_str(), sizeof address.sun_path - 1);
             int const made = socket(AF_UNIX, SOCK_STREAM, 0);
             ASSERT_EQ(bind(made, reinterpret_cast<sockaddr const*>(&address), sizeof address), 0);
             close(made);
         }},
    };

    /// A place that is read, and a command that reads it.
    struct Place {
        std::string file;
        Arguments command;
    };
    std::vector<Place> places() const {
        auto const project = path("p.recproj"), picture = path("f.png");
        return {
            {"p.recproj/project.json", {"info", project}},
            {"p.recproj/project.json", {"edit", project, "trim", "0", "1"}},
            {"p.recproj/project.previous.json", {"restore", project}},
            {"p.recproj/assets/look.cube", {"frame", project, "--at", "1", "-o", picture}},
            {"p.recproj/assets/beach.png", {"frame", project, "--at", "1", "-o", picture}},
            {"p.recproj/assets/beach.jpg", {"frame", project, "--at", "1", "-o", picture}},
            {"p.recproj/assets/screen.mp4", {"frame", project, "--at", "1", "-o", picture}},
            {"p.recproj/assets/screen.mp4", {"export", project, "-o", path("f.mp4")}},
            {"words.srt", {"captions", project, "--import", path("words.srt")}},
            {"script.txt", {"captions", project, "--from-script", path("script.txt")}},
            {"patch.json", {"edit", project, "patch", path("patch.json")}},
            {"text", {"scan-text", path("text")}},
            {"clip.mp4", {"import", path("clip.mp4"), "-o", path("new")}},
            {"log.json", {"import", path("film.mp4"), "--events", path("log.json"), "-o", path("new")}},
            {"project.zip", {"restore", path("project.zip"), "-o", path("there")}},
        };
    }
    void save(std::string const& asset) {
        DemoProject project;
        project.sourceSize = {64, 48};
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 2}};
        if (asset.ends_with(".cube")) {
            project.cameraAsset = "screen.mp4";
            project.camera.isEnabled = true;
            project.camera.look = CameraLook::lut;
            project.camera.lutAsset = "look.cube";
        }
        if (asset.find("beach") != asset.npos)
            project.background.content = BackgroundStyle::ImageFile{.assetName = fs::path(asset).filename()};
        ProjectPackage const package(path("p.recproj"));
        package.createDirectories();
        package.save(project);
        fs::copy_file(path("film.mp4"), package.assetURL("screen.mp4"));
    }
};

}

TEST_F(SpecialFiles, endEveryReaderAtOnceWithASentence) {
    ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=64x48:rate=10:duration=2", "-pix_fmt", "yuv420p", path("film.mp4")});
    for (auto const& place : places()) {
        for (auto const& kind : kinds) {
            fs::remove_all(path("p.recproj"));
            save(place.file);
            fs::remove(path(place.file));
            kind.make(path(place.file));
            auto running = start(TAVARO_PROGRAM, place.command);
            bool const hasEnded = becomesTrue([&] { return !running.isRunning(); });
            ASSERT_TRUE(hasEnded) << place.file << " is " << kind.name;
            auto const outcome = running.wait();
            // 2: what takes a file or a folder may find the wrong one of the two.
            EXPECT_TRUE(outcome.exitCode == 1 || outcome.exitCode == 2)
                << place.file << " is " << kind.name << ": " << outcome.exitCode << outcome.out;
            EXPECT_FALSE(outcome.error.empty()) << place.file << " is " << kind.name;
            EXPECT_LT(outcome.error.size(), 600u) << outcome.error;
            fs::remove_all(path(place.file));
        }
    }
}

TEST_F(SpecialFiles, besideAProjectDoNotHoldUpSavingIt) {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 2}};
    ProjectPackage const package(path("p.recproj"));
    package.createDirectories();
    package.save(project);
    for (auto const* const name :
         {"project.json.tmp", ".project.json.1-1.tmp", "thumbnail.png", "project.previous.json"})
        ASSERT_EQ(mkfifo((package.url() / name).c_str(), 0600), 0);
    auto running = start(TAVARO_PROGRAM, {"edit", package.url(), "trim", "0", "1"});
    ASSERT_TRUE(becomesTrue([&] { return !running.isRunning(); }));
    EXPECT_EQ(running.wait().exitCode, 0);
    EXPECT_NEAR(package.load().duration(), 1, 1e-9);
}
