#pragma once

#include <memory>
#include <string>

struct sd_bus;

/// The bus on which programs tell of their widgets.
namespace tavaro::atspi {

struct CloseBus {
    void operator()(sd_bus* bus) const;
};
/// One thread.
using Bus = std::unique_ptr<sd_bus, CloseBus>;

/// Where that bus is: the session knows, and starts it where it is not running; where there is no session, `display`
/// (":0") may. Empty where nobody does. Takes two seconds at most.
std::string busAddress(std::string const& display);

/// Nothing, with `errno` set, where the bus cannot be reached.
Bus openBus(std::string const& address);

}
