#include <TavaroCapture/Secrets/Private/FieldFocus.h>

#include <TavaroCore/Files/ReleaseWith.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <optional>
#include <string_view>
#include <systemd/sd-bus.h>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr char const* accessible = "org.a11y.atspi.Accessible";
constexpr std::uint32_t passwordText = 40; // a role

enum class Trait : unsigned { active = 1, focused = 12, showing = 25, visible = 30 };

constexpr double answerSeconds = 2;
constexpr double searchSeconds = 1;
constexpr int mostSearched = 3000; // widgets
constexpr int mostChildren = 500;  // a table may say that it has billions

using Message = std::unique_ptr<sd_bus_message, ReleaseWith<sd_bus_message_unref>>;

/// A widget, by its program's name on the bus and its own path.
struct Widget {
    std::string program;
    std::string path;
    bool operator==(Widget const&) const = default;
};

bool has(std::uint64_t traits, Trait trait) { return (traits >> static_cast<unsigned>(trait) & 1) != 0; }

std::uint64_t readTraits(sd_bus_message* answer) {
    void const* bytes = nullptr;
    std::size_t size = 0;
    std::array<std::uint32_t, 2> words{};
    if (sd_bus_message_read_array(answer, 'u', &bytes, &size) >= 0 && size > 0)
        std::memcpy(words.data(), bytes, std::min(size, sizeof words));
    return std::uint64_t{words[1]} << 32U | words[0];
}

std::vector<Widget> readWidgets(sd_bus_message* answer) {
    std::vector<Widget> result;
    if (sd_bus_message_enter_container(answer, 'a', "(so)") < 0) return result;
    char const *program = nullptr, *path = nullptr;
    while (sd_bus_message_read(answer, "(so)", &program, &path) > 0) {
        if (!std::string_view(path).ends_with("/null")) result.push_back({program, path});
    }
    return result;
}

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
    using Answered = std::function<void(sd_bus_message*)>; // nothing for a failure
    struct Question {
        State* state;
        Answered answered;
    };
    struct Program {
        Widget field; // that has the keyboard while the program does
        bool isSecret = false;
    };

    atspi::Bus bus;
    std::map<Question*, std::unique_ptr<Question>> open;
    std::map<std::string, Program> programs; // that are in front, or say nothing of that
    std::optional<Widget> current;           // what got the keyboard last
    int searched = 0;
    int searching = 0; // questions under way
    double const searchedUntil = mediaClockNow() + searchSeconds;
    bool wasSecret = false; // since it was asked for
    bool isGone = false;

    explicit State(atspi::Bus bus) : bus(std::move(bus)) {
        subscribe();
        search();
    }

    void subscribe();
    void send(Message message, Answered answered);
    void ask(Widget const& of, char const* interface, char const* member, Answered answered);
    Message call(Widget const& of, char const* interface, char const* member) const;
    static int onAnswer(sd_bus_message* answer, void* data, sd_bus_error* error);
    static int onChange(sd_bus_message* signal, void* data, sd_bus_error* error);

    void noteFocus(Widget const& field, bool isFocused);
    void noteRole(Widget const& field, sd_bus_message* answer);
    void noteActive(Widget const& window, bool isActive);
    void checkSecrets();
    void forget(std::string const& program);
    void search();
    bool isSearching() const { return searching > 0 && !isGone && mediaClockNow() < searchedUntil; }
    void lookFor(Widget const& of, char const* member, std::function<void(sd_bus_message*)> found);
    void searchWindow(Widget const& window);
    void searchIn(Widget const& widget);
    void searchChildren(Widget const& widget);
};

Message FieldFocus::State::call(Widget const& of, char const* interface, char const* member) const {
    sd_bus_message* message = nullptr;
    if (sd_bus_message_new_method_call(bus.get(), &message, of.program.c_str(), of.path.c_str(), interface, member) < 0)
        return nullptr;
    return Message(message);
}

void FieldFocus::State::send(Message message, Answered answered) {
    auto question = std::make_unique<Question>(Question{this, std::move(answered)});
    auto* const raw = question.get();
    open.emplace(raw, std::move(question));
    auto const patience = static_cast<std::uint64_t>(answerSeconds * 1e6);
    if (message && sd_bus_call_async(bus.get(), nullptr, message.get(), onAnswer, raw, patience) >= 0) return;
    auto const kept = open.extract(raw);
    raw->answered(nullptr);
}

void FieldFocus::State::ask(Widget const& of, char const* interface, char const* member, Answered answered) {
    send(call(of, interface, member), std::move(answered));
}

int FieldFocus::State::onAnswer(sd_bus_message* answer, void* data, sd_bus_error* /*error*/) {
    auto* const question = static_cast<Question*>(data);
    auto const kept = question->state->open.extract(question); // answering may ask more
    question->answered(answer);
    return 0;
}

void FieldFocus::State::subscribe() {
    for (std::string_view const state : {"focused", "active"}) {
        auto const rule = "type='signal',interface='org.a11y.atspi.Event.Object',member='StateChanged',arg0='" +
                          std::string(state) + "'";
        sd_bus_add_match_async(bus.get(), nullptr, rule.c_str(), onChange, nullptr, this);
        auto message =
            call({"org.a11y.atspi.Registry", "/org/a11y/atspi/registry"}, "org.a11y.atspi.Registry", "RegisterEvent");
        auto const event = "object:state-changed:" + std::string(state);
        if (message) sd_bus_message_append(message.get(), "s", event.c_str());
        send(std::move(message), [](sd_bus_message*) {});
    }
}

