#include <TavaroCapture/Wayland/Private/SharedDesktop.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Wayland/Private/FrontWatch.h>
#include <TavaroCapture/Wayland/Private/SharedScreen.h>

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace tavaro::wayland {

namespace {

/// The source without its kind, where only a number can follow: "2" of "display-2" and of "2".
std::string numberOf(std::string const& id) {
    auto const number = id.starts_with("display-") ? id.substr(8) : id;
    auto const isDigit = [](unsigned char c) { return std::isdigit(c) != 0; };
    bool const isNumber = number.size() <= 3 && std::ranges::all_of(number, isDigit);
    if (id.empty()) return "1";
    if (isNumber && !number.empty()) return number;
    throw CaptureError(CaptureError::Kind::noSuchSource,
                       fmt::format("There is no display “{}”. On a Wayland desktop you choose the screen when asked; "
                                   "“display-1” is the first choice that is remembered.",
                                   id));
}

SharedScreen::Options optionsOf(CaptureSource const& source) {
    if (auto const* const display = std::get_if<DisplaySource>(&source))
        return {.kind = ShareKind::monitor, .source = "display-" + numberOf(display->id)};
    if (auto const* const area = std::get_if<AreaSource>(&source))
        return {.kind = ShareKind::monitor, .source = "display-" + numberOf(area->display), .area = *area};
    if (auto const* const window = std::get_if<WindowSource>(&source))
        return {.kind = ShareKind::window, .source = fmt::format("window-{}", window->id)};
    throw CaptureError(CaptureError::Kind::unsupported,
                       fmt::format("“{}” cannot be recorded by its name: a Wayland desktop does not tell which window "
                                   "belongs to which application. Record “window-1” and choose it when asked.",
                                   std::get<ApplicationSource>(source).name));
}

std::vector<std::string> limitsOf(PointerMode pointer, FrontWatch::Teller front) {
    std::vector<std::string> result;
    if (front == FrontWatch::Teller::programs)
        result.emplace_back("It does not tell which application is in front: those do that tell of their widgets, and "
                            "the take knows of no others.");
    if (front == FrontWatch::Teller::nobody) result.emplace_back("It does not tell which application is in front.");
    if (pointer == PointerMode::hidden)
        result.emplace_back("It does not tell where the pointer is: the take does not show it.");
    if (pointer == PointerMode::embedded)
        result.emplace_back(
            "It does not tell where the pointer is: the pointer is a part of the picture, as it was, and "
            "cannot be smoothed, enlarged or hidden.");
    return result;
}

class Screen final : public ScreenSource {
public:
    explicit Screen(std::shared_ptr<SharedScreen> shared)
        : shared_(std::move(shared))
        , picture_(shared_->frame().width, shared_->frame().height) {}

    Size2 size() const override { return {frame().width, frame().height}; }
    PixelRect frame() const override { return shared_->frame(); }
    double scaleFactor() const override { return shared_->scaleFactor(); }
    Outcome grab(double /*now*/) override { return shared_->take(picture_); }
    ImageView picture() const override { return picture_.view(); }

private:
    std::shared_ptr<SharedScreen> const shared_;
    Image picture_;
};

class Events final : public EventSource {
public:
    explicit Events(std::shared_ptr<SharedScreen> shared) : shared_(std::move(shared)) {}

    void start(EventHandlers handlers) override { front_.start(std::move(handlers.frontmost)); }
    void stop() override { front_.stop(); }
    bool hasKeyboard() const override { return false; }
    std::optional<PixelPoint> pointer() override { return shared_->pointer(); }
    std::vector<std::string> limits() const override { return limitsOf(shared_->pointerMode(), front_.teller()); }

private:
    std::shared_ptr<SharedScreen> const shared_;
    FrontWatch front_;
};

}

SharedDesktop shareDesktop(CaptureSource const& source, int fps, Asking const& asking) {
    auto options = optionsOf(source);
    options.fps = fps;
    options.asking = asking;
    auto const shared = std::make_shared<SharedScreen>(options);
    return {std::make_unique<Screen>(shared), std::make_unique<Events>(shared),
            shared->pointerMode() == PointerMode::metadata};
}

Shareable shareable() {
    Shareable result;
    try {
        auto const abilities = ScreenCastPortal().abilities();
        if (abilities.has(ShareKind::monitor))
            result.displays.push_back({.id = "display-1", .name = "chosen when you are asked", .isMain = true});
        if (abilities.has(ShareKind::window))
            result.windows.push_back({.window = 1, .title = "chosen when you are asked", .application = "a window"});
        result.tellsPointer = abilities.bestPointerMode() == PointerMode::metadata;
        result.limits = limitsOf(abilities.bestPointerMode(), FrontWatch().teller());
        if (!abilities.has(ShareKind::window)) result.limits.emplace_back("It shares no single windows.");
    } catch (CaptureError const& error) {
        result.limits = {error.what()};
    }
    return result;
}

}
