// Times the composite kernel on one core, against a copy of the canvas taken in the same run. A new frame of the
// recording is shown each time, so mip levels count; the still layer is kept, as it is in an export.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <TavaroCore/Style/CameraLook.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Compositor/Compositor.h>
#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/ScreenTexture.h>

using namespace tavaro;

namespace {

/// Time that this thread had a core, so that other programs on the machine do not count.
double millisecondsOf(auto&& work) {
    auto const now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
    };
    auto const start = now();
    work();
    return now() - start;
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

/// Something like an editor full of text.
Image page(int width, int height, int shift) {
    Image image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            auto* p = image.row(y) + 4 * x;
            auto const line = (y + shift) / 18;
            auto const isInk =
                (y + shift) % 18 < 11 && ((x * 7 + line * 13) ^ (y * 3)) % 11 < 4 && x % 700 < 80 + line * 37 % 600;
            auto const shade = static_cast<std::uint8_t>(isInk ? 40 : 250 - x * 20 / width);
            p[0] = p[1] = shade;
            p[2] = static_cast<std::uint8_t>(std::min(255, shade + 8));
            p[3] = 255;
        }
    return image;
}

/// Gradient, rounded screen with padding and shadow, zoomed and sharpened.
CompositeUniforms look(int width, int height) {
    CompositeUniforms u;
    auto const w = static_cast<float>(width);
    auto const h = static_cast<float>(height);
    u.canvasSize = {w, h};
    u.contentSize = {w * 0.9f, h * 0.9f};
    u.contentOrigin = {w * 0.05f, h * 0.05f};
    u.clipOrigin = u.contentOrigin;
    u.clipSize = u.contentSize;
    u.bgMode = BackgroundMode::linear;
    u.bgColor0 = {0.2f, 0.3f, 0.9f, 1};
    u.bgColor1 = {0.9f, 0.3f, 0.4f, 1};
    u.bgColor2 = {0.2f, 0.8f, 0.6f, 1};
    u.bgColor3 = {0.9f, 0.8f, 0.3f, 1};
    u.bgParam = {0.7f, 0.7f};
    u.cornerRadius = h * 0.018f;
    u.shadowRadius = h * 0.04f;
    u.shadowOffsetY = h * 0.012f;
    u.shadowOpacity = 0.45f;
    u.zoomScale = 1.6f;
    u.zoomCenter = {0.42f, 0.55f};
    u.sharpen = 1;
    return u;
}

CursorUniforms pointer(int width, int height) {
    CursorUniforms u;
    u.canvasSize = {static_cast<float>(width), static_cast<float>(height)};
    u.position = {static_cast<float>(width) * 0.4f, static_cast<float>(height) * 0.5f};
    u.cursorSize = static_cast<float>(height) * 0.035f;
    u.opacity = 1;
    u.fillColor = {0, 0, 0, 1};
    u.strokeColor = {1, 1, 1, 1};
    return u;
}

/// A face before a wall, more or less: smooth, with a little noise.
Image cameraPicture(int width, int height) {
    Image image(width, height);
    unsigned noise = 1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            auto* p = image.row(y) + 4 * x;
            auto const isFace = std::hypot(x - width / 2, y - height / 2) < height / 3.0;
            noise = noise * 1664525 + 1013904223;
            auto const grain = static_cast<int>(noise >> 28);
            p[0] = static_cast<std::uint8_t>((isFace ? 190 : 90) + grain + x * 20 / width);
            p[1] = static_cast<std::uint8_t>((isFace ? 140 : 100) + grain);
            p[2] = static_cast<std::uint8_t>((isFace ? 120 : 110) + grain + y * 30 / height);
            p[3] = 255;
        }
    return image;
}

/// A round bubble with a look, shadow and border, in the corner.
CameraUniforms bubble(int width, int height, CameraLook look) {
    CameraUniforms u;
    auto const w = static_cast<float>(width);
    auto const h = static_cast<float>(height);
    auto const half = h * 0.24f / 2;
    u.canvasSize = {w, h};
    u.halfSize = {half, half};
    u.center = {w - half - h * 0.03f, h - half - h * 0.03f};
    u.cornerRadius = half;
    u.borderWidth = 3;
    u.borderColor = {1, 1, 1, 0.9f};
    u.shadowOpacity = 0.35f;
    u.mirrored = 1;
    setGrade(u, grade(look), 1);
    return u;
}

/// A line of caption as a bitmap: letters on a dark pill of round ends.
Image captionLine(int width, int height) {
    Image image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            auto const fromEnd = std::min(x, width - 1 - x);
            int const radius = height / 2;
            auto const isPill = fromEnd > radius || std::hypot(fromEnd - radius, y - radius) < radius;
            auto const isInk =
                isPill && y > height / 4 && y < height * 3 / 4 && (x / 9) % 3 != 0 && (x * 5 + y) % 17 < 9;
            auto* p = image.row(y) + 4 * x;
            p[0] = p[1] = p[2] = isInk ? 255 : 0;
            p[3] = isInk ? 255 : isPill ? 180 : 0;
        }
    return image;
}

struct Timing {
    double frame = 0;
    double copy = 0;
    double added = 0; // of the frame's time, by what is drawn over it
};

/// Frames of one look on one core, each followed by a copy of the canvas.
class Stage {
public:
    Stage(int width, int height)
        : width_(width)
        , height_(height)
        , frames_{}
        , canvas_(width, height)
        , copied_(width, height) {
        for (int i = 0; i < 2; ++i) frames_.push_back(page(width, height, i * 5));
    }

