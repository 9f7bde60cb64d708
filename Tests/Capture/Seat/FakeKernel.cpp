#include "FakeKernel.h"

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <deque>
#include <dlfcn.h>
#include <fcntl.h>
#include <libudev.h>
#include <linux/input.h>
#include <list>
#include <map>
#include <set>
#include <span>
#include <stdexcept>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// This program's own, in place of the libraries': udev knows the test's devices and no others, and their files answer
// as the kernel's do.

using tavaro::FakeDevice;

struct FakeDevice::State {
    std::string sysname; // "event3"
    std::string syspath;
    std::string file;
    std::map<std::string, std::string, std::less<>> properties;
    std::set<int> properBits;           // INPUT_PROP_…
    std::map<int, std::set<int>> codes; // by type
    std::map<int, input_absinfo> axes;
    std::set<int> lights;
    ino_t inode = 0;
    int clock = -1;
    bool isGrabbed = false;
    tavaro::FileDescriptor writer;
};

struct udev_device {
    std::shared_ptr<FakeDevice::State> state;
    std::string action;
    int references = 1;
};

struct udev_list_entry {
    std::string name;
    udev_list_entry* next = nullptr;
};

namespace {

/// All that are plugged in.
struct Machine {
    std::vector<std::shared_ptr<FakeDevice::State>> devices;
    std::deque<std::pair<std::shared_ptr<FakeDevice::State>, std::string>> news; // with what happened to them
    tavaro::Bell bell;
    std::shared_ptr<FakeDevice::State> opening; // whose file udev was asked for last
    std::list<udev_list_entry> listed;
    int lastNumber = 0;
};

Machine& machine() {
    static Machine it;
    return it;
}

std::shared_ptr<FakeDevice::State> deviceOf(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0) return nullptr;
    for (auto const& device : machine().devices)
        if (device->inode == status.st_ino) return device;
    return nullptr;
}

udev_device* reference(std::shared_ptr<FakeDevice::State> state, std::string action = {}) {
    return state ? new udev_device{std::move(state), std::move(action)} : nullptr;
}

void setBit(std::span<unsigned char> bits, int bit) {
    auto const at = static_cast<std::size_t>(bit) / 8;
    if (at < bits.size()) bits[at] = static_cast<unsigned char>(bits[at] | 1 << (bit % 8));
}

int answerBits(std::span<unsigned char> bits, std::set<int> const& set) {
    std::ranges::fill(bits, 0);
    for (int const bit : set) setBit(bits, bit);
    return static_cast<int>(bits.size());
}

int answerText(std::span<unsigned char> text, std::string_view answer) {
    auto const size = std::min(answer.size() + 1, text.size());
    std::memcpy(text.data(), answer.data(), size - 1);
    text[size - 1] = 0;
    return static_cast<int>(size);
}

int refuse(int reason) {
    errno = reason;
    return -1;
}

/// As the kernel's input devices answer.
int answer(FakeDevice::State& device, unsigned long request, void* data) {
    auto const number = static_cast<int>(_IOC_NR(request));
    std::span<unsigned char> const bytes(static_cast<unsigned char*>(data), _IOC_SIZE(request));
    constexpr int firstBits = 0x20, firstAxis = 0x40;
    if (request == EVIOCGVERSION) return *static_cast<int*>(data) = EV_VERSION, 0;
    if (request == EVIOCGID) return *static_cast<input_id*>(data) = {BUS_USB, 1, 2, 3}, 0;
    if (request == EVIOCGREP) return std::memset(data, 0, _IOC_SIZE(request)), 0;
    if (request == EVIOCSCLOCKID) return device.clock = *static_cast<int*>(data), 0;
    if (request == EVIOCGRAB) return device.isGrabbed = true, 0;
    if (number == _IOC_NR(EVIOCGNAME(0))) return answerText(bytes, "Test " + device.sysname);
    if (number == _IOC_NR(EVIOCGPROP(0))) return answerBits(bytes, device.properBits);
    if (number == _IOC_NR(EVIOCGLED(0))) return answerBits(bytes, device.lights);
    if (number == _IOC_NR(EVIOCGKEY(0)) || number == _IOC_NR(EVIOCGSW(0))) return answerBits(bytes, {});
    if (number == _IOC_NR(EVIOCGMTSLOTS(0))) {
        std::memset(bytes.data() + sizeof(int), 0xff, bytes.size() - sizeof(int)); // nothing touches it
        return 0;
    }
    if (number >= firstAxis && number < firstAxis + ABS_CNT && _IOC_DIR(request) == _IOC_READ) {
        auto const axis = device.axes.find(number - firstAxis);
        return axis == device.axes.end() ? refuse(EINVAL) : (*static_cast<input_absinfo*>(data) = axis->second, 0);
    }
    if (number < firstBits || number >= firstAxis) return refuse(ENOENT);
    std::set<int> types;
    for (auto const& [type, codes] : device.codes) types.insert(type);
    return answerBits(bytes, number == firstBits ? types : device.codes[number - firstBits]);
}

}

