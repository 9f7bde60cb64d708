#include <TavaroCapture/X11/Private/RootTarget.h>

#include <TavaroCapture/X11/Desktop.h>
#include <TavaroCapture/X11/Private/DamageReport.h>

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <optional>
#include <utility>
#include <xcb/randr.h>

namespace tavaro::x11 {

namespace {

class RootTarget final : public GrabTarget {
public:
    RootTarget(Connection& connection, PixelRect const& frame, std::string display)
        : connection_(connection)
        , display_(std::move(display))
        , frame_(frame)
        , desktop_(*frameOf(connection, connection.root()))
        , report_(connection, connection.root()) {
        std::uint32_t const mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // the desktop's size
        xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
        if (!display_.empty() && connection.extension(xcb_randr_id))
            xcb_randr_select_input(connection.get(), connection.root(),
                                   XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                       XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
        if (auto const place = placeOfDisplay()) {
            offset_ = {frame.x - place->x, frame.y - place->y};
            first_ = *place;
        }
        shown_ = desktop_.intersection(first_.value_or(desktop_));
    }

    PixelRect frame() const override { return frame_; }
    bool isLost() const override { return false; }
    bool isAway() const override { return isAway_; }
    bool isDamaged() const override { return report_.isDamaged(); }
    std::optional<std::string> remark() const override { return remark_; }

    void handle(xcb_generic_event_t const& event) override {
        report_.handle(event);
        auto const type = event.response_type & 0x7f;
        auto const* const randr = connection_.extension(xcb_randr_id);
        bool const isDisplays = randr && (type == randr->first_event + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                          type == randr->first_event + XCB_RANDR_NOTIFY);
        if (isDisplays) return follow();
        if (type != XCB_CONFIGURE_NOTIFY) return;
        auto const& change = reinterpret_cast<xcb_configure_notify_event_t const&>(event);
        if (change.window != connection_.root()) return;
        desktop_ = {0, 0, change.width, change.height};
        follow();
    }

    void takeDamage(PictureChanges& changes) override {
        if (std::exchange(isResized_, false)) changes.addAll();
        if (!report_.isDamaged()) return;
        for (auto const& drawn : report_.take())
            changes.add({drawn.x - frame_.x, drawn.y - frame_.y, drawn.width, drawn.height});
    }

    bool fetch(Rows rows, SharedPicture& picture) override {
        std::size_t const stride = std::size_t{4} * frame_.width;
        PixelRect const wanted{frame_.x, frame_.y + rows.top, frame_.width, rows.bottom - rows.top};
        PixelRect const there = wanted.intersection(shown_);
        if (there == wanted) return picture.fetch(connection_.root(), wanted, rows.top * stride);
        // The desktop shrank under the take, or its display: what is left goes to its place, the rest is black. Another
        // display beside it is not what was asked for.
        std::memset(picture.data() + rows.top * stride, 0, (rows.bottom - rows.top) * stride);
        if (there.isEmpty()) return true;
        if (!scratch_) scratch_.emplace(connection_, picture.bytes());
        if (!scratch_->fetch(connection_.root(), there, 0)) return false;
        std::size_t const bytes = std::size_t{4} * there.width;
        std::uint8_t* to = picture.data() + (there.y - frame_.y) * stride + std::size_t{4} * (there.x - frame_.x);
        for (int row = 0; row < there.height; ++row)
            std::memcpy(to + row * stride, scratch_->data() + row * bytes, bytes);
        return true;
    }

private:
    std::optional<PixelRect> placeOfDisplay() const {
        if (display_.empty()) return std::nullopt;
        auto const all = displays(connection_);
        auto const found = std::ranges::find(all, display_, &DisplayInfo::name);
        return found == all.end() ? std::nullopt : std::optional(found->frame);
    }

    /// To where the display is now.
    void follow() {
        isResized_ = true;
        auto const place = placeOfDisplay();
        isAway_ = first_ && !place;
        shown_ = desktop_.intersection(place.value_or(desktop_));
        if (!first_ || !place) return;
        frame_.x = place->x + offset_.x;
        frame_.y = place->y + offset_.y;
        noteSize(*place);
    }

    void noteSize(PixelRect const& place) {
        bool const isWhole = offset_ == PixelPoint{} && frame_.width == (first_->width & ~1);
        bool const isSame = place.width == first_->width && place.height == first_->height;
        if (!isWhole || isSame) return;
        bool const isSmaller = place.width < first_->width || place.height < first_->height;
        remark_ = fmt::format("The display became {} × {} pixels while it was filmed; the film keeps its {} × {}, {}.",
                              place.width, place.height, frame_.width, frame_.height,
                              isSmaller ? "and what is missing is black" : "and what is beyond them is left out");
    }

    Connection& connection_;
    std::string const display_; // name; empty: the area belongs to the desktop
    PixelRect frame_;
    PixelRect desktop_;
    std::optional<PixelRect> first_; // where the display was; none: the area belongs to the desktop
    PixelPoint offset_;              // in the display
    PixelRect shown_;                // of the desktop, what may be in the picture
    bool isAway_ = false;
    std::optional<std::string> remark_;
    DamageReport report_;
    std::optional<SharedPicture> scratch_; // once the desktop is smaller than the picture
    bool isResized_ = false;
};

}

std::unique_ptr<GrabTarget> makeRootTarget(Connection& connection, PixelRect const& frame, std::string const& display) {
    return std::make_unique<RootTarget>(connection, frame, display);
}

}
