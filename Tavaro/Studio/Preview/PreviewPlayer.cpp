#include <Tavaro/Studio/Preview/PreviewPlayer.h>

#include <Tavaro/Studio/Preview/Coarseness.h>
#include <Tavaro/Studio/Preview/PictureSize.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/FilmPainter.h>
#include <TavaroRender/Painter/PaintError.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

namespace tavaro {

namespace {

constexpr double longestPause = 0.5;  // seconds between two attempts to draw what failed, while the film plays
constexpr std::size_t mostEdits = 64; // of items, before the film is copied anew
constexpr std::size_t earlierBytes = std::size_t{64} << 20; // a third of a second of 1080p at 60 frames a second
constexpr double share = 0.2;                               // of a new measurement, in what is expected of the next

bool isVisible(std::shared_ptr<DemoProject const> const& project, Size2 room) {
    return project && pictureSize(project->canvas, room) != Size2{};
}

void copyPixels(ImageView from, Image& to) {
    for (int y = 0; y < from.height; ++y) std::memcpy(to.row(y), from.row(y), 4 * static_cast<std::size_t>(from.width));
}

}

/// Everything that drawing takes; the queue's.
struct PreviewPlayer::Easel {
    explicit Easel(ProjectPackage of) : package(std::move(of)) {}

    ProjectPackage const package;
    std::optional<FramePainter> painter;
    std::optional<std::int64_t> shown; // revision that the painter shows
    Coarseness coarseness;
    double took = 0;            // seconds that drawing a picture takes
    double failedAt = 0;        // moment of the media clock; 0: the latest picture was drawn
    std::optional<double> beat; // seconds between two pictures of the film that plays; none while none does

    Wanted drawnFor; // the latest picture
    std::shared_ptr<Image const> canvas;
    std::int64_t framesDrawn = 0;

