#include <TavaroPlatform/Sockets/LineSplitter.h>

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
    if (isWhole || isTooLong) begin_ = searched_;
    isTooLong_ = isTooLong && !isWhole;
    return isWhole ? std::optional(line) : std::nullopt;
}

void LineSplitter::dropUsed() {
    text_.erase(0, begin_);
    searched_ -= begin_;
    begin_ = 0;
}

}
