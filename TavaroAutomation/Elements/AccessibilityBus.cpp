#include <TavaroAutomation/Elements/Private/AccessibilityBus.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCapture/Accessibility/BusConnection.h>
#include <TavaroCore/Files/ReleaseWith.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fmt/format.h>
#include <list>
#include <systemd/sd-bus.h>
#include <utility>

namespace tavaro::atspi {

namespace {

constexpr char const* accessible = "org.a11y.atspi.Accessible";
constexpr char const* component = "org.a11y.atspi.Component";
constexpr char const* application = "org.a11y.atspi.Application";
constexpr char const* properties = "org.freedesktop.DBus.Properties";
constexpr char const* rootPath = "/org/a11y/atspi/accessible/root";

using Message = std::unique_ptr<sd_bus_message, ReleaseWith<sd_bus_message_unref>>;

using Microseconds = std::chrono::duration<std::uint64_t, std::micro>;

[[noreturn]] void failToConnect(std::string const& reason) {
    throw AutomationError(
        AutomationError::Kind::noElements,
        fmt::format("Applications cannot be asked for what is in their windows: {} Use ui_screenshot and click by x "
                    "and y, or start the desktop with a D-Bus session and at-spi2-core installed.",
                    reason));
}

std::string errorText(int code) { return std::strerror(-code); }

Bus opened(std::string const& address) {
    auto bus = openBus(address);
    if (!bus) failToConnect(fmt::format("the accessibility bus does not answer ({}).", errorText(-errno)));
    return bus;
}

std::string knownAddress(std::string const& display) {
    auto address = busAddress(display);
    if (address.empty()) failToConnect("there is no accessibility bus.");
    return address;
}

// A title of megabytes is an attack or a fault; nobody reads more than a line of it.
constexpr std::size_t longestText = 1U << 14;

std::optional<std::string> readText(sd_bus_message* answer) {
    char const* text = nullptr;
    if (sd_bus_message_read(answer, "v", "s", &text) < 0) return std::nullopt;
    return std::string(text, ::strnlen(text, longestText));
}

std::optional<Address> readAddress(sd_bus_message* answer) {
    char const *bus = nullptr, *path = nullptr;
    if (sd_bus_message_read(answer, "(so)", &bus, &path) <= 0) return std::nullopt;
    return Address{bus, path};
}

std::optional<Address> readParent(sd_bus_message* answer) {
    if (sd_bus_message_enter_container(answer, 'v', "(so)") < 0) return std::nullopt;
    return readAddress(answer);
}

/// A program that is at fault or hostile may say anything; sums and differences of these have room in an integer.
Extents readExtents(sd_bus_message* answer) {
    constexpr int farthest = 1 << 28;
    Extents extents;
    sd_bus_message_read(answer, "(iiii)", &extents.x, &extents.y, &extents.width, &extents.height);
    for (int* const each : {&extents.x, &extents.y, &extents.width, &extents.height})
        *each = std::clamp(*each, -farthest, farthest);
    return extents;
}

std::vector<Address> readAddresses(sd_bus_message* answer) {
    std::vector<Address> result;
    if (sd_bus_message_enter_container(answer, 'a', "(so)") < 0) return result;
    while (auto address = readAddress(answer)) {
        if (!address->isNull()) result.push_back(std::move(*address));
    }
    sd_bus_message_exit_container(answer);
    return result;
}

std::optional<States> readStates(sd_bus_message* answer) {
    void const* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(answer, 'u', &bytes, &size) < 0) return std::nullopt;
    std::array<std::uint32_t, 2> words{};
    if (size > 0) std::memcpy(words.data(), bytes, std::min(size, sizeof words));
    return States(std::uint64_t{words[1]} << 32U | words[0]);
}

/// One of two forms: newer libraries say the number of children, older ones all of them.
std::optional<std::pair<Address, Widget>> readWidget(sd_bus_message* answer, bool isOlder) {
    if (sd_bus_message_enter_container(answer, 'r', isOlder ? "(so)(so)(so)a(so)assusau" : "(so)(so)(so)iiassusau") <=
        0)
        return std::nullopt;
    auto address = readAddress(answer);
    sd_bus_message_skip(answer, "(so)(so)"); // its program and its parent
    Widget widget;
    std::int32_t place = 0, childCount = 0;
    if (isOlder)
        childCount = static_cast<std::int32_t>(readAddresses(answer).size());
    else
        sd_bus_message_read(answer, "ii", &place, &childCount);
    sd_bus_message_skip(answer, "as"); // its interfaces
    char const* name = "";
    std::uint32_t role = 0;
    sd_bus_message_read(answer, "su", &name, &role);
    sd_bus_message_skip(answer, "s"); // its description
    auto const states = readStates(answer);
    sd_bus_message_exit_container(answer);
    if (!address || !states) return std::nullopt;
    return std::pair(std::move(*address), Widget{.role = Role{role},
                                                 .states = *states,
                                                 .name = std::string(name, ::strnlen(name, longestText)),
                                                 .childCount = childCount});
}

std::map<Address, Widget> readWidgets(sd_bus_message* answer) {
    std::map<Address, Widget> result;
    bool const isOlder = sd_bus_message_has_signature(answer, "a((so)(so)(so)a(so)assusau)") != 0;
    if (sd_bus_message_enter_container(answer, 'a', nullptr) < 0) return result;
    while (auto widget = readWidget(answer, isOlder)) result.insert(std::move(*widget));
    return result;
}

std::vector<Address> readLabels(sd_bus_message* answer) {
    constexpr std::uint32_t labelledBy = 2;
    std::vector<Address> result;
    if (sd_bus_message_enter_container(answer, 'a', "(ua(so))") < 0) return result;
    while (sd_bus_message_enter_container(answer, 'r', "ua(so)") > 0) {
        std::uint32_t relation = 0;
        sd_bus_message_read(answer, "u", &relation);
        auto targets = readAddresses(answer);
        if (relation == labelledBy) result = std::move(targets);
        sd_bus_message_exit_container(answer);
    }
    return result;
}

std::map<std::string, std::string> readAttributes(sd_bus_message* answer) {
    std::map<std::string, std::string> result;
    if (sd_bus_message_enter_container(answer, 'a', "{ss}") < 0) return result;
    char const *key = nullptr, *value = nullptr;
    while (sd_bus_message_read(answer, "{ss}", &key, &value) > 0) result.emplace(key, value);
    return result;
}

}

