#include <TavaroVision/Scanning/Private/ScreenLines.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroVision/Tracking/Private/ScreenHistory.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

constexpr int margin = 2; // pixels of a line's picture around its ink
constexpr std::size_t mostMemories = 600, mostMemoryBytes = std::size_t{30} << 20;
constexpr double movingInterval = 0.6; // seconds
constexpr double longEnough = 0.5;     // seconds after it was read, to be read again
constexpr double shortestStay = 0.2;   // seconds after it was read; what goes before was part of a film

PixelBox shared(PixelBox const& a, PixelBox const& b) {
    int const x = std::max(a.x, b.x), y = std::max(a.y, b.y);
    return {x, y, std::min(a.right(), b.right()) - x, std::min(a.bottom(), b.bottom()) - y};
}

std::int64_t areaOf(PixelBox const& box) { return box.isEmpty() ? 0 : std::int64_t{box.width} * box.height; }

PixelBox grown(PixelBox const& box, int by, GrayView const& within) {
    return shared({box.x - by, box.y - by, box.width + 2 * by, box.height + 2 * by},
                  {0, 0, within.width, within.height});
}

std::size_t bytesOf(TextPatch const& patch) {
    return static_cast<std::size_t>(patch.width()) * static_cast<std::size_t>(patch.height());
}

bool isNear(int a, int b, double distance) { return std::abs(a - b) <= distance; }

/// Whether it need not be read. Of what is moving codecs leave less: it is read again now and then, better perhaps.
bool isKnownStill(ScreenLine const& line, double now) {
    auto const& place = line.place;
    if (place.presence.isWhole) return true;
    return !place.velocity.isNone() && place.presence.isMost() && now - line.readAt < movingInterval;
}

/// Whether a line says that it has something private.
bool seemsToAnnounce(ScreenLine const& line) {
    constexpr std::array<std::string_view, 9> signs{"@",    "pass", "secret", "token", "bearer",
                                                    "card", "call", "phone",  "tel"};
    return std::ranges::any_of(line.words, [&](ReadWord const& word) {
        std::string text = word.text;
        std::ranges::transform(text, text.begin(), lower);
        return std::ranges::any_of(signs, [&](auto sign) { return text.find(sign) != text.npos; });
    });
}

std::vector<ReadWord> wordsBeside(ReadLine&& line, PixelBox const& corner) {
    std::vector<ReadWord> words;
    for (auto& word : line.words) {
        if (word.text.empty()) continue; // however unsure: of keys the reader never is sure
        word.box.x -= corner.x;
        word.box.y -= corner.y;
        words.push_back(std::move(word));
    }
    for (std::size_t i = 0; i + 1 < words.size(); ++i) { // no word is below the next
        auto& box = words[i].box;
        if (words[i + 1].box.x > box.x) box.width = std::min(box.width, words[i + 1].box.x - box.x);
    }
    return words;
}

}

struct ScreenLines::Fresh {
    TextLine line;
    PixelBox box; // with its margin
    std::shared_ptr<TextPatch const> patch;
    std::optional<std::vector<ReadWord>> words;
    bool isAgain = false;
};

void ReadMemory::keep(std::shared_ptr<TextPatch const> const& patch, std::vector<ReadWord> words) {
    memories_.push_front({patch, std::move(words)});
    bytes_ += bytesOf(*patch);
    while (memories_.size() > mostMemories || bytes_ > mostMemoryBytes) {
        bytes_ -= bytesOf(*memories_.back().patch);
        memories_.pop_back();
    }
}

std::optional<std::vector<ReadWord>> ReadMemory::recall(TextPatch const& patch) {
    for (auto& memory : memories_) {
        auto const& old = *memory.patch;
        if (!isNear(old.width(), patch.width(), 1) || !isNear(old.height(), patch.height(), 1)) continue;
        auto const& smaller = old.width() * old.height() <= patch.width() * patch.height() ? old : patch;
        auto const& larger = &smaller == &old ? patch : old;
        for (int dy = 0; dy <= larger.height() - smaller.height(); ++dy) {
            for (int dx = 0; dx <= larger.width() - smaller.width(); ++dx) {
                if (smaller.isSame(larger.view(), dx, dy)) return memory.words;
            }
        }
    }
    return std::nullopt;
}

