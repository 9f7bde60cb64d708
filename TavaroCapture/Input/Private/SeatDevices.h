#pragma once

#include <TavaroCapture/Input/Private/InputDevices.h>

#include <string>

struct libinput;
struct libinput_device;
struct libinput_event;

namespace tavaro::input {

/// What is wanted of the devices. How they are set up is something that desktops keep to themselves.
struct DeviceChoices {
    bool countsTaps = false;   // a finger that taps a touchpad clicks
    bool isLeftHanded = false; // the right button of a mouse is the first one
    bool readsKeys = true;     // else keyboards are closed at once
};

/// Devices by libinput, which reads them as desktops do: only those that the user may read, opened for reading and
/// never grabbed, so that everybody else goes on to hear of everything.
class SeatDevices final : public InputDevices {
public:
    /// Those of a seat ("seat0"), by what udev knows of them.
    SeatDevices(std::string const& seat, DeviceChoices const& choices);
    ~SeatDevices() override;
    SeatDevices(SeatDevices const&) = delete;
    SeatDevices& operator=(SeatDevices const&) = delete;

    int descriptor() const override;
    void read(FunctionRef<void(InputEvent const&)> handler) override;
    int keyboards() const override { return keyboards_; }
    int pointers() const override { return pointers_; }
    bool areNumbersLocked() const override { return areNumbersLocked_; }

private:
    void noteAdded(libinput_device& device);
    void noteRemoved(libinput_device& device);
    void note(libinput_event& event, FunctionRef<void(InputEvent const&)> handler);
    static int openDevice(char const* file, int flags, void* here);

    DeviceChoices const choices_;
    libinput* context_ = nullptr;
    int keyboards_ = 0;
    int pointers_ = 0;
    bool areNumbersLocked_ = false;
};

}
