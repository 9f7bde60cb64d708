#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <algorithm>
#include <utility>

namespace tavaro {

void LineSplitter::feed(std::string_view bytes) {
    dropUsed();
    text_.append(bytes);
}

std::optional<std::string_view> LineSplitter::next() {
    auto const end = text_.find('\n', searched_);
    bool const isWhole = end != std::string::npos;
    searched_ = isWhole ? end + 1 : text_.size();
    bool const isTooLong = isTooLong_ || (isWhole ? end : text_.size()) - begin_ > longest_;
    std::string_view const line = isTooLong ? "" : std::string_view(text_).substr(begin_, end - begin_);
    if (isTooLong && !isTooLong_) beginning_ = text_.substr(begin_, std::min(keptBytes, longest_));
    if (isWhole || isTooLong) begin_ = searched_;
    isTooLong_ = isTooLong && !isWhole;
    if (isWhole) given_ = std::exchange(beginning_, {});
    return isWhole ? std::optional(line) : std::nullopt;
}

void LineSplitter::dropUsed() {
    text_.erase(0, begin_);
    searched_ -= begin_;
    begin_ = 0;
}

}
