#include <TavaroRender/Layers/Private/LayerList.h>

#include <algorithm>
#include <cmath>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/CanvasUnit.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Layers/Private/BoxLayers.h>
#include <TavaroRender/Layers/Private/ReadableText.h>
#include <TavaroRender/Layers/Private/SpokenCaption.h>

namespace tavaro {

namespace {

constexpr char const* watermarkText = "Made with Tavaro";
constexpr double watermarkSize = 19; // pixels at a canvas whose smaller side is 1080
constexpr double watermarkInset = 28;
constexpr double edgeInset = 0.02; // of the canvas's smaller side; bodies keep that far from its edges
constexpr double leastOpacity = 1.0 / 512;
// A box fades as what it marks leaves the recording's pane: shares of its area that are inside.
constexpr double boxGone = 0.25;
constexpr double boxWhole = 0.7;

/// The order in which overlays are drawn; nothing for those that are no layers.
std::optional<int> rankOf(Overlay const& overlay) {
    struct Rank {
        using Result = std::optional<int>;
        Result operator()(OverlayKind::Box const&) const { return 0; }
        Result operator()(OverlayKind::Arrow const&) const { return 0; }
        Result operator()(OverlayKind::Keycap const&) const { return 1; }
        Result operator()(OverlayKind::Callout const&) const { return 1; }
        Result operator()(OverlayKind::Command const&) const { return 1; }
        Result operator()(OverlayKind::Code const&) const { return 1; }
        Result operator()(OverlayKind::Title const&) const { return 2; }
        Result operator()(OverlayKind::Blur const&) const { return std::nullopt; }
        Result operator()(OverlayKind::Highlight const&) const { return std::nullopt; }
        Result operator()(OverlayKind::Mask const&) const { return std::nullopt; }
    };
    return std::visit(Rank{}, overlay.kind.content);
}

LayerSpec lookOf(FrameState const& state, double fontSize, RGBAColor const& color,
                 std::optional<RGBAColor> const& background) {
    return {.fontSize = fontSize,
            .color = color,
            .background = background,
            .canvasWidth = state.canvas.width,
            .canvasHeight = state.canvas.height};
}

double axis(double value, double side) { return (std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0.5) * side; }

CanvasPoint onCanvas(FrameState const& state, UnitPoint2 const& point) {
    return {axis(point.x, static_cast<double>(state.canvas.width)),
            axis(point.y, static_cast<double>(state.canvas.height))};
}

/// While a text is typed: how much of it is there.
std::optional<std::int64_t> typed(double share, std::int64_t count) {
    if (share >= 1) return std::nullopt;
    return static_cast<std::int64_t>(std::ceil(std::clamp(share, 0.0, 1.0) * static_cast<double>(count)));
}

class Lister {
public:
    Lister(FrameState const& state, DemoProject const& project, LayerMotion motion)
        : state_(state)
        , project_(project)
        , motion_(motion) {}

    std::vector<PlacedLayer> list() {
        if (state_.titleCard) {
            addCard(*state_.titleCard);
        } else {
            for (int rank = 0; rank < 3; ++rank) {
                for (auto const* overlay : state_.visibleOverlays) {
                    if (rankOf(*overlay) == rank) addOverlay(*overlay);
                }
            }
            if (state_.captionCue) addCaption(*state_.captionCue);
        }
        if (project_.exportSettings.includeWatermark) addWatermark();
        return std::move(layers_);
    }

private:
    void add(PlacedLayer layer, LayerPose const& pose) {
        if (!(pose.opacity > leastOpacity)) return;
        layer.opacity = std::min(pose.opacity, 1.0);
        layer.drop = pose.drop * smallerSide(state_.canvas);
        layer.scale = pose.scale;
        layers_.push_back(std::move(layer));
    }

    LayerPose pose(LayerPose const& animated) const {
        return motion_ == LayerMotion::animated ? animated : LayerPose{};
    }