extern "C" {

int ioctl(int file, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const data = va_arg(arguments, void*);
    va_end(arguments);
    if (_IOC_TYPE(request) == 'E')
        if (auto const device = deviceOf(file)) return answer(*device, request, data);
    static auto* const kernel = reinterpret_cast<int (*)(int, unsigned long, void*)>(dlsym(RTLD_NEXT, "ioctl"));
    return kernel(file, request, data);
}

udev* udev_new() { return reinterpret_cast<udev*>(&machine()); }
udev* udev_ref(udev* here) { return here; }
udev* udev_unref(udev* /*here*/) { return nullptr; }

udev_device* udev_device_new_from_devnum(udev* /*here*/, char /*type*/, dev_t /*number*/) {
    return reference(machine().opening); // pipes have no numbers
}
udev_device* udev_device_new_from_syspath(udev* /*here*/, char const* path) {
    for (auto const& device : machine().devices)
        if (device->syspath == path) return reference(device);
    return nullptr;
}
udev_device* udev_device_ref(udev_device* device) { return ++device->references, device; }
udev_device* udev_device_unref(udev_device* device) {
    if (device && --device->references == 0) delete device;
    return nullptr;
}
udev* udev_device_get_udev(udev_device* /*device*/) { return udev_new(); }
udev_device* udev_device_get_parent(udev_device* /*device*/) { return nullptr; }
udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* /*device*/, char const* /*subsystem*/,
                                                           char const* /*type*/) {
    return nullptr;
}
int udev_device_get_is_initialized(udev_device* /*device*/) { return 1; }
char const* udev_device_get_action(udev_device* device) { return device->action.c_str(); }
char const* udev_device_get_sysname(udev_device* device) { return device->state->sysname.c_str(); }
char const* udev_device_get_syspath(udev_device* device) { return device->state->syspath.c_str(); }
char const* udev_device_get_devnode(udev_device* device) {
    machine().opening = device->state;
    return device->state->file.c_str();
}
char const* udev_device_get_property_value(udev_device* device, char const* key) {
    auto const found = device->state->properties.find(key);
    return found == device->state->properties.end() ? nullptr : found->second.c_str();
}

udev_enumerate* udev_enumerate_new(udev* /*here*/) { return reinterpret_cast<udev_enumerate*>(&machine()); }
udev_enumerate* udev_enumerate_unref(udev_enumerate* /*here*/) { return nullptr; }
int udev_enumerate_add_match_subsystem(udev_enumerate* /*here*/, char const* /*subsystem*/) { return 0; }
int udev_enumerate_scan_devices(udev_enumerate* /*here*/) { return 0; }
udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* /*here*/) {
    auto& listed = machine().listed;
    listed.clear();
    for (auto const& device : machine().devices) listed.push_back({device->syspath});
    for (auto each = listed.begin(); each != listed.end(); ++each)
        each->next = std::next(each) == listed.end() ? nullptr : &*std::next(each);
    return listed.empty() ? nullptr : &listed.front();
}
char const* udev_list_entry_get_name(udev_list_entry* entry) { return entry->name.c_str(); }
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) { return entry->next; }

udev_monitor* udev_monitor_new_from_netlink(udev* /*here*/, char const* /*name*/) {
    machine().news.clear();
    return reinterpret_cast<udev_monitor*>(&machine());
}
udev_monitor* udev_monitor_unref(udev_monitor* /*here*/) { return nullptr; }
int udev_monitor_filter_add_match_subsystem_devtype(udev_monitor* /*here*/, char const* /*subsystem*/,
                                                    char const* /*type*/) {
    return 0;
}
int udev_monitor_enable_receiving(udev_monitor* /*here*/) { return 0; }
int udev_monitor_get_fd(udev_monitor* /*here*/) { return machine().bell.descriptor(); }
udev_device* udev_monitor_receive_device(udev_monitor* /*here*/) {
    auto& news = machine().news;
    machine().bell.hush();
    if (news.empty()) return nullptr;
    auto [state, action] = news.front();
    news.pop_front();
    if (!news.empty()) machine().bell.ring();
    return reference(std::move(state), std::move(action));
}
}

