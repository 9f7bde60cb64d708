#pragma once

#include <TavaroPlatform/Sockets/LineSplitter.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace tavaro {

/// The lines that come over a connection, which must outlive it.
class LineReader {
public:
    LineReader(UnixSocket const& socket, std::size_t longest) : socket_(socket), lines_(longest), room_(pieceBytes) {}

    /// Waits for a whole line, which is good until the next call. None where the connection ends, the line is too long,
    /// or is not complete after so long.
    std::optional<std::string_view> next(UnixSocket::Patience patience);
    /// Waits until something of the next line is there, or the end. False where neither comes for so long.
    bool awaitBeginning(UnixSocket::Patience patience) const;
    /// Of the line that comes in: then none comes any more.
    bool isTooLong() const { return lines_.isTooLong(); }
    bool hasEnded() const { return hasEnded_; }

private:
    static constexpr std::size_t pieceBytes = std::size_t{64} << 10;

    UnixSocket const& socket_;
    LineSplitter lines_;
    std::vector<char> room_;
    bool hasEnded_ = false;
};

}
