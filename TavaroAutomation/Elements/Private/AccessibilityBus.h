#pragma once

#include <TavaroAutomation/Elements/Private/Accessible.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro::atspi {

using Deadline = std::chrono::steady_clock::time_point;

/// The connection on which programs tell of their widgets. Questions wait in a queue, some are under way at a time, and
/// answers come back inside of `run`: nothing for what a program does not say. A question may ask further ones.
/// One thread.
class AccessibilityBus {
public:
    template<class T> using Then = std::function<void(std::optional<T>)>;

    /// Asks the session where its programs tell of their widgets; `display` (":0") knows it where there is no session.
    /// Throws `AutomationError` where nobody does.
    explicit AccessibilityBus(std::string const& display);
    /// One that is known by its address.
    struct KnownAddress {
        std::string address;
    };
    explicit AccessibilityBus(KnownAddress const& known);
    ~AccessibilityBus();
    AccessibilityBus(AccessibilityBus const&) = delete;
    AccessibilityBus& operator=(AccessibilityBus const&) = delete;

    void states(Address const& of, Then<States> then);
    void role(Address const& of, Then<Role> then);
    void name(Address const& of, Then<std::string> then);
    void description(Address const& of, Then<std::string> then);
    void parent(Address const& of, Then<Address> then);
    void childCount(Address const& of, Then<int> then);
    void children(Address const& of, Then<std::vector<Address>> then);
    void childAt(Address const& of, int place, Then<Address> then);
    void placeInParent(Address const& of, Then<int> then);
    void extents(Address const& of, Origin origin, Then<Extents> then);
    /// What the object knows of itself at that place: the innermost widget, or the next one inwards.
    void atPoint(Address const& of, Place const& place, Then<Address> then);
    /// All widgets that the program has made objects of, at once; not every toolkit can say, nor at all times.
    void allWidgets(Address const& program, Then<std::map<Address, Widget>> then);
    void labels(Address const& of, Then<std::vector<Address>> then);
    void attributes(Address const& of, Then<std::map<std::string, std::string>> then);
    void toolkitName(Address const& of, Then<std::string> then);
    void processOf(std::string const& bus, Then<int> then);
    /// The programs that tell of their widgets.
    void programs(Then<std::vector<Address>> then);

    /// False once the bus is gone: another one may be there for the next call.
    bool isOpen() const;

    enum class Outcome { allAnswered, late, stopped };
    /// Until all is answered, or no later than the deadline: what is still open then is dropped. Throws
    /// `AutomationError` where the bus goes away.
    Outcome run(Deadline deadline, std::stop_token const& stop = {});
    /// As `run`, for questions to the bus itself. Throws `AutomationError` where it is late.
    void runOnBus(Deadline deadline, std::stop_token const& stop = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
