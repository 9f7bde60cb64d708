#include "../../Core/Package/TemporaryFolder.h"
#include "../Recorder/RecorderTest.h"

#include <Tavaro/Studio/Settings/PackagePolicy.h>
#include <Tavaro/Studio/Settings/UpdateCheck.h>

#include <gmock/gmock.h>

#include <QDateTime>

#include <fstream>

using namespace tavaro;

namespace {

/// A machine whose package manager says what a test wants.
class Updates : public testing::Test {
protected:
    Updates() { owns("tavaro: /usr/bin/tavaro-studio"); }

    void program(char const* name, std::string const& text) const {
        std::ofstream(folder / name) << "#!/bin/sh\n" << text << "\n";
        std::filesystem::permissions(folder / name, std::filesystem::perms::owner_all);
    }
    void owns(std::string const& line) const {
        program("dpkg-query", "[ \"$1 $2\" = '-S /usr/bin/tavaro-studio' ] && echo '" + line + "'");
    }
    void knows(std::string const& installed, std::string const& candidate, std::string const& source) const {
        program("apt-cache", "[ \"$1 $2 $LC_ALL\" = 'policy tavaro C' ] && cat <<END\ntavaro:\n  Installed: " +
                                 installed + "\n  Candidate: " + candidate + "\n  Version table:\n *** " + installed +
                                 " 100\n" + source + "        100 /var/lib/dpkg/status\nEND");
    }
    UpdateCheck::Settings settings() const {
        return {.program = "/usr/bin/tavaro-studio",
                .ownerQuery = file("dpkg-query"),
                .policyQuery = file("apt-cache"),
                .lists = folder.path()};
    }
    std::string file(char const* name) const { return (folder / name).string(); }
    /// What is said, and whether there is a newer one.
    std::pair<std::string, bool> looked() {
        UpdateCheck check(queue, preferences, settings());
        check.look();
        EXPECT_TRUE(becomes([&] { return !check.text().isEmpty(); }));
        EXPECT_FALSE(check.isLooking());
        EXPECT_FALSE(check.hint().isEmpty());
        return {check.text().toStdString(), check.isAvailable()};
    }

    TemporaryFolder const folder;
    MainQueue queue;
    QueueInLoop const loop{queue};
    Preferences preferences{folder / "preferences.json"};
    std::string const web = "        500 http://deb.example.org/debian bookworm/main amd64 Packages\n";
};

}

TEST_F(Updates, thePackageManagerIsAskedAndWhatItSaysIsSaid) {
    using Said = std::pair<std::string, bool>;
    knows("0.1.0", "0.2.0", web);
    EXPECT_EQ(looked(), Said("Tavaro 0.2.0 is available.", true));
    knows("0.2.0", "0.2.0", web);
    EXPECT_EQ(looked(), Said("Tavaro 0.2.0 is the newest that your package manager knows of.", false));
    knows("0.2.0", "0.2.0", "");
    EXPECT_EQ(looked(), Said("Tavaro 0.2.0 was installed from a file.", false));
    program("apt-cache", "exit 1");
    EXPECT_EQ(looked(), Said("The package manager does not answer.", false));
    program("dpkg-query", "exit 1");
    EXPECT_EQ(looked(), Said("This Tavaro was not installed as a package.", false));
    std::filesystem::remove(folder / "dpkg-query"); // a machine with another package manager
    EXPECT_EQ(looked(), Said("This Tavaro was not installed as a package.", false));
}

TEST_F(Updates, itIsLookedForOnceAWeekUnlessThatIsOff) {
    knows("0.1.0", "0.2.0", web);
    auto const looks = [&] {
        UpdateCheck check(queue, preferences, settings());
        check.lookWeekly();
        return check.isLooking() && becomes([&] { return check.isAvailable(); });
    };
    EXPECT_TRUE(looks());
    EXPECT_FALSE(looks());
    auto const day = 24 * 60 * 60, now = static_cast<int>(QDateTime::currentSecsSinceEpoch());
    preferences.set(updatesLastLook, now - 8 * day);
    EXPECT_TRUE(looks());
    preferences.set(updatesLastLook, now + 8 * day); // the clock was wrong
    EXPECT_TRUE(looks());
    preferences.set(updatesLastLook, now - 8 * day);
    UpdateCheck(queue, preferences, settings()).setWeekly(false);
    EXPECT_FALSE(looks());
}

TEST(PackagePolicy, theOwnerOfAFileIsReadInEachOfItsForms) {
    EXPECT_EQ(packageOf("tavaro: /usr/bin/tavaro-studio\n"), "tavaro");
    EXPECT_EQ(packageOf("tavaro:amd64: /usr/bin/tavaro-studio\n"), "tavaro");
    EXPECT_EQ(packageOf("tavaro, tavaro-extra: /usr/bin\n"), "tavaro");
    EXPECT_EQ(packageOf("diversion by tavaro from: /usr/bin/tavaro-studio\n"), "");
    EXPECT_EQ(packageOf(""), "");
    for (auto const* const text : {"", "\n\n", "Installed", "Installed:", "N: Unable to locate package tavaro\n"})
        EXPECT_TRUE(packagePolicy(text).installed.empty() && !packagePolicy(text).hasNewer()) << text;
}
