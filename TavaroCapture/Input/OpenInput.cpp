#include <TavaroCapture/Input/Private/OpenInput.h>

#include <TavaroCapture/Input/InputAccess.h>
#include <TavaroCapture/Input/Private/InputEvents.h>
#include <TavaroCapture/Input/Private/SeatDevices.h>
#include <TavaroCapture/Input/Private/SeatWatch.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace tavaro::input {

namespace {

/// The desktop's own, with more that it lacks.
class LimitedEvents final : public EventSource {
public:
    LimitedEvents(std::unique_ptr<EventSource> events, std::vector<std::string> limits)
        : events_(std::move(events))
        , limits_(std::move(limits)) {
        auto more = events_->limits();
        std::ranges::move(more, std::back_inserter(limits_));
    }
    void start(EventHandlers handlers) override { events_->start(std::move(handlers)); }
    void stop() override { events_->stop(); }
    bool hasKeyboard() const override { return events_->hasKeyboard(); }
    std::vector<std::string> limits() const override { return limits_; }
    bool knowsFront() const override { return events_->knowsFront(); }
    std::optional<PixelPoint> pointer() override { return events_->pointer(); }

private:
    std::unique_ptr<EventSource> const events_;
    std::vector<std::string> limits_;
};

std::string seatName() {
    char const* const seat = std::getenv("XDG_SEAT");
    return seat && *seat ? seat : "seat0";
}

constexpr char const* notAllowed =
    "This Wayland desktop does not tell of clicks and keys: the take has none, and no zoom follows them. With your "
    "consent they come from the mouse and the keyboard themselves; `tavaro input allow` says what that means and asks.";
constexpr char const* notReadable = "This Wayland desktop does not tell of clicks and keys, and the mouse and the "
                                    "keyboard cannot be read: the take has "
                                    "none. `tavaro input` says what is missing.";
constexpr char const* noKeys = "No keyboard can be read: the take has no keys. `tavaro input` says what is missing.";
constexpr char const* noClicks = "No mouse can be read: the take has no clicks. `tavaro input` says what is missing.";
constexpr char const* noPlaces =
    "This Wayland desktop does not tell where the pointer is, so clicks would have no place: the take has keys, but no "
    "clicks.";

struct Found {
    bool keyboards = false; // or none is wanted
    bool pointers = false;
};

std::vector<std::string> limitsOf(Found found, DesktopPointer pointer) {
    if (!found.keyboards && (!found.pointers || pointer == DesktopPointer::untold)) return {notReadable};
    std::vector<std::string> result;
    if (!found.keyboards) result.emplace_back(noKeys);
    if (pointer == DesktopPointer::untold)
        result.emplace_back(noPlaces);
    else if (!found.pointers)
        result.emplace_back(noClicks);
    return result;
}

}

std::unique_ptr<EventSource> withInput(std::unique_ptr<EventSource> desktop, InputRequest const& request) {
    auto const& consent = request.consent;
    if (!consent) return std::make_unique<LimitedEvents>(std::move(desktop), std::vector<std::string>{notAllowed});
    bool const wantsKeys = request.keys != KeyLogging::none;
    auto devices =
        std::make_unique<SeatDevices>(seatName(), DeviceChoices{consent->countsTaps, consent->isLeftHanded, wantsKeys});
    auto limits = limitsOf({devices->keyboards() > 0 || !wantsKeys, devices->pointers() > 0}, request.pointer);
    auto const seat = std::make_shared<SeatWatch>(seatName());
    auto events = std::make_unique<InputEvents>(std::move(desktop),
                                                InputEvents::Options{.devices = std::move(devices),
                                                                     .keymap = CompositorKeymap::open(),
                                                                     .keys = request.keys,
                                                                     .isAway = [seat] { return seat->isOthers(); }});
    return std::make_unique<LimitedEvents>(std::move(events), std::move(limits));
}

std::vector<std::string> inputLimits(InputRequest const& request) {
    if (!request.consent) return {notAllowed};
    auto const access = inputAccess();
    return limitsOf({access.keyboards.readable > 0, access.pointers.readable > 0}, request.pointer);
}

}