struct AccessibilityBus::State {
    using Answered = std::function<void(sd_bus_message*)>; // nothing for a failure
    struct Question {
        Message message;
        Answered answered;
        State* state;
        std::chrono::microseconds patience;
    };

    explicit State(std::string const& busAddress) : address(busAddress), bus(opened(address)) {}

    Message call(Address const& of, char const* interface, char const* member) {
        sd_bus_message* message = nullptr;
        if (sd_bus_message_new_method_call(bus.get(), &message, of.bus.c_str(), of.path.c_str(), interface, member) < 0)
            return nullptr; // a program that gives a name that cannot be one
        return Message(message);
    }

    void ask(Message message, Answered answered,
             std::chrono::microseconds patience = std::chrono::microseconds::max()) {
        if (!message) return answered(nullptr);
        waiting.push_back(
            std::make_unique<Question>(Question{std::move(message), std::move(answered), this, patience}));
    }

    void askProperty(Address const& of, char const* interface, char const* property, Answered answered) {
        auto message = call(of, properties, "Get");
        if (message) sd_bus_message_append(message.get(), "ss", interface, property);
        ask(std::move(message), std::move(answered));
    }

    void send(Deadline deadline) {
        // Programs answer one after the other; this keeps them from waiting for us.
        constexpr std::size_t mostUnderWay = 64;
        while (!waiting.empty() && underWay < mostUnderWay) {
            auto question = std::move(waiting.front());
            waiting.pop_front();
            auto const left = duration_cast<std::chrono::microseconds>(deadline - std::chrono::steady_clock::now());
            auto* const raw = question.get();
            open.emplace(raw, std::move(question));
            ++underWay;
            if (sd_bus_call_async(bus.get(), nullptr, raw->message.get(), onAnswer, raw,
                                  std::clamp<std::int64_t>(left.count(), 1, raw->patience.count())) < 0)
                finish(raw, nullptr);
        }
    }

