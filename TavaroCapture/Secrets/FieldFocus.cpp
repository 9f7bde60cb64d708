#include <TavaroCapture/Secrets/Private/FieldFocus.h>

#include <TavaroCapture/Accessibility/Private/Conversation.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

using atspi::accessible;
using atspi::has;
using atspi::isFailure;
using atspi::readTraits;
using atspi::readWidgets;
using atspi::Trait;
using atspi::WidgetAddress;

constexpr std::uint32_t passwordText = 40; // a role
constexpr double searchSeconds = 1;
constexpr int mostSearched = 3000; // widgets
constexpr int mostChildren = 500;  // a table may say that it has billions

bool hasEnded(sd_bus_message* answer) {
    return answer && (sd_bus_message_is_method_error(answer, SD_BUS_ERROR_SERVICE_UNKNOWN) ||
                      sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NAME_HAS_NO_OWNER));
}

/// Nothing but the sign that stands for what must not be seen, as some toolkits tell of a field that is no password's
/// by its role.
bool isHidden(std::string_view text) {
    static constexpr std::array<std::string_view, 4> signs{"●", "•", "⚫", "∙"};
    return std::ranges::any_of(signs, [&](std::string_view sign) {
        auto rest = text;
        while (rest.starts_with(sign)) rest.remove_prefix(sign.size());
        return rest.empty() && !text.empty();
    });
}

}

struct FieldFocus::State {
    struct Program {
        WidgetAddress field; // that has the keyboard while the program does
        bool isSecret = false;
    };

    std::map<std::string, Program> programs; // that are in front, or say nothing of that
    std::optional<WidgetAddress> current;    // what got the keyboard last
    int searched = 0;
    int searching = 0; // questions under way
    double const searchedUntil = mediaClockNow() + searchSeconds;
    bool wasSecret = false;   // since it was asked for
    atspi::Conversation talk; // last: it ends before all that it reports to

    explicit State(atspi::Bus bus) : talk(std::move(bus)) {
        subscribe();
        search();
    }

    void subscribe();
    void noteChange(sd_bus_message* signal);

    void noteFocus(WidgetAddress const& field, bool isFocused);
    void noteRole(WidgetAddress const& field, sd_bus_message* answer);
    void noteActive(WidgetAddress const& window, bool isActive);
    void checkSecrets();
    void forget(std::string const& program);
    void search();
    bool isSearching() const { return searching > 0 && !talk.isOver() && mediaClockNow() < searchedUntil; }
    void lookFor(WidgetAddress const& of, char const* member, std::function<void(sd_bus_message*)> found);
    void searchWindow(WidgetAddress const& window);
    void searchIn(WidgetAddress const& widget);
    void searchChildren(WidgetAddress const& widget);
};

void FieldFocus::State::subscribe() {
    for (std::string const state : {"focused", "active"}) {
        auto const rule =
            "type='signal',interface='org.a11y.atspi.Event.Object',member='StateChanged',arg0='" + state + "'";
        talk.follow(("object:state-changed:" + state).c_str(), rule,
                    [this](sd_bus_message* signal) { noteChange(signal); });
    }
}

void FieldFocus::State::noteChange(sd_bus_message* signal) {
    char const* name = nullptr;
    std::int32_t isSet = 0;
    auto const *const sender = sd_bus_message_get_sender(signal), *const path = sd_bus_message_get_path(signal);
    if (!sender || !path || sd_bus_message_read(signal, "si", &name, &isSet) < 0) return;
    if (std::string_view(name) == "focused") {
        // Where the keyboard was before is not found any more.
        wasSecret = wasSecret || isSearching();
        noteFocus({sender, path}, isSet != 0);
    }
    if (std::string_view(name) == "active") noteActive({sender, path}, isSet != 0);
}

void FieldFocus::State::noteFocus(WidgetAddress const& field, bool isFocused) {
    auto& program = programs[field.program];
    if (!isFocused) {
        if (program.field == field) program = {};
        return;
    }
    if (program.field != field) program = {.field = field};
    current = field;
    checkSecrets();
    talk.ask(field, accessible, "GetRole", [this, field](sd_bus_message* answer) { noteRole(field, answer); });
}

/// A field that is gone before it said what it is may well have been a password's.
void FieldFocus::State::noteRole(WidgetAddress const& field, sd_bus_message* answer) {
    std::uint32_t role = 0;
    bool const isKnown = !isFailure(answer) && sd_bus_message_read(answer, "u", &role) >= 0;
    wasSecret = wasSecret || !isKnown || role == passwordText;
    auto const found = programs.find(field.program);
    if (found != programs.end() && found->second.field == field) found->second.isSecret = role == passwordText;
}

/// A field keeps its state in a window that is no longer in front, and gets it anew with the window.
void FieldFocus::State::noteActive(WidgetAddress const& window, bool isActive) {
    if (isActive) {
        checkSecrets();
        if (!current || current->program != window.program) current = window;
        return;
    }
    forget(window.program);
}

