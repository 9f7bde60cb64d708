#include <Tavaro/Studio/Program/SecondStart.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroPlatform/Sockets/SocketError.h>

#include <QSocketNotifier>

#include <spdlog/spdlog.h>

#include <array>
#include <memory>
#include <utility>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t longest = std::size_t{1} << 20; // bytes of a start
constexpr std::chrono::seconds patience{5};
constexpr std::string_view taken = "taken\n";

Start received(UnixSocket const& socket) {
    LineReader lines(socket, longest);
    auto const line = lines.next(patience);
    if (!line) throw Error("A second start said nothing.");
    return decodeJSON<Start>(*line);
}

}

std::filesystem::path SecondStart::socket() { return folders::applicationSupport() / "Tavaro/studio.sock"; }

bool SecondStart::handOver(Start const& start) {
    try {
        auto const connection = UnixSocket::connect(socket());
        if (!connection || !connection->sendAll(encodeJSON(start) + "\n", patience)) return false;
        return LineReader(*connection, longest).next(patience).has_value();
    } catch (SocketError const& error) {
        spdlog::warn("{}", error.what());
        return false;
    }
}

bool SecondStart::isListening() {
    try {
        return UnixSocket::connect(socket()).has_value();
    } catch (SocketError const&) {
        return false;
    }
}

SecondStart::SecondStart(MainQueue& queue, std::function<void(Start const&)> started)
    : listener_(socket())
    , started_(std::move(started))
    , side_(queue, "com.tavaro.second-start") {
    auto* const notifier = new QSocketNotifier(listener_.descriptor(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { accept(); });
}

void SecondStart::accept() {
    auto accepted = listener_.accept();
    if (!accepted) return;
    auto const socket = std::make_shared<UnixSocket>(*std::move(accepted));
    side_.ask([socket] { return received(*socket); },
              [this, socket](Outcome<Start> const& start) {
                  try {
                      started_(start.value());
                      // Not before: what ends meanwhile has taken nothing.
                      side_.ask([socket] { return socket->sendAll(taken, patience); }, [](Outcome<bool> const&) {});
                  } catch (Error const& error) {
                      spdlog::warn("{}", error.what());
                  }
              });
}

}
