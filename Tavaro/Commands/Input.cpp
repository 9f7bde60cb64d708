#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/CommandGroup.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TerminalPrompt.h>

#include <TavaroCapture/Input/InputAccess.h>
#include <TavaroCapture/Input/InputConsent.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Processes/DesktopSession.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include <fmt/format.h>

#include <optional>

namespace tavaro::commands {

namespace {

constexpr char const* explanation =
    "A Wayland desktop tells no program of clicks and keys. With your consent, Tavaro takes them from the mouse, the "
    "touchpad and the keyboard themselves, only while it records on such a desktop:\n"
    "  - Every key that you press, in whatever program, is written into the recording's log, and every click with its "
    "place. Films can show them, and zooms follow the clicks.\n"
    "  - Left out are keys while a password field has the keyboard, in programs that tell of their fields, while a "
    "terminal shows nothing of what is typed, while a known password prompt runs, and while the screen is locked or "
    "the seat is somebody else's. A password that is asked for in another way is in the log.\n"
    "  - `tavaro record --no-typing` logs shortcuts only, `--no-keys` no keys at all.\n"
    "  - Recordings can be read by your user alone, and nothing of them leaves this machine by itself. Agents that you "
    "allow to record see the log, too.\n"
    "  - `tavaro input revoke` takes the consent back.";

struct DeviceCount {
    int all = 0;
    int readable = 0;

    static constexpr auto fields =
        std::tuple{field("all", &DeviceCount::all), field("readable", &DeviceCount::readable)};
};
static_assert(listsEveryField<DeviceCount>);

struct InputStatus {
    bool isAllowed = false;
    std::optional<Date> allowedAt;
    bool countsTaps = false;
    bool isLeftHanded = false;
    DeviceCount keyboards;
    DeviceCount pointers;
    std::optional<std::string> problem;
    std::vector<std::vector<std::string>> remedies; // commands of a shell; one list of them is enough

    static constexpr auto fields = std::tuple{
        field("isAllowed", &InputStatus::isAllowed),   field("allowedAt", &InputStatus::allowedAt),
        field("countsTaps", &InputStatus::countsTaps), field("isLeftHanded", &InputStatus::isLeftHanded),
        field("keyboards", &InputStatus::keyboards),   field("pointers", &InputStatus::pointers),
        field("problem", &InputStatus::problem),       field("remedies", &InputStatus::remedies),
    };
};
static_assert(listsEveryField<InputStatus>);

InputStatus statusOf(std::optional<InputConsent> const& consent, InputAccess const& access) {
    InputStatus status{.isAllowed = consent.has_value(),
                       .keyboards = {access.keyboards.all, access.keyboards.readable},
                       .pointers = {access.pointers.all, access.pointers.readable},
                       .problem = access.problem};
    if (consent) {
        status.allowedAt = consent->allowedAt;
        status.countsTaps = consent->countsTaps;
        status.isLeftHanded = consent->isLeftHanded;
    }
    for (auto const& remedy : access.remedies) status.remedies.push_back(remedy.commands);
    return status;
}

void printAccess(InputAccess const& access) {
    if (!access.problem)
        return terminal::say("The keyboards ({}) and the mice and touchpads ({}) can be read.\n", access.keyboards.all,
                             access.pointers.all);
    terminal::say("{}\n", *access.problem);
    if (access.remedies.empty()) return;
    terminal::say("{}. Every other program of whom it is for can then read them, too.\n",
                  access.remedies.size() > 1 ? "Each of these lets it" : "This lets it");
    for (auto const& remedy : access.remedies) {
        terminal::say("  {}\n", remedy.when);
        for (auto const& command : remedy.commands) terminal::say("    {}\n", command);
    }
}

struct Desk {
    bool asJSON = false;
    bool isSure = false;
    InputConsent consent;
};

void report(Desk const& desk, std::string const& sentence) {
    auto const consent = inputConsent();
    auto const access = inputAccess();
    if (desk.asJSON) return terminal::sayJSON(encodeJSON(statusOf(consent, access)));
    terminal::say("{}\n", sentence);
    if (consent) printAccess(access);
}

void show(Desk& desk) {
    auto const consent = inputConsent();
    auto sentence =
        consent ? fmt::format("Tavaro may read clicks and keys from the input devices, since {}.",
                              consent->allowedAt.text())
                : std::string(
                      "Tavaro does not read the input devices; `tavaro input allow` says what that means and asks.");
    if (desktopKind() == DesktopKind::x11)
        sentence += " This desktop is X11, which tells of clicks and keys without that.";
    report(desk, sentence);
}

std::optional<bool> askPerson() {
    MainQueue queue;
    TerminalPrompt prompt(queue);
    std::optional<std::optional<bool>> answer;
    prompt.ask({"Tavaro wants to read clicks and keys from the input devices", explanation},
               [&](std::optional<bool> said) { answer = said; });
    queue.runUntil([&] { return answer.has_value(); });
    return *answer;
}

void allow(Desk& desk) {
    if (!desk.isSure) {
        auto const said = askPerson();
        if (!said)
            throw Error("The input devices stay closed: nobody could be asked. `tavaro input allow --yes` allows it "
                        "without a question.");
        if (!*said) throw Error("The input devices stay closed: the answer was no.");
    }
    desk.consent.allowedAt = Date::now();
    allowInput(desk.consent);
    report(desk, "Takes on a Wayland desktop have clicks and keys from now on.");
}

void revoke(Desk& desk) {
    bool const wasAllowed = revokeInput();
    report(desk, wasAllowed ? "The input devices are closed from now on; a take that runs still ends as it began."
                            : "It was not allowed.");
}

}

void addInput(CLI::App& app) {
    CommandGroup<Desk> group(
        app, "input",
        "Shows and decides whether takes on a Wayland desktop read clicks and keys from the input devices", show);
    group.addJSON("print how things are as JSON");
    group.add("status", "Shows whether it is allowed and possible, as without a word", show);
    auto& allowing = group.add("allow", "Says what it exposes, asks, and keeps the answer", allow);
    auto& desk = *group.desk();
    allowing.add_flag("--yes", desk.isSure, "do not ask");
    allowing.add_flag("--taps", desk.consent.countsTaps,
                      "taps on the touchpad are clicks: where they are on your desktop");
    allowing.add_flag("--left-handed", desk.consent.isLeftHanded,
                      "the right button is the first one: where it is on your desktop");
    group.add("revoke", "Closes the input devices again", revoke);
}

}
