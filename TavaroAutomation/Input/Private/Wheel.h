#pragma once

#include <TavaroAutomation/Input/Private/KeyboardLayout.h>
#include <TavaroAutomation/Input/Private/PixelShift.h>
#include <TavaroAutomation/Input/Private/UserMotion.h>
#include <TavaroAutomation/Values/UIRect.h>

#include <functional>
#include <optional>
#include <stop_token>

namespace tavaro::x11 {

enum class WheelAxis { vertical, horizontal };

/// What turning the wheel takes.
struct WheelHand {
    FakeInput& input;
    UserMotion& user;
    KeyboardWatch& keyboard;
    std::stop_token const& stop;
    std::function<std::optional<UIPoint>()> place; // of something that is scrolled, where it can be asked
};

/// The wheel in pixels, though it has only notches, whose distance each program chooses: the pixels under the pointer
/// are compared while they move, so that the first notch shows what one is worth, and the rest what came of it. Where
/// they are plain they show nothing; what is scrolled is asked for its place then, else the notches are counted.
class Wheel {
public:
    explicit Wheel(WheelHand hand);

    struct Turned {
        double pixels = 0;
        bool isAtEnd = false;
        bool isSeen = true;
    };
    /// Positive pixels scroll down or to the right. Throws `AutomationError` (`noElements`) where nothing moves since
    /// the program does not answer.
    Turned turn(WheelAxis axis, double pixels);

private:
    void begin(WheelAxis axis, double pixels);
    void notch();
    /// That many quick ones, or fewer where so much has moved already; how many.
    int flick(int count, double enough);
    void awaitAnswers();
    /// Goes on until that much has moved, as near as notches come.
    Turned follow(double wanted);
    /// Follows the picture for that long.
    void watchUntil(InputClock::time_point end);
    /// Turns it once; whether that moved anything.
    bool tryNotch();
    /// Follows the picture until it rests.
    void settle();
    /// How long to wait for something to move.
    InputClock::duration patience() const;
    void look();
    void count(double moved, InputClock::time_point at);
    void startFrom(PictureLines const& picture);
    /// Pixels of the picture along what moves.
    int length() const;
    PictureLines paintedPicture();
    PictureLines picture();
    bool isStuck() const;

    /// Both correct what was seen by what is scrolled, where that tells its place: as it is now, or once it is still.
    void notePlace();
    void awaitPlace();
    void correct(double moved);
    std::optional<double> movedByPlace();
    std::optional<double> placeAlong();
    /// Whether there is something at the pointer that would have moved.
    bool wouldBeSeen() const;
    Turned turnBlindly(double wanted, double worth);
    Turned end();

    FakeInput& input_;
    UserMotion& user_;
    KeyboardWatch& keyboard_;
    std::stop_token const& stop_;
    std::function<std::optional<UIPoint>()> place_;

    std::optional<double> placeBefore_; // along what moves, before the first notch
    WheelAxis axis_ = WheelAxis::vertical;
    int sign_ = 1;
    PixelRect area_;                   // of the screen, that is compared
    int across_ = 0;                   // where the pointer is in it, across what moves
    int along_ = 0;                    // and along it
    PictureLines first_;               // before the first notch
    PictureLines seen_;                // the latest
    PictureLines whole_;               // the latest that was not being painted
    double sinceWhole_ = 0;            // pixels that moved from there to the latest
    double moved_ = 0;                 // pixels, as seen so far
    double worth_ = 0;                 // of one notch, once it is known
    bool isSeen_ = true;               // false once something moved that could not be followed
    int sent_ = 0;                     // notches
    int sentAtChange_ = 0;             // when the picture moved last
    InputClock::time_point notchedAt_; // the first that is not answered yet
    InputClock::time_point changedAt_;
    InputClock::time_point movedAt_;
    std::optional<InputClock::duration> answer_; // of the program to a notch: the slowest
};

}
