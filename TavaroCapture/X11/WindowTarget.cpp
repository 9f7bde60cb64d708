#include <TavaroCapture/X11/Private/WindowTarget.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/Private/DamageReport.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>
#include <xcb/composite.h>

namespace tavaro::x11 {

namespace {

/// One window kept off-screen, with the pixmap that holds its pixels.
class Layer {
public:
    Layer(Connection& connection, xcb_window_t window) : connection_(connection), window_(window) {
        xcb_composite_redirect_window(connection.get(), window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        report_.emplace(connection, window);
    }
    ~Layer() {
        report_.reset();
        if (pixmap_ != XCB_NONE) xcb_free_pixmap(connection_.get(), pixmap_);
        xcb_composite_unredirect_window(connection_.get(), window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    }
    Layer(Layer const&) = delete;
    Layer& operator=(Layer const&) = delete;

    xcb_window_t window() const { return window_; }
    /// On the desktop, with the border, as of the last `place`.
    PixelRect const& frame() const { return frame_; }
    bool hasAlpha() const { return depth_ == 32; }
    xcb_pixmap_t pixmap() const { return pixmap_; }
    DamageReport& report() { return *report_; }

    /// Takes the window's place and, after a change of its size or its first showing, its new pixmap.
    void place(xcb_get_geometry_reply_t const& geometry) {
        int const border = geometry.border_width;
        PixelRect const frame{geometry.x, geometry.y, geometry.width + 2 * border, geometry.height + 2 * border};
        bool const isSameSize = frame.width == frame_.width && frame.height == frame_.height;
        frame_ = frame;
        depth_ = geometry.depth;
        border_ = border;
        if (!isSameSize || pixmap_ == XCB_NONE) renew();
    }

    /// What was drawn, with the border, in coordinates of the desktop.
    void takeDamage(std::vector<PixelRect>& drawn) {
        for (auto const& rect : report_->take()) {
            auto const inside = rect.intersection({0, 0, frame_.width, frame_.height});
            drawn.push_back(
                {frame_.x + inside.x, frame_.y + inside.y, inside.width + 2 * border_, inside.height + 2 * border_});
        }
    }

private:
    void renew() {
        xcb_pixmap_t const pixmap = xcb_generate_id(connection_.get());
        auto const cookie = xcb_composite_name_window_pixmap_checked(connection_.get(), window_, pixmap);
        if (auto const error = own(xcb_request_check(connection_.get(), cookie))) return; // hidden: keep the last
        if (pixmap_ != XCB_NONE) xcb_free_pixmap(connection_.get(), pixmap_);
        pixmap_ = pixmap;
    }

    Connection& connection_;
    xcb_window_t const window_;
    xcb_pixmap_t pixmap_ = XCB_NONE;
    std::optional<DamageReport> report_;
    PixelRect frame_;
    int depth_ = 24;
    int border_ = 0;
};

/// What tells that two windows belong together.
struct Kinship {
    std::uint32_t pid = 0;
    std::uint32_t leader = 0;
    std::uint32_t transientFor = 0;
    std::string className;
    bool isPopup = false;
};

Kinship kinshipOf(Connection& connection, xcb_window_t topLevel) {
    auto const first = [](std::vector<std::uint32_t> const& values) { return values.empty() ? 0u : values[0]; };
    xcb_window_t const client = clientWindow(connection, topLevel);
    auto const about = connection.ask<xcb_get_window_attributes, xcb_get_window_attributes_reply>(topLevel);
    return {first(connection.cardinals(client, "_NET_WM_PID")), first(connection.cardinals(client, "WM_CLIENT_LEADER")),
            first(connection.cardinals(client, "WM_TRANSIENT_FOR")), windowClass(connection, client).name,
            about && about->override_redirect};
}

class WindowTarget final : public GrabTarget {
public:
    WindowTarget(Connection& connection, ResolvedSource const& source)
        : connection_(connection)
        , main_(source.topLevel)
        , client_(clientWindow(connection, source.topLevel))
        , wholeApplication_(source.wholeApplication)
        , kinship_(kinshipOf(connection, source.topLevel))
        , frame_{source.frame.x, source.frame.y, source.frame.width & ~1, source.frame.height & ~1}
        , scratch_(connection, std::size_t{4} * frame_.width * frame_.height) {
        std::uint32_t const mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY; // windows that come, go, move, restack
        xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
        if (auto const whole = frameOf(connection, main_)) margin_ = {frame_.x - whole->x, frame_.y - whole->y};
        arrange();
    }

    PixelRect frame() const override { return frame_; }
    /// An application may close its last window before it opens the next, as those with a splash screen do.
    bool isLost() const override {
        constexpr double patience = 3; // seconds
        return goneAt_ && (!wholeApplication_ || mediaClockNow() > *goneAt_ + patience);
    }
    bool isDamaged() const override {
        return isRearranged_ || std::any_of(layers_.begin(), layers_.end(),
                                            [](auto const& layer) { return layer->report().isDamaged(); });
    }

    void handle(xcb_generic_event_t const& event) override {
        for (auto const& layer : layers_) layer->report().handle(event);
        switch (event.response_type & 0x7f) {
        case XCB_DESTROY_NOTIFY:
            if (reinterpret_cast<xcb_destroy_notify_event_t const&>(event).window == main_) noteLoss();
            kin_.erase(reinterpret_cast<xcb_destroy_notify_event_t const&>(event).window);
            isRearranged_ = true;
            break;
        case XCB_UNMAP_NOTIFY:
            kin_.erase(reinterpret_cast<xcb_unmap_notify_event_t const&>(event).window);
            [[fallthrough]];
        case XCB_CONFIGURE_NOTIFY:
        case XCB_MAP_NOTIFY:
        case XCB_REPARENT_NOTIFY:
        case XCB_CIRCULATE_NOTIFY: isRearranged_ = true; break;
        default: break;
        }
    }

    void takeDamage(PictureChanges& changes) override {
        if (std::exchange(isRearranged_, false)) {
            arrange();
            changes.addAll();
        }
        std::vector<PixelRect> drawn;
        for (auto const& layer : layers_)
            if (layer->report().isDamaged()) layer->takeDamage(drawn);
        for (auto const& rect : drawn) changes.add({rect.x - frame_.x, rect.y - frame_.y, rect.width, rect.height});
    }

    bool fetch(Rows rows, SharedPicture& picture) override {
        if (layers_.empty() || layers_.front()->pixmap() == XCB_NONE) return false;
        std::size_t const stride = std::size_t{4} * frame_.width;
        if (!covers(*layers_.front(), rows))
            std::memset(picture.data() + rows.top * stride, 0, (rows.bottom - rows.top) * stride);
        bool isGood = true;
        for (auto const& layer : layers_) isGood = draw(*layer, rows, picture) && isGood;
        return isGood;
    }

private:
    /// Whether the layer alone fills these rows, so that nothing needs to be cleared.
    bool covers(Layer const& layer, Rows rows) const {
        PixelRect const band{frame_.x, frame_.y + rows.top, frame_.width, rows.bottom - rows.top};
        return band.intersection(layer.frame()) == band && !layer.hasAlpha();
    }

    bool draw(Layer const& layer, Rows rows, SharedPicture& picture);
    void blend(PixelRect const& part, SharedPicture& picture) const;
    void arrange();
    void arrange(std::vector<xcb_window_t> const& shown);
    std::vector<xcb_window_t> shownOf(std::span<xcb_window_t const> children);
    void follow(xcb_window_t window);
    void followNext(std::span<xcb_window_t const> children);
    void noteLoss() {
        if (!goneAt_) goneAt_ = mediaClockNow();
    }
    bool belongs(xcb_window_t window);

    Connection& connection_;
    xcb_window_t main_;
    xcb_window_t client_;
    bool const wholeApplication_;
    Kinship const kinship_;
    PixelRect frame_;
    PixelPoint margin_; // from the window's own corner to the picture's
    SharedPicture scratch_;
    std::vector<std::unique_ptr<Layer>> layers_; // bottom to top; the main window first
    std::map<xcb_window_t, bool> kin_;           // what belongs() found, for windows on show
    bool isRearranged_ = true;
    std::optional<double> goneAt_; // moment of the media clock at which the main window went
};

bool WindowTarget::draw(Layer const& layer, Rows rows, SharedPicture& picture) {
    PixelRect const band{frame_.x, frame_.y + rows.top, frame_.width, rows.bottom - rows.top};
    PixelRect const part = band.intersection(layer.frame());
    if (part.isEmpty() || layer.pixmap() == XCB_NONE) return true;
    PixelRect const inPixmap{part.x - layer.frame().x, part.y - layer.frame().y, part.width, part.height};
    std::size_t const stride = std::size_t{4} * frame_.width;
    std::size_t const firstRow = static_cast<std::size_t>(part.y - frame_.y);
    if (part.width == frame_.width && !layer.hasAlpha())
        return picture.fetch(layer.pixmap(), inPixmap, firstRow * stride);

    if (!scratch_.fetch(layer.pixmap(), inPixmap, 0)) return false;
    if (layer.hasAlpha()) {
        blend(part, picture);
        return true;
    }
    std::size_t const bytes = std::size_t{4} * part.width;
    std::uint8_t* to = picture.data() + firstRow * stride + std::size_t{4} * (part.x - frame_.x);
    for (int row = 0; row < part.height; ++row) std::memcpy(to + row * stride, scratch_.data() + row * bytes, bytes);
    return true;
}

/// Draws the scratch pixels, whose colours are already multiplied by their alpha, over the picture.
void WindowTarget::blend(PixelRect const& part, SharedPicture& picture) const {
    std::size_t const stride = std::size_t{4} * frame_.width;
    for (int row = 0; row < part.height; ++row) {
        std::uint8_t const* from = scratch_.data() + std::size_t{4} * part.width * row;
        std::uint8_t* to = picture.data() + (part.y - frame_.y + row) * stride + std::size_t{4} * (part.x - frame_.x);
        for (int x = 0; x < part.width; ++x, from += 4, to += 4) {
            unsigned const rest = 255u - from[3];
            for (int channel = 0; channel < 3; ++channel)
                to[channel] =
                    static_cast<std::uint8_t>(std::min(255u, from[channel] + (to[channel] * rest + 127) / 255));
        }
    }
}

/// Lists the windows to show, bottom to top, and takes their places. Without any, the last picture stays.
void WindowTarget::arrange() {
    auto const tree = connection_.ask<xcb_query_tree, xcb_query_tree_reply>(connection_.root());
    if (!tree) return;
    std::span<xcb_window_t const> const children(xcb_query_tree_children(tree.get()),
                                                 static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    if (std::ranges::find(children, main_) == children.end()) noteLoss();
    if (goneAt_ && wholeApplication_) followNext(children);
    if (!goneAt_) arrange(shownOf(children));
}

std::vector<xcb_window_t> WindowTarget::shownOf(std::span<xcb_window_t const> children) {
    std::vector<xcb_window_t> shown;
    for (xcb_window_t const child : children) {
        if (child == main_ || (!shown.empty() && belongs(child))) shown.push_back(child);
    }
    return shown;
}

void WindowTarget::arrange(std::vector<xcb_window_t> const& shown) {
    std::vector<std::unique_ptr<Layer>> arranged;
    for (xcb_window_t const window : shown) {
        auto const geometry = connection_.ask<xcb_get_geometry, xcb_get_geometry_reply>(window);
        if (!geometry || (geometry->depth != 24 && geometry->depth != 32)) continue;
        auto const known = std::find_if(layers_.begin(), layers_.end(),
                                        [&](auto const& layer) { return layer && layer->window() == window; });
        arranged.push_back(known != layers_.end() ? std::move(*known) : std::make_unique<Layer>(connection_, window));
        arranged.back()->place(*geometry);
    }
    layers_ = std::move(arranged);
    if (layers_.empty() || layers_.front()->window() != main_) return noteLoss();
    frame_.x = layers_.front()->frame().x + margin_.x;
    frame_.y = layers_.front()->frame().y + margin_.y;
}

/// The picture keeps its size, whatever that of the window.
void WindowTarget::follow(xcb_window_t window) {
    main_ = window;
    client_ = clientWindow(connection_, window);
    auto const whole = frameOf(connection_, window), shown = shownFrameOf(connection_, window);
    margin_ = whole && shown ? PixelPoint{shown->x - whole->x, shown->y - whole->y} : PixelPoint{};
    goneAt_.reset();
}

/// The frontmost of the windows that the application has left, or has got since.
void WindowTarget::followNext(std::span<xcb_window_t const> children) {
    auto const next = std::find_if(children.rbegin(), children.rend(), [this](xcb_window_t window) {
        return belongs(window) && !kinshipOf(connection_, window).isPopup;
    });
    if (next != children.rend()) follow(*next);
}

bool WindowTarget::belongs(xcb_window_t window) {
    if (!isViewable(connection_, window)) return false;
    auto const known = kin_.find(window);
    if (known != kin_.end()) return known->second;
    Kinship const other = kinshipOf(connection_, window);
    bool const isSameProgram = (other.pid && other.pid == kinship_.pid) ||
                               (other.leader && other.leader == kinship_.leader) ||
                               (!other.className.empty() && other.className == kinship_.className);
    bool const isDialog = other.transientFor && other.transientFor == client_;
    return kin_[window] = isDialog || (isSameProgram && (other.isPopup || wholeApplication_));
}

}

std::unique_ptr<GrabTarget> makeWindowTarget(Connection& connection, ResolvedSource const& source) {
    if (!connection.extension(xcb_composite_id))
        throw CaptureError(CaptureError::Kind::unsupported,
                           "Windows cannot be recorded here: this X server lacks the Composite extension. Record the "
                           "display or an area of it.");
    return std::make_unique<WindowTarget>(connection, source);
}

}
