#include <TavaroRender/Layers/Private/LayerDrawings.h>

#include <algorithm>

#include <TavaroRender/Layers/Private/Panel.h>
#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

constexpr std::size_t longestText = 400; // characters; more cannot be read in the time of a title
constexpr double subtitleSize = 0.5;     // of the title's
constexpr double subtitleStrength = 0.86;
constexpr double gap = 0.5; // between the two, em of the title
constexpr double padX = 0.85;
constexpr double padY = 0.72;

/// A title and what stands below it, centred.
struct TitleText {
    TextBlock title;
    TextBlock subtitle;
    double between = 0;

    double width() const { return std::max(title.area().width, subtitle.area().width); }
    double height() const { return title.area().height + between + subtitle.area().height; }
    bool isEmpty() const { return title.isEmpty() && subtitle.isEmpty(); }
};

TextBlock blockOf(TextFonts& fonts, LayerSpec const& look, std::string const& text, TextStyle const& style,
                  TextRoom const& room) {
    return TextBlock(fonts, text, style, room, {shownBytes(look, text)});
}

/// Weaker than the title. Over a picture the letters stay as opaque, or its own text would be read through them.
RGBAColor subtitleColor(LayerSpec const& look, bool isBare) {
    if (!isBare) return withAlpha(look.color, look.color.a * subtitleStrength);
    return withAlpha(mixed(shadeBehind(look.color), look.color, subtitleStrength), look.color.a);
}

TitleText textOf(TextFonts& fonts, LayerSpec const& look, LayerSpec::Title const& title) {
    LayerScale const scale(look);
    bool const isTall = scale.height > scale.width;
    TextRoom room{.width = 0.84 * scale.width - 2 * (look.background ? padX * scale.em : 0),
                  .height = 0.5 * scale.height,
                  .lines = isTall ? 5 : 3,
                  .smallest = 0.4};
    room.width = std::max(room.width, 0.5 * scale.width);
    TextStyle const large{
        .face = TextFace::display, .size = scale.em, .weight = 700, .tracking = -0.01, .lineHeight = 1.14};
    TextStyle const small{.size = subtitleSize * scale.em, .weight = 500, .lineHeight = 1.35};
    auto const first = readableText(title.text, longestText);
    auto const second = readableText(title.subtitle, longestText);
    LayerSpec rest = look;
    if (rest.shownCharacters)
        rest.shownCharacters = std::max<std::int64_t>(*look.shownCharacters - graphemesOf(first), 0);
    TitleText text{blockOf(fonts, look, first, large, room), {fonts, "", small, room}, 0};
    room.height = 0.22 * scale.height;
    text.subtitle = blockOf(fonts, rest, second, small, room);
    if (!text.title.isEmpty() && !text.subtitle.isEmpty()) text.between = gap * text.title.size();
    return text;
}

}

DrawnLayer drawTitle(TextFonts& fonts, LayerSpec const& look, LayerSpec::Title const& title) {
    auto const text = textOf(fonts, look, title);
    if (text.isEmpty()) return {};
    double const em = text.title.isEmpty() ? text.subtitle.size() / subtitleSize : text.title.size();
    double const x = look.background ? padX * em : 0;
    double const y = look.background ? padY * em : 0;
    auto const panel = panelOf(look, em, look.background.value_or(RGBAColor::clear));
    bool const isBare = !look.background && title.ground == LayerSpec::Title::Ground::picture;
    double const margin = look.background ? panel.shadow.reach() : bareReach(em);
    LayerDrawing layer(LayerScale(look), text.width() + 2 * x, text.height() + 2 * y, margin);
    if (look.background) layer.drawPanel(panel);

    auto const eachBlock = [&](FunctionRef<void(TextBlock const&, CanvasPoint, RGBAColor const&, std::size_t)> visit) {
        double top = layer.body().y + y;
        auto typed = look.shownCharacters;
        for (auto const* block : {&text.title, &text.subtitle}) {
            if (block->isEmpty()) continue;
            auto const color = block == &text.subtitle ? subtitleColor(look, isBare) : look.color;
            std::size_t const shown = typed ? bytesOfGraphemes(block->text(), *typed) : std::string::npos;
            auto const area = block->area();
            visit(*block, {layer.body().center().x - area.width / 2 - area.x, top - area.y}, color, shown);
            top += area.height + text.between;
            if (typed) typed = std::max<std::int64_t>(*typed - graphemesOf(block->text()), 0);
        }
    };
    auto const paintOf = [](RGBAColor const& color, std::size_t shown) {
        return [color, shown](std::size_t byte) { return TextPaint{.color = color, .isShown = byte < shown}; };
    };
    if (isBare) {
        eachBlock([&](TextBlock const& block, CanvasPoint at, RGBAColor const& color, std::size_t) {
            paintVeil(layer.drawing(), block, at, color);
        });
    }
    eachBlock([&](TextBlock const& block, CanvasPoint at, RGBAColor const& color, std::size_t shown) {
        if (isBare)
            paintBare(layer.drawing(), block, at, color, paintOf(color, shown));
        else
            block.paint(layer.cr(), at, paintOf(color, shown));
    });
    return layer.finish();
}

}
