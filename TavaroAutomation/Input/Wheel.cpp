#include <TavaroAutomation/Input/Private/Wheel.h>

#include <TavaroAutomation/Input/Private/AnswerCheck.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tavaro::x11 {

using namespace std::chrono_literals;

namespace {

constexpr auto betweenLooks = 16ms;
constexpr auto longestAnswer = 700ms; // of a program to a notch: browsers begin after 50 ms, busy ones later
constexpr auto leastPatience = 150ms; // until what moved has come to rest, or will not move
constexpr int answersToWait = 3;      // more where a program is slow to answer
constexpr auto longestRest = 2s;      // some pictures never rest: a film
constexpr auto wholeAfter = 50ms;     // a picture that does not change is not being painted
constexpr auto paintTime = 6ms;       // of most programs, at most
constexpr double mostAtOnce = 0.4;    // of a picture may go until the next: the rest is compared
constexpr double usualNotch = 53;     // pixels, of what could not be followed
/// Of the picture around the pointer, when something moved that could not be followed, as a map does. Less is a glow at
/// a page's end, or what the pointer does by being there.
constexpr double unfollowedShare = 0.3;
/// A finger turns a wheel in flicks. The first is short, and shows whether quick notches are worth what slow ones are:
/// Scintilla's text views take them for up to three times as much.
constexpr int firstFlick = 2;
constexpr int mostFlicks = 16;
constexpr double leastAcceleration = 1.3;
constexpr double mostAcceleration = 1.5;   // of a flick beside the one before it
constexpr auto betweenSlowNotches = 300ms; // that count for no more than the first
constexpr int unseenNotches = 3;           // until what is scrolled is asked for its place

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

Wheel::Wheel(WheelHand hand)
    : input_(hand.input)
    , user_(hand.user)
    , keyboard_(hand.keyboard)
    , stop_(hand.stop)
    , place_(std::move(hand.place)) {}

Wheel::Turned Wheel::turn(WheelAxis axis, double pixels) {
    if (pixels == 0) return {};
    begin(axis, pixels);
    double const wanted = std::abs(pixels);
    // Some programs take the first notch for the pointer's arrival only.
    if (!tryNotch() && !tryNotch()) {
        if (placeBefore_ || wouldBeSeen()) return end();
        sent_ = 2;
        return turnBlindly(wanted, usualNotch);
    }
    if (moved_ > 0) return follow(wanted);
    return turnBlindly(wanted, usualNotch);
}

Wheel::Turned Wheel::follow(double wanted) {
    double const worth = worth_ = moved_; // of a notch that comes alone
    double quick = worth;                 // of one that comes right after another
    int longest = firstFlick;
    for (int flicks = 0; flicks < mostFlicks && wanted - moved_ > worth / 2 && !isStuck(); ++flicks) {
        double const rest = wanted - moved_, before = moved_;
        bool const isAccelerated = quick > worth * leastAcceleration;
        int const count = isAccelerated ? static_cast<int>(rest / (quick * mostAcceleration))
                                        : std::min(static_cast<int>(std::lround(rest / worth)), longest);
        if (isAccelerated && count <= 1) watchUntil(InputClock::now() + betweenSlowNotches);
        int const sent = flick(std::max(1, count), wanted - worth / 2);
        settle();
        if (sent < 2) continue;
        quick = (moved_ - before) / sent;
        longest = std::numeric_limits<int>::max();
    }
    if (!isStuck()) return {.pixels = sign_ * moved_, .isSeen = isSeen_};
    return placeBefore_ || wouldBeSeen() ? end() : turnBlindly(wanted, worth);
}

/// What was seen to move has left the picture, or never was in it. As far as was seen, and on by what a notch is worth.
Wheel::Turned Wheel::turnBlindly(double wanted, double worth) {
    double const unseen = std::max(0, sent_ - sentAtChange_) * worth;
    double const before = moved_, rest = wanted - before - unseen;
    int const more = std::max(0, static_cast<int>(std::lround(rest / worth)));
    for (int sent = 0; sent < more; ++sent) {
        notch();
        watchUntil(InputClock::now() + gapAfter(sent, more));
    }
    settle();
    return {.pixels = sign_ * (before + unseen + more * worth), .isSeen = false};
}

Wheel::Turned Wheel::end() {
    expectAnswerUnderPointer(input_, stop_);
    return {.pixels = sign_ * moved_, .isAtEnd = true, .isSeen = isSeen_};
}

bool Wheel::wouldBeSeen() const { return seen_.hasContentAt(across_, along_); }

std::optional<double> Wheel::placeAlong() {
    auto const now = place_ ? place_() : std::nullopt;
    if (!now) return std::nullopt;
    return axis_ == WheelAxis::vertical ? now->y : now->x;
}

/// What is gone tells nothing more: lists use what is scrolled away for other rows.
std::optional<double> Wheel::movedByPlace() {
    auto const now = placeBefore_ ? placeAlong() : std::nullopt;
    if (!now) placeBefore_.reset();
    return now ? std::optional(sign_ * (*placeBefore_ - *now)) : std::nullopt;
}

void Wheel::correct(double moved) {
    moved_ = moved;
    isSeen_ = true;
    movedAt_ = InputClock::now();
    sentAtChange_ = sent_;
    startFrom(seen_);
}

void Wheel::notePlace() {
    auto const moved = movedByPlace();
    if (moved && *moved > moved_) correct(*moved);
}

/// Programs tell of new places later than they paint, and some step by step.
void Wheel::awaitPlace() {
    auto stillSince = InputClock::now();
    auto moved = movedByPlace();
    while (moved && std::abs(*moved - moved_) > 1) {
        if (InputClock::now() - stillSince > (*moved == 0 ? longestAnswer : leastPatience)) break;
        rest(betweenLooks, stop_);
        auto const before = std::exchange(moved, movedByPlace());
        if (moved != before) stillSince = InputClock::now();
    }
    if (!moved) return;
    if (*moved == 0 && moved_ > 0) return placeBefore_.reset(); // it stands beside what is scrolled
    if (*moved > moved_ || !isSeen_) correct(*moved);
}

void Wheel::begin(WheelAxis axis, double pixels) {
    axis_ = axis;
    sign_ = pixels > 0 ? 1 : -1;
    moved_ = worth_ = 0;
    isSeen_ = true;
    answer_.reset();
    sent_ = sentAtChange_ = 0;
    area_ = windowUnderPointer(input_.connection());
    auto const pointer = input_.pointer();
    PixelPoint const inside{pointer.x - area_.x, pointer.y - area_.y};
    across_ = axis == WheelAxis::vertical ? inside.x : inside.y;
    along_ = axis == WheelAxis::vertical ? inside.y : inside.x;
    user_.forget();
    first_ = whole_ = seen_ = picture();
    sinceWhole_ = 0;
    changedAt_ = movedAt_ = InputClock::now();
    placeBefore_ = placeAlong();
}

void Wheel::notch() {
    std::uint8_t const first = axis_ == WheelAxis::vertical ? 4 : 6;
    keyboard_.whenFree(stop_); // with Control the wheel magnifies, with Shift it goes sideways
    user_.expectNone();
    if (sent_ == sentAtChange_) notchedAt_ = InputClock::now();
    input_.tap(FakeInput::Device::mouse, static_cast<std::uint8_t>(first + (sign_ > 0 ? 1 : 0)));
    ++sent_;
}

bool Wheel::tryNotch() {
    sent_ = 0;
    notch();
    settle();
    return moved_ > 0 || seen_.changedShare(first_, across_) >= unfollowedShare;
}

int Wheel::flick(int count, double enough) {
    int sent = 0;
    for (; sent < count && moved_ < enough && !isStuck(); ++sent) {
        notch();
        watchUntil(InputClock::now() + gapAfter(sent, count));
        awaitAnswers();
    }
    return sent;
}

/// What a slow program paints at once is still to be followed, so it does not get far behind.
void Wheel::awaitAnswers() {
    auto const start = InputClock::now();
    auto const isBehind = [&] {
        if (sent_ - sentAtChange_ >= unseenNotches) notePlace();
        return moved_ > 0 && sent_ * worth_ - moved_ > length() * mostAtOnce;
    };
    while (isBehind() && InputClock::now() - start < patience()) watchUntil(InputClock::now() + betweenLooks);
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
        auto const last = std::max(start, movedAt_);
        return now - start > longestRest || now - last > patience();
    };
    while (!isOver(InputClock::now())) watchUntil(InputClock::now() + betweenLooks);
    awaitPlace();
}