    /// `over` draws what comes after the pointer.
    template<class Over> Timing time(CompositeUniforms u, int repeats, Over&& over) {
        Compositor compositor(CompositorBackend::cpu);
        auto const cursor = pointer(width_, height_);
        std::vector<double> drawing, copying, adding;
        for (int i = 0; i < repeats + 2; ++i) {
            u.time = static_cast<float>(i) / 60;
            auto const frame = millisecondsOf([&] {
                screen_.setFrame(std::as_const(frames_[static_cast<std::size_t>(i) % frames_.size()]).view());
                compositor.composite(u, screen_, {}, canvas_.view());
                compositor.cursorOverlay(cursor, canvas_.view());
            });
            auto const added = millisecondsOf([&] { over(compositor, canvas_.view()); });
            auto const copy = millisecondsOf([&] {
                std::memcpy(copied_.row(0), canvas_.row(0),
                            static_cast<std::size_t>(canvas_.stride()) * static_cast<std::size_t>(height_));
            });
            if (i < 2) continue;
            drawing.push_back(frame);
            adding.push_back(added);
            copying.push_back(copy);
        }
        return {median(drawing), median(copying), median(adding)};
    }

private:
    int width_;
    int height_;
    std::vector<Image> frames_;
    Image canvas_;
    Image copied_;
    ScreenTexture screen_;
};

void print(std::string const& name, double value, char const* unit) {
    std::printf("%s %.3f %s\n", name.c_str(), value, unit);
}

/// What something drawn over the finished frame adds to its time.
template<class Over>
void reportOver(std::string const& name, Stage& stage, CompositeUniforms const& u, int repeats, Over&& over) {
    auto const timing = stage.time(u, repeats, over);
    print(name, timing.added / timing.frame, "of compose.1080p");
    print(name + ".time", timing.added, "ms");
}

Timing report(std::string const& name, Stage& stage, CompositeUniforms const& u, int repeats) {
    auto const timing = stage.time(u, repeats, [](Compositor&, MutableImageView) {});
    print(name, timing.frame / timing.copy, "×memcpy");
    print(name + ".time", timing.frame, "ms");
    return timing;
}

}

/// `bench-compose [repeats] [name]`: how many frames each figure is the median of, and which figure alone to take.
int main(int argc, char** argv) {
    auto const repeats = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 40;
    std::string const only = argc > 2 ? argv[2] : "";
    Stage hd(1920, 1080);
    auto const base = look(1920, 1080);
    auto const wanted = [&](char const* name) { return only.empty() || only == name; };

    double seconds = 0;
    if (wanted("zoomed")) {
        auto const timing = report("compose.1080p", hd, base, repeats);
        print("compose.1080p.memcpy", timing.copy, "ms");
        seconds = timing.frame;
    }
    auto const camera = cameraPicture(1280, 720);
    auto const cameraOver = [&](CameraUniforms const& u) {
        return [&camera, u](Compositor& compositor, MutableImageView canvas) {
            compositor.cameraOverlay(u, camera.view(), {}, nullptr, canvas);
        };
    };
    if (wanted("camera_bubble")) {
        reportOver("compose.camera_bubble", hd, base, repeats, cameraOver(bubble(1920, 1080, CameraLook::studio)));
        reportOver("compose.camera_bubble.film", hd, base, repeats, cameraOver(bubble(1920, 1080, CameraLook::film)));
        auto sharpened = bubble(1920, 1080, CameraLook::studio);
        sharpened.sharpen = 0.5f;
        reportOver("compose.camera_bubble.sharpened", hd, base, repeats, cameraOver(sharpened));
    }
    if (wanted("caption")) {
        auto const line = captionLine(1200, 120);
        BlitUniforms const place{{1920, 1080}, {360, 900}, {1200, 120}, 1, 0};
        reportOver("compose.caption", hd, base, repeats, [&](Compositor& compositor, MutableImageView canvas) {
            compositor.blitLayer(place, line.view(), canvas);
        });
    }
    auto variant = [&](char const* name, auto&& change, int share) {
        if (!wanted(name)) return;
        auto u = base;
        change(u);
        report(std::string("compose.1080p.") + name, hd, u, std::max(repeats / share, 1));
    };
    variant(
        "unzoomed", [](auto& u) { u.zoomScale = 1; }, 1);
    variant(
        "mesh", [](auto& u) { u.bgMode = BackgroundMode::mesh; }, 4);
    variant(
        "aurora",
        [](auto& u) {
            u.bgMode = BackgroundMode::aurora;
            u.bgParam = {0.2f, 0};
        },
        4);
    variant(
        "loupe",
        [](auto& u) {
            u.zoomScale = 1;
            u.loupeCenter = {900, 500};
            u.loupeRadius = 190;
            u.loupeMag = 2;
            u.loupePresence = 1;
        },
        2);
    variant(
        "motionBlur",
        [](auto& u) {
            u.blurStrength = 1;
            u.blurTaps = 16;
            u.blurVector = {0.02f, 0.012f};
        },
        4);
    if (wanted("2160p")) {
        Stage uhd(3840, 2160);
        auto const timing = report("compose.2160p", uhd, look(3840, 2160), std::max(repeats / 3, 3));
        print("compose.2160p.memcpy", timing.copy, "ms");
        if (seconds > 0) print("compose.2160p÷1080p", timing.frame / seconds, "×");
    }
}
