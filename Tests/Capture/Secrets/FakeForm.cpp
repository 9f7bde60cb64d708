#include "FakeForm.h"

#include <TavaroPlatform/Queues/SerialQueue.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <systemd/sd-bus.h>
#include <utility>

namespace tavaro {

namespace {

constexpr std::string_view prefix = "/org/a11y/atspi/accessible/";
constexpr char const* rootPath = "/org/a11y/atspi/accessible/root";
constexpr char const* programPath = "/org/a11y/atspi/accessible/program";
constexpr char const* windowPath = "/org/a11y/atspi/accessible/window";

std::string pathOf(int field) { return std::string(prefix) + std::to_string(field); }

}

struct FakeForm::State {
    std::vector<Field> fields;
    int focused = -1;
    bool isActive = true;
    sd_bus* bus = nullptr;
    std::string name; // on the bus
    std::string title;
    std::atomic<bool> isOver = false;
    std::mutex mutex;
    std::condition_variable changed;
    bool isStalled = false;                         // guarded by mutex
    std::vector<std::function<void(State&)>> steps; // guarded by mutex
    std::unique_ptr<SerialQueue> queue;

    static int onMessage(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
        std::uint8_t type = 0;
        sd_bus_message_get_type(message, &type);
        return type == SD_BUS_MESSAGE_METHOD_CALL ? static_cast<State*>(data)->answer(message) : 0;
    }

    /// -1 for the window and what is above it.
    int fieldOf(sd_bus_message* message) const {
        std::string_view const path = sd_bus_message_get_path(message);
        bool const isField = path.starts_with(prefix) && path != rootPath && path != programPath && path != windowPath;
        return isField ? std::atoi(path.data() + prefix.size()) : -1;
    }

    int answer(sd_bus_message* message) {
        std::string_view const member = sd_bus_message_get_member(message), path = sd_bus_message_get_path(message);
        int const field = fieldOf(message);
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(message, &reply);
        if (member == "GetChildren")
            appendChildren(reply, path);
        else if (member == "Get")
            appendProperty(message, reply);
        else if (member == "GetState")
            appendStates(reply, field);
        else if (member == "GetRole")
            sd_bus_message_append(reply, "u",
                                  field >= 0 && fields[static_cast<std::size_t>(field)].isPassword ? 40U : 61U);
        else if (member == "GetText" && field >= 0)
            sd_bus_message_append(reply, "s", fields[static_cast<std::size_t>(field)].text.c_str());
        else
            return sd_bus_message_unref(reply), 0; // the library says that there is no such method
        sd_bus_send(bus, reply, nullptr);
        sd_bus_message_unref(reply);
        return 1;
    }

    void appendChildren(sd_bus_message* reply, std::string_view path) const {
        sd_bus_message_open_container(reply, 'a', "(so)");
        if (path == rootPath) sd_bus_message_append(reply, "(so)", name.c_str(), programPath);
        if (path == programPath) sd_bus_message_append(reply, "(so)", name.c_str(), windowPath);
        for (int i = 0; path == windowPath && i < static_cast<int>(fields.size()); ++i)
            sd_bus_message_append(reply, "(so)", name.c_str(), pathOf(i).c_str());
        sd_bus_message_close_container(reply);
    }

    void appendProperty(sd_bus_message* message, sd_bus_message* reply) const {
        char const *interface = "", *property = "";
        sd_bus_message_read(message, "ss", &interface, &property);
        bool const isWindow = sd_bus_message_get_path(message) == std::string_view(windowPath);
        if (property == std::string_view("Name"))
            sd_bus_message_append(reply, "v", "s", ((isWindow ? "The window of " : "") + title).c_str());
        else
            sd_bus_message_append(reply, "v", "i", isWindow ? static_cast<int>(fields.size()) : 0);
    }

    void appendStates(sd_bus_message* reply, int field) const {
        constexpr std::uint32_t active = 1U << 1, isFocused = 1U << 12, showing = 1U << 25;
        bool const hasKeyboard = field >= 0 ? field == focused : isActive;
        std::array<std::uint32_t, 2> const words{showing | (!hasKeyboard ? 0 : field < 0 ? active : isFocused), 0};
        sd_bus_message_append_array(reply, 'u', words.data(), sizeof words);
    }

    void emit(std::string const& path, char const* state, bool isSet) const {
        sd_bus_emit_signal(bus, path.c_str(), "org.a11y.atspi.Event.Object", "StateChanged", "siiva{sv}", state,
                           isSet ? 1 : 0, 0, "i", 0, 0);
    }

    /// As of windows.
    void emit(char const* event) const {
        sd_bus_emit_signal(bus, windowPath, "org.a11y.atspi.Event.Window", event, "siiva{sv}", "", 0, 0, "i", 0, 0);
    }

    void run() {
        while (!isOver) {
            std::vector<std::function<void(State&)>> now;
            {
                std::unique_lock lock(mutex);
                changed.wait(lock, [&] { return !isStalled || isOver; });
                now = std::exchange(steps, {});
            }
            for (auto const& step : now) step(*this);
            constexpr std::uint64_t glance = 2'000;
            if (sd_bus_process(bus, nullptr) == 0) sd_bus_wait(bus, glance);
        }
        sd_bus_flush_close_unref(bus);
    }
};

FakeForm::FakeForm(TestBus const& bus, std::vector<Field> fields, std::string const& name)
    : state_(std::make_unique<State>()) {
    state_->fields = std::move(fields);
    state_->title = name;
    sd_bus_new(&state_->bus);
    sd_bus_set_address(state_->bus, bus.address().c_str());
    sd_bus_set_bus_client(state_->bus, 1);
    sd_bus_start(state_->bus);
    char const* address = "";
    sd_bus_get_unique_name(state_->bus, &address);
    state_->name = address;
    // Programs are found by who lists them.
    sd_bus_request_name(state_->bus, "org.a11y.atspi.Registry", 0);
    sd_bus_add_filter(state_->bus, nullptr, State::onMessage, state_.get());
    state_->queue = std::make_unique<SerialQueue>("com.tavaro.test.form");
    state_->queue->async([state = state_.get()] { state->run(); });
}

FakeForm::~FakeForm() {
    state_->isOver = true;
    goOn();
    state_->queue.reset();
}

void FakeForm::soon(std::function<void(State&)> step) {
    std::lock_guard const lock(state_->mutex);
    state_->steps.push_back(std::move(step));
}

void FakeForm::focus(int field) {
    soon([field](State& state) {
        if (state.focused >= 0) state.emit(pathOf(state.focused), "focused", false);
        state.focused = field;
        state.emit(pathOf(field), "focused", true);
    });
}

void FakeForm::activate(bool isActive) {
    soon([isActive](State& state) {
        state.isActive = isActive;
        state.emit(windowPath, "active", isActive);
        state.emit(isActive ? "Activate" : "Deactivate");
    });
}

void FakeForm::close() {
    soon([](State& state) {
        state.isActive = false;
        state.emit("Destroy");
    });
}

void FakeForm::leave() {
    soon([](State& state) { state.focused = -1; });
}

void FakeForm::fill(int field, std::string const& text) {
    soon([field, text](State& state) { state.fields[static_cast<std::size_t>(field)].text = text; });
}

void FakeForm::stall() {
    std::lock_guard const lock(state_->mutex);
    state_->isStalled = true;
}

void FakeForm::goOn() {
    std::lock_guard const lock(state_->mutex);
    state_->isStalled = false;
    state_->changed.notify_all();
}

}
