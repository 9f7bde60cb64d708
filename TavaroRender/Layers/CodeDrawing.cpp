#include <TavaroRender/Layers/Private/LayerDrawings.h>

#include <algorithm>
#include <array>
#include <numbers>

#include <TavaroRender/Layers/Private/CodeTokens.h>
#include <TavaroRender/Layers/Private/Panel.h>
#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

constexpr std::size_t longestText = 6000;
constexpr int mostLines = 40;
constexpr double letters = 0.78; // of the layer's size: code wants to be seen whole

// em of the code's letters
constexpr double padX = 1.25;
constexpr double padBottom = 1.25;
constexpr double header = 2.3;
constexpr double dotRadius = 0.25;
constexpr double dotGap = 0.86; // between centres
constexpr double numberGap = 1.1;

/// Colours of the kinds of tokens, in their order, but for plain text, which has the layer's colour.
using Palette = std::array<RGBAColor, 8>;

constexpr Palette darkPalette{RGBAColor::white,         RGBAColor::rgb(0xC99BF5), RGBAColor::rgb(0xFFCB6B),
                              RGBAColor::rgb(0x7FB2FF), RGBAColor::rgb(0xA8DB8F), RGBAColor::rgb(0xF7936F),
                              RGBAColor::rgb(0x717D94), RGBAColor::rgb(0x9FB3CE)};
constexpr Palette lightPalette{RGBAColor::black,         RGBAColor::rgb(0x8A2BC2), RGBAColor::rgb(0x9A5B00),
                               RGBAColor::rgb(0x1F5FCC), RGBAColor::rgb(0x1B7F3B), RGBAColor::rgb(0xC2410C),
                               RGBAColor::rgb(0x7C8696), RGBAColor::rgb(0x55617A)};

/// Blank lines at the ends and the indentation that all lines share are how the text came here, not part of it.
std::string outdented(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
    auto const firstInk = text.find_first_not_of(" \n");
    if (firstInk == std::string::npos) return {};
    auto const firstLine = text.rfind('\n', firstInk);
    if (firstLine != std::string::npos) text.erase(0, firstLine + 1);
    std::size_t indent = std::string::npos;
    for (std::size_t line = 0; line != std::string::npos && line < text.size();) {
        auto const ink = text.find_first_not_of(' ', line);
        if (ink != std::string::npos && text[ink] != '\n') indent = std::min(indent, ink - line);
        auto const end = text.find('\n', line);
        line = end == std::string::npos ? end : end + 1;
    }
    std::string result;
    for (std::size_t line = 0; line < text.size();) {
        auto const end = std::min(text.find('\n', line), text.size());
        if (end - line > indent) result += text.substr(line + indent, end - line - indent);
        if (end < text.size()) result += '\n';
        line = end + 1;
    }
    return result;
}

void drawDots(cairo_t* cr, CanvasRect const& body, double em) {
    constexpr std::array dots{RGBAColor::rgb(0xFF5F57), RGBAColor::rgb(0xFEBC2E), RGBAColor::rgb(0x28C840)};
    double x = body.x + padX * em * 0.86 + dotRadius * em;
    for (auto const& color : dots) {
        cairo_new_path(cr);
        cairo_arc(cr, x, body.y + header * em * 0.5, dotRadius * em, 0, 2 * std::numbers::pi);
        setColor(cr, color);
        cairo_fill(cr);
        x += dotGap * em;
    }
}

void drawLanguage(TextFonts& fonts, cairo_t* cr, CanvasRect const& body, double em, std::string const& language,
                  RGBAColor const& color) {
    double const room = body.width - (2 * padX + 4 * dotGap) * em;
    TextBlock const name(fonts, language, {.size = 0.68 * em, .weight = 500},
                         {.width = std::max(room, 1.0), .height = em, .lines = 1, .smallest = 0.8});
    if (name.isEmpty() || room < 2 * em) return;
    name.paint(cr,
               {body.maxX() - padX * em * 0.86 - name.area().width, body.y + header * em * 0.5 - name.capHeight() / 2},
               color);
}

