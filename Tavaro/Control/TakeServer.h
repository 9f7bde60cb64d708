#pragma once

#include <filesystem>
#include <memory>

namespace tavaro {

class MainQueue;
class RecordingController;

/// Where the takes of programs without an application are to be found, as those of `tavaro record`: a socket each.
std::filesystem::path takeSocketFolder();

/// Lets the user's other programs see a take, pause and end it, for as long as it lives. It belongs to the main queue,
/// and to the recorder, which outlive it.
class TakeServer {
public:
    /// Answers from then on. Throws `SocketError`.
    TakeServer(MainQueue& queue, RecordingController& recorder,
               std::filesystem::path const& folder = takeSocketFolder());
    ~TakeServer();
    TakeServer(TakeServer const&) = delete;
    TakeServer& operator=(TakeServer const&) = delete;

private:
    class Desk;

    std::unique_ptr<Desk> desk_;
};

}
