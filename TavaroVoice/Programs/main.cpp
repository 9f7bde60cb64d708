// The embedded speech engine in a process of its own, so that its crash and its memory are nobody else's. It is started
// by Tavaro, which sends it pieces of sound as lines on its standard input and reads the words from its standard
// output.

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Processes/EngineProcess.h>
#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroVoice/Programs/SphinxEar.h>
#include <TavaroVoice/Transcription/ListenerTalk.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr std::uint64_t mostMemory = std::uint64_t{2} << 30; // the engine takes a tenth of it

class Listener {
public:
    int run(char const* model) {
        try {
            SphinxEar ear(model);
            bool isHeard = say({});
            while (isHeard) {
                auto const line = lines_.next(UnixSocket::forever);
                if (!line) return EXIT_SUCCESS;
                isHeard = say({.words = ear.hear(samplesOf(decodeJSON<ListenerRequest>(*line))), .failure = {}});
            }
        } catch (std::exception const& error) {
            say({.words = {}, .failure = error.what()});
        }
        return EXIT_FAILURE;
    }

private:
    bool say(ListenerReply const& reply) const {
        return socket_.sendAll(encodeJSON(reply) + '\n', UnixSocket::forever);
    }

    UnixSocket socket_{FileDescriptor(STDIN_FILENO)}; // standard output is the same one
    LineReader lines_{socket_, longestListenerLine};
};

}

}

int main(int count, char** words) {
    if (count != 2) {
        constexpr std::string_view usage = "tavaro-listener is a part of Tavaro, which starts it by itself.\n";
        [[maybe_unused]] auto const told = ::write(STDERR_FILENO, usage.data(), usage.size());
        return 2;
    }
    tavaro::becomeEngineProcess(tavaro::mostMemory);
    return tavaro::Listener().run(words[1]);
}
