#include "../../Core/Package/TemporaryFolder.h"

#include <TavaroPlatform/Processes/DesktopSession.h>

#include <fstream>
#include <gmock/gmock.h>
#include <unistd.h>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

/// A system's list of processes, each with what it was started with.
class DesktopSession : public testing::Test {
protected:
    void run(std::string const& number, std::vector<std::string> variables) const {
        fs::create_directories(folder / number);
        std::ofstream file(folder / number / "environ");
        for (auto const& variable : variables) file << variable << '\0';
    }
    std::vector<std::string> variables() const { return desktopSessionVariables(folder.path()); }

    TemporaryFolder const folder;
};

}

TEST_F(DesktopSession, isThatOfTheProgramsOnIt) {
    EXPECT_THAT(variables(), IsEmpty());
    run("10", {"HOME=/h", "PATH=/bin"});
    EXPECT_THAT(variables(), IsEmpty());
    run("11", {"DISPLAY=far:3", "HOME=/h", "XAUTHORITY=/h/x=y", "DISPLAYED=1"});
    run("self", {"DISPLAY=far:9", "XDG_CURRENT_DESKTOP=X", "XDG_SESSION_TYPE=x11"});
    EXPECT_THAT(variables(), ElementsAre("DISPLAY=far:3", "XAUTHORITY=/h/x=y"));
    run("12", {"DISPLAY=far:4"});
    run("13", {"DISPLAY=far:4"});
    EXPECT_THAT(variables(), ElementsAre("DISPLAY=far:4")) << "more programs are there";
    run("14", {"DISPLAY=far:5", "XDG_CURRENT_DESKTOP=GNOME"});
    EXPECT_THAT(variables(), ElementsAre("DISPLAY=far:5", "XDG_CURRENT_DESKTOP=GNOME"));
}

TEST_F(DesktopSession, aDisplayThatHasGoneIsNone) {
    run("20", {"DISPLAY=:7654"});
    run("21", {"WAYLAND_DISPLAY=wayland-7", "XDG_RUNTIME_DIR=" + folder.path().string()});
    run("22", {"DISPLAY="});
    EXPECT_THAT(variables(), IsEmpty());
    std::ofstream(folder / "wayland-7");
    EXPECT_EQ(variables().size(), 2u);
}

TEST_F(DesktopSession, whatCannotBeReadIsPassedOver) {
    fs::create_directories(folder / "30"); // ended meanwhile
    run("31", {"", "=", "DISPLAY", "no value at all"});
    EXPECT_THAT(variables(), IsEmpty());
    EXPECT_THAT(desktopSessionVariables(folder / "nowhere"), IsEmpty());
}
