#include <TavaroCapture/Devices/ListSources.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/DesktopEntries.h>

#include "../TemporaryFolder.h"
#include "../TestDisplay.h"

#include <fstream>

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

TEST(DesktopEntries, keysAreReadFromTheMainGroupOnly) {
    auto const* const entry = "# comment\nName=stray\n[Desktop Entry]\r\nName[de]=Schreiber\nName = Writer\r\n"
                              "NameExtra=a\\sb\\\\c\n[Desktop Action new]\nExec=writer --new\n";
    EXPECT_EQ(desktopEntryValues(entry), (std::map<std::string, std::string>{
                                             {"Name", "Writer"}, {"Name[de]", "Schreiber"}, {"NameExtra", "a b\\c"}}));
    EXPECT_TRUE(desktopEntryValues("").empty());
}

/// Entries in folders, the user's before the system's.
class InstalledApplications : public testing::Test {
protected:
    void install(std::string const& folder, std::string const& id, std::string const& rest) {
        auto const file = folder_.path() / folder / (id + ".desktop");
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << "[Desktop Entry]\nType=Application\n" << rest;
    }
    std::string owner(WindowOwner const& window) const {
        DesktopEntries const entries({folder_.path() / "user", folder_.path() / "system"});
        auto const* const found = entries.ownerOf(window);
        return found ? found->identity.bundleID : "";
    }

    TemporaryFolder folder_;
};

TEST_F(InstalledApplications, ownAWindowWhoseClassIsNotTheirId) {
    install("system", "org.text.Writer", "Name=Text Writer\nExec=/opt/text-writer %U\n");
    install("system", "org.sum.kcalc", "Name=Sums\nExec=kcalc\n");
    install("system", "office-calc", "Name=Calc\nExec=office --calc\nStartupWMClass=Tables\n");
    install("system", "office-draw", "Name=Draw\nExec=office --draw\n");
    EXPECT_EQ(owner({.windowClass = "whatever", .gtkApplicationID = "org.text.Writer"}), "org.text.Writer");
    EXPECT_EQ(owner({.instance = "text-writer", .windowClass = "Text-writer"}), "org.text.Writer");
    EXPECT_EQ(owner({.windowClass = "other", .program = "text-writer"}), "org.text.Writer");
    EXPECT_EQ(owner({.windowClass = "KCalc"}), "org.sum.kcalc");
    EXPECT_EQ(owner({.windowClass = "tables"}), "office-calc");
    EXPECT_EQ(owner({.windowClass = "Text Writer"}), "org.text.Writer");
    install("system", "python3.11", "Name=Python\nExec=/usr/bin/python3.11\n");
    EXPECT_EQ(owner({.windowClass = "notes.py", .program = "python3.11"}), "")
        << "it runs the program of somebody else";
    EXPECT_EQ(owner({.windowClass = "Soffice", .program = "office"}), "") << "two start that program";
}

TEST_F(InstalledApplications, areTheUsersOwnWhereBothHaveAnEntry) {
    install("system", "tool", "Name=Old\nExec=tool\n");
    install("user", "tool", "Name=New\nExec=tool\n");
    install("system", "gone", "Name=Gone\nExec=gone\n");
    install("user", "gone", "Name=Gone\nHidden=true\n");
    install("system", "old/deep", "Name=Deep\nExec=deep\n");
    DesktopEntries const entries({folder_.path() / "user", folder_.path() / "missing", folder_.path() / "system"});
    std::map<std::string, std::string> names;
    for (auto const& entry : entries.all()) names[entry.identity.bundleID] = entry.identity.name;
    EXPECT_EQ(names, (std::map<std::string, std::string>{{"tool", "New"}, {"old-deep", "Deep"}}));
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
