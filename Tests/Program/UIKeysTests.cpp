#include "../Capture/TestDisplay.h"
#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <thread>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

/// `tavaro ui` on a virtual display of its own.
class UIKeys : public ProcessFixture {
protected:
    void SetUp() override {
        if (!TestDisplay::isInstalled()) GTEST_SKIP() << "Xvfb is not installed";
        display.emplace(640, 480);
        client.emplace(display->name());
        setenv("DISPLAY", display->name().c_str(), 1);
    }
    ~UIKeys() override { unsetenv("DISPLAY"); }

    bool isAnyKeyDown() {
        auto const keys = client->connection().ask<xcb_query_keymap, xcb_query_keymap_reply>();
        return std::any_of(std::begin(keys->keys), std::end(keys->keys), [](auto bits) { return bits != 0; });
    }
    /// Every key by what it makes, with what the layout leaves unused.
    std::vector<std::uint32_t> keyboard() {
        auto const* const setup = xcb_get_setup(client->connection().get());
        auto const mapping = client->connection().ask<xcb_get_keyboard_mapping, xcb_get_keyboard_mapping_reply>(
            setup->min_keycode, static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1));
        auto const* const symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
        return {symbols, symbols + xcb_get_keyboard_mapping_keysyms_length(mapping.get())};
    }

    std::optional<TestDisplay> display;
    std::optional<TestClient> client;
};

}

TEST_F(UIKeys, aRecordingLogsThemAsAPersons) {
    auto recording = start(TAVARO_PROGRAM, {"record", "-o", path("take.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return !read("logs/1.err").empty() || !read("logs/1.out").empty(); }));
    auto const typed = tavaro({"ui", "keys", "--text", "Añ 日😀Пß\n", "cmd+shift+f", "esc"});
    ASSERT_EQ(typed.exitCode, 0) << typed.error;
    recording.send(SIGINT);
    auto const recorded = recording.wait();
    ASSERT_EQ(recorded.exitCode, 0) << recorded.error;
    auto const project = ProjectPackage(path("take.recproj")).load();
    std::string all;
    for (auto const& stroke : project.metadata->keystrokes) {
        for (auto const& key : stroke.keys) all += key;
        all += stroke.isShortcut ? "* " : " ";
    }
    EXPECT_EQ(all, "⇧a ñ Space 日 😀 П ß ↩ ⌃⇧f* esc ");
}

TEST_F(UIKeys, aProgramThatIsKilledWhileItTypesLeavesNoKeyDown) {
    auto const before = keyboard();
    std::string text;
    for (int i = 0; i < 200; ++i) text += "aB日é";
    for (auto const signal : {SIGTERM, SIGKILL, SIGKILL, SIGKILL, SIGKILL}) {
        auto typing = start(TAVARO_PROGRAM, {"ui", "keys", "--text", text});
        ASSERT_TRUE(becomesTrue([&] { return keyboard() != before; })) << "it has typed some";
        std::this_thread::sleep_for(53ms);
        for (int i = 0; i < 2; ++i) { // as people press Ctrl-C
            typing.send(signal);
            std::this_thread::sleep_for(4ms);
        }
        typing.wait();
        EXPECT_FALSE(isAnyKeyDown()) << signal;
        EXPECT_TRUE(keyboard() == before || signal == SIGKILL);
    }
    EXPECT_EQ(tavaro({"ui", "keys", "--text", "é"}).exitCode, 0);
    EXPECT_EQ(keyboard(), before) << "the next one takes back what the killed ones changed";
}

}
