#include <TavaroCapture/Devices/ListSources.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/DesktopEntries.h>

#include "../TestDisplay.h"

namespace tavaro {

TEST(CaptureSource, windowsAndAreasAreReadAsPeopleWriteThem) {
    EXPECT_EQ(parseWindowSource("window-4512").id, 4512u);
    EXPECT_EQ(parseWindowSource("0x11A0").id, 4512u);
    EXPECT_EQ(parseAreaSource("-10,20,300,40").rect, (PixelRect{-10, 20, 300, 40}));
    for (auto const* text : {"", "window-", "0", "0x", "12x", "-3", "99999999999", "window-window-1"})
        EXPECT_THROW(parseWindowSource(text), CaptureError) << text;
    for (auto const* text :
         {"", "1,2,3", "1,2,3,4,5", "1,2,3,x", "1 ,2,3,4", "0,0,0,100", "0,0,100,-5", "0,0,1,1", "0,0,99999999999,4"})
        EXPECT_THROW(parseAreaSource(text), CaptureError) << text;
}

TEST(DesktopEntries, aKeyIsReadFromTheMainGroupOnly) {
    auto const* const entry = "# comment\nName=stray\n[Desktop Entry]\r\nName[de]=Schreiber\nName = Writer\r\n"
                              "NameExtra=no\n[Desktop Action new]\nExec=writer --new\n";
    EXPECT_EQ(desktopEntryValue(entry, "Name"), "Writer");
    EXPECT_EQ(desktopEntryValue(entry, "Exec"), std::nullopt);
    EXPECT_EQ(desktopEntryValue("", "Name"), std::nullopt);
}

class SourceListTest : public DisplayTest {};

TEST_F(SourceListTest, withoutAWindowManagerMappedWindowsAreListedFrontmostFirst) {
    auto const back = client->makeWindow({.frame = {10, 20, 30, 40}, .windowClass = "Back", .title = "At the back"});
    client->makeWindow({.frame = {0, 0, 5, 5}, .windowClass = "Menu", .isPopup = true});
    client->makeWindow({.frame = {0, 0, 5, 5}, .windowClass = "Hidden", .isMapped = false});
    auto const front = client->makeWindow({.frame = {50, 60, 70, 80}, .windowClass = "Front", .title = "Before it"});
    auto const sources = listSources(display->name());
    ASSERT_EQ(sources.displays.size(), 1u);
    EXPECT_EQ(sources.displays[0].id, "display-1");
    EXPECT_EQ(sources.displays[0].frame, (PixelRect{0, 0, 640, 480}));
    EXPECT_TRUE(sources.displays[0].isMain);
    ASSERT_EQ(sources.windows.size(), 2u);
    EXPECT_EQ(sources.windows[0].window, front);
    EXPECT_EQ(sources.windows[0].application, "Front");
    EXPECT_EQ(sources.windows[0].title, "Before it");
    EXPECT_EQ(sources.windows[1].window, back);
    EXPECT_EQ(sources.windows[1].frame, (PixelRect{10, 20, 30, 40}));
}

TEST(SourceList, withoutADisplayASentenceSaysSo) {
    try {
        listSources(":4711");
        FAIL() << "there is no such display";
    } catch (CaptureError const& error) {
        EXPECT_EQ(error.kind, CaptureError::Kind::noDisplay);
        EXPECT_STREQ(error.what(), "Could not reach the X server at “:4711”.");
    }
}

}