    static int onAnswer(sd_bus_message* answer, void* data, sd_bus_error* /*error*/) {
        auto* const question = static_cast<Question*>(data);
        bool const isFailure = sd_bus_message_is_method_error(answer, nullptr) != 0;
        question->state->finish(question, isFailure ? nullptr : answer);
        return 0;
    }

    void finish(Question* question, sd_bus_message* answer) {
        --underWay;
        auto const kept = open.extract(question);
        // What an answer leads to comes first: of a program that is too slow, some widgets are known whole.
        auto before = std::exchange(waiting, {});
        question->answered(answer);
        waiting.splice(waiting.end(), before);
    }

    /// Answers that come later find nobody, and what was not asked yet is not asked any more.
    void dropAll() {
        waiting.clear();
        bus.reset();
        open.clear();
        underWay = 0;
    }

    [[noreturn]] void lose(std::string const& reason) {
        dropAll();
        failToConnect(reason);
    }

    std::string address;
    Bus bus;
    std::list<std::unique_ptr<Question>> waiting;
    std::map<Question*, std::unique_ptr<Question>> open;
    std::size_t underWay = 0;
};

AccessibilityBus::AccessibilityBus(std::string const& display)
    : AccessibilityBus(KnownAddress{knownAddress(display)}) {}
AccessibilityBus::AccessibilityBus(KnownAddress const& known) : state_(std::make_unique<State>(known.address)) {}
AccessibilityBus::~AccessibilityBus() = default;

namespace {

/// Reads an answer by `read`, or says that there is none.
template<class T, class Read> auto reading(AccessibilityBus::Then<T> then, Read read) {
    return [then = std::move(then), read](sd_bus_message* answer) {
        then(answer ? std::optional<T>(read(answer)) : std::nullopt);
    };
}

/// None where the program has none there.
auto readingObject(AccessibilityBus::Then<Address> then) {
    return [then = std::move(then)](sd_bus_message* answer) {
        auto found = answer ? readAddress(answer) : std::nullopt;
        then(found && !found->isNull() ? std::move(found) : std::nullopt);
    };
}

}

void AccessibilityBus::states(Address const& of, Then<States> then) {
    state_->ask(state_->call(of, accessible, "GetState"),
                [then = std::move(then)](auto* answer) { then(answer ? readStates(answer) : std::nullopt); });
}

void AccessibilityBus::role(Address const& of, Then<Role> then) {
    state_->ask(state_->call(of, accessible, "GetRole"), reading<Role>(std::move(then), [](auto* answer) {
                    std::uint32_t role = 0;
                    sd_bus_message_read(answer, "u", &role);
                    return Role{role};
                }));
}

void AccessibilityBus::name(Address const& of, Then<std::string> then) {
    state_->askProperty(of, accessible, "Name",
                        [then = std::move(then)](auto* answer) { then(answer ? readText(answer) : std::nullopt); });
}

void AccessibilityBus::description(Address const& of, Then<std::string> then) {
    state_->askProperty(of, accessible, "Description",
                        [then = std::move(then)](auto* answer) { then(answer ? readText(answer) : std::nullopt); });
}

void AccessibilityBus::toolkitName(Address const& of, Then<std::string> then) {
    state_->askProperty(of, application, "ToolkitName",
                        [then = std::move(then)](auto* answer) { then(answer ? readText(answer) : std::nullopt); });
}

void AccessibilityBus::parent(Address const& of, Then<Address> then) {
    state_->askProperty(of, accessible, "Parent",
                        [then = std::move(then)](auto* answer) { then(answer ? readParent(answer) : std::nullopt); });
}

void AccessibilityBus::childCount(Address const& of, Then<int> then) {
    state_->askProperty(of, accessible, "ChildCount", reading<int>(std::move(then), [](auto* answer) {
                            std::int32_t count = 0;
                            sd_bus_message_read(answer, "v", "i", &count);
                            return count;
                        }));
}

void AccessibilityBus::children(Address const& of, Then<std::vector<Address>> then) {
    state_->ask(state_->call(of, accessible, "GetChildren"),
                reading<std::vector<Address>>(std::move(then), readAddresses));
}

