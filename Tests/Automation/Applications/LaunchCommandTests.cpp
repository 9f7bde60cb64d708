#include "../../Core/Package/TemporaryFolder.h"

#include <TavaroAutomation/Applications/Private/ApplicationLookup.h>
#include <TavaroAutomation/Applications/Private/LaunchCommand.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <fstream>
#include <gmock/gmock.h>

namespace tavaro {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
namespace fs = std::filesystem;

/// Programs and entries of a test.
class InstalledPrograms : public testing::Test {
protected:
    std::string program(std::string const& path) const {
        auto const file = folder.path() / path;
        fs::create_directories(file.parent_path());
        std::ofstream(file) << "#!/bin/sh\n";
        fs::permissions(file, fs::perms::owner_all);
        return file.string();
    }
    void entry(std::string const& id, std::string const& text) const {
        fs::create_directories(folder.path() / "entries");
        std::ofstream(folder.path() / "entries" / (id + ".desktop")) << "[Desktop Entry]\nType=Application\n"
                                                                     << text << "\n";
    }
    std::string named(std::string const& name) const {
        DesktopEntries const entries({folder.path() / "entries"});
        auto const* const found = entryNamed(entries, name, {});
        return found ? found->identity.bundleID : "none";
    }

    TemporaryFolder const folder;
};

x11::OpenWindow window(int pid, std::string const& windowClass, ApplicationIdentity const& application) {
    static xcb_window_t last = 1000;
    return {.window = ++last, .pid = pid, .windowClass = {windowClass, windowClass}, .application = application};
}

}

TEST(WordsOfExec, areThoseThatTheEntryMeans) {
    EXPECT_THAT(wordsOfExec("gedit %U"), ElementsAre("gedit"));
    EXPECT_THAT(wordsOfExec("  a  --b=c\td "), ElementsAre("a", "--b=c", "d"));
    EXPECT_THAT(wordsOfExec(R"("/opt/my app/run" "--say=\"hi\" \$5 \\ \`" "")"),
                ElementsAre("/opt/my app/run", "--say=\"hi\" $5 \\ `", ""));
    EXPECT_THAT(wordsOfExec("run 100%% %f %F%u %i --icon %c x%k"), ElementsAre("run", "100%", "--icon", "x"));
    EXPECT_THAT(wordsOfExec("run \"no end"), IsEmpty());
    EXPECT_THAT(wordsOfExec(""), IsEmpty());
    EXPECT_THAT(wordsOfExec("run $HOME;rm"), ElementsAre("run", "$HOME;rm")) << "no shell reads it";
}

TEST_F(InstalledPrograms, areStartedSoThatTheyTellOfTheirWidgets) {
    auto const plain = program("bin/editor"), browser = program("browser/app"), chromium = program("bin/chromium");
    program("browser/chrome_crashpad_handler");
    auto const flag = std::string("--force-renderer-accessibility");
    EXPECT_THAT(launchCommand({.exec = plain + " --new"}, "").words, ElementsAre(plain, "--new"));
    EXPECT_THAT(launchCommand({.exec = browser + " x"}, "").words, ElementsAre(browser, flag, "x"));
    EXPECT_THAT(launchCommand({.exec = chromium}, "").words, ElementsAre(chromium, flag));
    EXPECT_THAT(launchCommand({.exec = "env A=b C=d " + chromium + " %U"}, "").words,
                ElementsAre(findProgram("env")->string(), "A=b", "C=d", chromium, flag));
    program("suite/chrome_100_percent.pak");
    auto const script = program("suite/bin/code");
    EXPECT_THAT(launchCommand({.exec = script}, "").words, ElementsAre(script, flag)) << "a script beside the browser";
    auto const command = launchCommand({.exec = plain, .folder = "/opt"}, ":7");
    EXPECT_EQ(command.folder, "/opt");
    EXPECT_THAT(command.variables, Contains("DISPLAY=:7"));
    EXPECT_THAT(command.variables, Contains("QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1"));
    EXPECT_THAT(launchCommand({.exec = plain}, "").variables, Not(Contains(testing::StartsWith("DISPLAY="))));
}

TEST_F(InstalledPrograms, thatAreNotThereAreASentence) {
    auto const plain = program("bin/editor");
    for (DesktopEntry const& entry :
         {DesktopEntry{.exec = "/nowhere/editor"}, DesktopEntry{.exec = plain, .tryExec = "/nowhere/editor"},
          DesktopEntry{.exec = "no-program-of-that-name"}, DesktopEntry{.exec = ""}, DesktopEntry{.exec = "\""}})
        EXPECT_THROW(launchCommand(entry, ""), AutomationError) << entry.exec;
}

TEST_F(InstalledPrograms, areFoundByEachOfTheirNames) {
    entry("org.text.Writer", "Name=Text Writer\nName[de]=Schreibzeug\nExec=/opt/wordy %U\nStartupWMClass=WriterWin");
    entry("writer", "Name=Old one\nExec=old");
    entry("hidden", "Name=Text Writer\nExec=x\nNoDisplay=true");
    for (auto const* const name : {"org.text.Writer", "ORG.TEXT.WRITER.desktop", "text writer", " Text Writer ",
                                   "schreibzeug", "writerwin", "wordy"})
        EXPECT_EQ(named(name), "org.text.Writer") << name;
    EXPECT_EQ(named("writer"), "writer") << "an id comes before the last part of another";
    EXPECT_EQ(named("Text"), "none");
    EXPECT_EQ(named(""), "none");
}

