#include <TavaroVision/Scanning/PrivacyScan.h>
#include <TavaroVision/Scanning/Private/FindingJoins.h>
#include <TavaroVision/Scanning/Private/ZoomedFindings.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace tavaro {

namespace {

using Page = std::function<NormalizedRect(double seconds)>;

/// A text at (0.2, 0.4) of a page that is larger with every second.
NormalizedRect zoomed(double seconds) {
    double const scale = 1 + 0.75 * seconds;
    return {0.05 * scale, 0.4 * scale, 0.1 * scale, 0.02 * scale};
}

/// What becomes of it when it is read at that time: of that size, and followed for three pictures to each side.
ScreenFinding readAt(double seconds, Page const& page) {
    ScreenFinding reading{.textHash = "text", .start = seconds - 0.1, .end = seconds + 0.1};
    auto const size = page(seconds);
    for (double at = seconds - 0.1; at < seconds + 0.11; at += 0.1 / 3) {
        auto const middle = page(at).center();
        reading.keyframes.push_back(
            {at, {middle.x - size.width / 2, middle.y - size.height / 2, size.width, size.height}});
    }
    return reading;
}

std::vector<ScreenFinding> zoomsOf(std::vector<ScreenFinding> const& readings, double end) {
    return withZooms(readings, readings, end);
}

bool isCovered(std::vector<ScreenFinding> const& findings, double seconds, NormalizedRect const& text) {
    constexpr double slack = 0.003;
    return std::ranges::any_of(findings, [&](ScreenFinding const& finding) {
        if (seconds < finding.start || seconds > finding.end) return false;
        auto const area = areaAt(finding, seconds);
        return area.x <= text.x + slack && area.y <= text.y + slack && area.maxX() >= text.maxX() - slack &&
               area.maxY() >= std::min(1.0, text.maxY()) - slack;
    });
}

}

TEST(ZoomedFindings, aZoomedTextIsCoveredUntilItHasLeftThePicture) {
    auto const findings = zoomsOf({readAt(1, zoomed), readAt(1.3, zoomed), readAt(1.6, zoomed)}, 9);
    for (double at = 1.75; zoomed(at).y < 1; at += 0.05) EXPECT_TRUE(isCovered(findings, at, zoomed(at))) << at;
    EXPECT_FALSE(isCovered(findings, 2.3, {0.1, 0.98, 0.1, 0.02})) << "it is gone for good";
}

TEST(ZoomedFindings, whatGetsSmallerIsCoveredBeforeItIsReadFirst) {
    Page const page = [](double seconds) { return zoomed(3 - seconds); };
    auto const findings = zoomsOf({readAt(1.4, page), readAt(1.7, page), readAt(2, page)}, 9);
    for (double at = 0.95; at < 1.3; at += 0.05) EXPECT_TRUE(isCovered(findings, at, page(at))) << at;
}

TEST(ZoomedFindings, nothingElseGetsLonger) {
    auto const ofStretch = zoomsOf({readAt(1, zoomed), readAt(1.3, zoomed)}, 1.45);
    EXPECT_LE(ofStretch[1].end, 1.45) << "the recording ends";
    Page const scrolled = [](double seconds) { return NormalizedRect{0.1, 0.1 + 0.3 * seconds, 0.2, 0.03}; };
    std::vector const followed{readAt(1, scrolled), readAt(1.3, scrolled)};
    EXPECT_EQ(zoomsOf(followed, 9), followed);
    Page const resting = [](double seconds) { return NormalizedRect{0.1, 0.1, seconds < 1.2 ? 0.2 : 0.25, 0.03}; };
    std::vector const switched{readAt(1, resting), readAt(1.5, resting)};
    EXPECT_EQ(zoomsOf(switched, 9), switched);
}

}