int FieldFocus::State::onChange(sd_bus_message* signal, void* data, sd_bus_error* /*error*/) {
    auto& state = *static_cast<State*>(data);
    char const* name = nullptr;
    std::int32_t isSet = 0;
    auto const *const sender = sd_bus_message_get_sender(signal), *const path = sd_bus_message_get_path(signal);
    if (!sender || !path || sd_bus_message_read(signal, "si", &name, &isSet) < 0) return 0;
    if (std::string_view(name) == "focused") {
        // Where the keyboard was before is not found any more.
        state.wasSecret = state.wasSecret || state.isSearching();
        state.noteFocus({sender, path}, isSet != 0);
    }
    if (std::string_view(name) == "active") state.noteActive({sender, path}, isSet != 0);
    return 0;
}

void FieldFocus::State::noteFocus(Widget const& field, bool isFocused) {
    auto& program = programs[field.program];
    if (!isFocused) {
        if (program.field == field) program = {};
        return;
    }
    if (program.field != field) program = {.field = field};
    current = field;
    checkSecrets();
    ask(field, accessible, "GetRole", [this, field](sd_bus_message* answer) { noteRole(field, answer); });
}

/// A field that is gone before it said what it is may well have been a password's.
void FieldFocus::State::noteRole(Widget const& field, sd_bus_message* answer) {
    std::uint32_t role = 0;
    bool const isKnown =
        answer && !sd_bus_message_is_method_error(answer, nullptr) && sd_bus_message_read(answer, "u", &role) >= 0;
    wasSecret = wasSecret || !isKnown || role == passwordText;
    auto const found = programs.find(field.program);
    if (found != programs.end() && found->second.field == field) found->second.isSecret = role == passwordText;
}

/// A field keeps its state in a window that is no longer in front, and gets it anew with the window.
void FieldFocus::State::noteActive(Widget const& window, bool isActive) {
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
        ask(program.field, accessible, "GetState", [this, field = program.field](sd_bus_message* answer) {
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
    lookFor({"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"}, "GetChildren", [this](auto* answer) {
        for (auto const& program : readWidgets(answer)) {
            lookFor(program, "GetChildren", [this](auto* windows) {
                for (auto const& window : readWidgets(windows)) searchWindow(window);
            });
        }
    });
}

/// Asks about a widget while the search lasts.
void FieldFocus::State::lookFor(Widget const& of, char const* member, std::function<void(sd_bus_message*)> found) {
    if (++searched > mostSearched || mediaClockNow() > searchedUntil) return;
    ++searching;
    ask(of, accessible, member, [this, found = std::move(found)](sd_bus_message* answer) {
        if (answer && !sd_bus_message_is_method_error(answer, nullptr)) found(answer);
        --searching;
    });
}

void FieldFocus::State::searchWindow(Widget const& window) {
    lookFor(window, "GetState", [this, window](auto* answer) {
        if (!has(readTraits(answer), Trait::active) || programs.contains(window.program)) return;
        current = window;
        searchChildren(window);
    });
}

void FieldFocus::State::searchIn(Widget const& widget) {
    lookFor(widget, "GetState", [this, widget](auto* answer) {
        auto const traits = readTraits(answer);
        if (programs.contains(widget.program)) return; // it has told by itself meanwhile
        if (has(traits, Trait::focused)) return noteFocus(widget, true);
        // Some toolkits say of windows only that they show.
        if (has(traits, Trait::showing) || has(traits, Trait::visible)) searchChildren(widget);
    });
}

void FieldFocus::State::searchChildren(Widget const& widget) {
    auto message = call(widget, "org.freedesktop.DBus.Properties", "Get");
    if (message) sd_bus_message_append(message.get(), "ss", accessible, "ChildCount");
    ++searching;
    send(std::move(message), [this, widget](sd_bus_message* answer) {
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

int FieldFocus::descriptor() const { return sd_bus_get_fd(state_->bus.get()); }
short FieldFocus::awaited() const {
    int const events = sd_bus_get_events(state_->bus.get());
    return static_cast<short>(std::max(events, 0));
}

int FieldFocus::patience() const {
    std::uint64_t due = 0; // microseconds of the monotonic clock
    if (sd_bus_get_timeout(state_->bus.get(), &due) <= 0 || due == UINT64_MAX) return -1;
    return static_cast<int>(std::max(std::ceil(static_cast<double>(due) / 1000 - mediaClockNow() * 1000), 0.0));
}

bool FieldFocus::listen() {
    auto& state = *state_;
    int code = 0;
    while (!state.isGone && (code = sd_bus_process(state.bus.get(), nullptr)) > 0) {
    }
    if (code < 0) state.isGone = true;
    return !state.isGone;
}

bool FieldFocus::isSearching() const { return state_->isSearching(); }

bool FieldFocus::takeSecret() {
    bool const isSecret = std::ranges::any_of(state_->programs, [](auto const& one) { return one.second.isSecret; });
    return std::exchange(state_->wasSecret, false) || (isSecret && !state_->isGone);
}

void FieldFocus::ask(std::function<void(Content)> answered) {
    auto& state = *state_;
    if (!state.isGone) state.checkSecrets();
    if (!state.current || state.isGone) return answered(Content::open);
    constexpr int enough = 64; // characters
    auto message = state.call(*state.current, "org.a11y.atspi.Text", "GetText");
    if (message) sd_bus_message_append(message.get(), "ii", 0, enough);
    state.send(std::move(message), [this, asked = *state.current, answered = std::move(answered)](auto* answer) {
        char const* text = "";
        bool const isError = !answer || sd_bus_message_is_method_error(answer, nullptr);
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
