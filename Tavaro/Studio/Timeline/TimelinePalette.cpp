#include <Tavaro/Studio/Timeline/TimelinePalette.h>

namespace tavaro {

namespace {

/// The hue of each kind of item, in degrees, and how much of it there is; what is recorded is calm, what is added to it
/// is not.
struct Hue {
    int degrees = 0;
    double strength = 1;
};

constexpr std::array<Hue, 11> hues = {{{222, 0.55},  // clip
                                       {222, 0.25},  // card
                                       {256, 1},     // zoom
                                       {20, 1},      // overlay
                                       {198, 0.9},   // caption
                                       {330, 0.75},  // scene
                                       {330, 1},     // camera move
                                       {150, 0.7},   // sound
                                       {172, 0.8},   // voice
                                       {215, 0.1},   // silence
                                       {355, 0.7}}}; // redaction

QColor shade(Hue hue, double saturation, double lightness, double alpha = 1) {
    return QColor::fromHslF(static_cast<float>(hue.degrees / 360.0), static_cast<float>(saturation * hue.strength),
                            static_cast<float>(lightness), static_cast<float>(alpha));
}

ItemColors onDark(Hue hue) {
    return {shade(hue, 0.42, 0.30), shade(hue, 0.45, 0.46), shade(hue, 0.7, 0.93), shade(hue, 0.55, 0.66)};
}

ItemColors onLight(Hue hue) {
    return {shade(hue, 0.78, 0.88), shade(hue, 0.52, 0.70), shade(hue, 0.7, 0.21), shade(hue, 0.50, 0.50)};
}

}

TimelinePalette TimelinePalette::dark() {
    TimelinePalette palette{.ground = QColor(0x17, 0x18, 0x1c),
                            .lane = QColor(0x1d, 0x1f, 0x24),
                            .head = QColor(0x1d, 0x1f, 0x24),
                            .headText = QColor(0xd5, 0xd8, 0xdf),
                            .headTextFaint = QColor(0x8b, 0x90, 0x9c),
                            .ruler = QColor(0x1a, 0x1b, 0x20),
                            .rulerText = QColor(0x9b, 0xa1, 0xad),
                            .tick = QColor(0x44, 0x48, 0x52),
                            .line = QColor(0x2b, 0x2e, 0x35),
                            .playhead = QColor(0xff, 0x5c, 0x4d),
                            .selection = QColor(0xff, 0xff, 0xff),
                            .marquee = QColor(0x7c, 0xa5, 0xff, 56),
                            .caught = QColor(0xff, 0xc5, 0x4a),
                            .badge = QColor(0x0c, 0x0d, 0x10, 170),
                            .badgeText = QColor(0xff, 0xff, 0xff)};
    for (std::size_t i = 0; i < hues.size(); ++i) palette.items[i] = onDark(hues[i]);
    return palette;
}

TimelinePalette TimelinePalette::light() {
    TimelinePalette palette{.ground = QColor(0xf4, 0xf5, 0xf7),
                            .lane = QColor(0xea, 0xec, 0xf0),
                            .head = QColor(0xfb, 0xfb, 0xfc),
                            .headText = QColor(0x2a, 0x2e, 0x37),
                            .headTextFaint = QColor(0x68, 0x6e, 0x7b),
                            .ruler = QColor(0xfb, 0xfb, 0xfc),
                            .rulerText = QColor(0x60, 0x66, 0x73),
                            .tick = QColor(0xc3, 0xc8, 0xd1),
                            .line = QColor(0xdc, 0xdf, 0xe5),
                            .playhead = QColor(0xe2, 0x36, 0x2a),
                            .selection = QColor(0x1f, 0x4f, 0xd8),
                            .marquee = QColor(0x1f, 0x4f, 0xd8, 40),
                            .caught = QColor(0xd4, 0x8a, 0x00),
                            .badge = QColor(0x14, 0x16, 0x1c, 190),
                            .badgeText = QColor(0xff, 0xff, 0xff)};
    for (std::size_t i = 0; i < hues.size(); ++i) palette.items[i] = onLight(hues[i]);
    return palette;
}

}