TEST_F(InstalledPrograms, areFoundByTheirFileWhereAnEntryStartsNothingElse) {
    auto const editor = program("bin/my \"editor\" 100%"), office = program("bin/office");
    entry("office-writer", "Name=Words\nExec=" + office + " --writer");
    entry("office-start", "Name=Office\nExec=" + office + " %U");
    EXPECT_EQ(named(office), "office-start");
    EXPECT_EQ(named(editor), "none");
    EXPECT_THAT(launchCommand(entryOfFile(editor), "").words, ElementsAre(editor)) << "as it is, whatever is in it";
}

TEST_F(InstalledPrograms, ofOneNameTheOpenOneIsMeant) {
    entry("first", "Name=Twin\nExec=a");
    entry("second", "Name=Twin\nExec=b");
    DesktopEntries const entries({folder.path() / "entries"});
    std::string const byDefault = entryNamed(entries, "Twin", {})->identity.bundleID;
    std::string const other = byDefault == "first" ? "second" : "first";
    EXPECT_EQ(entryNamed(entries, "Twin", {window(5, "Win", {other, "Twin"})})->identity.bundleID, other);
}

TEST_F(InstalledPrograms, shareAProcessAndHaveWindowsOfTheirOwn) {
    entry("suite-words", "Name=Words\nExec=suite --words");
    entry("suite-sums", "Name=Sums\nExec=suite --sums");
    DesktopEntries const entries({folder.path() / "entries"});
    auto const* const words = entryNamed(entries, "Words", {});
    auto const make = [&](xcb_window_t id, ApplicationIdentity const& identity, xcb_window_t transientFor) {
        auto made = window(5, "Suite", identity);
        made.window = id;
        made.transientFor = transientFor;
        return made;
    };
    ApplicationIdentity const sums{"suite-sums", "Sums"}, unknown{"Suite", "Suite"};
    std::vector<x11::OpenWindow> const all{
        make(1, sums, 0),    make(2, unknown, 1), make(3, unknown, 4), make(4, words->identity, 0),
        make(5, unknown, 0), make(6, unknown, 3), make(7, unknown, 2), make(8, unknown, 99)};
    std::vector<xcb_window_t> own;
    for (auto const& each : windowsOf(all, words, "Words")) own.push_back(each.window);
    EXPECT_THAT(own, ElementsAre(3, 4, 5, 6, 8)) << "its own, its dialogs, and what says nothing of itself";
    auto asked = make(9, unknown, 0), first = make(10, unknown, 0);
    asked.launch = {.entry = "suite-sums", .isOwn = true};
    first.launch = {.entry = "suite-words", .isOwn = true};
    auto const ofWords = windowsOf({asked, first}, words, "Words");
    ASSERT_EQ(ofWords.size(), 1u) << "not what another entry asked for";
    EXPECT_EQ(ofWords[0].window, 10u);
}

TEST_F(InstalledPrograms, haveTheWindowsOfTheTerminalTheyRunIn) {
    entry("monitor", "Name=Monitor\nExec=mon\nTerminal=true");
    DesktopEntries const entries({folder.path() / "entries"});
    auto const* const monitor = entryNamed(entries, "Monitor", {});
    auto terminal = window(5, "XTerm", {"xterm", "Terminal"});
    terminal.launch = {.entry = "monitor", .isOwn = true};
    auto startedInside = window(6, "Editor", {"org.editor", "Editor"});
    startedInside.launch = {.entry = "monitor"}; // by its variables, which it has from the terminal
    auto const own = windowsOf({startedInside, terminal}, monitor, "Monitor");
    ASSERT_EQ(own.size(), 1u);
    EXPECT_EQ(own.front().pid, 5);
}

TEST_F(InstalledPrograms, haveTheWindowsOfTheirProcesses) {
    entry("org.text.Writer", "Name=Text Writer\nExec=/opt/wordy %U");
    DesktopEntries const entries({folder.path() / "entries"});
    auto const* const writer = entryNamed(entries, "Text Writer", {});
    auto menu = window(5, "", {});
    menu.isPopup = true;
    auto splash = window(5, "Wordy", writer->identity);
    splash.isSplash = true;
    auto icon = window(5, "Wordy", writer->identity);
    icon.isMinimized = true;
    std::vector<x11::OpenWindow> const all{menu, window(6, "Other", {"other", "Other"}), splash, icon,
                                           window(5, "Wordy", writer->identity)};
    auto const own = windowsOf(all, writer, "Text Writer");
    EXPECT_EQ(own.size(), 4u);
    EXPECT_FALSE(frontWindow(own)->isMinimized || frontWindow(own)->isSplash || frontWindow(own)->isPopup);
    EXPECT_TRUE(frontWindow({menu, splash, icon})->isMinimized) << "an icon is a window that can be raised";
    EXPECT_FALSE(frontWindow({menu, splash}));
    auto started = window(7, "script.py", {"script.py", "script.py"});
    started.launch.entry = "org.text.Writer";
    EXPECT_EQ(windowsOf({started}, writer, "Text Writer").size(), 1u);
    EXPECT_EQ(windowsOf(all, nullptr, "OTHER").size(), 1u);
    EXPECT_THAT(windowsOf(all, nullptr, "none"), IsEmpty());
}

}
