#include <TavaroCapture/X11/Private/RootTarget.h>

#include <TavaroCapture/X11/Private/DamageReport.h>

#include <cstring>
#include <optional>
#include <utility>

namespace tavaro::x11 {

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