namespace tavaro {

namespace {

void tell(std::shared_ptr<FakeDevice::State> const& device, std::string action) {
    machine().news.emplace_back(device, std::move(action));
    machine().bell.ring();
}

void makeKeyboard(FakeDevice::State& device) {
    device.properties = {{"ID_INPUT", "1"}, {"ID_INPUT_KEY", "1"}, {"ID_INPUT_KEYBOARD", "1"}};
    device.codes = {{EV_SYN, {}}, {EV_KEY, {}}, {EV_LED, {LED_NUML, LED_CAPSL, LED_SCROLLL}}, {EV_REP, {}}};
    for (int key = KEY_ESC; key <= KEY_COMPOSE; ++key) device.codes[EV_KEY].insert(key);
}

void makePowerButton(FakeDevice::State& device) {
    device.properties = {{"ID_INPUT", "1"}, {"ID_INPUT_KEY", "1"}};
    device.codes = {{EV_SYN, {}}, {EV_KEY, {KEY_POWER}}};
}

void makeMouse(FakeDevice::State& device) {
    device.properties = {{"ID_INPUT", "1"}, {"ID_INPUT_MOUSE", "1"}};
    device.codes = {
        {EV_SYN, {}}, {EV_KEY, {BTN_LEFT, BTN_RIGHT, BTN_MIDDLE, BTN_SIDE}}, {EV_REL, {REL_X, REL_Y, REL_WHEEL}}};
}

void makeTouchpad(FakeDevice::State& device) {
    device.properties = {{"ID_INPUT", "1"}, {"ID_INPUT_TOUCHPAD", "1"}};
    device.properBits = {INPUT_PROP_POINTER, INPUT_PROP_BUTTONPAD};
    device.codes = {{EV_SYN, {}},
                    {EV_KEY, {BTN_LEFT, BTN_TOUCH, BTN_TOOL_FINGER, BTN_TOOL_DOUBLETAP}},
                    {EV_ABS, {ABS_X, ABS_Y, ABS_MT_SLOT, ABS_MT_POSITION_X, ABS_MT_POSITION_Y, ABS_MT_TRACKING_ID}}};
    for (int const axis : {ABS_X, ABS_MT_POSITION_X}) device.axes[axis] = {0, 0, 4000, 0, 0, 40};
    for (int const axis : {ABS_Y, ABS_MT_POSITION_Y}) device.axes[axis] = {0, 0, 2400, 0, 0, 40};
    device.axes[ABS_MT_SLOT] = {0, 0, 4, 0, 0, 0};
    device.axes[ABS_MT_TRACKING_ID] = {0, 0, 65535, 0, 0, 0};
}

}

FakeDevice::FakeDevice(std::filesystem::path const& folder, Kind kind) {
    auto state = std::make_shared<State>();
    state->sysname = "event" + std::to_string(++machine().lastNumber);
    state->syspath = "/sys/devices/virtual/input/" + state->sysname;
    state->file = (folder / state->sysname).string();
    switch (kind) {
    case Kind::keyboard: makeKeyboard(*state); break;
    case Kind::mouse: makeMouse(*state); break;
    case Kind::touchpad: makeTouchpad(*state); break;
    case Kind::powerButton: makePowerButton(*state); break;
    }
    struct stat status {};
    if (mkfifo(state->file.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
    state->writer = FileDescriptor(open(state->file.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    fstat(state->writer.get(), &status);
    state->inode = status.st_ino;
    machine().devices.push_back(state);
    tell(state, "add");
    state_ = std::move(state);
}

FakeDevice::~FakeDevice() {
    std::erase(machine().devices, state_);
    machine().opening.reset();
    unlink(state_->file.c_str());
    tell(state_, "remove");
}

std::string FakeDevice::file() const { return state_->file; }

double FakeDevice::send(std::initializer_list<Change> changes) {
    double const now = mediaClockNow();
    auto const seconds = static_cast<std::int64_t>(std::floor(now));
    auto const microseconds = static_cast<std::int64_t>(std::floor((now - std::floor(now)) * 1e6));
    std::vector<input_event> events;
    for (auto const& change : changes)
        events.push_back({{seconds, microseconds}, change.type, change.code, change.value});
    events.push_back({{seconds, microseconds}, EV_SYN, SYN_REPORT, 0});
    if (state_->writer.write(std::as_bytes(std::span(events))) != 0) throw std::runtime_error("the pipe is full");
    return now;
}

double FakeDevice::key(std::uint16_t code, bool isDown) { return send({{EV_KEY, code, isDown ? 1 : 0}}); }

void FakeDevice::lightNumbers() { state_->lights.insert(LED_NUML); }
bool FakeDevice::isMonotonic() const { return state_->clock == CLOCK_MONOTONIC; }
bool FakeDevice::isGrabbed() const { return state_->isGrabbed; }

bool FakeDevice::isOpen() const {
    for (auto const& each : std::filesystem::directory_iterator("/proc/self/fd")) {
        int const file = std::stoi(each.path().filename().string());
        struct stat status {};
        if (file != state_->writer.get() && fstat(file, &status) == 0 && status.st_ino == state_->inode) return true;
    }
    return false;
}

}