std::vector<TrackedText*> ScreenLines::places() {
    std::vector<TrackedText*> places;
    for (auto& line : lines_) places.push_back(&line.place);
    return places;
}

/// Of two lines at one place only that can be there that is more alike.
bool ScreenLines::isElsewhere(ScreenLine const& line, GrayView const& picture) const {
    auto const box = line.place.box();
    auto const slack = 0.4 * line.place.patch->letterHeight();
    auto const differenceOf = [&](ScreenLine const& one) {
        return one.place.patch->difference(picture, one.place.x, one.place.y);
    };
    return std::ranges::any_of(lines_, [&](ScreenLine const& other) {
        auto const there = other.place.box();
        bool const isThere = &other != &line && isNear(there.x, box.x, slack) && isNear(there.y, box.y, slack) &&
                             isNear(there.right(), box.right(), slack) && isNear(there.bottom(), box.bottom(), slack);
        return isThere && differenceOf(other) < differenceOf(line);
    });
}

std::vector<PixelBox> ScreenLines::dropLost(double now, GrayView const& picture) {
    std::set<ScreenLine const*> lost;
    for (auto const& line : lines_) {
        if (!line.place.presence.isLegible() || isElsewhere(line, picture)) lost.insert(&line);
    }
    auto const isLost = [&](ScreenLine const& line) { return lost.contains(&line); };
    std::vector<PixelBox> fleeting;
    for (auto const& line : lines_) {
        if (isLost(line) && now - line.readAt < shortestStay) fleeting.push_back(line.place.box());
    }
    std::deque<ScreenLine> rest;
    for (auto& line : lines_) {
        if (!isLost(line)) rest.push_back(std::move(line));
    }
    isNew_ |= !lost.empty();
    lines_ = std::move(rest);
    return fleeting;
}

std::vector<PixelBox> ScreenLines::wholeBoxes(double now) const {
    std::vector<PixelBox> boxes;
    for (auto const& line : lines_) {
        if (!isKnownStill(line, now)) continue;
        auto box = line.place.box();
        int const spacing = line.place.patch->letterHeight() / 3;
        boxes.push_back({box.x, box.y - spacing, box.width, box.height + 2 * spacing});
    }
    return boxes;
}

std::vector<PixelBox> ScreenLines::takeDoubtful(double now) {
    std::vector<PixelBox> boxes;
    for (auto& line : lines_) {
        auto const& place = line.place;
        bool const stands = place.velocity.isNone() && place.presence.isWhole && now - line.readAt >= longEnough;
        if (!stands || line.isSettled) continue;
        line.isSettled = true;
        line.isDoubtful = !line.isPrivate && seemsToAnnounce(line);
        if (line.isDoubtful) boxes.push_back(place.box());
    }
    return boxes;
}

bool ScreenLines::takeIsNew() { return std::exchange(isNew_, false); }

/// The same line, as it was when it was read.
ScreenLine const* ScreenLines::known(TextLine const& line, PixelBox const& box, double now) const {
    for (auto const& old : lines_) {
        auto const place = old.place.box();
        bool const isThere = isNear(place.x, box.x, 0.6 * line.letterHeight) &&
                             isNear(place.right(), box.right(), 0.6 * line.letterHeight) &&
                             isNear(place.y, box.y, 0.4 * line.letterHeight) &&
                             isNear(place.bottom(), box.bottom(), 0.4 * line.letterHeight);
        if (isThere && isKnownStill(old, now)) return &old;
    }
    return nullptr;
}

