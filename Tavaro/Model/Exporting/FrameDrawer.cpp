#include <Tavaro/Model/Exporting/FrameDrawer.h>

#include <Tavaro/Model/Exporting/FilmFrame.h>

#include <TavaroMedia/Frames/PNG.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <malloc.h>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

constexpr double keptSeconds = 60;

class Unwanted : public Error {
public:
    Unwanted() : Error("Nobody waits for this frame any more.") {}
};

}

/// The painter of one project at a time.
struct FrameDrawer::Easel {
    std::filesystem::path package;
    std::optional<FramePainter> painter;

    DrawnFrame drawn(FrameRequest const& request);
    DrawnFrame drawn(FrameRequest const& request, Size2 size);
    void show(FrameRequest const& request, Size2 size);
    void rest();
};

void FrameDrawer::Easel::show(FrameRequest const& request, Size2 size) {
    if (painter && package == request.package.url()) return showFilm(*painter, request.project, size);
    painter.reset(); // its memory first
    painter.emplace(framePainter(request.project, request.package, size));
    package = request.package.url();
}

DrawnFrame FrameDrawer::Easel::drawn(FrameRequest const& request, Size2 size) {
    try {
        show(request, size);
        auto const image = filmFrame(*painter, request.at);
        return {encodePNG(image.view(), PNGPacking::quick), image.width(), image.height()};
    } catch (NoSuchFrame const&) {
        throw;
    } catch (...) {
        painter.reset();
        throw;
    }
}

/// Bytes grow with the area; each further try leaves some room for what packs worse when it is small.
DrawnFrame FrameDrawer::Easel::drawn(FrameRequest const& request) {
    constexpr double room = 0.9;
    constexpr std::int64_t smallest = 64;
    auto longest = request.longestSide;
    auto frame = drawn(request, sizeWithin(request.project.canvas, longest));
    while (frame.png.size() > request.mostBytes && longest > smallest) {
        auto const share = static_cast<double>(request.mostBytes) / static_cast<double>(frame.png.size());
        auto const side = static_cast<double>(std::max(frame.width, frame.height)) * room * std::sqrt(share);
        longest = std::max(smallest, static_cast<std::int64_t>(side));
        frame = drawn(request, sizeWithin(request.project.canvas, longest));
        frame.isReduced = true;
    }
    return frame;
}

/// The allocator would keep for the next painter what this one took, a hundred megabytes.
void FrameDrawer::Easel::rest() {
    if (!painter) return;
    painter.reset();
    malloc_trim(0);
}

FrameDrawer::FrameDrawer(MainQueue& queue) : easel_(std::make_shared<Easel>()), side_(queue, "com.tavaro.frames") {}

FrameDrawer::~FrameDrawer() { side_.thread().stopTimer(); }

FrameDrawer::Interest FrameDrawer::draw(FrameRequest request, std::function<void(Outcome<DrawnFrame> const&)> answer) {
    auto const interest = std::make_shared<int const>();
    std::weak_ptr<int const> const wanted = interest;
    side_.thread().stopTimer();
    side_.ask(
        [easel = easel_, wanted, request = std::move(request)] {
            if (wanted.expired()) throw Unwanted();
            return easel->drawn(request);
        },
        [this, wanted, answer = std::move(answer)](Outcome<DrawnFrame> const& frame) {
            side_.thread().startTimer(mediaClockNow() + keptSeconds, keptSeconds,
                                      [easel = easel_](double) { easel->rest(); });
            if (!wanted.expired()) answer(frame);
        });
    return interest;
}

}
