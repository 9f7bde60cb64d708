#pragma once

#include "../../Capture/TestBus.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

struct sd_bus;
struct sd_bus_message;

namespace tavaro {

class SerialQueue;

/// A connection to a bus whose calls a test answers, on a queue of its own.
class AnsweringConnection {
public:
    /// Says whether it has taken the call. On the connection's queue.
    using Answer = std::function<bool(AnsweringConnection& self, sd_bus_message* call)>;

    AnsweringConnection(TestBus const& bus, Answer answer);
    ~AnsweringConnection();
    AnsweringConnection(AnsweringConnection const&) = delete;
    AnsweringConnection& operator=(AnsweringConnection const&) = delete;

    std::string const& name() const { return name_; }
    /// Inside of `Answer`; takes the answer.
    void send(sd_bus_message* answer);
    /// Leaves the bus. Any thread.
    void end() { isOver_ = true; }

private:
    void serve();

    sd_bus* bus_ = nullptr;
    Answer const answer_;
    std::string name_;
    std::atomic<bool> isOver_ = false;
    std::unique_ptr<SerialQueue> queue_;
};

}
