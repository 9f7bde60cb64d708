#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace tavaro {

/// One end of a connection between two programs of one user. One thread may read while another writes.
class UnixSocket {
public:
    using Patience = std::chrono::milliseconds;
    static constexpr Patience forever{-1};

    explicit UnixSocket(FileDescriptor connected) : descriptor_(std::move(connected)) {}

    /// None where nobody listens. Throws `SocketError`, also where another user does.
    static std::optional<UnixSocket> connect(std::filesystem::path const& path);

    enum class Received { bytes, end, nothing };
    struct Receipt {
        Received what = Received::nothing;
        std::size_t count = 0;
    };
    /// Waits for bytes, which may be fewer than there is room for; `nothing` where none come for so long. A connection
    /// that breaks ends.
    Receipt receive(std::span<char> room, Patience patience) const;

    /// Waits for bytes or the end, and takes nothing. False where neither comes for so long.
    bool awaitInput(Patience patience) const;

    /// False where the other end is gone, or takes nothing for so long.
    bool sendAll(std::string_view bytes, Patience patience) const;
    /// Sends what goes at once. None where the other end is gone.
    std::optional<std::size_t> sendNow(std::string_view bytes) const;

    /// Whether the other end is there still, as far as one knows. One that only sends no more is: it may read.
    bool isConnected() const;
    /// Any thread. Whoever waits for bytes here gets the end, while what is sent still goes.
    void endInput() const;
    /// Any thread. Ends the connection for both sides; whoever waits for bytes gets its end.
    void shutDown() const;

    bool isOfSameUser() const;

private:
    FileDescriptor descriptor_;
};

}
