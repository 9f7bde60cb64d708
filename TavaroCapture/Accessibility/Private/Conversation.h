#pragma once

#include <TavaroCapture/Accessibility/BusConnection.h>
#include <TavaroCore/Files/ReleaseWith.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace tavaro::atspi {

using Message = std::unique_ptr<sd_bus_message, ReleaseWith<sd_bus_message_unref>>;

/// A widget, by its program's name on the bus and its own path.
struct WidgetAddress {
    std::string program;
    std::string path;
    bool operator==(WidgetAddress const&) const = default;
};

enum class Trait : unsigned { active = 1, focused = 12, showing = 25, visible = 30 };
bool has(std::uint64_t traits, Trait trait);

// What an answer holds; nothing where it holds something else.
std::uint64_t readTraits(sd_bus_message* answer);
std::vector<WidgetAddress> readWidgets(sd_bus_message* answer);
/// Of a property.
std::string readText(sd_bus_message* answer);

/// Whether nobody answers, or says that it could not be done.
bool isFailure(sd_bus_message* answer);

/// Questions to the programs on the bus, which answer when they get round to it, and what they tell by themselves. It
/// runs on the thread that calls it, and only during `listen`. Must not outlive what it reports to.
class Conversation {
public:
    using Answered = std::function<void(sd_bus_message*)>; // nothing for a failure
    using Told = std::function<void(sd_bus_message*)>;

    explicit Conversation(Bus bus) : bus_(std::move(bus)) {}
    ~Conversation();
    Conversation(Conversation const&) = delete;
    Conversation& operator=(Conversation const&) = delete;

    /// What to wait for by `poll`, and how many milliseconds at most; below 0: for ever.
    int descriptor() const;
    short awaited() const;
    int patience() const;
    /// Takes in what has been said since; false once the bus has gone away.
    bool listen();
    bool isOver() const { return isOver_; }

    Message call(WidgetAddress const& of, char const* interface, char const* member) const;
    void send(Message message, Answered answered);
    void ask(WidgetAddress const& of, char const* interface, char const* member, Answered answered);
    void askProperty(WidgetAddress const& of, char const* name, Answered answered);

    /// Has programs tell of an event ("object:state-changed:focused"), which comes as signals that match `rule`.
    void follow(char const* event, std::string const& rule, Told told);
    /// Signals of the bus itself that match.
    void match(std::string const& rule, Told told);

private:
    struct Question {
        Conversation* conversation;
        Answered answered;
    };
    static int onAnswer(sd_bus_message* answer, void* data, sd_bus_error* error);
    static int onSignal(sd_bus_message* signal, void* data, sd_bus_error* error);

    std::map<Question*, std::unique_ptr<Question>> open_;
    std::vector<std::unique_ptr<Told>> followed_;
    Bus bus_;
    bool isOver_ = false;
};

inline constexpr char const* accessible = "org.a11y.atspi.Accessible";
/// Whose children are the programs.
WidgetAddress registry();

}
