#include <TavaroAutomation/Elements/Private/CrowdSearch.h>

#include <algorithm>
#include <cmath>

namespace tavaro::atspi {

namespace {

constexpr int mostCounted = 1'000'000;   // a sheet has two billion, each of which takes its program milliseconds
constexpr std::size_t mostPlaces = 2000; // that are asked for
constexpr int mostRounds = 20;
constexpr int mostPointRounds = 3; // where children are known by place; each point may cost as much as all
constexpr int farthest = 1 << 24;  // beyond is no place

bool hasPlace(Extents const& extents) { return std::abs(extents.x) < farthest && std::abs(extents.y) < farthest; }

int clamped(double place, int first, int last) {
    return static_cast<int>(std::clamp(place, static_cast<double>(first), static_cast<double>(last)));
}

}

bool CrowdSearch::isCounted() const { return crowd_.count <= mostCounted; }

bool CrowdSearch::shows(std::optional<Extents> const& extents) const {
    return extents && !extents->intersection(crowd_.shown).isEmpty();
}

/// Before what shows as people read, or after it: -1, 1.
int CrowdSearch::side(Extents const& extents) const {
    auto const& shown = crowd_.shown;
    if (extents.y + extents.height <= shown.y) return -1;
    if (extents.y >= shown.y + shown.height) return 1;
    return extents.x + extents.width <= shown.x ? -1 : extents.x >= shown.x + shown.width ? 1 : 0;
}

CrowdSearch::Questions CrowdSearch::next() {
    if (crowd_.shown.isEmpty()) return {};
    if (auto places = nextPlaces(); !places.empty()) return {.places = std::move(places), .points = {}};
    return {.places = {}, .points = nextPoints()};
}

void CrowdSearch::addAtPlace(int place, Extents const& extents) {
    auto& child = children_[place];
    if (!shows(child) && shows(extents)) ++shown_;
    child = extents;
    area_.add(extents);
}

void CrowdSearch::addAtPoint(AreaSearch::Point const& asked, Extents const& extents, std::optional<int> place) {
    if (hasPlace(extents)) area_.learn(asked, extents);
    if (place && isCounted() && *place >= 0 && *place < crowd_.count) return addAtPlace(*place, extents);
    area_.add(extents);
    if (shows(extents)) ++shown_;
}

bool CrowdSearch::isWhole() const {
    return !isCutShort_ && !area_.isCutShort() && (shown_ > 0 || crowd_.shown.isEmpty());
}

std::vector<int> CrowdSearch::nextPlaces() {
    if (!isCounted()) return {};
    std::vector<int> wanted;
    if (children_.empty()) {
        wanted = {0, crowd_.count - 1, likelyPlace()};
    } else if (shown_ == 0) {
        if (rounds_++ < mostRounds) wanted = between();
    } else {
        std::vector<int> seeds;
        for (auto const& [place, extents] : children_) {
            if (shows(extents)) seeds.push_back(place);
        }
        for (int const seed : seeds) {
            growFrom(seed, 1, wanted);
            growFrom(seed, -1, wanted);
        }
    }
    std::ranges::sort(wanted);
    wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
    if (children_.size() + wanted.size() > mostPlaces) {
        isCutShort_ = true;
        return {};
    }
    for (int const place : wanted) children_.try_emplace(place);
    return wanted;
}

/// By how much of it is scrolled away above, or else to the left.
int CrowdSearch::likelyPlace() const {
    auto const& whole = crowd_.whole;
    auto const& shown = crowd_.shown;
    double const above = shown.y + shown.height / 2.0 - whole.y, left = shown.x + shown.width / 2.0 - whole.x;
    if (whole.height > shown.height) return clamped(crowd_.count * above / whole.height, 0, crowd_.count - 1);
    if (whole.width > shown.width) return clamped(crowd_.count * left / whole.width, 0, crowd_.count - 1);
    return 0;
}

/// Between the last that is known to be before what shows and the first that is behind it.
std::vector<int> CrowdSearch::between() const {
    struct End {
        int place;
        double y;
    };
    auto const& whole = crowd_.whole;
    End before{-1, static_cast<double>(whole.y)};
    End behind{crowd_.count, static_cast<double>(whole.y) + whole.height};
    bool isPlaced = false;
    for (auto const& [place, extents] : children_) {
        if (!extents || !hasPlace(*extents)) continue;
        isPlaced = true;
        if (side(*extents) < 0) before = {place, static_cast<double>(extents->y)};
        if (side(*extents) > 0 && behind.place == crowd_.count) behind = {place, static_cast<double>(extents->y)};
    }
    constexpr int mostVain = 3; // the first may be hidden, or none may say where it is
    if (!isPlaced && rounds_ > mostVain) return {};
    double const distance = behind.y - before.y, wanted = crowd_.shown.y + crowd_.shown.height / 2.0 - before.y;
    double const share = distance > 0 ? std::clamp(wanted / distance, 0.0, 1.0) : 0.5;
    std::vector<int> result;
    // The shares of a half and its neighbors are for children of unlike heights.
    for (double const each : {share, 0.25, 0.5, 0.75}) {
        double const likely = before.place + (behind.place - before.place) * each;
        int place = clamped(likely, before.place + 1, behind.place - 1);
        while (place < behind.place && children_.contains(place)) ++place; // it is hidden
        if (place < behind.place) result.push_back(place);
    }
    return result;
}

/// Asks for the next ones in that direction until some are beyond what shows.
void CrowdSearch::growFrom(int place, int step, std::vector<int>& wanted) {
    constexpr int atOnce = 16, mostBeyond = 3, mostMissed = 200; // rows that a filter hides, columns beside the view
    int beyond = 0, missed = 0;
    for (int at = place + step; at >= 0 && at < crowd_.count; at += step) {
        auto const known = children_.find(at);
        if (known == children_.end()) {
            for (int i = 0; i < atOnce && at >= 0 && at < crowd_.count; ++i, at += step) wanted.push_back(at);
            return;
        }
        auto const& extents = known->second;
        if (shows(extents)) return;
        bool const isBeside = extents && hasPlace(*extents) && extents->y < crowd_.shown.y + crowd_.shown.height &&
                              extents->y + extents->height > crowd_.shown.y;
        beyond = extents && !isBeside ? beyond + 1 : 0;
        if (beyond == mostBeyond) return;
        if (++missed == mostMissed) {
            isCutShort_ = true;
            return;
        }
    }
}

/// Of a grid the rows that show are apart from each other in the order of its children; a heading may be, too.
std::vector<AreaSearch::Point> CrowdSearch::nextPoints() {
    bool const saysPlaces = std::ranges::any_of(children_, [](auto const& child) { return child.second.has_value(); });
    if (saysPlaces && !crowd_.isGrid && (isCovered() || ++pointRounds_ > mostPointRounds)) return {};
    return area_.next();
}

/// Whether children show at most heights.
bool CrowdSearch::isCovered() const {
    constexpr double mostOf = 0.5; // there is room between them
    std::vector<bool> isThere(static_cast<std::size_t>(crowd_.shown.height));
    for (auto const& [place, extents] : children_) {
        if (!extents) continue;
        auto const part = extents->intersection(crowd_.shown);
        if (part.isEmpty()) continue;
        auto const begin = isThere.begin() + (part.y - crowd_.shown.y);
        std::fill(begin, begin + part.height, true);
    }
    return static_cast<double>(std::ranges::count(isThere, true)) >= mostOf * crowd_.shown.height;
}

}
