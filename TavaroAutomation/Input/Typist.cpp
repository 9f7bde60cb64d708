#include <TavaroAutomation/Input/Private/Typist.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/ANSIKeys.h>
#include <TavaroAutomation/Input/Private/DesktopShortcuts.h>
#include <TavaroAutomation/Input/Private/KeyboardLayout.h>
#include <TavaroAutomation/Input/Private/SpareKeys.h>
#include <TavaroAutomation/Input/Private/TextSymbols.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace tavaro {

using namespace std::chrono_literals;
using x11::FakeInput;
using x11::KeyboardLayout;
using x11::KeyStroke;

namespace {

constexpr auto betweenModifiers = 15ms;

/// The keys that a combination holds. Control once, where both it and Command are given.
std::vector<char const*> modifierPlaces(std::uint64_t flags) {
    std::vector<char const*> result;
    if (flags & (controlFlag | commandFlag)) result.push_back("LCTL");
    if (flags & optionFlag) result.push_back("LALT");
    if (flags & shiftFlag) result.push_back("LFSH");
    if (flags & superFlag) result.push_back("LWIN");
    return result;
}

[[noreturn]] void refuseKey(std::string_view name) {
    throw AutomationError(AutomationError::Kind::failed, "This keyboard has no key for " + std::string(name) + ".");
}

}

struct Typist::State {
    FakeInput input;
    TypingPace pace;
    x11::SpareKeys spare;
    x11::KeyboardWatch keyboard;
    x11::KeyboardChanges changes;
    x11::DesktopShortcuts shortcuts;

    State(std::string const& display, TypingPace const& pace)
        : input(display)
        , pace(pace)
        , spare(input.connection())
        , keyboard(input.connection())
        , changes(input.connection(), spare.codes())
        , shortcuts(input, changes) {}

    void type(std::vector<std::uint32_t> const& symbols, std::stop_token const& stop);
    void press(KeyCombo const& combo, std::stop_token const& stop);
    KeyStroke strokeOf(KeyboardLayout const& layout, std::uint32_t symbol, std::stop_token const& stop);
    KeyStroke strokeOf(KeyboardLayout const& layout, KeyCombo const& combo, std::stop_token const& stop);
    std::chrono::milliseconds gapAfter(std::uint32_t symbol) const;
};

/// The user may hold a modifier, change the layout or press Caps Lock in the middle of the text.
void Typist::State::type(std::vector<std::uint32_t> const& symbols, std::stop_token const& stop) {
    x11::CapsLockOff capsLockOff(input.connection());
    std::optional<KeyboardLayout> layout;
    input.touchKeyboard();
    int changesRead = changes.countSoFar();
    for (auto const symbol : symbols) {
        auto const due = x11::InputClock::now() + gapAfter(symbol);
        auto const state = keyboard.whenFree(stop);
        capsLockOff.ensure(state);
        int const changesNow = changes.countSoFar();
        bool const isRead = layout && layout->group() == state.group && changesRead == changesNow;
        if (!isRead) layout.emplace(input, state.group);
        if (changesRead != changesNow) spare.lookAgain();
        changesRead = changesNow;
        auto const stroke = strokeOf(*layout, symbol, stop);
        input.tap(FakeInput::Device::keyboard, stroke.code, stroke.modifiers);
        x11::restUntil(due, stop);
    }
}

void Typist::State::press(KeyCombo const& combo, std::stop_token const& stop) {
    auto const state = keyboard.whenFree(stop);
    x11::CapsLockOff capsLockOff(input.connection());
    capsLockOff.ensure(state);
    auto const stroke = strokeOf(KeyboardLayout(input, state.group), combo, stop);
    shortcuts.settle(stop);
    std::vector<FakeInput::Held> modifiers;
    modifiers.reserve(stroke.modifiers.size());
    for (auto const code : stroke.modifiers) {
        modifiers.emplace_back(input, FakeInput::Device::keyboard, code);
        x11::rest(betweenModifiers, stop);
    }
    input.tap(FakeInput::Device::keyboard, stroke.code);
    x11::rest(betweenModifiers, stop);
    while (!modifiers.empty()) modifiers.pop_back();
    x11::rest(pace.key, stop);
}

KeyStroke Typist::State::strokeOf(KeyboardLayout const& layout, std::uint32_t symbol, std::stop_token const& stop) {
    if (auto stroke = layout.making(symbol, spare.codes())) return std::move(*stroke);
    return {spare.keyMaking(symbol, stop), {}};
}

KeyStroke Typist::State::strokeOf(KeyboardLayout const& layout, KeyCombo const& combo, std::stop_token const& stop) {
    auto const* const key = ansiKey(combo.keyCode);
    if (!key) refuseKey("the virtual key code " + std::to_string(combo.keyCode));
    auto stroke = layout.making(key->symbol, spare.codes());
    if (!stroke) {
        // Programs know a shortcut by its symbol: in the user's other layouts, else on a key that is made to mean it,
        // and only without one by its place.
        auto code = layout.makingElsewhere(key->symbol, spare.codes());
        if (!code && spare.codes().empty()) code = layout.at(key->place);
        stroke = code ? KeyStroke{*code, {}} : strokeOf(layout, key->symbol, stop);
    }
    for (auto const* const place : modifierPlaces(combo.flags)) {
        auto const code = layout.at(place);
        if (!code) refuseKey("a modifier of this shortcut");
        if (std::ranges::find(stroke->modifiers, *code) == stroke->modifiers.end()) stroke->modifiers.push_back(*code);
    }
    return std::move(*stroke);
}

std::chrono::milliseconds Typist::State::gapAfter(std::uint32_t symbol) const {
    bool const isWord = (symbol >= 'a' && symbol <= 'z') || (symbol >= 'A' && symbol <= 'Z') ||
                        (symbol >= '0' && symbol <= '9') || symbol > 0x7f;
    return isWord ? pace.key : pace.key + pace.afterWord;
}

Typist::Typist(std::string const& display, TypingPace const& pace) : state_(std::make_unique<State>(display, pace)) {}
Typist::~Typist() = default;

void Typist::type(std::string_view text, std::stop_token const& stop) {
    auto const symbols = textSymbols(text);
    state_->input.releaseOrphans(FakeInput::Device::keyboard, stop);
    state_->type(symbols, stop);
    state_->input.connection().synchronize();
}

void Typist::press(KeyCombo const& combo, std::stop_token const& stop) {
    state_->input.releaseOrphans(FakeInput::Device::keyboard, stop);
    state_->press(combo, stop);
}

}
