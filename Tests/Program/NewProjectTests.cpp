#include <Tavaro/Model/Making/NewProject.h>

#include "ProcessFixture.h"

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <fstream>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

/// A take's files: a screen, a camera, a microphone and the system's sound.
class NewProjectTest : public ProcessFixture {
protected:
    NewProjectTest() {
        writeMovie("recording.mov", 60);
        writeMovie("camera.mov", 30);
        writeSound("microphone.caf", 3);
        writeSound("systemSound.caf", 1);
        made.movie = path("recording.mov");
        made.importMode = ImportMode::move;
        made.camera = SideRecording{path("camera.mov"), 0.25, 1.0};
        made.sounds = {{AudioRole::microphone, {path("microphone.caf"), -0.5, 3}},
                       {AudioRole::system, {path("systemSound.caf"), 0.75, 1}}};
        made.remark = [this](std::string const& sentence) { remarks.push_back(sentence); };
    }

    void writeMovie(std::string const& name, int frames) {
        MovieWriter writer(path(name), {.container = MovieContainer::mov,
                                        .codec = MovieCodec::h264,
                                        .width = 64,
                                        .height = 48,
                                        .fps = 30,
                                        .bitrate = 100'000});
        Image const image(64, 48);
        for (int i = 0; i < frames; ++i) {
            auto picture = writer.picture();
            fillPicture(picture, image.view());
            writer.append(std::move(picture), i / 30.0);
        }
        writer.finish();
    }
    void writeSound(std::string const& name, int seconds) {
        AudioFileWriter writer(path(name), AudioFileFormat::whole16);
        writer.append(std::vector<StereoSample>(static_cast<std::size_t>(seconds * audioRate)));
        writer.finish();
    }

    NewProject made{};
    std::vector<std::string> remarks;
};

}

TEST_F(NewProjectTest, whatWasRecordedBesideTheScreenIsInStepWithIt) {
    ProjectPackage const package(path("take.recproj"));
    createProject(package, made);
    auto const project = package.load();
    EXPECT_EQ(project.cameraAsset, "camera.mov");
    EXPECT_EQ(project.cameraOffset, -0.25) << "the camera's time at the screen's start";
    ASSERT_EQ(project.audioTracks.size(), 2u);
    auto const& microphone = project.audioTracks[0];
    EXPECT_EQ(microphone.role, AudioRole::microphone);
    EXPECT_EQ(microphone.clips.at(0).range(), (TimeRange{0, 2})) << "no longer than the screen";
    EXPECT_EQ(microphone.clips[0].sourceStart, 0.5);
    auto const& system = project.audioTracks[1];
    EXPECT_EQ(system.role, AudioRole::system);
    EXPECT_EQ(system.clips.at(0).range(), (TimeRange{0.75, 1}));
    EXPECT_EQ(system.clips[0].sourceStart, 0);
    for (auto const& [asset, duration] : project.assetDurations) {
        EXPECT_TRUE(fs::exists(package.assetURL(asset))) << asset;
        EXPECT_GT(duration, 0);
    }
    EXPECT_FALSE(fs::exists(made.movie));
    EXPECT_TRUE(remarks.empty());
}

TEST_F(NewProjectTest, aDamagedCameraOrSoundIsLeftOutWithARemark) {
    for (auto const* name : {"camera.mov", "microphone.caf"}) std::ofstream(path(name), std::ios::trunc) << "damaged";
    ProjectPackage const package(path("take.recproj"));
    auto const project = createProject(package, made);
    EXPECT_FALSE(project.cameraAsset);
    ASSERT_EQ(project.audioTracks.size(), 1u);
    EXPECT_EQ(project.audioTracks[0].role, AudioRole::system);
    EXPECT_EQ(remarks.size(), 2u);
    EXPECT_TRUE(fs::exists(path("camera.mov"))) << "whoever knows better may still read it";
    EXPECT_EQ(package.load(), project);
}

TEST_F(NewProjectTest, aPackageThatFailsInItsLastStepLeavesEveryFileWhereItWas) {
    ProjectPackage const package(path("take.recproj"));
    write("take.recproj", "taken meanwhile");
    EXPECT_THROW(createProject(package, made), FileError);
    EXPECT_EQ(read("take.recproj"), "taken meanwhile");
    EXPECT_EQ(names(folder), (std::vector<std::string>{"camera.mov", "microphone.caf", "recording.mov",
                                                       "systemSound.caf", "take.recproj"}));
}