    Size2 size(Wanted const& wanted) const;
    void prepare(Wanted const& wanted, Size2 size);
    double moment(Wanted const& wanted) const;
    bool paint(Wanted const& wanted, PictureSlot& slot);
    std::shared_ptr<FramePlaces const> places(Wanted const& wanted);
    void rest();
    std::vector<std::string> lacks() const;
    std::string failure(std::exception_ptr const& error);
};

Size2 PreviewPlayer::Easel::size(Wanted const& wanted) const {
    auto const full = pictureSize(wanted.project->canvas, wanted.room);
    return wanted.motion == Motion::resting ? full : coarserSize(full, coarseness.divisor());
}

void PreviewPlayer::Easel::prepare(Wanted const& wanted, Size2 size) {
    if (!painter) {
        painter.emplace(package, size);
        painter->keepEarlier(earlierBytes);
        shown.reset();
    }
    painter->resize(size);
    painter->useZooms(wanted.zooms);
    if (shown == wanted.revision) return;
    auto film = filmProject(*wanted.project, wanted.project->exportSettings);
    for (auto const& edit : wanted.edits) putItem(film, edit);
    painter->show(film);
    shown = wanted.revision;
}

/// The end itself still shows the last frame.
double PreviewPlayer::Easel::moment(Wanted const& wanted) const {
    return std::clamp(wanted.at, 0.0, painter->duration());
}

/// Nobody takes hold of a film that plays.
std::shared_ptr<FramePlaces const> PreviewPlayer::Easel::places(Wanted const& wanted) {
    if (wanted.motion == Motion::playing) return nullptr;
    return std::make_shared<FramePlaces const>(painter->places(moment(wanted)));
}

/// False when what it drew looks as the picture before.
bool PreviewPlayer::Easel::paint(Wanted const& wanted, PictureSlot& slot) {
    auto const size = this->size(wanted);
    double const started = mediaClockNow();
    prepare(wanted, size);
    painter->expectFrames();
    double const at = moment(wanted);
    double const prepared = mediaClockNow();
    auto const pictures = painter->pictures(at);
    double const read = mediaClockNow();
    auto const view = painter->draw(at, pictures);
    bool const isSame = canvas && canvas->width() == view.width && canvas->height() == view.height &&
                        framesDrawn == painter->framesDrawn();
    if (isSame) return false;
    auto const next = slot.canvas(size);
    copyPixels(view, *next);
    canvas = next;
    framesDrawn = painter->framesDrawn();
    double const done = mediaClockNow();
    if (wanted.motion != Motion::resting) coarseness.note(read - prepared, done - read);
    took += took == 0 ? done - started : share * (done - started - took);
    return true;
}

/// Nobody looks: media are closed, and memory is free for others.
void PreviewPlayer::Easel::rest() {
    painter.reset();
    canvas.reset();
    framesDrawn = 0;
    drawnFor = {};
}

std::vector<std::string> PreviewPlayer::Easel::lacks() const {
    std::vector<std::string> sentences;
    for (auto const& dropped : painter->dropped()) sentences.push_back(dropped.sentence);
    return sentences;
}

/// In the words with which an export would fail. What was opened may be what fails, so it is opened anew the next time.
std::string PreviewPlayer::Easel::failure(std::exception_ptr const& error) {
    rest();
    failedAt = mediaClockNow();
    try {
        std::rethrow_exception(error);
    } catch (PaintError const& failed) {
        return ExportError::of(failed).what();
    } catch (std::bad_alloc const&) {
        return PaintError::noMemory().what();
    } catch (std::exception const& failed) {
        return failed.what();
    }
}

PreviewPlayer::PreviewPlayer(ProjectPackage package, FilmClock const& clock, std::function<void()> wake)
    : clock_(clock)
    , wake_(std::move(wake))
    , easel_(std::make_unique<Easel>(std::move(package))) {}

PreviewPlayer::~PreviewPlayer() {
    {
        std::lock_guard const lock(mutex_);
        wanted_ = {};
    }
    queue_.stopTimer();
}

bool PreviewPlayer::Wanted::operator==(Wanted const& other) const {
    return revision == other.revision && room == other.room && at == other.at && motion == other.motion;
}

PreviewPlayer::Wanted PreviewPlayer::wanted() const {
    std::lock_guard const lock(mutex_);
    return wanted_;
}

void PreviewPlayer::want(std::function<void(Wanted&)> const& change) {
    std::lock_guard const lock(mutex_);
    change(wanted_);
    if (std::exchange(isDrawDue_, true)) return;
    queue_.async([this] { draw(); });
}

void PreviewPlayer::show(DemoProject const& project, ZoomUse zooms) {
    auto copy = std::make_shared<DemoProject const>(project);
    want([&](Wanted& wanted) {
        wanted.project = std::move(copy);
        wanted.edits.clear();
        wanted.zooms = zooms;
        ++wanted.revision;
    });
}

void PreviewPlayer::show(DemoProject const& project, std::span<ItemPlace const> items) {
    auto const before = wanted();
    auto edits = before.edits;
    for (auto const& place : items) {
        auto const isIt = [&](ItemEdit const& each) { return itemPlace(each) == place; };
        auto const known = std::ranges::find_if(edits, isIt);
        if (known != edits.end())
            *known = itemAt(project, place);
        else
            edits.push_back(itemAt(project, place));
    }
    if (items.empty() || edits.size() > mostEdits) return show(project, before.zooms);
    want([&](Wanted& wanted) {
        wanted.edits = std::move(edits);
        ++wanted.revision;
    });
}

void PreviewPlayer::fit(Size2 room) {
    want([&](Wanted& wanted) { wanted.room = room; });
}

void PreviewPlayer::seek(double at, Pace pace) {
    want([&](Wanted& wanted) {
        wanted.at = at;
        wanted.motion = pace == Pace::dragged ? Motion::dragged : Motion::resting;
    });
}

void PreviewPlayer::follow() {
    want([](Wanted& wanted) { wanted.motion = Motion::playing; });
}

void PreviewPlayer::draw() {
    Wanted next;
    {
        std::lock_guard const lock(mutex_);
        isDrawDue_ = false;
        next = wanted_;
    }
    keepTime(next);
    if (!isVisible(next.project, next.room)) return easel_->rest();
    bool const goesOn = next.motion == Motion::playing && easel_->drawnFor.motion == Motion::playing;
    if (next.motion == Motion::playing) next.at = goesOn ? easel_->drawnFor.at : clock_.position();
    drawAt(next);
}

void PreviewPlayer::drawAt(Wanted const& next) {
    auto& easel = *easel_;
    if (next == easel.drawnFor) return;
    PreviewPicture picture{
        .at = next.at, .revision = next.revision, .size = pictureSize(next.project->canvas, next.room)};
    try {
        if (easel.paint(next, slot_)) ++drawn_;
        picture.canvas = easel.canvas;
        picture.places = easel.places(next);
        picture.problems = easel.lacks();
        easel.drawnFor = next;
        easel.failedAt = 0;
    } catch (...) {
        picture.problems.push_back(easel.failure(std::current_exception()));
    }
    if (slot_.put(std::move(picture))) wake_();
}

/// While the film plays, it is looked at once for each of its frames.
void PreviewPlayer::keepTime(Wanted const& wanted) {
    auto const fps = wanted.project ? std::clamp<std::int64_t>(wanted.project->exportSettings.fps, 1, 120) : 60;
    std::optional<double> beat;
    if (wanted.motion == Motion::playing && wanted.project) beat = 1.0 / static_cast<double>(fps);
    if (std::exchange(easel_->beat, beat) == beat) return;
    if (beat)
        queue_.startTimer(mediaClockNow(), *beat, [this](double) { tick(); });
    else
        queue_.stopTimer();
}

/// Draws the frame that the film shows by the time at which it is drawn.
void PreviewPlayer::tick() {
    auto next = wanted();
    auto const& easel = *easel_;
    if (next.motion != Motion::playing || !isVisible(next.project, next.room)) return;
    if (easel.failedAt > 0 && mediaClockNow() - easel.failedAt < longestPause) return;
    constexpr double rounding = 1e-6; // frames
    double const beat = *easel.beat;
    next.at = std::floor(clock_.position(clock_.now() + easel.took) / beat + rounding) * beat;
    // A clock that is drawn back a little takes no picture back.
    bool const isBack = easel.drawnFor.motion == Motion::playing && next.at < easel.drawnFor.at &&
                        easel.drawnFor.at - next.at < 1.5 * beat;
    if (!isBack) drawAt(next);
}

}
