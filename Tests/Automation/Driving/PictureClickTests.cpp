#include "../../Capture/TemporaryFolder.h"
#include "../../Capture/TestDisplay.h"

#include <TavaroAutomation/Driving/UIAutomation.h>
#include <TavaroCapture/X11/Desktop.h>
#include <TavaroMedia/Frames/PNG.h>

#include <array>
#include <fstream>
#include <regex>
#include <sys/uio.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

namespace tavaro {

namespace {

constexpr std::uint32_t red = 0xe01020, blue = 0x1020e0;

/// As an agent reads it in the caption: "x = 300 + px × 340 ÷ 170", the factor left out where a pixel is a point.
double converted(std::string const& caption, char axis, double pixel) {
    std::regex const rule(std::string(1, axis) + " = (-?[0-9.]+) \\+ p" + axis + "(?: × ([0-9.]+) ÷ ([0-9.]+))?");
    std::smatch found;
    if (!std::regex_search(caption, found, rule)) throw std::runtime_error("no rule in: " + caption);
    double const factor = found[2].matched ? std::stod(found[2]) / std::stod(found[3]) : 1;
    return std::stod(found[1]) + pixel * factor;
}

struct Monitor {
    char const* name;
    PixelRect frame;
    bool isMain = false;
    std::uint16_t outputs = 0; // of the display's one
};

/// The library's own function for this request ends the connection.
void addMonitor(x11::Connection& connection, Monitor const& monitor) {
    auto const resources =
        connection.ask<xcb_randr_get_screen_resources, xcb_randr_get_screen_resources_reply>(connection.root());
    struct {
        xcb_randr_set_monitor_request_t head;
        xcb_randr_monitor_info_t info;
        xcb_randr_output_t output;
    } request{};
    request.head.window = connection.root();
    request.info = {.name = connection.atom(monitor.name),
                    .primary = monitor.isMain,
                    .automatic = 0,
                    .nOutput = monitor.outputs,
                    .x = static_cast<std::int16_t>(monitor.frame.x),
                    .y = static_cast<std::int16_t>(monitor.frame.y),
                    .width = static_cast<std::uint16_t>(monitor.frame.width),
                    .height = static_cast<std::uint16_t>(monitor.frame.height),
                    .width_in_millimeters = 100,
                    .height_in_millimeters = 100};
    request.output = xcb_randr_get_screen_resources_outputs(resources.get())[0];
    std::array<iovec, 3> parts{}; // the first two are the library's
    auto const size = sizeof request.head + sizeof request.info + monitor.outputs * sizeof request.output;
    parts[2] = {.iov_base = &request, .iov_len = size};
    xcb_protocol_request_t const kind{.count = 1, .ext = &xcb_randr_id, .opcode = XCB_RANDR_SET_MONITOR, .isvoid = 1};
    auto const sequence = xcb_send_request(connection.get(), XCB_REQUEST_CHECKED, &parts[2], &kind);
    EXPECT_EQ(x11::own(xcb_request_check(connection.get(), {sequence})), nullptr);
}

/// Two monitors side by side, the right one being the main one.
void splitInTwo(x11::Connection& connection) {
    addMonitor(connection, {.name = "left", .frame = {0, 0, 300, 480}, .outputs = 1});
    addMonitor(connection, {.name = "right", .frame = {300, 0, 340, 480}, .isMain = true});
    ASSERT_EQ(x11::displays(connection).size(), 2u);
}

}

/// A desktop of 640 × 480 with a blue window and a red mark; pixels of the mark in a picture are clicked.
class PictureClickTest : public DisplayTest {
protected:
    void SetUp() override {
        DisplayTest::SetUp();
        if (IsSkipped()) return;
        makeListening({.frame = {0, 0, 640, 480}, .windowClass = "Desk", .color = blue, .isPopup = true});
        automation.emplace(display->name());
    }

    std::uint32_t makeListening(TestClient::WindowOptions const& options) {
        auto const window = client->makeWindow(options);
        std::uint32_t const presses = XCB_EVENT_MASK_BUTTON_PRESS;
        xcb_change_window_attributes(client->connection().get(), window, XCB_CW_EVENT_MASK, &presses);
        client->connection().synchronize();
        return window;
    }

    /// A window within that one, whose clicks that one gets: the server paints it anew.
    void addMark(xcb_window_t window, PixelRect const& frame) {
        auto& connection = client->connection();
        auto const mark = xcb_generate_id(connection.get());
        xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, mark, window, static_cast<std::int16_t>(frame.x),
                          static_cast<std::int16_t>(frame.y), static_cast<std::uint16_t>(frame.width),
                          static_cast<std::uint16_t>(frame.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &red);
        xcb_map_window(connection.get(), mark);
        connection.synchronize();
    }

