#include <TavaroCapture/Accessibility/BusConnection.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/Connection.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <systemd/sd-bus.h>

namespace tavaro::atspi {

namespace {

using Microseconds = std::chrono::duration<std::uint64_t, std::micro>;
// Longer than a loaded machine takes to start a bus, short enough for who waits.
constexpr Microseconds connecting = std::chrono::seconds(2);

struct FreeMessage {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

std::string addressFromSession() {
    sd_bus* raw = nullptr;
    if (sd_bus_open_user(&raw) < 0) return {};
    Bus const session(raw);
    sd_bus_set_method_call_timeout(raw, connecting.count());
    sd_bus_message* answer = nullptr;
    char const* address = "";
    if (sd_bus_call_method(raw, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr, &answer, "") <
        0)
        return {};
    std::unique_ptr<sd_bus_message, FreeMessage> const owner(answer);
    return sd_bus_message_read(answer, "s", &address) < 0 ? std::string() : address;
}

std::string addressFromDisplay(std::string const& display) {
    try {
        x11::Connection connection(display);
        return connection.text(connection.root(), "AT_SPI_BUS");
    } catch (CaptureError const&) {
        return {};
    }
}

}

void CloseBus::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }

std::string busAddress(std::string const& display) {
    auto address = addressFromSession();
    return address.empty() ? addressFromDisplay(display) : address;
}

Bus openBus(std::string const& address) {
    sd_bus* raw = nullptr;
    sd_bus_new(&raw);
    Bus bus(raw);
    sd_bus_set_address(raw, address.c_str());
    sd_bus_set_bus_client(raw, 1);
    sd_bus_set_method_call_timeout(raw, connecting.count());
    if (int const code = sd_bus_start(raw); code < 0) {
        bus.reset();
        errno = -code;
    }
    return bus;
}

}
