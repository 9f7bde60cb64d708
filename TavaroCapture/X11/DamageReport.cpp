#include <TavaroCapture/X11/Private/DamageReport.h>

#include <TavaroCapture/Sources/CaptureError.h>

#include <fmt/format.h>
#include <limits>
#include <utility>
#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/xfixes.h>

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
    require(xcb_xfixes_id, "XFIXES");
    connection.ask<xcb_xfixes_query_version, xcb_xfixes_query_version_reply>(4u, 0u);
    connection.ask<xcb_damage_query_version, xcb_damage_query_version_reply>(1u, 1u);
    if (connection.extension(xcb_composite_id))
        connection.ask<xcb_composite_query_version, xcb_composite_query_version_reply>(0u, 4u);
}

DamageReport::DamageReport(Connection& connection, xcb_drawable_t drawable)
    : connection_(connection)
    , damage_(xcb_generate_id(connection.get()))
    , region_(xcb_generate_id(connection.get()))
    , drawn_(everything) {
    xcb_xfixes_create_region(connection.get(), region_, 0, nullptr);
    xcb_damage_create(connection.get(), damage_, drawable, XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX);
}

DamageReport::~DamageReport() {
    xcb_damage_destroy(connection_.get(), damage_);
    xcb_xfixes_destroy_region(connection_.get(), region_);
}

void DamageReport::handle(xcb_generic_event_t const& event) {
    auto const* const about = connection_.extension(xcb_damage_id);
    if (!about || (event.response_type & 0x7f) != about->first_event + XCB_DAMAGE_NOTIFY) return;
    auto const& notice = reinterpret_cast<xcb_damage_notify_event_t const&>(event);
    if (notice.damage != damage_) return;
    PixelRect const area{notice.area.x, notice.area.y, notice.area.width, notice.area.height};
    drawn_ = drawn_.isEmpty() ? area : drawn_.unionWith(area);
}

/// Whatever is drawn after the server has begun anew, and told what was drawn before, sends another event.
std::vector<PixelRect> DamageReport::take() {
    xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, region_);
    PixelRect const around = std::exchange(drawn_, PixelRect{});
    auto const reply = connection_.ask<xcb_xfixes_fetch_region, xcb_xfixes_fetch_region_reply>(region_);
    if (!reply || around == everything) return {around};
    std::vector<PixelRect> result;
    auto const* const rects = xcb_xfixes_fetch_region_rectangles(reply.get());
    for (int i = 0; i < xcb_xfixes_fetch_region_rectangles_length(reply.get()); ++i)
        result.push_back({rects[i].x, rects[i].y, rects[i].width, rects[i].height});
    return result;
}

}
