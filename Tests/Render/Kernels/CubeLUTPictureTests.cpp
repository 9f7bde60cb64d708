#include "Scenes.h"

#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroRender/Kernels/CameraUniforms.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace tavaro {

using namespace scenes;

namespace {

namespace fs = std::filesystem;

class Folder {
public:
    Folder() : path_(fs::temp_directory_path() / ("tavaro-lut-" + std::to_string(getpid()))) {
        fs::create_directories(path_);
    }
    ~Folder() { fs::remove_all(path_); }
    std::string file(char const* name) const { return path_ / name; }

private:
    fs::path path_;
};

/// A table as films have them: curved, saturated, and not the same for all channels.
std::string cubeText(int size) {
    auto text = fmt::format("TITLE \"Curved\"\nLUT_3D_SIZE {}\n", size);
    auto const step = 1.0 / (size - 1);
    for (int b = 0; b < size; ++b)
        for (int g = 0; g < size; ++g)
            for (int r = 0; r < size; ++r) {
                auto const red = std::pow(r * step, 0.8) * 0.9 + 0.1 * g * step;
                auto const green = std::sin(g * step * 1.5) * 0.95;
                auto const blue = 0.05 + 0.8 * b * step * b * step + 0.15 * (1 - r * step);
                text += fmt::format("{:.6f} {:.6f} {:.6f}\n", red, green, blue);
            }
    return text;
}

/// Smooth colours, fine detail and noise, as a photograph has them.
bool makePhotograph(std::string const& file) {
    auto const command =
        fmt::format("ffmpeg -v error -y -f lavfi -i mandelbrot=size=320x180:start_scale=0.3 "
                    "-f lavfi -i gradients=size=320x180:seed=3:n=5:c0=teal:c1=orange:c2=navy:c3=pink "
                    "-filter_complex '[0]format=gbrp[a];[1]format=gbrp[b];[a][b]blend=all_expr=(A+2*B)/3,"
                    "noise=alls=12:all_seed=9' -frames:v 1 -pix_fmt rgb24 '{}'",
                    file);
    return std::system(command.c_str()) == 0;
}

}

TEST(CubeLUTPicture, isWhatTheCommonVideoToolMakesOfAPhotograph) {
    if (std::system("ffmpeg -version > /dev/null 2>&1") != 0) GTEST_SKIP() << "ffmpeg is not installed";
    Folder const folder;
    ASSERT_TRUE(makePhotograph(folder.file("photo.png")));
    auto const photograph = readPNG(folder.file("photo.png"));
    for (int const size : {17, 33}) {
        auto const text = cubeText(size);
        std::ofstream(folder.file("look.cube")) << text;
        auto const command = fmt::format("ffmpeg -v error -y -i '{}' -vf format=gbrp,lut3d=file='{}':interp=trilinear "
                                         "-pix_fmt rgb24 '{}'",
                                         folder.file("photo.png"), folder.file("look.cube"), folder.file("out.png"));
        ASSERT_EQ(std::system(command.c_str()), 0);
        auto const wanted = readPNG(folder.file("out.png"));
        ASSERT_GT(difference(photograph.view(), wanted.view()).largest, 20) << "the table does something";
        auto const lut = CubeLUT::parse(text);
        CameraUniforms u;
        u.canvasSize = {320, 180};
        u.center = {160, 90};
        u.halfSize = {160, 90};
        u.lookStrength = 1;
        u.useLUT = 1;
        for (auto const backend : {CompositorBackend::reference, CompositorBackend::cpu}) {
            Image got(320, 180);
            Compositor(backend).cameraOverlay(u, photograph.view(), {}, &lut, got.view());
            int largest = 0;
            // The outermost pixels are the box's smoothed edge.
            for (int y = 2; y < 178; ++y)
                for (int i = 8; i < 4 * 318; ++i)
                    largest = std::max(largest, std::abs(got.row(y)[i] - wanted.row(y)[i]));
            EXPECT_LE(largest, 2) << size;
        }
    }
}

}
