#pragma once

#include <TavaroCapture/Events/Private/EventLog.h>
#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/X11/Connection.h>

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>

namespace tavaro {

/// A virtual X server on a display of its own, for as long as the object lives. `isInstalled` is false where there is
/// no Xvfb; nothing else may be asked then.
class TestDisplay {
public:
    TestDisplay(int width, int height);
    ~TestDisplay();

    static bool isInstalled();
    std::string const& name() const { return name_; }
    void kill();
    /// It keeps its clients waiting until it is thawed.
    void freeze() const;
    void thaw() const;

private:
    std::string name_;
    pid_t process_ = -1;
};

/// Somebody drawing, clicking and typing on the display.
class TestClient {
public:
    explicit TestClient(std::string const& display) : connection_(display) {}

    x11::Connection& connection() { return connection_; }

    struct WindowOptions {
        PixelRect frame;
        std::string windowClass;
        std::string title;
        std::uint32_t color = 0;
        bool isPopup = false; // override-redirect
        bool isMapped = true;
    };
    /// Makes a window; when it returns the server shows it.
    std::uint32_t makeWindow(WindowOptions const& options);
    void fill(std::uint32_t window, PixelRect const& rect, std::uint32_t color);
    void move(std::uint32_t window, PixelRect const& frame);
    void destroy(std::uint32_t window);
    void setActive(std::uint32_t window);
    void resizeDesktop(int width, int height);
    /// The desktop's displays from here on, by name.
    void setDisplays(std::map<std::string, PixelRect> const& displays);
    void setCursor(std::uint32_t window, std::string const& name);

    void movePointer(int x, int y);
    void button(int number, bool isPressed);
    /// Of the key that makes that symbol on a US keyboard; 0 where none does.
    std::uint8_t codeOf(std::string const& symbol);
    /// `symbol` on a US keyboard: "a", "Return", "Control_L".
    void key(std::string const& symbol, bool isPressed);
    void tap(std::string const& symbol) { key(symbol, true), key(symbol, false); }
    /// Of the keyboard's layouts, as the user changes between them.
    void useLayout(int number);

private:
    x11::Connection connection_;
    std::map<std::string, PixelRect> displays_;
};

/// Asks again and again, without sleeping, until the answer is yes; false after ten seconds.
bool eventually(std::function<bool()> const& isSo);

/// A test with a display of its own; skipped where no virtual display is installed.
class DisplayTest : public testing::Test {
protected:
    void SetUp() override {
        if (!TestDisplay::isInstalled()) GTEST_SKIP() << "Xvfb is not installed";
        display.emplace(640, 480);
        client.emplace(display->name());
    }

    std::optional<TestDisplay> display;
    std::optional<TestClient> client;
};

}
