#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroCore/Records/Fields.h>
#include <TavaroPlatform/Sockets/UnixSocketListener.h>

#include <QObject>

#include <filesystem>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

namespace tavaro {

/// What the program is started for.
struct Start {
    std::vector<std::string> files; // absolute
    std::string place;              // "record" or "library"; empty: where the window is
    bool isMinimized = false;       // nobody wants to see the window now

    static constexpr auto fields = std::tuple{field("files", &Start::files), field("place", &Start::place),
                                              field("isMinimized", &Start::isMinimized)};
};
static_assert(listsEveryField<Start>);

/// Somebody starts the program that runs already: what was to be opened is handed to the one that runs, over a socket
/// of the user's, and that one shows its window.
class SecondStart : public QObject {
public:
    /// "studio.sock" beside what the user recorded.
    static std::filesystem::path socket();
    /// True when the program that runs has taken it; false where none with windows answers.
    static bool handOver(Start const& start);

    /// Whether one is there to take it, be it that it does not answer.
    static bool isListening();

    /// Hears of each start from now on. Throws `SocketError`. Belongs to the main thread.
    SecondStart(MainQueue& queue, std::function<void(Start const&)> started);

private:
    void accept();

    UnixSocketListener const listener_;
    std::function<void(Start const&)> const started_;
    SideQueue side_;
};

}
