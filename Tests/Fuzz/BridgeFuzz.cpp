#include <TavaroCore/Records/JSONError.h>
#include <TavaroMCP/Bridge/BridgeMessages.h>
#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <cstdlib>
#include <string>

using namespace tavaro;

template<class Read> static void expectRefusedOrReadBack(std::string_view line, Read const& read) {
    try {
        auto const message = read(line);
        auto const written = bridgeLine(message);
        if (written.find('\n') != written.size() - 1 || !(read(written) == message)) std::abort();
    } catch (JSONError const&) {
    }
}

// Any line is refused with a sentence, or is a message that is written and read back equal.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    LineSplitter splitter(4096);
    splitter.feed({reinterpret_cast<char const*>(data), size});
    splitter.feed("\n");
    while (auto const line = splitter.next()) {
        expectRefusedOrReadBack(*line, requestOf);
        expectRefusedOrReadBack(*line, replyOf);
    }
    return 0;
}
