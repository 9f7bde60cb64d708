#include <TavaroCore/Privacy/Private/Claims.h>

#include <algorithm>

namespace tavaro {

namespace {

std::string labelOf(SensitiveKind kind) {
    return kind == SensitiveKind::privateKey ? "-----BEGIN … PRIVATE KEY-----" : std::string(displayName(kind));
}

}

std::vector<Claims::Claim>::iterator Claims::firstEndingAfter(std::size_t at) {
    return std::partition_point(claims_.begin(), claims_.end(), [&](Claim const& claim) { return claim.end <= at; });
}

void Claims::claim(SensitiveKind kind, std::size_t start, std::size_t end, Overlap overlap) {
    auto next = firstEndingAfter(start);
    while (start < end) {
        bool const isMet = next != claims_.end() && next->start < end;
        if (isMet && overlap == Overlap::dropped) return;
        auto const border = isMet ? next->start : end;
        if (start < border) next = std::next(claims_.insert(next, {start, border, kind}));
        if (!isMet) return;
        start = next->end;
        ++next;
    }
}

void Claims::reserve(std::size_t start, std::size_t end) {
    auto const next = firstEndingAfter(start);
    if (start < end && (next == claims_.end() || next->start >= end)) claims_.insert(next, {start, end, std::nullopt});
}

bool Claims::touches(std::size_t start, std::size_t end) const {
    auto const next =
        std::partition_point(claims_.begin(), claims_.end(), [&](auto const& c) { return c.end <= start; });
    return next != claims_.end() && next->start < end;
}

bool Claims::grow(SensitiveKind kind, std::size_t border, std::size_t end) {
    auto const claim = std::find_if(claims_.begin(), claims_.end(), [&](Claim const& c) { return c.end == border; });
    if (claim == claims_.end() || claim->kind != kind) return false;
    auto const limit = std::next(claim) == claims_.end() ? end : std::min(end, std::next(claim)->start);
    claim->end = std::max(claim->end, limit);
    return true;
}

std::vector<SensitiveMatch> Claims::take() {
    std::vector<SensitiveMatch> matches;
    for (auto const& claim : claims_) {
        if (claim.kind) matches.push_back({*claim.kind, claim.start, claim.end - claim.start, labelOf(*claim.kind)});
    }
    claims_.clear();
    return matches;
}

}
