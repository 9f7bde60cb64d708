#include <Tavaro/Studio/Preview/LookStills.h>

#include <Tavaro/Model/Operations/Perform.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroRender/Painter/FramePainter.h>

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr auto settled = 250ms;
constexpr double keptSeconds = 20; // that media stay open after the last still
constexpr double closeUp = 7;
constexpr qsizetype mostBackgrounds = qsizetype{8} << 20; // bytes; all of them, at the sizes of a few windows

class Unwanted : public Error {
public:
    Unwanted() : Error("Nobody waits for this still any more.") {}
};

/// What shows no picture of a recording: its only clip begins later.
DemoProject blank(DemoProject const& document) {
    DemoProject project;
    project.sourceSize = {16, 16};
    project.canvas = {1600, 1000};
    project.timeline.clips = {{.start = 10, .duration = 1}};
    project.background = document.background;
    return project;
}

/// The film without what lies over it for a time.
DemoProject bare(DemoProject project) {
    project.zoomEvents.clear();
    project.overlays.clear();
    project.captions.isEnabled = false;
    project.intro.reset();
    project.outro.reset();
    project.exportSettings.includeWatermark = false;
    return project;
}

/// The largest size of that shape in the room; no side is smaller than what can be drawn.
Size2 sizeIn(Size2 room, Size2 shape) {
    constexpr std::int64_t smallest = 16;
    auto const ratio = static_cast<double>(shape.width) / static_cast<double>(std::max<std::int64_t>(shape.height, 1));
    auto const wide = static_cast<double>(room.width), high = static_cast<double>(room.height);
    return {std::max<std::int64_t>(smallest, std::llround(std::min(wide, high * ratio))),
            std::max<std::int64_t>(smallest, std::llround(std::min(high, wide / ratio)))};
}

/// Of a look that depends on nothing else; else empty.
QString keyOf(LookStills::Look const& look) {
    if (look.subject != LookSubject::background) return {};
    auto key = fmt::format("{}x{}", look.room.width, look.room.height);
    for (auto const& change : look.changes) key += change.path + encodeJSON(change.value);
    return QString::fromStdString(key);
}

LookStills::Sample captioned(DemoProject const& document) {
    auto project = blank(document);
    project.background = {BackgroundStyle::Solid{RGBAColor::rgb(0x2B3140)}};
    project.captions = document.captions;
    project.captions.isEnabled = true;
    project.captions.position = {0.5, 0.5};
    project.captions.fontSize = 150; // to be read on a picture of a thumb's size
    project.captions.animation = CaptionAnimation::none;
    project.captions.cues = {{.start = 0, .duration = 4, .text = "Say it"}};
    return {std::move(project), 1};
}

/// The camera's picture, over all of the canvas.
std::optional<LookStills::Sample> filmed(DemoProject const& document, double at) {
    if (!document.cameraAsset || document.timeline.clips.empty()) return std::nullopt;
    auto project = bare(document);
    project.camera.isEnabled = true;
    project.camera.hidesWhenSilent = false;
    project.layout = {};
    project.cameraMoves.clear();
    project.layoutCues = {{.time = 0, .scene = SceneLayout::cameraOnly}};
    return LookStills::Sample{std::move(project), at};
}

/// The click that is shown nearest to a time, and when.
std::optional<std::pair<ClickEvent, double>> clickNear(DemoProject const& document, double time) {
    std::optional<std::pair<ClickEvent, double>> nearest;
    for (auto const& click : document.metadata->clicks) {
        auto const shown = document.timeline.timelineTime(click.t);
        if (shown && (!nearest || std::abs(*shown - time) < std::abs(nearest->second - time)))
            nearest = {click, *shown};
    }
    return nearest;
}

std::optional<LookStills::Sample> pointed(DemoProject const& document, double playhead) {
    auto const click = clickNear(document, playhead);
    if (!click) return std::nullopt;
    auto project = bare(document);
    project.cursor.isVisible = true;
    project.cursor.idleHideAfter = 0;
    project.camera.isEnabled = false;
    project.layoutCues.clear();
    project.screen = {};
    project.zoomEvents = {{.start = 0,
                           .duration = document.duration(),
                           .rampIn = 0,
                           .rampOut = 0,
                           .center = click->first.position,
                           .scale = closeUp}};
    // Far enough into the click for its effect to be seen.
    auto const at = std::min(click->second + 0.35 * project.cursor.clickDuration, document.duration());
    return LookStills::Sample{std::move(project), at};
}

}

