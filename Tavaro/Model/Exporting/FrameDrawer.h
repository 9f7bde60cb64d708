#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace tavaro {

struct FrameRequest {
    ProjectPackage package;
    DemoProject project;                                             // as it is now
    double at = 0;                                                   // output seconds
    std::int64_t longestSide = 1280;                                 // pixels at most
    std::size_t mostBytes = std::numeric_limits<std::size_t>::max(); // of the PNG; what has more is drawn smaller
};

struct DrawnFrame {
    std::string png;
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool isReduced = false; // smaller than was asked for, since it had too many bytes
};

/// Single frames of the film for an application: drawn and packed beside the main queue, to which it belongs, one after
/// the other. The painter of the project drawn last is kept for a minute, with its media open, so that the next frame
/// of it costs little more than drawing.
class FrameDrawer {
public:
    explicit FrameDrawer(MainQueue& queue);
    ~FrameDrawer();
    FrameDrawer(FrameDrawer const&) = delete;
    FrameDrawer& operator=(FrameDrawer const&) = delete;

    /// Whoever gives this up gets no answer; a frame that nobody waits for is not drawn.
    using Interest = std::shared_ptr<void const>;
    /// The failures are those of `filmFrame`, and `MediaError`.
    [[nodiscard]] Interest draw(FrameRequest request, std::function<void(Outcome<DrawnFrame> const&)> answer);

private:
    struct Easel;

    std::shared_ptr<Easel> easel_; // the side's
    SideQueue side_;
};

}
