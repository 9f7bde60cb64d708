#include <TavaroCapture/Accessibility/Private/Conversation.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

namespace tavaro::atspi {

namespace {

constexpr double answerSeconds = 2;

}

bool has(std::uint64_t traits, Trait trait) { return (traits >> static_cast<unsigned>(trait) & 1) != 0; }

std::uint64_t readTraits(sd_bus_message* answer) {
    void const* bytes = nullptr;
    std::size_t size = 0;
    std::array<std::uint32_t, 2> words{};
    if (sd_bus_message_read_array(answer, 'u', &bytes, &size) >= 0 && size > 0)
        std::memcpy(words.data(), bytes, std::min(size, sizeof words));
    return std::uint64_t{words[1]} << 32U | words[0];
}

std::vector<WidgetAddress> readWidgets(sd_bus_message* answer) {
    std::vector<WidgetAddress> result;
    if (sd_bus_message_enter_container(answer, 'a', "(so)") < 0) return result;
    char const *program = nullptr, *path = nullptr;
    while (sd_bus_message_read(answer, "(so)", &program, &path) > 0) {
        if (!std::string_view(path).ends_with("/null")) result.push_back({program, path});
    }
    return result;
}

std::string readText(sd_bus_message* answer) {
    char const* text = nullptr;
    return sd_bus_message_read(answer, "v", "s", &text) > 0 && text ? text : "";
}

bool isFailure(sd_bus_message* answer) { return !answer || sd_bus_message_is_method_error(answer, nullptr) != 0; }

WidgetAddress registry() { return {"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"}; }

Conversation::~Conversation() = default;

int Conversation::descriptor() const { return sd_bus_get_fd(bus_.get()); }
short Conversation::awaited() const {
    int const events = sd_bus_get_events(bus_.get());
    return static_cast<short>(std::max(events, 0));
}

int Conversation::patience() const {
    std::uint64_t due = 0; // microseconds of the monotonic clock
    if (sd_bus_get_timeout(bus_.get(), &due) <= 0 || due == UINT64_MAX) return -1;
    return static_cast<int>(std::max(std::ceil(static_cast<double>(due) / 1000 - mediaClockNow() * 1000), 0.0));
}

bool Conversation::listen() {
    int code = 0;
    while (!isOver_ && (code = sd_bus_process(bus_.get(), nullptr)) > 0) {
    }
    if (code < 0) isOver_ = true;
    return !isOver_;
}

Message Conversation::call(WidgetAddress const& of, char const* interface, char const* member) const {
    sd_bus_message* message = nullptr;
    if (sd_bus_message_new_method_call(bus_.get(), &message, of.program.c_str(), of.path.c_str(), interface, member) <
        0)
        return nullptr;
    return Message(message);
}

void Conversation::send(Message message, Answered answered) {
    auto question = std::make_unique<Question>(Question{this, std::move(answered)});
    auto* const raw = question.get();
    open_.emplace(raw, std::move(question));
    auto const patience = static_cast<std::uint64_t>(answerSeconds * 1e6);
    if (message && sd_bus_call_async(bus_.get(), nullptr, message.get(), onAnswer, raw, patience) >= 0) return;
    auto const kept = open_.extract(raw);
    raw->answered(nullptr);
}

void Conversation::ask(WidgetAddress const& of, char const* interface, char const* member, Answered answered) {
    send(call(of, interface, member), std::move(answered));
}

void Conversation::askProperty(WidgetAddress const& of, char const* name, Answered answered) {
    auto message = call(of, "org.freedesktop.DBus.Properties", "Get");
    if (message) sd_bus_message_append(message.get(), "ss", accessible, name);
    send(std::move(message), std::move(answered));
}

int Conversation::onAnswer(sd_bus_message* answer, void* data, sd_bus_error* /*error*/) {
    auto* const question = static_cast<Question*>(data);
    auto const kept = question->conversation->open_.extract(question); // answering may ask more
    question->answered(answer);
    return 0;
}

void Conversation::follow(char const* event, std::string const& rule, Told told) {
    match(rule, std::move(told));
    auto message =
        call({"org.a11y.atspi.Registry", "/org/a11y/atspi/registry"}, "org.a11y.atspi.Registry", "RegisterEvent");
    if (message) sd_bus_message_append(message.get(), "s", event);
    send(std::move(message), [](sd_bus_message*) {});
}

void Conversation::match(std::string const& rule, Told told) {
    auto* const kept = followed_.emplace_back(std::make_unique<Told>(std::move(told))).get();
    sd_bus_add_match_async(bus_.get(), nullptr, rule.c_str(), onSignal, nullptr, kept);
}

int Conversation::onSignal(sd_bus_message* signal, void* data, sd_bus_error* /*error*/) {
    (*static_cast<Told*>(data))(signal);
    return 0;
}

}
