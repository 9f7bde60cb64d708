#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroPlatform/Sockets/SocketError.h>
#include <TavaroPlatform/Sockets/UnixSocketListener.h>

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds patience(5000);

class UnixSocketTest : public ::testing::Test {
protected:
    UnixSocketTest() {
        std::string pattern = (fs::temp_directory_path() / "tavaro-socket-XXXXXX").string();
        root = mkdtemp(pattern.data());
        path = root / "Tavaro/mcp.sock";
    }
    ~UnixSocketTest() override { fs::remove_all(root); }

    /// A socket whose program was killed: nobody listens, and the file is there.
    void leaveDeadSocket() const {
        fs::create_directories(path.parent_path());
        int const descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        path.native().copy(address.sun_path, sizeof address.sun_path - 1);
        ASSERT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        ::close(descriptor);
    }

    static mode_t modeOf(fs::path const& file) {
        struct stat status {};
        ::lstat(file.c_str(), &status);
        return status.st_mode & 0777u;
    }

    std::string refusal() const {
        try {
            UnixSocketListener const listener(path);
            return "";
        } catch (SocketError const& error) {
            return error.what();
        }
    }

    static UnixSocket accepted(UnixSocketListener const& listener) {
        pollfd waiting{listener.descriptor(), POLLIN, 0};
        ::poll(&waiting, 1, static_cast<int>(patience.count()));
        return listener.accept().value();
    }

    fs::path root, path;
};

}

TEST_F(UnixSocketTest, onlyItsUserReachesASocketAndItGoesWithItsListener) {
    fs::create_directories(path.parent_path());
    ::chmod(path.parent_path().c_str(), 0755);
    std::optional<UnixSocketListener> listener(std::in_place, path);
    EXPECT_EQ(modeOf(path), 0600u);
    EXPECT_EQ(modeOf(path.parent_path()), 0700u);
    EXPECT_TRUE(UnixSocket::connect(path));
    listener.reset();
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(UnixSocket::connect(path));
}

TEST_F(UnixSocketTest, aDeadSocketIsReplacedAndALivingOneNever) {
    leaveDeadSocket();
    EXPECT_FALSE(UnixSocket::connect(path));
    UnixSocketListener const living(path);
    EXPECT_NE(refusal().find("another program listens there"), std::string::npos) << refusal();
    EXPECT_TRUE(UnixSocket::connect(path)) << "the refused one left it alone";
}

TEST_F(UnixSocketTest, whatIsNoSocketIsLeftThere) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "mine";
    EXPECT_NE(refusal().find("something that is no socket"), std::string::npos);
    EXPECT_EQ(fs::file_size(path), 4u);
    fs::remove(path);
    fs::create_symlink(root / "elsewhere", path);
    EXPECT_NE(refusal(), "");
    EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(UnixSocketTest, aListenerRemovesNoSocketThatTookItsPlace) {
    std::optional<UnixSocketListener> first(std::in_place, path);
    fs::remove(path);
    UnixSocketListener const second(path);
    first.reset();
    EXPECT_TRUE(UnixSocket::connect(path));
}

TEST_F(UnixSocketTest, aPathThatDoesNotFitIsRefusedByBothEnds) {
    auto const ofLength = [&](std::size_t length) {
        return root / std::string(length - root.native().size() - 1, 's');
    };
    EXPECT_FALSE(UnixSocket::connect(ofLength(103)));
    EXPECT_THROW(UnixSocket::connect(ofLength(104)), SocketError);
    path = ofLength(104);
    EXPECT_EQ(refusal(), "Socket path is too long.");
}

TEST_F(UnixSocketTest, linesArriveWholeAndEndWithTheConnection) {
    UnixSocketListener const listener(path);
    auto const near = UnixSocket::connect(path).value();
    std::optional<UnixSocket> far = accepted(listener);
    LineReader lines(near, 100);
    ASSERT_TRUE(far->sendAll("one\ntw", patience));
    EXPECT_EQ(lines.next(patience), "one");
    EXPECT_FALSE(lines.next(std::chrono::milliseconds(20))) << "half a line is none";
    EXPECT_FALSE(lines.hasEnded());
    ASSERT_TRUE(far->sendAll("o\n", patience));
    EXPECT_EQ(lines.next(patience), "two");
    EXPECT_TRUE(near.isConnected());
    far.reset();
    EXPECT_FALSE(near.isConnected());
    EXPECT_FALSE(lines.next(patience));
    EXPECT_TRUE(lines.hasEnded());
    EXPECT_FALSE(near.sendAll("nobody reads this\n", patience)) << "and no signal ends the program";
}

}
