#include <Tavaro/Studio/Style/ThemeColors.h>

namespace tavaro {

namespace {

QColor color(QRgb rgb) { return QColor(rgb); }

/// The same in every look.
ThemeColors common() {
    ThemeColors colors;
    colors.knob = color(0xffffff);
    colors.loudness = color(0x3f9b63);
    colors.onFilm = color(0xffffff);
    colors.filmShade = QColor(0, 0, 0, 128);
    colors.filmLabel = QColor(16, 18, 22, 192);
    colors.guide = color(0xff4d9d);
    return colors;
}

}

ThemeColors ThemeColors::light() {
    ThemeColors colors = common();
    colors.window = color(0xf6f7f9);
    colors.sidebar = color(0xeceef2);
    colors.surface = color(0xffffff);
    colors.raised = color(0xffffff);
    colors.sunken = color(0xf0f1f5);
    colors.hover = color(0xe6e9ef);
    colors.pressed = color(0xdbdfe7);
    colors.selection = color(0xdfe8ff);
    colors.line = color(0xe0e3ea);
    colors.strongLine = color(0xc4c9d4);
    colors.text = color(0x1a1d23);
    colors.secondaryText = color(0x565d6b);
    colors.disabledText = color(0x9aa1ad);
    colors.accent = color(0x3563e9);
    colors.accentHover = color(0x2b57d8);
    colors.accentPressed = color(0x234abf);
    colors.onAccent = color(0xffffff);
    colors.accentText = color(0x2450c8);
    colors.focus = color(0x3563e9);
    colors.danger = color(0xc9353f);
    colors.dangerHover = color(0xb42c36);
    colors.dangerText = color(0xb1252f);
    colors.warning = color(0x7d5200);
    colors.good = color(0x14693f);
    colors.toast = color(0x24272e);
    colors.toastText = color(0xf2f4f8);
    colors.toastAction = color(0x9dbaff);
    colors.veil = QColor(16, 20, 28, 96);
    return colors;
}

ThemeColors ThemeColors::dark() {
    ThemeColors colors = common();
    colors.window = color(0x17191d);
    colors.sidebar = color(0x111316);
    colors.surface = color(0x1f2227);
    colors.raised = color(0x292d34);
    colors.sunken = color(0x131519);
    colors.hover = color(0x30353d);
    colors.pressed = color(0x3a4049);
    colors.selection = color(0x26345c);
    colors.line = color(0x2c3037);
    colors.strongLine = color(0x454b56);
    colors.text = color(0xeceff4);
    colors.secondaryText = color(0xadb4c1);
    colors.disabledText = color(0x6c7380);
    colors.accent = color(0x3f6ce8);
    colors.accentHover = color(0x3a66df);
    colors.accentPressed = color(0x365fd0);
    colors.onAccent = color(0xffffff);
    colors.accentText = color(0x9dbaff);
    colors.focus = color(0x7ca1ff);
    colors.danger = color(0xcc3b45);
    colors.dangerHover = color(0xd0424c);
    colors.dangerText = color(0xff9aa1);
    colors.warning = color(0xf0c46a);
    colors.good = color(0x7fd6a4);
    colors.toast = color(0xe9ecf2);
    colors.toastText = color(0x1a1d23);
    colors.toastAction = color(0x2450c8);
    colors.veil = QColor(0, 0, 0, 150);
    return colors;
}

}