/// Dialogs are closed and programs end without a word of what had the keyboard. Takes effect with the answers.
void FieldFocus::State::checkSecrets() {
    for (auto const& [name, program] : programs) {
        if (!program.isSecret) continue;
        talk.ask(program.field, accessible, "GetState", [this, field = program.field](sd_bus_message* answer) {
            if (!answer || sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NO_REPLY)) return;
            bool const isGone = sd_bus_message_is_method_error(answer, nullptr) != 0;
            auto const found = programs.find(field.program);
            if (found == programs.end() || found->second.field != field) return;
            if (isGone || !has(readTraits(answer), Trait::focused)) found->second = {};
        });
    }
}

void FieldFocus::State::forget(std::string const& program) {
    programs.erase(program);
    if (current && current->program == program) current.reset();
}

void FieldFocus::State::search() {
    lookFor(atspi::registry(), "GetChildren", [this](auto* answer) {
        for (auto const& program : readWidgets(answer)) {
            lookFor(program, "GetChildren", [this](auto* windows) {
                for (auto const& window : readWidgets(windows)) searchWindow(window);
            });
        }
    });
}

/// Asks about a widget while the search lasts.
void FieldFocus::State::lookFor(WidgetAddress const& of, char const* member,
                                std::function<void(sd_bus_message*)> found) {
    if (++searched > mostSearched || mediaClockNow() > searchedUntil) return;
    ++searching;
    talk.ask(of, accessible, member, [this, found = std::move(found)](sd_bus_message* answer) {
        if (!isFailure(answer)) found(answer);
        --searching;
    });
}

void FieldFocus::State::searchWindow(WidgetAddress const& window) {
    lookFor(window, "GetState", [this, window](auto* answer) {
        if (!has(readTraits(answer), Trait::active) || programs.contains(window.program)) return;
        current = window;
        searchChildren(window);
    });
}

void FieldFocus::State::searchIn(WidgetAddress const& widget) {
    lookFor(widget, "GetState", [this, widget](auto* answer) {
        auto const traits = readTraits(answer);
        if (programs.contains(widget.program)) return; // it has told by itself meanwhile
        if (has(traits, Trait::focused)) return noteFocus(widget, true);
        // Some toolkits say of windows only that they show.
        if (has(traits, Trait::showing) || has(traits, Trait::visible)) searchChildren(widget);
    });
}

void FieldFocus::State::searchChildren(WidgetAddress const& widget) {
    ++searching;
    talk.askProperty(widget, "ChildCount", [this, widget](sd_bus_message* answer) {
        std::int32_t count = 0;
        if (answer && sd_bus_message_read(answer, "v", "i", &count) >= 0 && count > 0 && count <= mostChildren)
            lookFor(widget, "GetChildren", [this](auto* children) {
                for (auto const& child : readWidgets(children)) searchIn(child);
            });
        --searching;
    });
}

FieldFocus::FieldFocus(atspi::Bus bus) : state_(std::make_unique<State>(std::move(bus))) {}
FieldFocus::~FieldFocus() = default;

int FieldFocus::descriptor() const { return state_->talk.descriptor(); }
short FieldFocus::awaited() const { return state_->talk.awaited(); }
int FieldFocus::patience() const { return state_->talk.patience(); }
bool FieldFocus::listen() { return state_->talk.listen(); }

bool FieldFocus::isSearching() const { return state_->isSearching(); }

bool FieldFocus::takeSecret() {
    bool const isSecret = std::ranges::any_of(state_->programs, [](auto const& one) { return one.second.isSecret; });
    return std::exchange(state_->wasSecret, false) || (isSecret && !state_->talk.isOver());
}

void FieldFocus::ask(std::function<void(Content)> answered) {
    auto& state = *state_;
    if (!state.talk.isOver()) state.checkSecrets();
    if (!state.current || state.talk.isOver()) return answered(Content::open);
    constexpr int enough = 64; // characters
    auto message = state.talk.call(*state.current, "org.a11y.atspi.Text", "GetText");
    if (message) sd_bus_message_append(message.get(), "ii", 0, enough);
    state.talk.send(std::move(message), [this, asked = *state.current, answered = std::move(answered)](auto* answer) {
        char const* text = "";
        bool const isError = isFailure(answer);
        if (!isError) sd_bus_message_read(answer, "s", &text);
        if (isError && hasEnded(answer)) state_->forget(asked.program);
        if (isError && answer && sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NO_REPLY))
            return answered(Content::unknown);
        // Another field got the keyboard meanwhile, and nobody has said yet what kind it is of.
        if (state_->current && *state_->current != asked) return ask(answered);
        answered(isHidden(text) ? Content::hidden : Content::open);
    });
}

}
