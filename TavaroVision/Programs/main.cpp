// The text engine in a process of its own, so that its crash and its memory are nobody else's. It is started by Tavaro,
// which sends it pictures of lines on its standard input and reads their words from its standard output.

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Processes/EngineProcess.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>
#include <TavaroVision/Programs/LineEye.h>
#include <TavaroVision/Reading/ReaderTalk.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <unistd.h>
#include <vector>

namespace tavaro {

namespace {

constexpr std::uint64_t mostMemory = std::uint64_t{1} << 30; // the engine takes a tenth of it

class Reader {
public:
    int run(char const* language) {
        try {
            LineEye eye(language);
            bool isHeard = say({});
            while (isHeard) {
                auto const size = nextSize();
                if (!size) return EXIT_SUCCESS;
                pixels_.resize(size->pixels());
                if (!receive({reinterpret_cast<char*>(pixels_.data()), pixels_.size()})) return EXIT_SUCCESS;
                isHeard = say({.letters = eye.read(pixels_.data(), size->width, size->height), .failure = {}});
            }
        } catch (std::exception const& error) {
            say({.letters = {}, .failure = error.what()});
        }
        return EXIT_FAILURE;
    }

private:
    std::optional<LineImageSize> nextSize() const {
        LineImageHead head{};
        return receive(head) ? sizeOf(head) : std::nullopt;
    }

    /// False where the connection ends before.
    bool receive(std::span<char> room) const {
        while (!room.empty()) {
            auto const receipt = socket_.receive(room, UnixSocket::forever);
            if (receipt.what != UnixSocket::Received::bytes) return false;
            room = room.subspan(receipt.count);
        }
        return true;
    }

    bool say(ReaderReply const& reply) const { return socket_.sendAll(encodeJSON(reply) + '\n', UnixSocket::forever); }

    UnixSocket socket_{FileDescriptor(STDIN_FILENO)}; // standard output is the same one
    std::vector<std::uint8_t> pixels_;
};

}

}

int main(int count, char** words) {
    if (count != 2) {
        constexpr std::string_view usage = "tavaro-reader is a part of Tavaro, which starts it by itself.\n";
        [[maybe_unused]] auto const told = ::write(STDERR_FILENO, usage.data(), usage.size());
        return 2;
    }
    tavaro::becomeEngineProcess(tavaro::mostMemory);
    return tavaro::Reader().run(words[1]);
}
