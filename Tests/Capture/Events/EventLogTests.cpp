#include <TavaroCapture/Events/Private/CursorNames.h>
#include <TavaroCapture/Events/Private/EventLog.h>
#include <TavaroCapture/Events/Private/KeyNames.h>
#include <TavaroCapture/Events/Private/SecurePrompts.h>
#include <TavaroCapture/Events/Private/TakeClock.h>
#include <TavaroCore/Recording/SettledRecording.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <map>
#include <unistd.h>

namespace tavaro {

namespace {

Press at(int x, int y, MouseButton button = MouseButton::left) { return {button, {x, y}, {x / 1000.0, y / 1000.0}}; }

/// "left@1.0", "double@1.2", "drag@2.0-3.5", one click each.
std::string drawn(std::vector<ClickEvent> const& clicks) {
    std::string result;
    for (auto const& click : clicks) {
        if (!result.empty()) result += ' ';
        result += fmt::format("{}@{:.1f}",
                              click.isDrag          ? "drag"
                              : click.isDoubleClick ? "double"
                                                    : nameOf(click.button),
                              click.t);
        if (click.dragEnd) result += fmt::format("-{:.1f}", *click.dragEnd);
    }
    return result;
}

std::string drawn(std::vector<AppFocusSpan> const& spans) {
    std::string result;
    for (auto const& span : spans) {
        if (!result.empty()) result += ' ';
        result += fmt::format("{}[{:g}-{:g}]", span.name, span.t, span.t + span.duration);
    }
    return result;
}

void click(EventLog& log, double t, int x, int y, MouseButton button = MouseButton::left) {
    log.notePress(t, at(x, y, button));
    log.noteRelease(t + 0.05, button, {x, y});
}

std::string clicks(EventLog const& log) { return drawn(log.since({}, 100).clicks); }

}

TEST(Coordinates, aPointOutsideTheAreaLandsOnItsNearestEdge) {
    PixelRect const area{100, 50, 400, 200};
    EXPECT_EQ(normalizeTopLeft({300, 150}, area), (UnitPoint2{0.5, 0.5}));
    EXPECT_EQ(normalizeTopLeft({0, 1000}, area), (UnitPoint2{0, 1}));
    EXPECT_EQ(normalizeTopLeft({501, 49}, area), (UnitPoint2{1, 0}));
    EXPECT_EQ(normalizeTopLeft({7, 7}, {0, 0, 0, 100}), UnitPoint2::center);
    EXPECT_EQ(normalizeTopLeft({7, 7}, {0, 0, 100, 0}), UnitPoint2::center);
    EXPECT_EQ(normalizedFrame({0, 0, 300, 150}, area), (NormalizedRect{0, 0, 0.5, 0.5})) << "cut to the area";
    EXPECT_FALSE(normalizedFrame({0, 0, 100, 50}, area));
}

TEST(EventLog, twoQuickNearPressesOfOneButtonMakeADoubleClick) {
    EventLog log;
    click(log, 1.0, 100, 100);
    click(log, 1.3, 104, 100);
    click(log, 1.6, 104, 100); // a third one starts anew
    click(log, 3.0, 100, 100);
    click(log, 3.5, 100, 100); // too late
    click(log, 3.7, 120, 100); // too far
    click(log, 3.9, 120, 100, MouseButton::right);
    EXPECT_EQ(clicks(log), "left@1.0 double@1.3 left@1.6 left@3.0 left@3.5 left@3.7 right@3.9");
}

TEST(EventLog, aPressThatTravelsIsADragUntilItsReleaseOrTheEnd) {
    EventLog log;
    log.notePress(1, at(100, 100));
    log.notePointer(1.2, {103, 100}, {}, CursorKind::arrow);
    log.noteRelease(1.5, MouseButton::left, {103, 100});
    log.notePress(2, at(100, 100));
    log.notePointer(2.2, {300, 100}, {}, CursorKind::arrow);
    log.notePointer(2.4, {100, 100}, {}, CursorKind::arrow); // back where it began, and still a drag
    log.noteRelease(2.5, MouseButton::left, {100, 100});
    log.notePress(3, at(100, 100));
    log.noteRelease(3.01, MouseButton::left, {100, 400}); // faster than the samples
    log.notePress(4, at(100, 100, MouseButton::right));
    log.notePointer(4.2, {300, 100}, {}, CursorKind::arrow);
    log.noteRelease(4.5, MouseButton::left, {0, 0}); // was never pressed
    log.close(5);
    EXPECT_EQ(clicks(log), "left@1.0 drag@2.0-2.5 drag@3.0-3.0 drag@4.0-5.0");
}

TEST(EventLog, spansFollowTheFrontApplicationWithoutGaps) {
    EventLog log;
    log.noteFrontmostApplication(0, ApplicationIdentity{"a", "A"});
    log.noteFrontmostApplication(2, ApplicationIdentity{"a", "A"});
    log.noteFrontmostApplication(3, ApplicationIdentity{"b", "B"});
    log.noteFrontmostApplication(3, ApplicationIdentity{"c", "C"}); // B was in front for no time
    log.noteKey(3.5, {.command = true, .key = "s"});
    log.noteFrontmostApplication(4, std::nullopt);
    log.noteFrontmostApplication(5, ApplicationIdentity{"a", "A"});
    EXPECT_EQ(drawn(log.since({}, 6).appSpans), "A[0-3] C[3-4] A[5-6]");
    log.close(7);
    log.close(8);
    auto all = log.since({}, 9);
    EXPECT_EQ(drawn(all.appSpans), "A[0-3] C[3-4] A[5-7]");
    EXPECT_EQ(all.keystrokes[0].application, "C");
    trimToDuration(all, 3.25);
    EXPECT_EQ(drawn(all.appSpans), "A[0-3] C[3-3.25]");
    EXPECT_TRUE(all.keystrokes.empty());
}

TEST(EventLog, aKeyThatIsReportedLateBelongsToWhatWasInFrontWhenItWasPressed) {
    EventLog log;
    log.noteFrontmostApplication(1, ApplicationIdentity{"a", "A"});
    log.noteFrontmostApplication(2, ApplicationIdentity{"b", "B"});
    log.noteFrontmostApplication(3, std::nullopt);
    log.noteFrontmostApplication(4, ApplicationIdentity{"c", "C"});
    std::string applications;
    for (double const t : {0.5, 1.5, 2.0, 3.5, 4.5}) {
        log.noteKey(t, {.key = "x"});
        applications += log.since({}, 5).keystrokes.back().application.value_or("-");
    }
    EXPECT_EQ(applications, "-AB-C");
}

TEST(EventLog, whatIsSettledNeverChangesAgain) {
    EventLog log;
    click(log, 1, 10, 10);
    log.notePress(2, at(50, 50));
    log.notePress(2.5, at(50, 50, MouseButton::right));
    log.noteFrontmostApplication(0, ApplicationIdentity{"a", "A"});
    auto const settled = log.settled();
    EXPECT_EQ(settled.clicks, 1u) << "the held press may still become a drag";
    EXPECT_EQ(settled.appSpans, 0u) << "the open span still grows";
    log.noteRelease(3, MouseButton::left, {90, 90});
    log.close(4);
    EXPECT_EQ(drawn(log.since(settled, 4).clicks), "drag@2.0-3.0 right@2.5");
    EXPECT_EQ(drawn(log.since(settled, 4).appSpans), "A[0-4]");
}

TEST(TakeClock, pausesAreNoPartOfTheTimeline) {
    TakeClock clock;
    EXPECT_EQ(clock.elapsed(5), 0);
    clock.start(100);
    EXPECT_EQ(clock.time(99), 0) << "never below zero";
    clock.setPaused(true, 103);
    clock.setPaused(true, 104); // changes nothing
    EXPECT_EQ(clock.time(105), std::nullopt);
    EXPECT_EQ(clock.elapsed(105), 3);
    clock.setPaused(false, 107);
    EXPECT_EQ(clock.time(107.5), 3.5);
    EXPECT_EQ(clock.time(102), 2) << "an event that arrives late keeps its time";
    EXPECT_EQ(clock.time(106), std::nullopt) << "and one from the pause has none";
    clock.setPaused(true, 110);
    clock.setPaused(false, 111);
    EXPECT_EQ(clock.time(112), 7);
    EXPECT_EQ(clock.mediaTime(7), 112);
}

TEST(TakeClock, whatWasCapturedJustBeforeTheStartKeepsItsPlace) {
    TakeClock clock;
    EXPECT_FALSE(clock.place(100));
    clock.start(100);
    clock.setPaused(true, 102);
    clock.setPaused(false, 103);
    EXPECT_EQ(clock.place(99.75), -0.25);
    EXPECT_EQ(clock.place(101), 1);
    EXPECT_FALSE(clock.place(102.5));
    EXPECT_EQ(clock.place(104), 3);
    EXPECT_FALSE(clock.place(99)) << "older than any source's delay";
}

TEST(CursorNames, everyKindHasANameAndStrangersAreArrows) {
    std::map<CursorKind, std::string> const names = {
        {CursorKind::arrow, "left_ptr"},
        {CursorKind::iBeam, "xterm"},
        {CursorKind::pointingHand, "hand2"},
        {CursorKind::openHand, "grab"},
        {CursorKind::closedHand, "grabbing"},
        {CursorKind::resizeLeftRight, "col-resize"},
        {CursorKind::resizeUpDown, "sb_v_double_arrow"},
        {CursorKind::crosshair, "crosshair"},
        {CursorKind::text, "vertical-text"},
    };
    for (CursorKind const kind : allCases<CursorKind>()) EXPECT_EQ(cursorKind(names.at(kind)), kind) << nameOf(kind);
    for (auto const* stranger : {"", "watch", "XTERM", "left_ptr2"}) EXPECT_EQ(cursorKind(stranger), CursorKind::arrow);
}

TEST(KeyNames, keysWithoutCharactersKeepAReadableName) {
    EXPECT_EQ(keyName(-1, "ß", "ssharp"), "ß");
    EXPECT_EQ(keyName(-1, "", "F12"), "F12");
    EXPECT_EQ(keyName(-1, "", "Prior"), "Page Up");
    EXPECT_EQ(keyName(36, "\r", "Return"), "↩");
    EXPECT_EQ(keyName(-1, "\x1b", "Cancel"), "Cancel") << "control characters are no name";
}

TEST(SecurePrompts, promptsAreKnownByAnyOfTheirNamesAndOrdinaryWindowsAreNot) {
    for (auto const* name : {"pinentry-gtk-2", "Pinentry-gnome3", "Gcr-prompter", "lxqt-openssh-askpass", "i3lock",
                             "Polkit-gnome-authentication-agent-1", "xfce4-screensaver", "Lightdm-gtk-greeter"}) {
        EXPECT_TRUE(isSecurePrompt({.instance = name})) << name;
        EXPECT_TRUE(isSecurePrompt({"x", name, {}})) << name;
    }
    for (auto const* name : {"", "Mousepad", "firefox", "Gnome-terminal", "Clocks"})
        EXPECT_FALSE(isSecurePrompt({name, name, {"/usr/bin/x", "--password"}})) << name;
    for (auto const* option : {"--password", "--add-password=PIN"})
        EXPECT_TRUE(isSecurePrompt({"zenity", "Zenity", {"zenity", option}})) << option;
    EXPECT_FALSE(isSecurePrompt({"zenity", "Zenity", {"zenity", "--info", "--text=--password"}}));
    EXPECT_EQ(commandOf(getpid()).size(), testing::internal::GetArgvs().size());
}

}
