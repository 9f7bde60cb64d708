#include <TavaroCapture/Screen/Private/GrabTarget.h>

#include <TavaroCapture/Sources/CaptureError.h>

#include <cstring>
#include <fmt/format.h>
#include <limits>
#include <optional>
#include <utility>
#include <xcb/composite.h>
#include <xcb/damage.h>

namespace tavaro::x11 {

namespace {

constexpr int far = std::numeric_limits<std::int16_t>::max();
constexpr PixelRect everything{-far, -far, 2 * far, 2 * far};

}

void prepareGrabbing(Connection& connection) {
    auto const require = [&](xcb_extension_t& extension, char const* name) {
        if (!connection.extension(extension))
            throw CaptureError(CaptureError::Kind::unsupported,
                               fmt::format("This X server cannot be recorded: it lacks the {} extension.", name));
    };
    require(xcb_damage_id, "DAMAGE");
    connection.ask<xcb_damage_query_version, xcb_damage_query_version_reply>(1u, 1u);
    if (connection.extension(xcb_composite_id))
        connection.ask<xcb_composite_query_version, xcb_composite_query_version_reply>(0u, 4u);
}

DamageReport::DamageReport(Connection& connection, xcb_drawable_t drawable)
    : connection_(connection)
    , damage_(xcb_generate_id(connection.get()))
    , drawn_(everything) {
    xcb_damage_create(connection.get(), damage_, drawable, XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX);
}

DamageReport::~DamageReport() { xcb_damage_destroy(connection_.get(), damage_); }

void DamageReport::handle(xcb_generic_event_t const& event) {
    auto const* const about = connection_.extension(xcb_damage_id);
    if (!about || (event.response_type & 0x7f) != about->first_event + XCB_DAMAGE_NOTIFY) return;
    auto const& notice = reinterpret_cast<xcb_damage_notify_event_t const&>(event);
    if (notice.damage != damage_) return;
    PixelRect const area{notice.area.x, notice.area.y, notice.area.width, notice.area.height};
    drawn_ = drawn_.isEmpty() ? area : drawn_.unionWith(area);
}

/// Tells the server to begin anew, without waiting for it. Whatever is drawn before it gets there is either inside the
/// rectangle that is returned, and read after it, or has made the rectangle grow, which sends another event.
PixelRect DamageReport::take() {
    xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, XCB_NONE);
    return std::exchange(drawn_, PixelRect{});
}

namespace {

class RootTarget final : public GrabTarget {
public:
    RootTarget(Connection& connection, PixelRect const& frame)
        : connection_(connection)
        , frame_(frame)
        , desktop_(*frameOf(connection, connection.root()))
        , report_(connection, connection.root()) {
        std::uint32_t const mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // the desktop's size
        xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
    }

    PixelRect frame() const override { return frame_; }
    bool isLost() const override { return false; }
    bool isDamaged() const override { return report_.isDamaged(); }

    void handle(xcb_generic_event_t const& event) override {
        report_.handle(event);
        if ((event.response_type & 0x7f) != XCB_CONFIGURE_NOTIFY) return;
        auto const& change = reinterpret_cast<xcb_configure_notify_event_t const&>(event);
        if (change.window != connection_.root()) return;
        desktop_ = {0, 0, change.width, change.height};
        isResized_ = true;
    }

    Rows takeDamage() override {
        Rows all{0, std::exchange(isResized_, false) ? frame_.height : 0};
        if (!report_.isDamaged()) return all;
        PixelRect const inside = report_.take().intersection(frame_);
        if (inside.isEmpty()) return all;
        return all.unionWith({inside.y - frame_.y, inside.y - frame_.y + inside.height});
    }

    bool fetch(Rows rows, SharedPicture& picture) override {
        std::size_t const stride = std::size_t{4} * frame_.width;
        PixelRect const wanted{frame_.x, frame_.y + rows.top, frame_.width, rows.bottom - rows.top};
        PixelRect const there = wanted.intersection({0, 0, desktop_.width, desktop_.height});
        if (there == wanted) return picture.fetch(connection_.root(), wanted, rows.top * stride);
        // The desktop shrank under the take: what is left of the area goes to its place, the rest is black.
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
    Connection& connection_;
    PixelRect const frame_;
    PixelRect desktop_;
    DamageReport report_;
    std::optional<SharedPicture> scratch_; // once the desktop is smaller than the picture
    bool isResized_ = false;
};

}

std::unique_ptr<GrabTarget> makeRootTarget(Connection& connection, PixelRect const& frame) {
    return std::make_unique<RootTarget>(connection, frame);
}

}
