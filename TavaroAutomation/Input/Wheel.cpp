#include <TavaroAutomation/Input/Private/Wheel.h>

#include <algorithm>
#include <cmath>

namespace tavaro::x11 {

using namespace std::chrono_literals;

namespace {

constexpr auto betweenLooks = 16ms;
constexpr auto longestAnswer = 500ms; // of a program to a notch: browsers begin after 50 ms, busy ones later
constexpr auto quiet = 120ms;         // after which what moved has come to rest
constexpr auto longestRest = 1500ms;  // some pictures never rest: a blinking caret, a film
constexpr double usualNotch = 53;     // pixels, of what could not be followed
/// Of the picture around the pointer, when something moved that could not be followed, as a map does. Less is a glow at
/// a page's end, or what the pointer does by being there.
constexpr double unfollowedShare = 0.3;
constexpr int mostExtraNotches = 4;

/// Slower at both ends, as a finger turns a wheel.
std::chrono::milliseconds gapAfter(int notch, int count) {
    double const place = count > 1 ? 2.0 * notch / (count - 1) - 1 : 0;
    return std::chrono::milliseconds(static_cast<int>(std::lround(34 + 28 * place * place)));
}

/// The window under the pointer: the page that scrolls may be plain just there.
PixelRect windowUnderPointer(Connection& connection) {
    auto const pointer = connection.ask<xcb_query_pointer, xcb_query_pointer_reply>(connection.root());
    auto const desktop = frameOf(connection, connection.root());
    if (!pointer || !desktop) return {};
    auto const window = pointer->child ? frameOf(connection, pointer->child) : desktop;
    return window.value_or(*desktop).intersection({0, 0, desktop->width, desktop->height});
}

}

Wheel::Wheel(FakeInput& input, UserMotion& user, std::stop_token const& stop)
    : input_(input)
    , user_(user)
    , stop_(stop) {}

Wheel::Turned Wheel::turn(WheelAxis axis, double pixels) {
    if (pixels == 0) return {};
    begin(axis, pixels);
    // Some programs take the first notch for the pointer's arrival only.
    if (!tryNotch() && !tryNotch()) return {.isAtEnd = true};
    double const wanted = std::abs(pixels), worth = notchPixels();
    bool const isSeen = moved_ > 0;
    auto const reached = [&] { return isSeen ? moved_ : sent_ * worth; };
    notches(static_cast<int>(std::lround((wanted - reached()) / worth)), wanted - worth / 2);
    settle();
    // Programs may take two quick notches for one.
    for (int extra = 0; isSeen && !isStuck() && extra < mostExtraNotches && wanted - moved_ > worth * 0.75; ++extra) {
        notch();
        settle();
    }
    return {.pixels = sign_ * reached(), .isAtEnd = isSeen && isStuck(), .isSeen = isSeen};
}

void Wheel::begin(WheelAxis axis, double pixels) {
    axis_ = axis;
    sign_ = pixels > 0 ? 1 : -1;
    moved_ = 0;
    sent_ = sentAtChange_ = 0;
    area_ = windowUnderPointer(input_.connection());
    auto const pointer = input_.pointer();
    across_ = axis == WheelAxis::vertical ? pointer.x - area_.x : pointer.y - area_.y;
    user_.forget();
    first_ = seen_ = picture();
    changedAt_ = movedAt_ = InputClock::now();
}

void Wheel::notch() {
    std::uint8_t const first = axis_ == WheelAxis::vertical ? 4 : 6;
    user_.expectNone();
    input_.tap(FakeInput::Device::mouse, static_cast<std::uint8_t>(first + (sign_ > 0 ? 1 : 0)));
    ++sent_;
}

bool Wheel::tryNotch() {
    notch();
    settle();
    return moved_ > 0 || seen_.changedShare(first_, across_) >= unfollowedShare;
}

void Wheel::notches(int count, double enough) {
    for (int i = 0; i < count && moved_ < enough && !isStuck(); ++i) {
        notch();
        watchUntil(InputClock::now() + gapAfter(i, count));
    }
}

void Wheel::watchUntil(InputClock::time_point end) {
    while (InputClock::now() < end) {
        look();
        restUntil(std::min(end, InputClock::now() + betweenLooks), stop_);
    }
}

void Wheel::settle() {
    auto const start = InputClock::now();
    auto const isOver = [&](InputClock::time_point now) {
        if (now - start > longestRest) return true;
        return changedAt_ < start ? now - start > longestAnswer : now - changedAt_ > quiet;
    };
    while (!isOver(InputClock::now())) watchUntil(InputClock::now() + betweenLooks);
}

void Wheel::look() {
    user_.expectNone();
    auto now = picture();
    if (now == seen_) return;
    changedAt_ = InputClock::now();
    if (auto const shift = now.movedSince(seen_, sign_)) {
        moved_ += *shift;
        movedAt_ = changedAt_;
        sentAtChange_ = sent_;
    }
    seen_ = std::move(now);
}

PictureLines Wheel::picture() {
    auto const image = input_.connection().ask<xcb_get_image, xcb_get_image_reply>(
        static_cast<std::uint8_t>(XCB_IMAGE_FORMAT_Z_PIXMAP), input_.connection().root(),
        static_cast<std::int16_t>(area_.x), static_cast<std::int16_t>(area_.y), static_cast<std::uint16_t>(area_.width),
        static_cast<std::uint16_t>(area_.height), ~0U);
    auto const pixels = static_cast<std::size_t>(area_.width) * area_.height;
    if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < pixels * 4) return {};
    auto const* const data = reinterpret_cast<std::uint32_t const*>(xcb_get_image_data(image.get()));
    return {{{data, pixels}, area_.width, area_.height},
            axis_ == WheelAxis::vertical ? LineDirection::rows : LineDirection::columns};
}

/// Several notches, and time enough to answer them, moved nothing.
bool Wheel::isStuck() const {
    return moved_ > 0 && sent_ - sentAtChange_ >= 2 && InputClock::now() - movedAt_ > longestAnswer;
}

double Wheel::notchPixels() const { return moved_ > 0 ? std::max(1.0, moved_ / sent_) : usualNotch; }

}
