#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroPlatform/Sockets/UnixSocketListener.h>

#include <QObject>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tavaro {

/// Somebody starts the program that runs already: what was to be opened is handed to the one that runs, over a socket
/// of the user's, and that one shows its window.
class SecondStart : public QObject {
public:
    using Files = std::vector<std::string>; // absolute

    /// "studio.sock" beside what the user recorded.
    static std::filesystem::path socket();
    /// True when the program that runs has taken them; false where none with windows answers.
    static bool handOver(Files const& files);

    /// Hears of each start from now on. Throws `SocketError`. Belongs to the main thread.
    SecondStart(MainQueue& queue, std::function<void(Files const&)> started);

private:
    void accept();

    UnixSocketListener const listener_;
    std::function<void(Files const&)> const started_;
    SideQueue side_;
};

}
