#include <TavaroPlatform/Sockets/LineReader.h>

#include <algorithm>
#include <chrono>

namespace tavaro {

namespace {

/// What is left of somebody's patience, counted from now.
class Deadline {
public:
    explicit Deadline(UnixSocket::Patience patience) : patience_(patience) {}

    UnixSocket::Patience left() const {
        if (patience_ < UnixSocket::Patience::zero()) return patience_;
        auto const gone = std::chrono::steady_clock::now() - began_;
        auto const left = std::chrono::ceil<UnixSocket::Patience>(patience_ - gone);
        return std::max(left, UnixSocket::Patience::zero());
    }

private:
    UnixSocket::Patience patience_;
    std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
};

}

std::optional<std::string_view> LineReader::next(UnixSocket::Patience patience) {
    Deadline const deadline(patience);
    while (true) {
        if (auto const line = lines_.next()) return line;
        if (lines_.isTooLong()) return std::nullopt;
        auto const receipt = socket_.receive(room_, deadline.left());
        hasEnded_ = receipt.what == UnixSocket::Received::end;
        if (receipt.what != UnixSocket::Received::bytes) return std::nullopt;
        lines_.feed({room_.data(), receipt.count});
    }
}

bool LineReader::awaitBeginning(UnixSocket::Patience patience) const {
    return !lines_.rest().empty() || socket_.awaitInput(patience);
}

}
