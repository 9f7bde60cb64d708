#include <TavaroCapture/Input/Private/SeatDevices.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <libinput.h>
#include <libudev.h>
#include <linux/input.h>
#include <memory>
#include <optional>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tavaro::input {

namespace {

struct FreeUdev {
    void operator()(udev* context) const { udev_unref(context); }
};
struct FreeEvent {
    void operator()(libinput_event* event) const { libinput_event_destroy(event); }
};

using Kind = InputEvent::Kind;

double seconds(std::uint64_t microseconds) { return static_cast<double>(microseconds) / 1e6; }

/// A key that several keyboards hold goes down with the first and up with the last.
std::optional<InputEvent> keyEvent(libinput_event_keyboard& event) {
    bool const isPress = libinput_event_keyboard_get_key_state(&event) == LIBINPUT_KEY_STATE_PRESSED;
    if (libinput_event_keyboard_get_seat_key_count(&event) != (isPress ? 1u : 0u)) return std::nullopt;
    return InputEvent{isPress ? Kind::keyPress : Kind::keyRelease,
                      seconds(libinput_event_keyboard_get_time_usec(&event)), libinput_event_keyboard_get_key(&event)};
}

/// Of a mouse, whose buttons a left-handed user has the other way round. Not by libinput, which ends the program when
/// such a mouse goes away with a button held (1.22).
std::uint32_t mirrored(std::uint32_t button) {
    return button == BTN_LEFT ? BTN_RIGHT : button == BTN_RIGHT ? BTN_LEFT : button;
}

bool isTouchpad(libinput_device& device) { return libinput_device_config_tap_get_finger_count(&device) > 0; }

std::optional<InputEvent> buttonEvent(libinput_event_pointer& event, DeviceChoices const& choices) {
    bool const isPress = libinput_event_pointer_get_button_state(&event) == LIBINPUT_BUTTON_STATE_PRESSED;
    if (libinput_event_pointer_get_seat_button_count(&event) != (isPress ? 1u : 0u)) return std::nullopt;
    auto const button = libinput_event_pointer_get_button(&event);
    bool const isMirrored =
        choices.isLeftHanded && !isTouchpad(*libinput_event_get_device(libinput_event_pointer_get_base_event(&event)));
    return InputEvent{isPress ? Kind::buttonPress : Kind::buttonRelease,
                      seconds(libinput_event_pointer_get_time_usec(&event)), isMirrored ? mirrored(button) : button};
}

/// The pen's tip is the first button, as desktops have it.
InputEvent tipEvent(libinput_event_tablet_tool& event) {
    bool const isDown = libinput_event_tablet_tool_get_tip_state(&event) == LIBINPUT_TABLET_TOOL_TIP_DOWN;
    return {isDown ? Kind::buttonPress : Kind::buttonRelease, seconds(libinput_event_tablet_tool_get_time_usec(&event)),
            BTN_LEFT};
}

/// Lids, power buttons and the like have keys, too, but nobody types on them.
bool isKeyboard(libinput_device& device) {
    return libinput_device_has_capability(&device, LIBINPUT_DEVICE_CAP_KEYBOARD) != 0 &&
           libinput_device_keyboard_has_key(&device, KEY_A) == 1;
}

bool isPointer(libinput_device& device) {
    return libinput_device_has_capability(&device, LIBINPUT_DEVICE_CAP_POINTER) != 0 ||
           libinput_device_has_capability(&device, LIBINPUT_DEVICE_CAP_TABLET_TOOL) != 0;
}

bool showsNumberLock(int device) {
    std::array<unsigned char, LED_CNT / 8> lights{};
    return ::ioctl(device, EVIOCGLED(lights.size()), lights.data()) >= 0 && ((lights[0] >> LED_NUML) & 1) != 0;
}

void closeDevice(int device, void* /*here*/) { FileDescriptor const closed(device); }

[[noreturn]] void fail() {
    throw CaptureError(CaptureError::Kind::unsupported, "The input devices cannot be read: there is no memory.");
}

}

int SeatDevices::openDevice(char const* file, int /*flags*/, void* here) {
    // For reading, whatever is asked for: nothing here writes to a device.
    int const opened = ::open(file, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (opened < 0) return -errno;
    if (showsNumberLock(opened)) static_cast<SeatDevices*>(here)->areNumbersLocked_ = true;
    return opened;
}

SeatDevices::SeatDevices(std::string const& seat, DeviceChoices const& choices) : choices_(choices) {
    static constexpr libinput_interface interface { openDevice, closeDevice };
    std::unique_ptr<udev, FreeUdev> const devices(udev_new());
    context_ = devices ? libinput_udev_create_context(&interface, this, devices.get()) : nullptr;
    if (!context_) fail();
    libinput_log_set_priority(context_, static_cast<libinput_log_priority>(LIBINPUT_LOG_PRIORITY_ERROR + 1));
    libinput_udev_assign_seat(context_, seat.c_str());
    read([](InputEvent const&) {}); // which there are
}

SeatDevices::~SeatDevices() { libinput_unref(context_); }

int SeatDevices::descriptor() const { return libinput_get_fd(context_); }

void SeatDevices::noteAdded(libinput_device& device) {
    if (isKeyboard(device)) ++keyboards_;
    if (isPointer(device)) ++pointers_;
    if (!choices_.readsKeys && !isPointer(device))
        libinput_device_config_send_events_set_mode(&device, LIBINPUT_CONFIG_SEND_EVENTS_DISABLED);
    if (isTouchpad(device))
        libinput_device_config_tap_set_enabled(&device, choices_.countsTaps ? LIBINPUT_CONFIG_TAP_ENABLED
                                                                            : LIBINPUT_CONFIG_TAP_DISABLED);
}

void SeatDevices::noteRemoved(libinput_device& device) {
    if (isKeyboard(device)) --keyboards_;
    if (isPointer(device)) --pointers_;
}

void SeatDevices::note(libinput_event& event, FunctionRef<void(InputEvent const&)> handler) {
    std::optional<InputEvent> noted;
    switch (libinput_event_get_type(&event)) {
    case LIBINPUT_EVENT_DEVICE_ADDED: return noteAdded(*libinput_event_get_device(&event));
    case LIBINPUT_EVENT_DEVICE_REMOVED: return noteRemoved(*libinput_event_get_device(&event));
    case LIBINPUT_EVENT_KEYBOARD_KEY: noted = keyEvent(*libinput_event_get_keyboard_event(&event)); break;
    case LIBINPUT_EVENT_POINTER_BUTTON: noted = buttonEvent(*libinput_event_get_pointer_event(&event), choices_); break;
    case LIBINPUT_EVENT_TABLET_TOOL_TIP: noted = tipEvent(*libinput_event_get_tablet_tool_event(&event)); break;
    default: return;
    }
    if (noted) handler(*noted);
}

void SeatDevices::read(FunctionRef<void(InputEvent const&)> handler) {
    libinput_dispatch(context_);
    while (std::unique_ptr<libinput_event, FreeEvent> const event{libinput_get_event(context_)}) note(*event, handler);
}

}