    /// A red pixel of the picture: the middle one in reading order.
    UIPoint markIn(UIPicture const& picture) {
        std::ofstream(folder.path() / "shot.png", std::ios::binary) << picture.png;
        auto const image = readPNG(folder.path() / "shot.png");
        std::vector<UIPoint> marked;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                auto const* const pixel = image.row(y) + std::ptrdiff_t{4} * x;
                if (pixel[0] == 0xe0 && pixel[1] == 0x10 && pixel[2] == 0x20)
                    marked.push_back({static_cast<double>(x), static_cast<double>(y)});
            }
        }
        EXPECT_FALSE(marked.empty()) << picture.caption;
        return marked.empty() ? UIPoint{} : marked[marked.size() / 2];
    }
    UIPoint pointOfMark(UIPicture const& picture) {
        auto const pixel = markIn(picture);
        return {converted(picture.caption, 'x', pixel.x), converted(picture.caption, 'y', pixel.y)};
    }
    /// The window that gets a click at that point.
    xcb_window_t clicked(UIPoint const& point) {
        automation->click({.target = {.point = point}, .glide = 0.02, .hold = 0});
        xcb_window_t result = XCB_NONE;
        EXPECT_TRUE(eventually([&] {
            auto const event = client->connection().poll();
            if (event && (event->response_type & 0x7F) == XCB_BUTTON_PRESS)
                result = reinterpret_cast<xcb_button_press_event_t const&>(*event).event;
            return result != XCB_NONE;
        }));
        return result;
    }

    TemporaryFolder folder;
    std::optional<UIAutomation> automation;
};

TEST_F(PictureClickTest, aPixelOfTheMainDisplayIsHitAtAnySizeOfThePicture) {
    struct Place {
        PixelRect mark;
        UIRect main;
    };
    for (auto const& [mark, main] :
         {Place{{523, 207, 9, 9}, {0, 0, 640, 480}}, Place{{401, 311, 9, 9}, {300, 0, 340, 480}}}) {
        if (main.x > 0) splitInTwo(client->connection());
        auto const window = makeListening({.frame = mark, .windowClass = "Mark", .color = red, .isPopup = true});
        for (int const longest : {200, 333, 479, 640, 3840}) {
            auto const picture = automation->screenshot({.maxWidth = longest});
            EXPECT_EQ(picture.frame, main);
            EXPECT_EQ(clicked(pointOfMark(picture)), window) << picture.caption;
        }
        client->destroy(window);
    }
}

/// X11 knows pixels only: how many of them an inch has changes nothing.
TEST_F(PictureClickTest, aPixelIsHitWhateverTheDensity) {
    auto& connection = client->connection();
    auto const window =
        makeListening({.frame = {600, 440, 9, 9}, .windowClass = "Mark", .color = red, .isPopup = true});
    for (std::uint32_t const millimeters : {169U, 85U, 42U}) { // 96, 192 and 384 dots an inch
        xcb_randr_set_screen_size(connection.get(), connection.root(), 640, 480, millimeters, millimeters * 3 / 4);
        connection.synchronize();
        auto const picture = automation->screenshot({.maxWidth = 500});
        EXPECT_EQ(picture.frame, (UIRect{0, 0, 640, 480})) << millimeters;
        EXPECT_EQ(clicked(pointOfMark(picture)), window) << millimeters << ": " << picture.caption;
    }
}

TEST_F(PictureClickTest, aPixelOfACoveredWindowIsHitOnceTheWindowIsInFront) {
    splitInTwo(client->connection());
    for (PixelRect const& frame : {PixelRect{200, 100, 300, 200}, {-120, 300, 300, 200}, {450, -60, 301, 203}}) {
        auto const page = makeListening({.frame = frame, .windowClass = "Page", .title = "Page", .color = blue});
        addMark(page, {130, 90, 9, 9});
        auto const inTheOpen = automation->screenshot({.app = "Page", .maxWidth = 200});
        auto const cover =
            makeListening({.frame = {0, 0, 640, 480}, .windowClass = "Cover", .color = blue, .isPopup = true});
        auto const covered = automation->screenshot({.app = "Page", .maxWidth = 200});
        EXPECT_EQ(covered.caption, inTheOpen.caption);
        auto const point = pointOfMark(covered);
        EXPECT_EQ(point, pointOfMark(inTheOpen));
        EXPECT_EQ(clicked(point), cover);
        client->destroy(cover);
        EXPECT_EQ(clicked(point), page) << covered.caption;
        client->destroy(page);
    }
}

}