InputClock::duration Wheel::patience() const {
    return answer_ ? std::clamp<InputClock::duration>(*answer_ * answersToWait, leastPatience, longestAnswer)
                   : longestAnswer;
}

/// Pictures are compared with one that is known whole while most of it is still there, so that what a program paints in
/// parts is not counted twice.
void Wheel::look() {
    user_.expectNone();
    auto now = paintedPicture();
    auto const time = InputClock::now();
    if (now == seen_) {
        if (time - changedAt_ > wholeAfter) startFrom(seen_);
        return;
    }
    changedAt_ = time;
    if (sinceWhole_ > length() * mostAtOnce) startFrom(seen_);
    auto const shift = now.movedSince(whole_, sign_);
    if (shift && *shift >= sinceWhole_) {
        count(moved_ - sinceWhole_ + *shift, time);
        sinceWhole_ = *shift;
    } else if (auto const further = now.movedSince(seen_, sign_)) {
        count(moved_ + *further, time);
        startFrom(now);
    } else if (worth_ > 0 && now.changedShare(seen_, across_) >= unfollowedShare) {
        // So much at once that none of it is there any more.
        count(std::max(moved_, sent_ * worth_), time);
        isSeen_ = false;
        startFrom(now);
    }
    seen_ = std::move(now);
}

/// A program may be caught in the middle of painting: what has changed is looked at once more.
PictureLines Wheel::paintedPicture() {
    auto now = picture();
    if (now == seen_) return now;
    rest(paintTime, stop_);
    return picture();
}

int Wheel::length() const { return axis_ == WheelAxis::vertical ? area_.height : area_.width; }

void Wheel::count(double moved, InputClock::time_point at) {
    if (moved == moved_) return;
    moved_ = moved;
    movedAt_ = at;
    if (sent_ > sentAtChange_) answer_ = std::max(answer_.value_or(0s), at - notchedAt_);
    sentAtChange_ = sent_;
}

void Wheel::startFrom(PictureLines const& picture) {
    if (sinceWhole_ == 0 && picture == whole_) return;
    whole_ = picture;
    sinceWhole_ = 0;
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

}
