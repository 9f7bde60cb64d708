#include <TavaroCapture/Accessibility/Private/ActiveWindow.h>

#include <TavaroCapture/Accessibility/Private/Conversation.h>
#include <TavaroCapture/Events/Private/SecurePrompts.h>
#include <TavaroCapture/Sources/InstalledEntries.h>

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace tavaro::atspi {

namespace {

constexpr std::size_t mostSearched = 1000; // windows

/// What is known of a window so far.
struct Candidate {
    WidgetAddress window;
    int process = 0;
    std::string title;
    std::string application;
    int questions = 2; // that are open
};

std::string programOf(int process) {
    std::error_code ignored;
    return std::filesystem::read_symlink(fmt::format("/proc/{}/exe", process), ignored).filename().string();
}

FrontWindow described(Candidate const& window) {
    auto const& name = window.application;
    auto identity = identifyApplication({.instance = name, .windowClass = name, .program = programOf(window.process)},
                                        window.title);
    FrontWindow result{.process = window.process};
    result.asksForSecret =
        isSecurePrompt({.instance = name, .windowClass = name, .command = commandOf(window.process)});
    if (!identity.name.empty()) result.application = std::move(identity);
    return result;
}

}

struct ActiveWindow::State {
    int const desktop;
    std::vector<WidgetAddress> fresh;  // it is not known yet whose they are
    std::vector<WidgetAddress> active; // the last is in front
    std::optional<WidgetAddress> front;
    FrontWindow window; // what that is
    std::size_t searched = 0;
    bool isTold = false; // by a program itself
    Conversation talk;   // last: it ends before all that it reports to

    State(Bus bus, int desktop) : desktop(desktop), talk(std::move(bus)) {
        subscribe();
        search();
    }

    void subscribe();
    void search();
    void searchProgram(WidgetAddress const& program);
    void noteActive(WidgetAddress const& window);
    void consider(WidgetAddress const& window, int process);
    void settle(Candidate const& candidate);
    void noteInactive(WidgetAddress const& window);
    void forget(std::string const& program);
    bool isInFront(WidgetAddress const& window) const { return !active.empty() && active.back() == window; }
};

void ActiveWindow::State::subscribe() {
    auto const follows = [this](char const* event, char const* member, void (State::*note)(WidgetAddress const&)) {
        talk.follow(event, fmt::format("type='signal',interface='org.a11y.atspi.Event.Window',member='{}'", member),
                    [this, note](sd_bus_message* signal) {
                        auto const *const sender = sd_bus_message_get_sender(signal), *const path =
                                                                                          sd_bus_message_get_path(
                                                                                              signal);
                        isTold = true;
                        if (sender && path) (this->*note)({sender, path});
                    });
    };
    follows("window:activate", "Activate", &State::noteActive);
    follows("window:deactivate", "Deactivate", &State::noteInactive);
    follows("window:destroy", "Destroy", &State::noteInactive);
    talk.match("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''",
               [this](sd_bus_message* signal) {
                   char const* name = nullptr;
                   if (sd_bus_message_read(signal, "s", &name) > 0) forget(name);
               });
}

/// For the window that is in front already.
void ActiveWindow::State::search() {
    talk.ask(registry(), accessible, "GetChildren", [this](sd_bus_message* programs) {
        if (isFailure(programs)) return;
        for (auto const& program : readWidgets(programs)) searchProgram(program);
    });
}

void ActiveWindow::State::searchProgram(WidgetAddress const& program) {
    talk.ask(program, accessible, "GetChildren", [this](sd_bus_message* windows) {
        if (isFailure(windows)) return;
        for (auto const& window : readWidgets(windows)) {
            if (++searched > mostSearched) return;
            talk.ask(window, accessible, "GetState", [this, window](sd_bus_message* state) {
                bool const isActive = !isFailure(state) && has(readTraits(state), Trait::active);
                if (isActive && !isTold) noteActive(window);
            });
        }
    });
}

void ActiveWindow::State::noteActive(WidgetAddress const& window) {
    auto message = talk.call({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
                             "GetConnectionUnixProcessID");
    if (message) sd_bus_message_append(message.get(), "s", window.program.c_str());
    fresh.push_back(window);
    talk.send(std::move(message), [this, window](sd_bus_message* answer) {
        std::uint32_t process = 0;
        if (!isFailure(answer)) sd_bus_message_read(answer, "u", &process);
        consider(window, static_cast<int>(process));
    });
}

void ActiveWindow::State::consider(WidgetAddress const& window, int process) {
    bool const isStillActive = std::erase(fresh, window) > 0;
    if (!isStillActive || (process == desktop && process != 0)) return;
    std::erase(active, window);
    active.push_back(window);
    auto const candidate = std::make_shared<Candidate>(Candidate{.window = window, .process = process});
    auto const note = [this, candidate](std::string Candidate::*name) {
        return [this, candidate, name](sd_bus_message* answer) {
            if (!isFailure(answer)) (*candidate).*name = readText(answer);
            if (--candidate->questions == 0) settle(*candidate);
        };
    };
    talk.askProperty(window, "Name", note(&Candidate::title));
    talk.askProperty({window.program, registry().path}, "Name", note(&Candidate::application));
}

void ActiveWindow::State::settle(Candidate const& candidate) {
    if (!isInFront(candidate.window)) return;
    front = candidate.window;
    window = described(candidate);
}

void ActiveWindow::State::noteInactive(WidgetAddress const& window) {
    std::erase(fresh, window);
    std::erase(active, window);
    if (front != window) return;
    front.reset();
    this->window = {};
}

void ActiveWindow::State::forget(std::string const& program) {
    for (auto* const windows : {&fresh, &active})
        std::erase_if(*windows, [&](WidgetAddress const& window) { return window.program == program; });
    if (front && front->program == program) noteInactive(WidgetAddress(*front));
}

ActiveWindow::ActiveWindow(Bus bus, int desktop) : state_(std::make_unique<State>(std::move(bus), desktop)) {}
ActiveWindow::~ActiveWindow() = default;

int ActiveWindow::descriptor() const { return state_->talk.descriptor(); }
short ActiveWindow::awaited() const { return state_->talk.awaited(); }
int ActiveWindow::patience() const { return state_->talk.patience(); }
bool ActiveWindow::listen() { return state_->talk.listen(); }
FrontWindow ActiveWindow::window() const { return state_->window; }

}