    void addText(Overlay const& overlay, LayerSpec::Kind kind, LayerPose const& pose, std::int64_t characters) {
        PlacedLayer layer{.look = lookOf(state_, overlay.fontSize, overlay.color, overlay.backgroundColor),
                          .at = onCanvas(state_, overlay.position),
                          .overlay = &overlay};
        layer.look.kind = std::move(kind);
        layer.look.shownCharacters = typed(pose.shown, characters);
        add(std::move(layer), pose);
    }

    void addOverlay(Overlay const& overlay) {
        auto const pose = this->pose(overlayPose(overlay, state_.editTime));
        if (!(pose.opacity > leastOpacity)) return;
        auto const count = [&](std::string const& text) { return pose.shown < 1 ? graphemesOf(text) : 0; };
        auto const& content = overlay.kind.content;
        if (auto const* title = std::get_if<OverlayKind::Title>(&content)) {
            addText(overlay, LayerSpec::Title{title->text, title->subtitle}, pose,
                    count(title->text) + count(title->subtitle));
        } else if (auto const* callout = std::get_if<OverlayKind::Callout>(&content)) {
            addText(overlay, LayerSpec::Callout{callout->text}, pose, count(callout->text));
        } else if (auto const* keycap = std::get_if<OverlayKind::Keycap>(&content)) {
            addText(overlay, LayerSpec::Keycap{keycap->keys}, pose, static_cast<std::int64_t>(keycap->keys.size()));
        } else if (auto const* command = std::get_if<OverlayKind::Command>(&content)) {
            addText(overlay, LayerSpec::Command{command->text}, pose, count(command->text));
        } else if (auto const* code = std::get_if<OverlayKind::Code>(&content)) {
            addText(overlay, LayerSpec::Code{code->text, code->language}, pose, count(code->text));
        } else if (auto const* arrow = std::get_if<OverlayKind::Arrow>(&content)) {
            addArrow(overlay, *arrow, pose);
        } else if (auto const* box = std::get_if<OverlayKind::Box>(&content)) {
            addBoxOverlay(overlay, *box, pose);
        }
    }

    void addArrow(Overlay const& overlay, OverlayKind::Arrow const& arrow, LayerPose const& pose) {
        double const width = static_cast<double>(state_.canvas.width);
        double const height = static_cast<double>(state_.canvas.height);
        LayerSpec::Arrow kind{{arrow.from.x * width, arrow.from.y * height}, {arrow.to.x * width, arrow.to.y * height}};
        kind.drawnSteps = static_cast<int>(std::ceil(std::clamp(pose.shown, 0.0, 1.0) * LayerSpec::Arrow::steps));
        PlacedLayer layer{.look = lookOf(state_, overlay.fontSize, overlay.color, std::nullopt),
                          .place = LayerPlace::arrow,
                          .at = kind.from,
                          .overlay = &overlay};
        layer.look.kind = kind;
        add(std::move(layer), pose);
    }

    /// The box around a part of the recording, as far as the recording shows that part.
    void addBoxOverlay(Overlay const& overlay, OverlayKind::Box const& box, LayerPose const& pose) {
        if (!state_.source || state_.contentRect.isEmpty() || !(box.rect.width > 0) || !(box.rect.height > 0)) return;
        auto rect = canvasRect(state_, project_.effectiveCrop(), box.rect);
        double const share = shareInside(rect, shownRect(state_));
        double const opacity = pose.opacity * std::clamp((share - boxGone) / (boxWhole - boxGone), 0.0, 1.0);
        if (!(opacity > leastOpacity)) return;
        auto const centre = rect.center();
        double const drop = pose.drop * smallerSide(state_.canvas);
        rect = {centre.x - rect.width / 2 * pose.scale, centre.y - rect.height / 2 * pose.scale + drop,
                rect.width * pose.scale, rect.height * pose.scale};
        addBox(layers_, lookOf(state_, overlay.fontSize, overlay.color, overlay.backgroundColor), rect,
               std::min(opacity, 1.0));
    }

