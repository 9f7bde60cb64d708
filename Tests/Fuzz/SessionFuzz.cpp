#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Protocol/MCPSession.h>
#include <TavaroMCP/Protocol/ToolResult.h>
#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <cstdlib>
#include <deque>
#include <string>

using namespace tavaro;

// Each line that goes out is one JSON object of the protocol, written as it would be written again.
static void expectMessage(std::string_view line) {
    auto const message = JSONValue::parse(line);
    auto const* const version = message.find<std::string>("jsonrpc");
    bool const isReply = message.find("id") && (message.find("result") || message.find("error"));
    bool const isProgress = message.find<std::string>("method") && !message.find("id");
    bool const isMessage = version && *version == "2.0" && isReply != isProgress;
    if (!isMessage || line.find('\n') != line.npos || encodeJSON(message) != line) std::abort();
}

// Any bytes are lines to a session, and each gets one answer at most; a call that was started, exactly one.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::deque<MCPSession::Finish> calls;
    std::size_t lines = 0, replies = 0, started = 0;
    double now = 0;
    MCPSession session({.version = "1",
                        .callTool =
                            [&](auto call, auto progress, auto finish) {
                                progress(0.5, call.client);
                                calls.push_back(finish);
                                ++started;
                            },
                        .write =
                            [&](std::string_view line) {
                                expectMessage(line);
                                if (!line.starts_with(R"({"jsonrpc")")) ++replies; // "error" and "id" sort before
                            },
                        .now = [&] { return now; }});
    LineSplitter splitter(4096);
    splitter.feed({reinterpret_cast<char const*>(data), size});
    splitter.feed("\n");
    while (auto const line = splitter.next()) {
        auto const beginning = splitter.tooLongBeginning();
        beginning.empty() ? session.receive(*line) : session.refuseTooLong(beginning);
        session.beat();
        now += 0.5;
        if (++lines % 3 != 0 || calls.empty()) continue;
        calls.front()(toolResult::ok(*line));
        calls.pop_front();
    }
    for (; !calls.empty(); calls.pop_front()) calls.front()(toolResult::failure(MCPErrorCode::failed, "over"));
    if (replies > lines || started > replies || session.isBusy()) std::abort();
    return 0;
}
