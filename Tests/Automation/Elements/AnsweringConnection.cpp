#include "AnsweringConnection.h"

#include <TavaroPlatform/Queues/SerialQueue.h>

#include <cstdint>
#include <systemd/sd-bus.h>
#include <utility>

namespace tavaro {

AnsweringConnection::AnsweringConnection(TestBus const& bus, Answer answer) : answer_(std::move(answer)) {
    sd_bus_new(&bus_);
    sd_bus_set_address(bus_, bus.address().c_str());
    sd_bus_set_bus_client(bus_, 1);
    sd_bus_start(bus_);
    char const* name = "";
    sd_bus_get_unique_name(bus_, &name);
    name_ = name;
    auto const onMessage = [](sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
        std::uint8_t type = 0;
        sd_bus_message_get_type(message, &type);
        bool const isCall = type == SD_BUS_MESSAGE_METHOD_CALL;
        auto* const self = static_cast<AnsweringConnection*>(data);
        return isCall && self->answer_(*self, message) ? 1 : 0;
    };
    sd_bus_add_filter(bus_, nullptr, onMessage, this);
    queue_ = std::make_unique<SerialQueue>("com.tavaro.test.program");
    queue_->async([this] { serve(); });
}

AnsweringConnection::~AnsweringConnection() {
    end();
    queue_.reset();
}

void AnsweringConnection::send(sd_bus_message* answer) {
    sd_bus_send(bus_, answer, nullptr);
    sd_bus_message_unref(answer);
}

void AnsweringConnection::serve() {
    while (!isOver_) {
        int const code = sd_bus_process(bus_, nullptr);
        if (code < 0) break;
        constexpr std::uint64_t glance = 5'000;
        if (code == 0) sd_bus_wait(bus_, glance);
    }
    sd_bus_flush_close_unref(bus_);
}

}
