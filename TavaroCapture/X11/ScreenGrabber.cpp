#include <TavaroCapture/X11/Private/ScreenGrabber.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/Private/DamageReport.h>
#include <TavaroCapture/X11/Private/RootTarget.h>
#include <TavaroCapture/X11/Private/WindowTarget.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <fmt/format.h>
#include <utility>

namespace tavaro::x11 {

namespace {

constexpr double verifySeconds = 0.25;
// Rows are read whole though only some of their columns were reported; what is new in the others is told so much later.
constexpr double wholeSeconds = 1;

/// Pictures are read as blue, green, red, one unused byte: every true-colour screen of the last decades.
void requireBGRX(Connection& connection) {
    auto const* const setup = xcb_get_setup(connection.get());
    auto const& screen = connection.screen();
    bool isGood = setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem; xcb_format_next(&it)) {
        if (it.data->depth == screen.root_depth) isGood = isGood && it.data->bits_per_pixel == 32;
    }
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem; xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem; xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id == screen.root_visual)
                isGood = isGood && visual.data->red_mask == 0xff0000 && visual.data->blue_mask == 0xff;
        }
    }
    if (!isGood)
        throw CaptureError(CaptureError::Kind::unsupported,
                           "This screen cannot be recorded: only screens with 24 or 32 bits a pixel can.");
}

double readScaleFactor(Connection& connection) {
    std::string const resources = connection.text(connection.root(), "RESOURCE_MANAGER");
    auto const at = resources.find("Xft.dpi:");
    if (at == std::string::npos) return 1;
    auto const number = resources.find_first_not_of(" \t", at + 8);
    double dpi = 0;
    if (number != std::string::npos)
        std::from_chars(resources.data() + number, resources.data() + resources.size(), dpi);
    return dpi >= 48 && dpi <= 960 ? dpi / 96 : 1;
}

}

struct ScreenGrabber::State {
    Connection connection;
    double scaleFactor = 1;
    std::unique_ptr<GrabTarget> target;
    std::unique_ptr<SharedPicture> picture;
    std::unique_ptr<SharedPicture> check; // for verification; the next picture when it finds a difference
    PictureChanges changes{0, 0};
    double verifiedAt = 0;
    double wholeAt = 0;     // when all of the picture was read
    bool isInParts = false; // since then
    bool trustsReport = true;
    bool hasPicture = false;

    explicit State(std::string const& display) : connection(display) {}

    void handleEvents() {
        while (auto const event = connection.poll()) target->handle(*event);
    }
    Rows allRows() const { return {0, target->frame().height}; }
    Rows changedRows() const {
        auto const [first, end] = changes.pairs();
        return {2 * first, std::min(2 * end, target->frame().height)};
    }
    void noteRead(double now);
    Outcome verify();
};

ScreenGrabber::ScreenGrabber(CaptureSource const& source, std::string const& display)
    : state_(std::make_unique<State>(display)) {
    auto& connection = state_->connection;
    prepareGrabbing(connection);
    requireBGRX(connection);
    state_->scaleFactor = readScaleFactor(connection);
    ResolvedSource const resolved = resolve(connection, source);
    PixelRect const& frame = resolved.frame;
    state_->target =
        resolved.topLevel == XCB_NONE
            ? makeRootTarget(connection, {frame.x, frame.y, frame.width & ~1, frame.height & ~1}, resolved.display)
            : makeWindowTarget(connection, resolved);
    std::size_t const bytes = std::size_t{4} * size().width * size().height;
    state_->changes = PictureChanges(static_cast<int>(size().width), static_cast<int>(size().height));
    state_->picture = std::make_unique<SharedPicture>(connection, bytes);
    state_->check = std::make_unique<SharedPicture>(connection, bytes);
}

ScreenGrabber::~ScreenGrabber() = default;

Size2 ScreenGrabber::size() const { return {state_->target->frame().width, state_->target->frame().height}; }
PixelRect ScreenGrabber::frame() const { return state_->target->frame(); }
double ScreenGrabber::scaleFactor() const { return state_->scaleFactor; }

/// A film has one scale.
std::optional<std::string> ScreenGrabber::remark() const {
    auto& s = *state_;
    auto const remark = s.target->remark();
    double const now = s.connection.isAlive() ? readScaleFactor(s.connection) : s.scaleFactor;
    if (now == s.scaleFactor) return remark;
    auto const scaled = fmt::format("The desktop's scale went from {:.3g} to {:.3g} while it was filmed; the film's "
                                    "pointer has the size that it had at the start.",
                                    s.scaleFactor, now);
    return remark ? *remark + " " + scaled : scaled;
}

ImageView ScreenGrabber::picture() const {
    auto const frame = state_->target->frame();
    return {state_->picture->data(), frame.width, frame.height, std::ptrdiff_t{4} * frame.width};
}

PictureChanges const* ScreenGrabber::changes() const { return &state_->changes; }

ScreenGrabber::Outcome ScreenGrabber::grab(double now) {
    auto& s = *state_;
    s.handleEvents();
    s.changes.clear();
    s.target->takeDamage(s.changes);
    bool const isDue = !s.changes.isEmpty() && s.isInParts && now - s.wholeAt >= wholeSeconds;
    if (!s.hasPicture || !s.trustsReport || isDue) s.changes.addAll();
    if (!s.connection.isAlive() || s.target->isLost()) return Outcome::lost;
    if (s.target->isAway()) return s.changes.clear(), s.hasPicture = false, Outcome::away;
    if (s.changes.isEmpty())
        return now - s.verifiedAt >= verifySeconds ? (s.verifiedAt = now, s.verify()) : Outcome::unchanged;
    if (s.target->fetch(s.changedRows(), *s.picture)) {
        s.noteRead(now);
        return Outcome::changed;
    }
    if (!s.connection.isAlive()) return Outcome::lost;
    s.hasPicture = false; // the source changed under the request; the next grab reads all of it anew
    return Outcome::unchanged;
}

void ScreenGrabber::State::noteRead(double now) {
    hasPicture = true;
    isInParts = !changes.isWhole();
    if (!isInParts) wholeAt = now;
}

void ScreenGrabber::giveUp() { state_->connection.giveUp(); }

/// Reads everything though nothing was reported. A difference that no report explains, not even a later one, means that
/// this screen draws past the reports.
ScreenGrabber::Outcome ScreenGrabber::State::verify() {
    if (!target->fetch(allRows(), *check)) return connection.isAlive() ? Outcome::unchanged : Outcome::lost;
    if (std::exchange(isInParts, false)) changes.addAll();
    if (std::memcmp(check->data(), picture->data(), picture->bytes()) == 0) return Outcome::unchanged;
    changes.addAll();
    std::swap(check, picture);
    handleEvents();
    if (!target->isDamaged()) trustsReport = false;
    return Outcome::changed;
}

}
