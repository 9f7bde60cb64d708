#include <TavaroVision/Scanning/Private/ScreenScanner.h>

#include <TavaroVision/Scanning/Private/ScreenClassifier.h>
#include <TavaroVision/Tracking/Private/TrackedText.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace tavaro {

ScreenScanner::ScreenScanner(ScanTools const& tools, int width, int height)
    : tools_(tools)
    , tiles_(width, height)
    , dirty_(tiles_, tools.interval)
    , lines_(tools.reader, tools.memory)
    , covers_(tools.key, tools.found, width, height) {}

void ScreenScanner::show(GrayView const& picture, double time) {
    auto const changes = tiles_.compare(picture, time);
    if (!history_.isEmpty() && dirty_.markDue(time)) readDue();
    auto const doubtful = lines_.takeDoubtful(time);
    dirty_.ask(doubtful, time);
    if (changes == 0 && !doubtful.empty())
        return history_.add({time, std::make_shared<GrayPicture const>(picture), {}});
    if (changes == 0) {
        auto same = history_.last();
        history_.add({time, std::move(same.picture), {}});
        return;
    }
    regions_.add(tiles_, time);
    auto const before = history_.isEmpty() ? time : history_.last().time;
    auto const lastShifts = history_.isEmpty() ? std::vector<Shift>{} : history_.last().shifts;
    auto texts = lines_.places();
    for (auto* place : covers_.places()) texts.push_back(place);
    auto shifts = follow(texts, {picture, tiles_, before, time}, lastShifts);
    dirty_.addFleeting(lines_.dropLost(time, picture));
    covers_.endLost(time, picture);
    dirty_.add(lines_.wholeBoxes(time), time);
    history_.add({time, std::make_shared<GrayPicture const>(picture), std::move(shifts)});
    covers_.addKnown(history_, tiles_);
}

void ScreenScanner::readDue() {
    auto const withWords =
        lines_.read(history_, tiles_, dirty_.dueBands(), [&](PixelBox const& box) { return dirty_.isDue(box); });
    dirty_.clearDue(withWords, history_.last().time);
    if (lines_.takeIsNew()) classify();
}

void ScreenScanner::classify() {
    std::vector<PlacedLine> placed;
    for (auto const& line : lines_.lines()) {
        placed.push_back({line.place.box(), line.place.patch->letterHeight(), line.words});
    }
    BackTracker tracker(history_, tiles_);
    auto const picture = history_.last().picture->view();
    for (auto const& found : tools_.classifier.privateTexts(placed)) {
        covers_.add(found, lines_.lines()[found.line], picture, tracker);
        lines_.notePrivate(found.line);
    }
}

std::vector<ScreenFinding> ScreenScanner::finish(double end) {
    if (!history_.isEmpty() && dirty_.markAll()) readDue();
    return covers_.take(end, regions_);
}

}