std::vector<ScreenLines::Fresh> ScreenLines::freshLines(PastFrame const& frame, std::vector<PixelBox> const& bands,
                                                        std::function<bool(PixelBox const&)> const& isDue,
                                                        std::vector<PixelBox>& withWords) {
    auto const picture = frame.picture->view();
    std::vector<Fresh> fresh;
    for (auto const& band : bands) {
        for (auto const& line : textLines(picture, band)) {
            bool const isCut = (line.box.y <= band.y && band.y > 0) ||
                               (line.box.bottom() >= band.bottom() && band.bottom() < picture.height);
            auto const box = grown(line.box, margin, picture);
            if (isCut || box.isEmpty() || !isDue(box)) continue;
            auto const* old = known(line, box, frame.time);
            bool const isAgain = old && old->isDoubtful;
            if (old && !isAgain) {
                if (!old->words.empty()) withWords.push_back(box);
                continue;
            }
            auto patch = std::make_shared<TextPatch const>(picture, box, line.letterHeight);
            auto words = isAgain ? std::nullopt : memory_.recall(*patch);
            fresh.push_back({line, box, std::move(patch), std::move(words), isAgain});
        }
    }
    return fresh;
}

void ScreenLines::readFresh(GrayView const& picture, std::vector<Fresh>& fresh) {
    std::vector<TextLine> unread;
    for (auto const& one : fresh) {
        if (!one.words) unread.push_back(one.line);
    }
    if (unread.empty()) return;
    auto read = reader_(picture, unread);
    std::size_t next = 0;
    for (auto& one : fresh) {
        if (one.words) continue;
        one.words = next < read.size() ? wordsBeside(std::move(read[next]), one.box) : std::vector<ReadWord>{};
        ++next;
        memory_.keep(one.patch, *one.words);
    }
}

/// Puts the line where others were. Cells that look as they did there are as old as they were.
void ScreenLines::replace(ScreenLine& line) {
    auto& place = line.place;
    auto const takesPlace = [&](ScreenLine const& old) {
        auto const a = old.place.box(), b = place.box();
        return 10 * areaOf(shared(a, b)) >= 3 * std::min(areaOf(a), areaOf(b));
    };
    for (auto const& old : lines_) {
        if (!takesPlace(old)) continue;
        int const dx = place.x - old.place.x, dy = place.y - old.place.y;
        auto const before = place.patch->presence(old.place.patch->view(), dx, dy);
        // Of a log's next line only the date is the same.
        if (5 * before.count < 4 * old.place.patch->inkedCells() - 5) continue;
        bool isOlder = false;
        for (std::size_t cell = 0; cell < place.since.size(); ++cell) {
            if (!before.shown[cell]) continue;
            int const middle = dx + static_cast<int>(cell) * place.patch->cellWidth() + place.patch->cellWidth() / 2;
            auto const oldCell = static_cast<std::size_t>(std::max(0, middle) / old.place.patch->cellWidth());
            if (oldCell >= old.place.since.size() || old.place.since[oldCell] >= place.since[cell]) continue;
            place.since[cell] = old.place.since[oldCell];
            isOlder = true;
        }
        if (!isOlder || old.place.path.empty() || place.path.empty()) continue;
        std::vector<PathPoint> path;
        for (auto const& point : old.place.path) {
            if (point.time < place.path.front().time) path.push_back({point.time, point.x + dx, point.y + dy});
        }
        place.path.insert(place.path.begin(), path.begin(), path.end());
    }
    std::erase_if(lines_, takesPlace);
}

std::vector<PixelBox> ScreenLines::read(ScreenHistory const& history, ChangedTiles const& tiles,
                                        std::vector<PixelBox> const& bands,
                                        std::function<bool(PixelBox const&)> const& isDue) {
    std::vector<PixelBox> withWords;
    auto const picture = history.last().picture->view();
    auto fresh = freshLines(history.last(), bands, isDue, withWords);
    readFresh(picture, fresh);
    BackTracker tracker(history, tiles);
    std::vector<ScreenLine> born;
    for (auto& one : fresh) {
        if (!one.words->empty()) withWords.push_back(one.box);
        ScreenLine line{tracker.trackedFrom(one.patch, one.box.x, one.box.y), std::move(*one.words),
                        history.last().time};
        line.isSettled = one.isAgain;
        replace(line);
        born.push_back(std::move(line));
    }
    isNew_ |= !born.empty();
    for (auto& line : born) lines_.push_back(std::move(line));
    return withWords;
}

}
