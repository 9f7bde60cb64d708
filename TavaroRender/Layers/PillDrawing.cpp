#include <TavaroRender/Layers/Private/LayerDrawings.h>

#include <algorithm>

#include <TavaroRender/Layers/Private/Panel.h>
#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

constexpr std::size_t longestText = 400;
constexpr char const* promptSign = "❯";

TextRoom pillRoom(LayerSpec const& look, TextAlignment alignment) {
    LayerScale const scale(look);
    bool const isTall = scale.height > scale.width;
    return {.width = (isTall ? 0.8 : 0.62) * scale.width,
            .height = 0.7 * scale.height,
            .lines = isTall ? 6 : 4,
            .smallest = 0.4,
            .alignment = alignment};
}

TextPaint typed(RGBAColor const& color, std::size_t byte, std::size_t shown) {
    return {.color = color, .isShown = byte < shown};
}

}

DrawnLayer drawCallout(TextFonts& fonts, LayerSpec const& look, LayerSpec::Callout const& callout) {
    LayerScale const scale(look);
    auto const content = readableText(callout.text, longestText);
    auto const shown = shownBytes(look, content);
    TextBlock const text(fonts, content, {.size = scale.em, .weight = 600, .tracking = -0.006, .lineHeight = 1.3},
                         pillRoom(look, TextAlignment::centre), {shown});
    if (text.isEmpty()) return {};
    double const em = text.size();
    auto const area = text.area();
    double const padX = (text.lineCount() > 1 ? 0.95 : 0.9) * em;
    double const padY = (text.lineCount() > 1 ? 0.72 : 0.62) * em;
    auto panel = panelOf(look, em, panelColor(look, 0.94));
    LayerDrawing layer(scale, area.width + 2 * padX, area.height + 2 * padY, panel.shadow.reach());
    panel.radius = text.lineCount() > 1 ? 0.8 * em : layer.body().height / 2;
    layer.drawPanel(panel);
    auto const& body = layer.body();
    text.paint(layer.cr(), {body.center().x - area.width / 2 - area.x, body.center().y - area.height / 2 - area.y},
               [&](std::size_t byte) { return typed(look.color, byte, shown); });
    return layer.finish();
}

DrawnLayer drawCommand(TextFonts& fonts, LayerSpec const& look, LayerSpec::Command const& command) {
    LayerScale const scale(look);
    auto const content = readableText(command.text, longestText);
    auto const shown = shownBytes(look, content);
    TextStyle style{.face = TextFace::mono, .size = 0.92 * scale.em, .weight = 500, .lineHeight = 1.45};
    TextBlock const text(fonts, content, style, pillRoom(look, TextAlignment::leading), {shown});
    if (text.isEmpty()) return {};
    style.size = text.size();
    style.weight = 700;
    TextBlock const prompt(fonts, promptSign, style, {.width = scale.width, .height = scale.height, .lines = 1});
    double const em = text.size();
    double const indent = prompt.area().width + 0.62 * em;
    auto const area = text.area();
    double const padX = 0.85 * em;
    double const padY = 0.72 * em;
    auto const color = look.background ? *look.background : mixed(panelColor(look, 0.96), {0, 0.02, 0.06, 0.96}, 0.3);
    auto panel = panelOf(look, em, color);
    panel.radius = 0.62 * em;
    LayerDrawing layer(scale, area.width + indent + 2 * padX, area.height + 2 * padY, panel.shadow.reach());
    layer.drawPanel(panel);
    auto const& body = layer.body();
    CanvasPoint const at{body.x + padX, body.center().y - area.height / 2 - area.y};
    prompt.paint(layer.cr(), at, brightness(panel.color) < 0.5 ? RGBAColor::rgb(0x6EE7A0) : RGBAColor::rgb(0x12804A));
    text.paint(layer.cr(), at + CanvasPoint{indent - area.x, 0},
               [&](std::size_t byte) { return typed(look.color, byte, shown); });
    return layer.finish();
}

DrawnLayer drawWatermark(TextFonts& fonts, LayerSpec const& look, LayerSpec::Watermark const& watermark) {
    LayerScale const scale(look);
    TextStyle const style{.size = scale.em, .weight = 600, .tracking = 0.004};
    TextBlock const text(fonts, readableText(watermark.text, longestText, LineBreaks::toSpaces), style,
                         {.width = 0.6 * scale.width, .height = 0.2 * scale.height, .lines = 1, .smallest = 0.3});
    if (text.isEmpty()) return {};
    double const em = text.size();
    auto const area = text.area();
    auto panel = panelOf(look, em, panelColor(look, 0.42));
    panel.shadow = {};
    panel.shadow.color.a = 0;
    LayerDrawing layer(scale, area.width + 1.5 * em, area.height + 1.16 * em, 0);
    panel.radius = layer.body().height / 2;
    layer.drawPanel(panel);
    auto const& body = layer.body();
    text.paint(layer.cr(), {body.center().x - area.width / 2 - area.x, body.center().y - area.height / 2 - area.y},
               withAlpha(look.color, 0.92 * look.color.a));
    return layer.finish();
}

}
