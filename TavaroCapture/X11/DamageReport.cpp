#include <TavaroCapture/X11/Private/DamageReport.h>

#include <TavaroCapture/Sources/CaptureError.h>

#include <fmt/format.h>
#include <limits>
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

}