    static double shareInside(CanvasRect const& rect, CanvasRect const& pane) {
        double const width = std::min(rect.maxX(), pane.maxX()) - std::max(rect.x, pane.x);
        double const height = std::min(rect.maxY(), pane.maxY()) - std::max(rect.y, pane.y);
        double const area = rect.width * rect.height;
        return width > 0 && height > 0 && area > 0 ? width * height / area : 0;
    }

    void addCard(TitleCard const& card) {
        auto const pose = cardPose(card, state_.titleCardTime);
        PlacedLayer layer{.look = lookOf(state_, card.fontSize, card.textColor, std::nullopt),
                          .at = onCanvas(state_, UnitPoint2::center)};
        layer.look.kind = LayerSpec::Title{card.text, card.subtitle, LayerSpec::Title::Ground::plain};
        if (pose.shown < 1) {
            layer.look.shownCharacters = typed(pose.shown, graphemesOf(card.text) + graphemesOf(card.subtitle));
        }
        add(std::move(layer), pose);
    }

    void addCaption(CaptionCue const& cue) {
        auto const& track = project_.captions;
        PlacedLayer layer{.look = lookOf(state_, track.fontSize, track.color, track.backgroundColor),
                          .at = onCanvas(state_, track.position),
                          .caption = &cue};
        layer.look.highlightColor = track.highlightColor;
        layer.look.kind = spokenCaption(track, cue, state_.editTime);
        add(std::move(layer), pose(captionPose(track.animation, cue, state_.editTime)));
    }

    void addWatermark() {
        PlacedLayer layer{.look = lookOf(state_, watermarkSize, RGBAColor::white, std::nullopt),
                          .place = LayerPlace::corner,
                          .corner = state_.markCorner};
        layer.look.kind = LayerSpec::Watermark{watermarkText};
        add(std::move(layer), {});
    }

    FrameState const& state_;
    DemoProject const& project_;
    LayerMotion const motion_;
    std::vector<PlacedLayer> layers_;
};

/// The begin of a body of that length, kept inside the canvas and clear of its edges where there is room.
double keptInside(double begin, double length, double side, double inset) {
    double const room = std::min(inset, (side - length) / 2);
    return std::round(std::clamp(begin, std::min(room, side - length - room), std::max(side - length - room, room)));
}

CanvasPoint bodyAt(PlacedLayer const& layer, CanvasRect const& body) {
    Size2 const canvas{layer.look.canvasWidth, layer.look.canvasHeight};
    double const width = static_cast<double>(canvas.width);
    double const height = static_cast<double>(canvas.height);
    double const side = smallerSide(canvas);
    if (layer.place == LayerPlace::arrow) return layer.at;
    if (layer.place == LayerPlace::corner) {
        double const inset = watermarkInset * canvasUnit(canvas);
        bool const isRight = layer.corner == CanvasCorner::bottomRight || layer.corner == CanvasCorner::topRight;
        bool const isBottom = layer.corner == CanvasCorner::bottomRight || layer.corner == CanvasCorner::bottomLeft;
        return {keptInside(isRight ? width - inset - body.width : inset, body.width, width, inset),
                keptInside(isBottom ? height - inset - body.height : inset, body.height, height, inset)};
    }
    return {keptInside(layer.at.x - body.width / 2, body.width, width, edgeInset * side),
            keptInside(layer.at.y - body.height / 2, body.height, height, edgeInset * side)};
}

}

std::vector<PlacedLayer> placedLayers(FrameState const& state, DemoProject const& project, LayerMotion motion) {
    if (state.canvas.width < 1 || state.canvas.height < 1) return {};
    return Lister(state, project, motion).list();
}

CanvasRect placed(PlacedLayer const& layer, double width, double height, CanvasRect const& body) {
    if (layer.place == LayerPlace::stretched) return layer.rect;
    auto const at = bodyAt(layer, body);
    auto const centre = at + CanvasPoint{body.width / 2, body.height / 2 + layer.drop};
    double const k = layer.scale;
    return {centre.x - (body.x + body.width / 2) * k, centre.y - (body.y + body.height / 2) * k, width * k, height * k};
}

}
