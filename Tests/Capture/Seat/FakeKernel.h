#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace tavaro {

/// An input device that the test moves. Its file is a pipe, in which the kernel's events lie as the kernel writes them.
class FakeDevice {
public:
    enum class Kind { keyboard, mouse, touchpad, powerButton };
    FakeDevice(std::filesystem::path const& folder, Kind kind);
    /// Unplugged.
    ~FakeDevice();
    FakeDevice(FakeDevice const&) = delete;
    FakeDevice& operator=(FakeDevice const&) = delete;

    std::string file() const;
    /// What came together, stamped with the present moment, which is returned.
    struct Change {
        std::uint16_t type;
        std::uint16_t code;
        std::int32_t value;
    };
    double send(std::initializer_list<Change> changes);
    double key(std::uint16_t code, bool isDown);

    /// Its number pad makes digits.
    void lightNumbers();
    bool isOpen() const;      // by anybody but the test
    bool isMonotonic() const; // its stamps are of the media clock, as was asked for
    bool isGrabbed() const;

    struct State;

private:
    std::shared_ptr<State> state_;
};

}
