#include <TavaroCapture/Sources/InstalledEntries.h>

#include "../TemporaryFolder.h"
#include "../TestDisplay.h"

#include <fstream>
#include <gtest/gtest.h>

namespace tavaro {

namespace {

using Freshness = InstalledEntries::Freshness;
namespace fs = std::filesystem;

class InstalledEntriesTest : public testing::Test {
protected:
    void write(fs::path const& file, std::string const& name) const {
        fs::create_directories((folder.path() / file).parent_path());
        std::ofstream(folder.path() / file) << "[Desktop Entry]\nType=Application\nName=" << name << "\n";
    }
    std::string names(Freshness freshness) {
        std::string result;
        for (auto const& entry : installed.of({folder.path() / "user", folder.path() / "system"}, freshness)->all())
            result += entry.identity.bundleID + "=" + entry.identity.name + " ";
        return result;
    }

    TemporaryFolder folder;
    InstalledEntries installed;
};

}

TEST_F(InstalledEntriesTest, areThoseThatAreThereNow) {
    for (auto const freshness : {Freshness::now, Freshness::withinASecond}) {
        auto const become = [&](std::string const& expected) {
            auto const isSo = [&] { return names(freshness) == expected; };
            return freshness == Freshness::now ? isSo() : eventually(isSo);
        };
        fs::remove_all(folder.path() / "system");
        EXPECT_TRUE(become("")) << names(freshness);
        write("system/sub/one.desktop", "One");
        EXPECT_TRUE(become("sub-one=One ")) << names(freshness);
        write("system/sub/one.desktop", "Another");
        EXPECT_TRUE(become("sub-one=Another ")) << names(freshness) << ": written in its place";
        fs::remove(folder.path() / "system/sub/one.desktop");
        write("user/two.desktop", "Two");
        EXPECT_TRUE(become("two=Two ")) << names(freshness);
        fs::remove_all(folder.path() / "user");
    }
}

TEST_F(InstalledEntriesTest, areReadOnceWhileNothingChanges) {
    write("user/one.desktop", "One");
    std::vector<fs::path> const folders{folder.path() / "user", folder.path() / "system"};
    auto const first = installed.of(folders, Freshness::now);
    EXPECT_EQ(installed.of(folders, Freshness::now), first);
    EXPECT_EQ(installed.of(folders, Freshness::withinASecond), first);
    EXPECT_NE(installed.of({folder.path() / "system"}, Freshness::withinASecond), first);
    EXPECT_EQ(first->all().size(), 1u) << "whoever holds them keeps them";
}

}