void AccessibilityBus::childAt(Address const& of, int place, Then<Address> then) {
    auto message = state_->call(of, accessible, "GetChildAtIndex");
    if (message) sd_bus_message_append(message.get(), "i", place);
    state_->ask(std::move(message), readingObject(std::move(then)));
}

void AccessibilityBus::placeInParent(Address const& of, Then<int> then) {
    state_->ask(state_->call(of, accessible, "GetIndexInParent"), reading<int>(std::move(then), [](auto* answer) {
                    std::int32_t place = -1;
                    sd_bus_message_read(answer, "i", &place);
                    return place;
                }));
}

void AccessibilityBus::extents(Address const& of, Origin origin, Then<Extents> then) {
    auto message = state_->call(of, component, "GetExtents");
    if (message) sd_bus_message_append(message.get(), "u", static_cast<std::uint32_t>(origin));
    state_->ask(std::move(message), reading<Extents>(std::move(then), readExtents));
}

void AccessibilityBus::atPoint(Address const& of, Place const& place, Then<Address> then) {
    auto message = state_->call(of, component, "GetAccessibleAtPoint");
    if (message)
        sd_bus_message_append(message.get(), "iiu", place.x, place.y, static_cast<std::uint32_t>(place.origin));
    state_->ask(std::move(message), readingObject(std::move(then)));
}

void AccessibilityBus::allWidgets(Address const& program, Then<std::map<Address, Widget>> then) {
    state_->ask(state_->call({program.bus, "/org/a11y/atspi/cache"}, "org.a11y.atspi.Cache", "GetItems"),
                reading<std::map<Address, Widget>>(std::move(then), readWidgets), std::chrono::milliseconds(800));
}

void AccessibilityBus::labels(Address const& of, Then<std::vector<Address>> then) {
    state_->ask(state_->call(of, accessible, "GetRelationSet"),
                reading<std::vector<Address>>(std::move(then), readLabels));
}

void AccessibilityBus::attributes(Address const& of, Then<std::map<std::string, std::string>> then) {
    state_->ask(state_->call(of, accessible, "GetAttributes"),
                reading<std::map<std::string, std::string>>(std::move(then), readAttributes));
}

void AccessibilityBus::processOf(std::string const& bus, Then<int> then) {
    auto message = state_->call({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
                                "GetConnectionUnixProcessID");
    if (message) sd_bus_message_append(message.get(), "s", bus.c_str());
    state_->ask(std::move(message), reading<int>(std::move(then), [](auto* answer) {
                    std::uint32_t process = 0;
                    sd_bus_message_read(answer, "u", &process);
                    return static_cast<int>(process);
                }));
}

void AccessibilityBus::programs(Then<std::vector<Address>> then) {
    children({"org.a11y.atspi.Registry", rootPath}, std::move(then));
}

bool AccessibilityBus::isOpen() const { return state_->bus && sd_bus_is_open(state_->bus.get()) > 0; }

AccessibilityBus::Outcome AccessibilityBus::run(Deadline deadline, std::stop_token const& stop) {
    constexpr Microseconds glance = std::chrono::milliseconds(20); // how soon a stop is seen
    while (true) {
        state_->send(deadline);
        if (state_->underWay == 0 && state_->waiting.empty()) {
            // A bus that goes away answers all that is open by a failure.
            if (sd_bus_is_open(state_->bus.get()) <= 0) state_->lose("the accessibility bus went away.");
            return Outcome::allAnswered;
        }
        bool const isStopped = stop.stop_requested();
        if (isStopped || std::chrono::steady_clock::now() >= deadline) {
            state_->dropAll();
            state_->bus = opened(state_->address);
            return isStopped ? Outcome::stopped : Outcome::late;
        }
        int const code = sd_bus_process(state_->bus.get(), nullptr);
        if (code < 0) state_->lose(fmt::format("the accessibility bus went away ({}).", errorText(code)));
        if (code == 0) sd_bus_wait(state_->bus.get(), glance.count());
    }
}

void AccessibilityBus::runOnBus(Deadline deadline, std::stop_token const& stop) {
    if (run(deadline, stop) == Outcome::late) failToConnect("the accessibility bus does not answer.");
}

}
