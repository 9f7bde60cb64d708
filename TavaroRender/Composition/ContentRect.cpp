#include <TavaroRender/Composition/Private/ContentRect.h>

#include <TavaroCore/Style/ScreenStyle.h>

namespace tavaro {

namespace {

CanvasRect centred(double width, double height, Size2 canvas) {
    return {(static_cast<double>(canvas.width) - width) / 2, (static_cast<double>(canvas.height) - height) / 2, width,
            height};
}

/// Origin on one axis of a recording that fills the room in the middle of the canvas.
double filledOrigin(double size, double canvas, double room, double focus) {
    double const overflow = size - room;
    return (canvas - room) / 2 - overflow * (overflow > 0 ? std::clamp(focus, 0.0, 1.0) : 0.5);
}

SinglePane framed(CanvasRect content, Size2 canvas, double padding, FrameInsets const& share) {
    double const w = content.width;
    double const h = content.height;
    double const roomX = (1 - 2 * padding) * static_cast<double>(canvas.width);
    double const roomY = (1 - 2 * padding) * static_cast<double>(canvas.height);
    double const k =
        std::min({roomX / ((1 + share.left + share.right) * w), roomY / (h + (share.top + share.bottom) * w), 1.0});
    double const width = w * k;
    double const height = h * k;
    CanvasInsets const frame{share.left * width, share.top * width, share.right * width, share.bottom * width};
    auto const clip = centred(width + frame.left + frame.right, height + frame.top + frame.bottom, canvas);
    return {{clip.x + frame.left, clip.y + frame.top, width, height}, clip, frame};
}

SinglePane banded(CanvasRect clip, double inset) {
    double const band = inset * clip.width;
    double const s =
        std::max(std::min((clip.width - 2 * band) / clip.width, (clip.height - 2 * band) / clip.height), 0.05);
    double const gapX = clip.width * (1 - s) / 2;
    double const gapY = clip.height * (1 - s) / 2;
    return {{clip.x + gapX, clip.y + gapY, clip.width * s, clip.height * s}, clip, {gapX, gapY, gapX, gapY}};
}

/// The widest frame that the area holds; on an area far wider than high its sides are as thick as the height allows.
SinglePane framedArea(CanvasRect const& area, FrameInsets const& share) {
    constexpr double leastOpening = 0.5; // of the area's height
    double const unit = std::min(area.width / (1 + share.left + share.right),
                                 (1 - leastOpening) * area.height / (share.top + share.bottom));
    return {area, area, {share.left * unit, share.top * unit, share.right * unit, share.bottom * unit}};
}

SinglePane filled(Size2 source, Size2 canvas, ScreenStyle const& style, UnitPoint2 focus) {
    auto const area = centred((1 - 2 * style.padding) * static_cast<double>(canvas.width),
                              (1 - 2 * style.padding) * static_cast<double>(canvas.height), canvas);
    SinglePane pane{area, area, {}};
    if (auto const share = insets(style.frame); share != FrameInsets{})
        pane = framedArea(area, share);
    else if (hasInsetBand(style))
        pane = banded(area, style.inset);
    pane.content = coveringRect(source, pane.opening(), focus);
    return pane;
}

}

CanvasRect SinglePane::opening() const {
    return {clip.x + frame.left, clip.y + frame.top, clip.width - frame.left - frame.right,
            clip.height - frame.top - frame.bottom};
}

CanvasRect contentRect(Size2 source, Size2 canvas, ContentFit fit, UnitPoint2 focus, double inset) {
    double const canvasWidth = static_cast<double>(canvas.width);
    double const canvasHeight = static_cast<double>(canvas.height);
    double const roomX = (1 - 2 * inset) * canvasWidth;
    double const roomY = (1 - 2 * inset) * canvasHeight;
    if (source.width < 1 || source.height < 1 || !(roomX > 0) || !(roomY > 0)) return {};
    double const scaleX = roomX / static_cast<double>(source.width);
    double const scaleY = roomY / static_cast<double>(source.height);
    if (fit == ContentFit::stretch) return centred(roomX, roomY, canvas);

    double const scale = fit == ContentFit::fit ? std::min(scaleX, scaleY) : std::max(scaleX, scaleY);
    double const width = static_cast<double>(source.width) * scale;
    double const height = static_cast<double>(source.height) * scale;
    if (fit == ContentFit::fit) return centred(width, height, canvas);
    return {filledOrigin(width, canvasWidth, roomX, focus.x), filledOrigin(height, canvasHeight, roomY, focus.y), width,
            height};
}

CanvasRect coveringRect(Size2 source, CanvasRect const& pane, UnitPoint2 focus) {
    if (source.width < 1 || source.height < 1 || pane.isEmpty()) return {};
    double const scale =
        std::max(pane.width / static_cast<double>(source.width), pane.height / static_cast<double>(source.height));
    double const width = std::max(static_cast<double>(source.width) * scale, pane.width);
    double const height = std::max(static_cast<double>(source.height) * scale, pane.height);
    return {pane.x - (width - pane.width) * std::clamp(focus.x, 0.0, 1.0),
            pane.y - (height - pane.height) * std::clamp(focus.y, 0.0, 1.0), width, height};
}

bool hasInsetBand(ScreenStyle const& style) { return style.inset > 0.0005 && style.frame == DeviceFrame::none; }

SinglePane singlePane(Size2 source, Size2 canvas, ScreenStyle const& style, ContentFit fit, UnitPoint2 focus) {
    auto const content = contentRect(source, canvas, fit, focus, style.padding);
    if (content.isEmpty()) return {};
    if (fit == ContentFit::fill) return filled(source, canvas, style, focus);
    if (auto const share = insets(style.frame); share != FrameInsets{}) {
        return framed(content, canvas, style.padding, share);
    }
    if (hasInsetBand(style)) return banded(content, style.inset);
    return {content, content, {}};
}

}