std::optional<LookStills::Sample> LookStills::sample(LookSubject subject, DemoProject const& document,
                                                     double playhead) {
    switch (subject) {
    case LookSubject::background: return Sample{blank(document), 0};
    case LookSubject::camera: return filmed(document, playhead);
    case LookSubject::pointer: return pointed(document, playhead);
    case LookSubject::captions: return captioned(document);
    case LookSubject::film: break;
    }
    if (document.timeline.clips.empty()) return std::nullopt;
    return Sample{bare(document), playhead};
}

/// The painter, while stills are asked for.
struct LookStills::Easel {
    explicit Easel(ProjectPackage of) : package(std::move(of)) {}

    ProjectPackage const package;
    std::optional<FramePainter> painter;

    QImage drawn(Sample const& sample, Size2 size);
};

QImage LookStills::Easel::drawn(Sample const& sample, Size2 size) {
    if (!painter) painter.emplace(package, size, RendererOptions{.threads = 1}); // the film's picture has the others
    painter->resize(size);
    painter->show(sample.project);
    auto const view = painter->frame(sample.at);
    return QImage(view.pixels, view.width, view.height, view.stride, QImage::Format_RGBX8888).copy();
}

LookStills::LookStills(MainQueue& queue, EditorSession const& session)
    : session_(session)
    , easel_(std::make_shared<Easel>(session.project().package()))
    , side_(queue, "com.tavaro.looks") {
    backgrounds_.setMaxCost(mostBackgrounds);
    settling_.setSingleShot(true);
    settling_.setInterval(settled);
    auto const unsettle = [this] {
        samples_.clear();
        settling_.start();
    };
    connect(&session, &EditorSession::documentChanged, this, unsettle);
    connect(&session, &EditorSession::playheadChanged, this, unsettle);
    connect(&settling_, &QTimer::timeout, this, &LookStills::changed);
}

LookStills::~LookStills() { side_.thread().stopTimer(); }

/// Made once for all looks of a subject: it is a copy of what may be a long film. Null where there is nothing to see.
std::shared_ptr<LookStills::Sample const> LookStills::sampleNow(LookSubject subject) {
    auto const [known, isNew] = samples_.try_emplace(subject);
    if (!isNew) return known->second;
    if (auto made = sample(subject, session_.document(), session_.playhead()))
        known->second = std::make_shared<Sample const>(std::move(*made));
    return known->second;
}

LookStills::Interest LookStills::draw(Look const& look, std::function<void(QImage const&)> answer) {
    auto const interest = std::make_shared<int const>();
    auto const wanted = sampleNow(look.subject);
    if (!wanted || look.room.width <= 0 || look.room.height <= 0) {
        answer({});
        return interest;
    }
    auto const key = keyOf(look);
    if (auto const* const known = backgrounds_.object(key)) {
        answer(QImage(*known));
        return interest;
    }
    side_.thread().stopTimer();
    side_.ask(
        [easel = easel_, still = std::weak_ptr<int const>(interest), wanted, changes = look.changes, room = look.room] {
            if (still.expired()) throw Unwanted();
            auto changed = *wanted;
            operations::apply(changed.project, changes);
            return easel->drawn(changed, sizeIn(room, changed.project.canvas));
        },
        [this, key, still = std::weak_ptr<int const>(interest),
         answer = std::move(answer)](Outcome<QImage> const& outcome) {
            side_.thread().startTimer(mediaClockNow() + keptSeconds, keptSeconds,
                                      [easel = easel_](double) { easel->painter.reset(); });
            QImage picture;
            try {
                picture = outcome.value();
            } catch (std::exception const&) {
                // A look that cannot be drawn is shown by its name alone.
            }
            if (!key.isEmpty() && !picture.isNull())
                backgrounds_.insert(key, new QImage(picture), picture.sizeInBytes());
            if (!still.expired()) answer(picture);
        });
    return interest;
}

}
