#include <TavaroRender/Layers/Private/LayerDrawings.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <string_view>

#include <TavaroRender/Layers/Private/Panel.h>
#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

constexpr std::size_t mostKeys = 12;
constexpr std::size_t longestName = 20;

// em of the letters
constexpr double capHeight = 2.0;
constexpr double capGap = 0.3;
constexpr double capPad = 0.56;
constexpr double capDepth = 0.13; // of the edge that shows below the cap's face
constexpr double capRadius = 0.42;
constexpr double nameSize = 0.68; // of a key named by a word, not by a sign

struct KeySign {
    std::string_view name;
    std::string_view sign;
};

constexpr auto signs = std::to_array<KeySign>({
    {"command", "⌘"},   {"cmd", "⌘"},     {"super", "⌘"},    {"shift", "⇧"},         {"option", "⌥"},   {"opt", "⌥"},
    {"alt", "⌥"},       {"control", "⌃"}, {"ctrl", "⌃"},     {"return", "↩"},        {"enter", "↩"},    {"delete", "⌫"},
    {"backspace", "⌫"}, {"tab", "⇥"},     {"up", "↑"},       {"down", "↓"},          {"left", "←"},     {"right", "→"},
    {"capslock", "⇪"},  {"pageup", "⇞"},  {"pagedown", "⇟"}, {"forwarddelete", "⌦"}, {"escape", "esc"},
});

/// What stands on the key: a sign for the keys that have one, capital letters.
std::string labelOf(std::string const& key) {
    auto label = readableText(key, longestName, LineBreaks::toSpaces);
    std::string lower = label;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    auto const sign = std::find_if(signs.begin(), signs.end(), [&](KeySign const& it) { return it.name == lower; });
    if (sign != signs.end()) return std::string(sign->sign);
    if (label.size() == 1) label[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(label[0])));
    return label;
}

/// A key, laid out in em of `size`.
struct Cap {
    TextBlock label;
    double width;
};

std::vector<Cap> capsOf(TextFonts& fonts, LayerSpec::Keycap const& keycap, double size) {
    std::vector<Cap> caps;
    for (auto const& key : keycap.keys) {
        if (isBlank(key) || caps.size() == mostKeys) continue;
        auto const text = labelOf(key);
        bool const isWord = graphemesOf(text) > 1;
        TextStyle const style{.size = (isWord ? nameSize : 1) * size, .weight = 600};
        TextBlock label(fonts, text, style, {.width = 60 * size, .height = 10 * size, .lines = 1});
        double const width = std::max(label.area().width + 2 * capPad * size, capHeight * size);
        if (!label.isEmpty()) caps.push_back({std::move(label), std::round(width)});
    }
    return caps;
}

double rowWidth(std::vector<Cap> const& caps, double size) {
    double width = 0;
    for (auto const& cap : caps) width += cap.width;
    return width + static_cast<double>(caps.size() - 1) * std::round(capGap * size);
}

void fillFace(cairo_t* cr, CanvasRect const& face, double radius, RGBAColor const& color) {
    CairoPattern const gradient(cairo_pattern_create_linear(0, face.y, 0, face.maxY()));
    auto const top = mixed(color, withAlpha(RGBAColor::white, color.a), 0.13);
    auto const bottom = mixed(color, withAlpha(RGBAColor::black, color.a), 0.06);
    cairo_pattern_add_color_stop_rgba(gradient.get(), 0, top.r, top.g, top.b, top.a);
    cairo_pattern_add_color_stop_rgba(gradient.get(), 1, bottom.r, bottom.g, bottom.b, bottom.a);
    cairo_new_path(cr);
    addRounded(cr, face, radius);
    cairo_set_source(cr, gradient.get());
    cairo_fill(cr);
}

void drawCap(cairo_t* cr, Cap const& cap, CanvasRect const& whole, LayerSpec const& look, double size) {
    auto const color = panelColor(look, 1);
    bool const isDark = brightness(color) < 0.5;
    double const unit = std::max(LayerScale(look).unit, 0.5);
    auto const edge = mixed(color, withAlpha(RGBAColor::black, color.a), isDark ? 0.6 : 0.26);
    fillRounded(cr, whole, capRadius * size, edge);
    CanvasRect const face{whole.x, whole.y, whole.width, whole.height - std::round(capDepth * size)};
    fillFace(cr, face, capRadius * size, isDark ? mixed(color, withAlpha(RGBAColor::white, color.a), 0.07) : color);
    strokeRounded(cr, face, capRadius * size, 1.6 * unit, {1, 1, 1, isDark ? 0.2 : 0.9});
    if (!isDark) strokeRounded(cr, whole, capRadius * size, 1.2 * unit, {0, 0, 0, 0.1});
    // Signs are centred by what is seen of them: some hang from the capitals' height, some stand on the baseline.
    auto const ink = cap.label.ink();
    double const y = graphemesOf(cap.label.text()) == 1 ? ink.center().y : cap.label.area().center().y;
    cap.label.paint(cr, {face.center().x - ink.center().x, face.center().y - y}, look.color);
}

}

DrawnLayer drawKeycaps(TextFonts& fonts, LayerSpec const& look, LayerSpec::Keycap const& keycap) {
    LayerScale const scale(look);
    double size = scale.em;
    auto caps = capsOf(fonts, keycap, size);
    if (caps.empty()) return {};
    double const most = 0.9 * scale.width;
    if (double const width = rowWidth(caps, size); width > most)
        caps = capsOf(fonts, keycap, size *= 0.98 * most / width);

    SoftShadow const shadow{.spread = 0.55 * size, .fall = 0.18 * size, .color = {0, 0, 0, 0.4}};
    double const height = std::round(capHeight * size) + std::round(capDepth * size);
    LayerDrawing layer(scale, rowWidth(caps, size), height, shadow.reach());
    std::vector<CanvasRect> places;
    double x = layer.body().x;
    for (auto const& cap : caps) {
        places.push_back({x, layer.body().y, cap.width, height});
        x += cap.width + std::round(capGap * size);
    }
    auto const shown =
        look.shownCharacters ? static_cast<std::size_t>(std::max<std::int64_t>(*look.shownCharacters, 0)) : caps.size();
    places.resize(std::min(places.size(), shown));
    layer.drawing().shadow({shadow}, [&](cairo_t* on) {
        for (auto const& place : places) fillRounded(on, place, capRadius * size, RGBAColor::black);
    });
    for (std::size_t i = 0; i < places.size(); ++i) drawCap(layer.cr(), caps[i], places[i], look, size);
    return layer.finish();
}

}
