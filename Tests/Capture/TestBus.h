#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace tavaro {

/// A message bus of its own, for as long as the object lives. It starts what the session's would, but no portal.
/// `address` is empty where none can be started.
class TestBus {
public:
    TestBus();
    ~TestBus();
    TestBus(TestBus const&) = delete;
    TestBus& operator=(TestBus const&) = delete;

    std::string const& address() const { return address_; }
    void kill();

private:
    std::filesystem::path folder_;
    std::string address_;
    pid_t process_ = 0;
};

}
