#include <TavaroVision/Scanning/Private/MendedText.h>

#include <numeric>
#include <utility>

namespace tavaro {

MendedText::MendedText(std::string read) : text_(std::move(read)), origins_(text_.size() + 1) {
    std::iota(origins_.begin(), origins_.end(), std::size_t{0});
}

void MendedText::replace(std::size_t at, std::size_t length, std::string_view with) {
    if (std::string_view(text_).substr(at, length) == with) return;
    auto const start = origins_[at], end = origins_[at + length];
    std::vector<std::size_t> origins;
    for (std::size_t i = 0; i < with.size(); ++i) origins.push_back(start + i * (end - start) / with.size());
    auto const first = origins_.begin() + static_cast<std::ptrdiff_t>(at);
    auto const next = origins_.erase(first, first + static_cast<std::ptrdiff_t>(length));
    origins_.insert(next, origins.begin(), origins.end());
    text_.replace(at, length, with);
    isMended_ = true;
}

}
