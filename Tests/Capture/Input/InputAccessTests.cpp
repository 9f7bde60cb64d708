#include <TavaroCapture/Input/InputAccess.h>

#include "../TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using testing::ContainsRegex;
using testing::HasSubstr;

constexpr char const* keyboardKeys = "1000000000007 ff9f207ac14057ff febeffdfffefffff fffffffffffffffe\n";
constexpr char const* mouseKeys = "ff0000 0 0 0 0\n"; // bits 272 to 279
constexpr char const* lidKeys = "0\n";

/// What the kernel shows of devices; root reads everything, so what a user may read is asked as one.
class InputAccessTest : public testing::Test {
protected:
    InputAccessTest() { fs::permissions(folder.path(), fs::perms::all); }

    void add(std::string const& name, char const* keys, fs::perms perms, gid_t group = 0) {
        fs::create_directories(classes() / name / "device" / "capabilities");
        std::ofstream(classes() / name / "device" / "capabilities" / "key") << keys;
        fs::create_directories(devices());
        std::ofstream(devices() / name) << "";
        fs::permissions(devices() / name, perms);
        if (getuid() == 0 && chown((devices() / name).c_str(), 0, group) != 0) ADD_FAILURE() << "chown";
    }
    fs::path devices() const { return folder.path() / "input"; }
    fs::path classes() const { return folder.path() / "class"; }

    /// "keyboards read/all, pointers read/all: problem | commands", of a user without rights of its own.
    std::string seen() const {
        int ends[2];
        if (pipe(ends) != 0) return "no pipe";
        pid_t const child = fork();
        if (child == 0) {
            constexpr uid_t nobody = 65534;
            bool const isRoot = getuid() == 0;
            if (isRoot && (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0)) _exit(1);
            auto const access = inputAccess(devices(), classes());
            std::string text = std::to_string(access.keyboards.readable) + "/" + std::to_string(access.keyboards.all) +
                               ", " + std::to_string(access.pointers.readable) + "/" +
                               std::to_string(access.pointers.all) + ": " + access.problem.value_or("none") + " |";
            for (auto const& remedy : access.remedies)
                for (auto const& command : remedy.commands) text += " " + command + ";";
            _exit(write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
        }
        close(ends[1]);
        std::string text;
        for (char c; read(ends[0], &c, 1) == 1;) text += c;
        close(ends[0]);
        int status = 0;
        waitpid(child, &status, 0);
        return status == 0 ? text : "the child failed";
    }

    TemporaryFolder const folder;
};

}

TEST_F(InputAccessTest, countsWhatIsTypedAndClickedOnAndNothingElse) {
    EXPECT_THAT(seen(), HasSubstr("0/0, 0/0: This machine shows no keyboards and no mice"));
    add("event0", lidKeys, fs::perms(0666));
    EXPECT_THAT(seen(), HasSubstr("0/0, 0/0: This machine"));
    add("event1", keyboardKeys, fs::perms(0666));
    add("event2", mouseKeys, fs::perms(0666));
    add("event10", keyboardKeys, fs::perms(0666));
    std::ofstream(devices() / "mice") << "";
    EXPECT_EQ(seen(), "2/2, 1/1: none |");
}

TEST_F(InputAccessTest, whatMayNotBeReadIsSaidWithTheCommandsThatLetIt) {
    add("event1", keyboardKeys, fs::perms::none);
    add("event2", mouseKeys, fs::perms(0666));
    EXPECT_THAT(seen(), HasSubstr("0/1, 1/1: Your user may not read the keyboard yet."));
    EXPECT_THAT(seen(), ContainsRegex("sudo tee .*rules.d/.*udevadm control --reload"));
    EXPECT_THAT(seen(), testing::Not(HasSubstr("usermod"))) << "its group may not read it, either";
    add("event2", mouseKeys, fs::perms::none);
    EXPECT_THAT(seen(), HasSubstr("may not read the keyboard and the mouse yet."));

    auto const* const group = getgrnam("input");
    if (getuid() != 0 || !group) return; // only root gives files to it
    add("event1", keyboardKeys, fs::perms::group_read, group->gr_gid);
    EXPECT_THAT(seen(), HasSubstr("sudo usermod --append --groups input"));
}

}
