#include <TavaroCapture/Accessibility/BusConnection.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/Connection.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <optional>
#include <systemd/sd-bus.h>

namespace tavaro::atspi {

namespace {

using Microseconds = std::chrono::duration<std::uint64_t, std::micro>;
// Longer than a loaded machine takes to start a bus, short enough for who waits.
constexpr Microseconds connecting = std::chrono::seconds(2);
constexpr Microseconds glance = std::chrono::milliseconds(50);

int onAddress(sd_bus_message* answer, void* data, sd_bus_error* /*error*/) {
    auto& address = *static_cast<std::optional<std::string>*>(data);
    char const* text = "";
    bool const isAddress =
        sd_bus_message_is_method_error(answer, nullptr) == 0 && sd_bus_message_read(answer, "s", &text) >= 0;
    address = isAddress ? text : "";
    return 0;
}

/// Empty where nobody answers. A call that waits itself would do so for as long as a bus takes to say who it is, which
/// one that hangs never does.
std::string addressFromSession() {
    sd_bus* raw = nullptr;
    if (sd_bus_open_user(&raw) < 0) return {};
    Bus const session(raw);
    std::optional<std::string> address;
    if (sd_bus_call_method_async(raw, nullptr, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", onAddress,
                                 &address, "") < 0)
        return {};
    auto const deadline = std::chrono::steady_clock::now() + connecting;
    while (!address && std::chrono::steady_clock::now() < deadline) {
        int const code = sd_bus_process(raw, nullptr);
        if (code < 0) break;
        if (code == 0) sd_bus_wait(raw, glance.count());
    }
    return address.value_or("");
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
