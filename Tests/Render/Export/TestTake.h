#pragma once

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Frames/Image.h>

#include <filesystem>
#include <string>

namespace tavaro {

/// A package in a folder of its own, gone when this is: with a movie "screen.mp4" of 320 × 180 at 30 frames a second in
/// which every frame tells its number, and a project that shows three seconds of it.
class TestTake {
public:
    explicit TestTake(std::string const& name, int frames = 90);
    ~TestTake();
    TestTake(TestTake const&) = delete;

    std::filesystem::path folder;
    ProjectPackage package;
    DemoProject project;
    ExportSettings settings; // 640 × 360, 30 frames a second, H.264, plenty of bits

    std::filesystem::path output(std::string const& name = "out.mp4") const { return folder / name; }
    /// Everything in the folder but the package.
    int filesLeft() const;
};

bool samePixels(ImageView a, ImageView b);

/// Peak signal-to-noise ratio of the colours, in decibels.
double psnr(ImageView a, ImageView b);

/// Frame `number` of a movie of that rate.
Image movieFrame(std::filesystem::path const& movie, int number, int fps);

}
