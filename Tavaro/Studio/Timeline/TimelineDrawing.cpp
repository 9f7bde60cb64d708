#include <Tavaro/Studio/Timeline/TimelineDrawing.h>

#include <Tavaro/Studio/Timeline/ItemText.h>
#include <Tavaro/Studio/Timeline/RulerTicks.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroVoice/Voiceover/LineAudio.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace tavaro {

namespace {

constexpr double mergedBelow = 3; // points: narrower neighbours are one block
constexpr double leastBox = 2;    // points: what is shorter is drawn as wide
constexpr double titleStrip = 19; // of a clip, above its stills
constexpr double soundStrip = 13; // of a sound, above its wave
constexpr double labelInset = 7;
constexpr double leastLabelWidth = 22;
constexpr double markSize = 12; // of what has no length

QColor faded(QColor color, double share) {
    color.setAlphaF(color.alphaF() * static_cast<float>(share));
    return color;
}

QColor mixed(QColor const& a, QColor const& b, double share) {
    auto const mix = [&](int from, int to) { return static_cast<int>(std::lround(from + (to - from) * share)); };
    return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

class Drawer {
public:
    Drawer(TimelineSubject const& subject, DrawnLooks& looks)
        : subject_(subject)
        , palette_(subject.palette)
        , scene_(subject.scene)
        , view_(subject.scene.view)
        , project_(subject.scene.project)
        , looks_(looks) {}

    TimelineDrawing draw() {
        rect(TimelineDrawing::ground, {0, 0, view_.width(), view_.height()}, palette_.ground);
        auto const [first, last] = scene_.layout.lanesInView(view_);
        for (auto lane = first; lane < last; ++lane) drawLane(lane);
        drawFilmEnds();
        drawDrag();
        drawRuler();
        drawPlayhead();
        drawHeads(first, last);
        return std::move(drawing_);
    }

private:
    using Layer = TimelineDrawing::Layer;

    // Edges on whole pixels are sharp, and neighbours leave no seam.
    double snapped(double points) const { return std::round(points * looks_.pixelRatio()) / looks_.pixelRatio(); }
    QRectF snapped(QRectF const& place) const {
        return {QPointF(snapped(place.left()), snapped(place.top())),
                QPointF(snapped(place.right()), snapped(place.bottom()))};
    }

    void rect(Layer layer, QRectF const& place, QColor const& color) {
        drawing_.layers[layer].rects.push_back({snapped(place), color});
    }

    /// Three pictures: both ends, and a column that is stretched between them.
    void box(Layer layer, QRectF const& at, BoxLook const& look) {
        auto const place = snapped(at);
        double const end = look.border();
        if (place.width() < 2 * end || place.height() < 2 * end) {
            if (look.fill.alpha())
                drawing_.layers[layer].rects.push_back({place, look.fill});
            else if (look.edge.alpha())
                frame(layer, place, look);
            return;
        }
        auto const image = looks_.box(look, place.height());
        double const ratio = looks_.pixelRatio(), column = image.width() - 2 * end * ratio;
        auto& pictures = drawing_.layers[layer].pictures;
        auto const part = [&](double left, double width, double from, double pixels) {
            pictures.push_back(
                {QRectF(left, place.top(), width, place.height()), image, QRectF(from, 0, pixels, image.height())});
        };
        part(place.left(), end, 0, end * ratio);
        if (place.width() > 2 * end) part(place.left() + end, place.width() - 2 * end, end * ratio, column);
        part(place.right() - end, end, end * ratio + column, end * ratio);
    }

    void frame(Layer layer, QRectF const& place, BoxLook const& look) {
        double const w = std::min(look.edgeWidth, place.width());
        rect(layer, {place.left(), place.top(), w, place.height()}, look.edge);
        rect(layer, {place.right() - w, place.top(), w, place.height()}, look.edge);
        rect(layer, {place.left(), place.top(), place.width(), w}, look.edge);
        rect(layer, {place.left(), place.bottom() - w, place.width(), w}, look.edge);
    }

    /// A picture in points, as much of it as is inside of `within`.
    void picture(Layer layer, QRectF const& place, QImage const& image, QRectF const& within) {
        auto const shown = place.intersected(within);
        if (image.isNull() || shown.isEmpty()) return;
        double const sx = image.width() / place.width(), sy = image.height() / place.height();
        QRectF const source((shown.left() - place.left()) * sx, (shown.top() - place.top()) * sy, shown.width() * sx,
                            shown.height() * sy);
        drawing_.layers[layer].pictures.push_back({shown, image, source});
    }

    struct Label {
        double size = 11;
        bool isStrong = false;
        QColor color;
    };
    QImage textImage(std::string const& words, Label const& label, int widest = TextLook().widest) {
        return looks_.text({words, palette_.face, label.size, label.isStrong, label.color.rgba(), widest});
    }
    /// Text at a point, its middle at y; gives its width.
    double text(Layer layer, QPointF const& at, std::string const& words, Label const& label, QRectF const& within) {
        auto image = textImage(words, label);
        // Steps of width, so that zooming does not set every text anew.
        constexpr double step = 12;
        double const room = within.right() - at.x();
        if (image.deviceIndependentSize().width() > room) {
            image = textImage(words, label, static_cast<int>(std::max(std::floor(room / step), 1.0) * step));
        }
        auto const size = image.deviceIndependentSize();
        picture(layer, {QPointF(snapped(at.x()), snapped(at.y() - size.height() / 2)), size}, image, within);
        return size.width();
    }

    void shape(Layer layer, QPointF const& at, ShapeLook const& look) {
        QRectF const place(snapped(at.x()), snapped(at.y()), look.width, look.height);
        picture(layer, place, looks_.shape(look), place);
    }

    QRectF lanesArea() const {
        return {TimelineView::headerWidth, TimelineView::rulerHeight,
                std::max(view_.width() - TimelineView::headerWidth, 0.0),
                std::max(view_.height() - TimelineView::rulerHeight, 0.0)};
    }

    bool isSelected(UUID const& id) const { return subject_.selection.contains(id); }

    void drawLane(std::size_t number) {
        auto const& lane = scene_.layout.lanes()[number];
        double const top = TimelineView::rulerHeight - view_.scrollY() + lane.top;
        rect(TimelineDrawing::ground,
             {TimelineView::headerWidth, top, view_.width() - TimelineView::headerWidth, lane.height}, palette_.lane);
        double const point = view_.secondsPerPoint();
        auto visible = view_.visible();
        visible = {visible.start - markSize * point, visible.duration + 2 * markSize * point};
        auto const [first, last] = scene_.layout.rowsInView(view_, lane);
        for (auto row = first; row < last; ++row) {
            auto const items = lane.index.row(row);
            for (auto const& block : lane.index.blocks(row, visible, mergedBelow * point, point)) {
                auto const of = items.subspan(block.first, block.count);
                if (block.count == 1)
                    drawItem(lane, row, of.front());
                else
                    drawBlock(lane, row, block, of);
            }
        }
    }

    QRectF placeOf(Lane const& lane, std::size_t row, TimeRange const& range) const {
        auto const box = scene_.layout.box(view_, lane, row, range);
        // Only what is in view, with its round ends out of it: an hour of one clip is no giant node.
        double const left = std::max(box.x, TimelineView::headerWidth - 40),
                     right = std::min(box.right(), view_.width() + 40);
        return {left, box.y, std::max(right - left, leastBox), box.height};
    }

    void drawBlock(Lane const& lane, std::size_t row, LaneBlock const& block, std::span<LaneItem const> items) {
        auto const& colors = palette_.of(items.front().kind);
        auto const place = placeOf(lane, row, {block.start, block.end - block.start});
        bool const hasSelected = !subject_.selection.empty() &&
                                 std::ranges::any_of(items, [&](auto const& item) { return isSelected(item.id); });
        box(TimelineDrawing::items, place,
            {.fill = mixed(colors.fill, colors.edge, 0.45), .edge = {}, .radius = 2, .edgeWidth = 0});
        if (hasSelected) drawSelection(place);
    }

    void drawItem(Lane const& lane, std::size_t row, LaneItem const& item) {
        if (item.kind == LaneItemKind::cameraMove) return drawMark(lane, row, item);
        auto place = placeOf(lane, row, {item.start, item.duration()});
        if (place.width() > 8) place.adjust(0.5, 0, -0.5, 0);
        box(TimelineDrawing::items, place, lookOf(lane, item));
        if (place.width() >= 8 && !lane.isCollapsed) drawInside(lane, row, item, place);
        if (isSelected(item.id)) drawSelection(place);
    }

    BoxLook lookOf(Lane const& lane, LaneItem const& item) const {
        auto const& colors = palette_.of(item.kind);
        BoxLook look{.fill = colors.fill, .edge = colors.edge, .radius = lane.rowHeight > 40 ? 6.0 : 5.0};
        if (lane.rowHeight < 22) look.radius = 3;
        if (subject_.hovered == item.id) look.fill = mixed(look.fill, colors.edge, 0.35);
        bool const isQuiet = lane.isMuted || (item.kind == LaneItemKind::voiceLine && isUnspoken(item)) ||
                             (item.kind == LaneItemKind::silence && !project_.silences[item.index].isRemoved) ||
                             (item.kind == LaneItemKind::redaction && !(*project_.redactions)[item.index].isEnabled);
        if (isQuiet) {
            look.fill = faded(look.fill, 0.45);
            look.edge = faded(look.edge, 0.6);
        }
        return look;
    }

    bool isUnspoken(LaneItem const& item) const {
        auto const& plan = *project_.voiceover;
        return needsGeneration(plan.segments[item.index], plan.voice);
    }

    void drawSelection(QRectF const& place) {
        box(TimelineDrawing::front, place,
            {.fill = Qt::transparent, .edge = palette_.selection, .radius = 5, .edgeWidth = 2});
    }

    void drawInside(Lane const& lane, std::size_t row, LaneItem const& item, QRectF const& place) {
        switch (item.kind) {
        case LaneItemKind::clip: drawClip(item, place); break;
        case LaneItemKind::zoom: drawRamps(lane, row, item, place); break;
        case LaneItemKind::audioClip: drawWave(lane, item, place); break;
        default: break;
        }
        drawLabel(lane, item, place);
    }

    void drawLabel(Lane const& lane, LaneItem const& item, QRectF const& place) {
        auto const shown = place.intersected(lanesArea());
        if (shown.width() < leastLabelWidth || place.height() < 13) return;
        // The name of what begins before the view is read at the view's edge.
        auto const within = shown.adjusted(labelInset, 0, -4, 0);
        if (item.kind == LaneItemKind::clip) return drawTitle(lane, item, within, place.top() + titleStrip / 2 + 0.5);
        auto const words = itemLabel(project_, lane, item);
        if (words.empty()) return;
        bool const isSound = item.kind == LaneItemKind::audioClip;
        auto const& colors = palette_.of(item.kind);
        Label const label{.size = isSound ? 10.0 : 11.0,
                          .isStrong = item.kind == LaneItemKind::zoom,
                          .color = lane.isMuted ? faded(colors.text, 0.6) : colors.text};
        double const y = isSound ? place.top() + soundStrip / 2 + 1 : place.center().y();
        text(TimelineDrawing::labels, {within.left(), y}, words, label, within);
    }

    /// A clip's name, and behind it what is special about how it plays; where only one has room, that.
    void drawTitle(Lane const& lane, LaneItem const& item, QRectF const& within, double y) {
        auto const& clip = project_.timeline.clips[item.index];
        auto const words = itemLabel(project_, lane, item);
        Label const label{.isStrong = true, .color = palette_.of(item.kind).text};
        double const nameWidth = textImage(words, label).deviceIndependentSize().width() + 6;
        auto badge = badgeOf(clip);
        if (widthOfBadge(badge) > within.width() + labelInset) badge = speedBadge(clip);
        bool const hasName = badge.empty() || nameWidth + widthOfBadge(badge) <= within.width();
        if (hasName) text(TimelineDrawing::labels, {within.left(), y}, words, label, within);
        if (badge.empty() || widthOfBadge(badge) > within.width() + labelInset) return;
        QRectF const place(within.left() + (hasName ? nameWidth : -3), y - 7, widthOfBadge(badge), 14);
        box(TimelineDrawing::marks, place,
            {.fill = palette_.of(item.kind).wave, .edge = Qt::transparent, .radius = 6, .edgeWidth = 0});
        text(TimelineDrawing::labels, {place.left() + 5, y}, badge, badgeLabel(), place.adjusted(0, 0, 2, 0));
    }

    double widthOfBadge(std::string const& badge) {
        return badge.empty() ? 0 : textImage(badge, badgeLabel()).deviceIndependentSize().width() + 10;
    }

    Label badgeLabel() const { return {.size = 10, .isStrong = true, .color = palette_.of(LaneItemKind::clip).fill}; }

    static std::string badgeOf(VideoClip const& clip) {
        auto words = speedBadge(clip);
        if (clip.isMuted) words += words.empty() ? "Muted" : "  Muted";
        return words;
    }

    /// Stills side by side, each of the moment at its left side.
    void drawClip(LaneItem const& item, QRectF const& place) {
        auto const& clip = project_.timeline.clips[item.index];
        auto const area = place.adjusted(2, titleStrip, -2, -2);
        if (!subject_.stills || area.height() < 12 || area.width() < 6) return;
        auto const shown = area.intersected(lanesArea());
        double const aspect = project_.sourceSize.height > 0 ? project_.sourceSize.aspect() : 16.0 / 9;
        double const width = std::clamp(area.height() * aspect, 20.0, 400.0);
        double const origin = view_.x(clip.start) + 2;
        double const first = std::floor((shown.left() - origin) / width);
        int const height = static_cast<int>(std::lround(area.height() * looks_.pixelRatio()));
        double const apart = width * view_.secondsPerPoint() * std::max(clip.speed, 0.01) / 2;
        for (double n = std::max(first, 0.0); origin + n * width < shown.right(); ++n) {
            double const x = origin + n * width;
            double const source =
                clip.sourceStart + std::clamp(view_.time(x) - clip.start, 0.0, clip.duration) * clip.speed;
            auto const still = subject_.stills->picture({clip.asset, height, FilmStill::momentFor(source, apart)});
            picture(TimelineDrawing::items, {x, area.top(), width, area.height()}, still, shown);
        }
    }

    void drawRamps(Lane const& lane, std::size_t row, LaneItem const& item, QRectF const& place) {
        auto const whole = scene_.layout.box(view_, lane, row, {item.start, item.duration()});
        auto const& zoom = project_.zoomEvents[item.index];
        QColor const shadow = faded(palette_.lane, 0.62);
        auto const ramp = [&](ShapeLook::Form form, double left, double seconds) {
            double const width = std::min(seconds / view_.secondsPerPoint(), whole.width);
            if (width < 3) return;
            picture(TimelineDrawing::marks, {left, place.top() + 1, width, place.height() - 2},
                    looks_.shape({form, shadow.rgba(), 64, 24}), place.adjusted(1, 1, -1, -1));
        };
        ramp(ShapeLook::Form::aboveRampIn, whole.x, zoom.rampIn);
        ramp(ShapeLook::Form::aboveRampOut,
             whole.right() - std::min(zoom.rampOut / view_.secondsPerPoint(), whole.width), zoom.rampOut);
        if (subject_.hovered != item.id && !isSelected(item.id)) return;
        auto const handles = rampHandles(scene_, item, whole.width);
        if (!handles) return;
        for (double const x : {whole.x + handles->in, whole.right() - handles->out}) {
            box(TimelineDrawing::front, {x - 4, place.top() + 2, 8, 8},
                {.fill = palette_.selection, .edge = palette_.of(item.kind).fill, .radius = 3, .edgeWidth = 1});
        }
    }

    void drawWave(Lane const& lane, LaneItem const& item, QRectF const& place) {
        if (!subject_.waves || lane.trackIndex >= project_.audioTracks.size()) return;
        auto const& track = project_.audioTracks[lane.trackIndex];
        auto const& clip = track.clips[item.index];
        if (!(clip.speed > 0)) return;
        auto const area = place.adjusted(1, lane.rowHeight > 40 ? soundStrip : 2, -1, -2);
        auto const shown = area.intersected(lanesArea());
        double const pixel = view_.secondsPerPoint() * clip.speed / looks_.pixelRatio();
        auto const color = faded(palette_.of(item.kind).wave, lane.isMuted ? 0.4 : 1);
        WaveTile tile{clip.asset, WaveTile::scaleFor(pixel), 0,
                      static_cast<int>(std::lround(area.height() * looks_.pixelRatio())), color.rgba()};
        auto const sourceAt = [&](double x) { return clip.sourceStart + (view_.time(x) - clip.start) * clip.speed; };
        auto const xAt = [&](double source) { return view_.x(clip.start + (source - clip.sourceStart) / clip.speed); };
        // What is played quieter is drawn lower.
        double const gain = std::clamp(clip.gain * track.gain, 0.08, 1.0);
        double const height = area.height() * gain, top = area.center().y() - height / 2;
        tile.number = static_cast<std::int64_t>(std::max(0.0, std::floor(sourceAt(shown.left()) / tile.seconds())));
        for (; xAt(tile.start()) < shown.right(); ++tile.number) {
            double const left = xAt(tile.start()), right = xAt(tile.start() + tile.seconds());
            picture(TimelineDrawing::items, {left, top, right - left, height}, subject_.waves->picture(tile), shown);
        }
    }

    void drawMark(Lane const& lane, std::size_t row, LaneItem const& item) {
        auto const at = scene_.layout.box(view_, lane, row, {item.start, 0});
        double const size = std::min(markSize, at.height);
        QRectF const place(at.x - size / 2, at.y + (at.height - size) / 2, size, size);
        auto const& colors = palette_.of(item.kind);
        auto const fill = subject_.hovered == item.id ? colors.wave : colors.edge;
        box(TimelineDrawing::items, place,
            {.fill = fill, .edge = colors.text, .radius = size / 2 - 1.5, .edgeWidth = 1});
        if (isSelected(item.id)) drawSelection(place.adjusted(-2, -2, 2, 2));
    }

    /// Where the edit begins and ends.
    void drawFilmEnds() {
        for (double const time : {0.0, project_.duration()}) {
            double const x = view_.x(time);
            if (x >= TimelineView::headerWidth && x <= view_.width())
                rect(TimelineDrawing::ground, {x, TimelineView::rulerHeight, 1, view_.height()}, palette_.line);
        }
    }

    void drawDrag() {
        if (subject_.marquee) {
            auto const& area = *subject_.marquee;
            box(TimelineDrawing::front, {area.x, area.y, area.width, area.height},
                {.fill = palette_.marquee, .edge = faded(palette_.marquee, 3), .radius = 2, .edgeWidth = 1});
        }
        auto const mark = [&](double time, double width) {
            rect(TimelineDrawing::front, {view_.x(time) - width / 2, TimelineView::rulerHeight, width, view_.height()},
                 palette_.caught);
        };
        if (subject_.caught) mark(*subject_.caught, 1);
        if (subject_.gap) mark(*subject_.gap, 3);
    }

    void drawRuler() {
        double const height = TimelineView::rulerHeight;
        rect(TimelineDrawing::ruler, {TimelineView::headerWidth, 0, view_.width(), height}, palette_.ruler);
        rect(TimelineDrawing::ruler, {TimelineView::headerWidth, height - 1, view_.width(), 1}, palette_.line);
        drawRange();
        QRectF const within(TimelineView::headerWidth, 0, view_.width() - TimelineView::headerWidth, height);
        auto visible = view_.visible();
        double const room = 100 * view_.secondsPerPoint(); // labels that begin left of it
        visible = {visible.start - room, visible.duration + room};
        for (auto const& tick : rulerTicks(visible, {view_.secondsPerPoint(), subject_.framesPerSecond})) {
            double const x = view_.x(tick.time), length = tick.label.empty() ? 5 : 11;
            if (x >= TimelineView::headerWidth)
                rect(TimelineDrawing::ruler, {x, height - 1 - length, 1, length}, palette_.tick);
            if (!tick.label.empty())
                text(TimelineDrawing::ruler, {x + 5, 11}, tick.label, {.size = 10, .color = palette_.rulerText},
                     within);
        }
    }

    /// On the ruler, and as a tint of what lies below.
    void drawRange() {
        auto const& range = subject_.range;
        if (range.duration <= 0) return;
        double const from = std::max(view_.x(range.start), TimelineView::headerWidth);
        double const to = std::min(view_.x(range.end()), view_.width());
        if (to <= from) return;
        double const height = TimelineView::rulerHeight;
        rect(TimelineDrawing::front, {from, height, to - from, view_.height()}, palette_.marquee);
        rect(TimelineDrawing::ruler, {from, 0, to - from, height - 1}, palette_.marquee);
        rect(TimelineDrawing::ruler, {from, height - 4, to - from, 3}, palette_.selection);
    }

    void drawPlayhead() {
        double const x = snapped(view_.x(scene_.playhead));
        if (x < TimelineView::headerWidth - 6 || x > view_.width() + 6) return;
        constexpr int width = 13, height = 17;
        rect(TimelineDrawing::top, {x - 0.5, TimelineView::rulerHeight - 6, 1.5, view_.height()}, palette_.playhead);
        shape(TimelineDrawing::top, {x - width / 2.0 + 0.25, TimelineView::rulerHeight - height - 1},
              {ShapeLook::Form::playhead, palette_.playhead.rgba(), width, height});
    }

    void drawHeads(std::size_t first, std::size_t last) {
        QRectF const column(0, TimelineView::rulerHeight, TimelineView::headerWidth,
                            view_.height() - TimelineView::rulerHeight);
        rect(TimelineDrawing::heads, {0, 0, TimelineView::headerWidth, view_.height()}, palette_.head);
        for (auto number = first; number < last; ++number) {
            auto const& lane = scene_.layout.lanes()[number];
            double const top = TimelineView::rulerHeight - view_.scrollY() + lane.top;
            double const middle = top + std::min(lane.height / 2, 32.0);
            auto const& color = palette_.of(itemKindOf(lane.kind)).edge;
            box(TimelineDrawing::heads, QRectF(6, top + 2, 3, lane.height - 4),
                {.fill = color, .edge = {}, .radius = 1, .edgeWidth = 0});
            auto const form = lane.isCollapsed ? ShapeLook::Form::folded : ShapeLook::Form::unfolded;
            shape(TimelineDrawing::heads, {15, middle - 5}, {form, palette_.headTextFaint.rgba(), 10, 10});
            text(TimelineDrawing::heads, {30, middle}, lane.name,
                 {.size = lane.isCollapsed ? 9.0 : 12.0,
                  .color = lane.isMuted ? palette_.headTextFaint : palette_.headText},
                 column.adjusted(0, 0, -8, 0));
        }
        rect(TimelineDrawing::corner, {0, 0, TimelineView::headerWidth, TimelineView::rulerHeight}, palette_.head);
        rect(TimelineDrawing::corner, {TimelineView::headerWidth - 1, 0, 1, view_.height()}, palette_.line);
        rect(TimelineDrawing::corner, {0, TimelineView::rulerHeight - 1, TimelineView::headerWidth, 1}, palette_.line);
        text(TimelineDrawing::corner, {15, TimelineView::rulerHeight / 2 - 0.5},
             Timecode::format(std::max(scene_.playhead, 0.0), Timecode::Fraction::hundredths),
             {.size = 13, .isStrong = true, .color = palette_.headText},
             {0, 0, TimelineView::headerWidth - 4, TimelineView::rulerHeight});
    }

    static LaneItemKind itemKindOf(LaneKind kind) {
        switch (kind) {
        case LaneKind::film: return LaneItemKind::clip;
        case LaneKind::zooms: return LaneItemKind::zoom;
        case LaneKind::overlays: return LaneItemKind::overlay;
        case LaneKind::captions: return LaneItemKind::caption;
        case LaneKind::camera: return LaneItemKind::scene;
        case LaneKind::sound: return LaneItemKind::audioClip;
        case LaneKind::voiceover: return LaneItemKind::voiceLine;
        case LaneKind::silences: return LaneItemKind::silence;
        case LaneKind::redactions: return LaneItemKind::redaction;
        }
        return LaneItemKind::clip;
    }

    TimelineSubject const& subject_;
    TimelinePalette const& palette_;
    TimelineScene const& scene_;
    TimelineView const& view_;
    DemoProject const& project_;
    DrawnLooks& looks_;
    TimelineDrawing drawing_;
};

}

TimelineDrawing drawTimeline(TimelineSubject const& subject, DrawnLooks& looks) {
    auto drawing = Drawer(subject, looks).draw();
    looks.paintEnds();
    if (subject.waves) subject.waves->paintEnds();
    if (subject.stills) subject.stills->paintEnds();
    return drawing;
}

}