/// The numbers of the code's lines, right-aligned before it.
struct LineNumbers {
    LineNumbers(TextFonts& fonts, TextBlock const& code) {
        if (code.lineCount() < 2) return;
        for (int i = 1; i <= code.lineCount(); ++i) {
            numbers.emplace_back(fonts, std::to_string(i),
                                 TextStyle{.face = TextFace::mono, .size = code.size() * 0.86},
                                 TextRoom{.width = 100 * code.size(), .height = 10 * code.size(), .lines = 1});
        }
        width = numbers.back().area().width;
        indent = width + numberGap * code.size();
    }

    void paint(cairo_t* cr, CanvasPoint at, TextBlock const& code, RGBAColor const& color) const {
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            double const y = at.y + code.baseline(static_cast<int>(i)) - numbers[i].capHeight();
            numbers[i].paint(cr, {at.x + width - numbers[i].area().width, y}, color);
        }
    }

    std::vector<TextBlock> numbers;
    double width = 0;
    double indent = 0;
};

}

DrawnLayer drawCode(TextFonts& fonts, LayerSpec const& look, LayerSpec::Code const& code) {
    LayerScale const scale(look);
    auto const content = outdented(readableText(code.text, longestText));
    auto const tokens = codeTokens(content, code.language);
    auto const shown = shownBytes(look, content);
    std::vector<std::size_t> cuts{shown};
    for (auto const& token : tokens) cuts.push_back(token.end);
    TextRoom const room{.width = 0.8 * scale.width,
                        .height = 0.72 * scale.height,
                        .lines = mostLines,
                        .smallest = std::min(1.0, 0.34 * 36 * scale.unit / (letters * scale.em)),
                        .wrap = LineWrap::none,
                        .alignment = TextAlignment::leading};
    TextBlock const text(fonts, content,
                         {.face = TextFace::mono, .size = letters * scale.em, .weight = 500, .lineHeight = 1.52}, room,
                         cuts);
    if (text.isEmpty()) return {};
    double const em = text.size();
    LineNumbers const numbers(fonts, text);
    auto const language = readableText(code.language, 24, LineBreaks::toSpaces);
    auto const area = text.area();
    double const least = 11 * em;
    auto const color =
        look.background ? *look.background : mixed(panelColor(look, 0.98), {0.06, 0.08, 0.14, 0.98}, 0.3);
    bool const isDark = brightness(color) < 0.5;
    auto panel = panelOf(look, em, color);
    panel.radius = 0.7 * em;
    panel.shadow.spread = 1.3 * em;
    panel.shadow.fall = 0.45 * em;
    LayerDrawing layer(scale, std::max(area.width + numbers.indent + 2 * padX * em, least),
                       area.height + (header + padBottom) * em, panel.shadow.reach());
    layer.drawPanel(panel);
    auto const& palette = isDark ? darkPalette : lightPalette;
    auto const dim = palette[static_cast<std::size_t>(CodeTokenKind::comment)];
    drawDots(layer.cr(), layer.body(), em);
    drawLanguage(fonts, layer.cr(), layer.body(), em, language, dim);

    CanvasPoint const at{layer.body().x + padX * em, layer.body().y + header * em - area.y};
    numbers.paint(layer.cr(), at, text, withAlpha(dim, 0.7));
    text.paint(layer.cr(), at + CanvasPoint{numbers.indent - area.x, 0}, [&](std::size_t byte) {
        auto const token = std::upper_bound(tokens.begin(), tokens.end(), byte,
                                            [](std::size_t b, CodeToken const& t) { return b < t.end; });
        auto const kind = token == tokens.end() ? CodeTokenKind::plain : token->kind;
        auto const ink = kind == CodeTokenKind::plain ? mixed(look.color, withAlpha(dim, look.color.a), 0.1)
                                                      : palette[static_cast<std::size_t>(kind)];
        return TextPaint{.color = ink, .isShown = byte < shown};
    });
    return layer.finish();
}

}
