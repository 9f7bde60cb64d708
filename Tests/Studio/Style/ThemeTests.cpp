#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Studio/Style/Theme.h>

#include <TavaroCore/Files/AtomicFile.h>

#include <gtest/gtest.h>

#include <QMetaProperty>
#include <QSignalSpy>

#include <cmath>
#include <map>

using namespace tavaro;

namespace {

/// How light it is to the eye, as WCAG 2 has it.
double luminance(QColor const& color) {
    auto const part = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF());
}

double contrast(QColor const& a, QColor const& b) {
    auto const one = luminance(a) + 0.05, other = luminance(b) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

}

TEST(ThemeColors, everyWordCanBeReadOnWhatItStands) {
    constexpr double readable = 4.5;
    for (auto const& colors : {ThemeColors::light(), ThemeColors::dark()}) {
        auto const grounds = {colors.window, colors.sidebar, colors.surface, colors.raised,
                              colors.sunken, colors.hover,   colors.pressed, colors.selection};
        int ground = 0;
        for (auto const& color : grounds) {
            EXPECT_GE(contrast(colors.text, color), readable) << ground;
            EXPECT_GE(contrast(colors.secondaryText, color), readable) << ground;
            EXPECT_GE(contrast(colors.accentText, color), readable) << ground;
            ++ground;
        }
        for (auto const& word : {colors.dangerText, colors.warning, colors.good})
            for (auto const& color : {colors.window, colors.surface, colors.raised})
                EXPECT_GE(contrast(word, color), readable) << word.name().toStdString();
        for (auto const& fill :
             {colors.accent, colors.accentHover, colors.accentPressed, colors.danger, colors.dangerHover})
            EXPECT_GE(contrast(colors.onAccent, fill), readable) << fill.name().toStdString();
        EXPECT_GE(contrast(colors.toastText, colors.toast), readable);
        EXPECT_GE(contrast(colors.toastAction, colors.toast), readable);
    }
}

TEST(ThemeColors, eachIsGivenInBothLooks) {
    auto const& meta = ThemeColors::staticMetaObject;
    for (auto const& colors : {ThemeColors::light(), ThemeColors::dark()}) {
        for (int i = 0; i < meta.propertyCount(); ++i)
            EXPECT_TRUE(meta.property(i).readOnGadget(&colors).value<QColor>().isValid()) << meta.property(i).name();
    }
    EXPECT_EQ(sizeof(ThemeColors), static_cast<std::size_t>(meta.propertyCount()) * sizeof(QColor))
        << "one is not given to QML";
}

TEST(Theme, followsWhatIsChosenHereOrElsewhereAndRemembersIt) {
    TemporaryFolder const folder;
    auto const file = folder / "preferences.json";
    Preferences preferences(file), elsewhere(file);
    DesktopLook desktop;
    Theme theme(preferences, desktop);
    QSignalSpy const changes(&theme, &Theme::changed);
    EXPECT_EQ(theme.look(), QStringLiteral("desktop"));
    theme.setLook(QStringLiteral("dark"));
    EXPECT_TRUE(theme.isDark());
    EXPECT_EQ(theme.colors(), ThemeColors::dark());
    EXPECT_EQ(elsewhere.get(interfaceLook), "dark");
    EXPECT_EQ(changes.count(), 1);
    elsewhere.set(interfaceLook, "light");
    preferences.refresh();
    EXPECT_FALSE(theme.isDark());
    EXPECT_EQ(changes.count(), 2);
    elsewhere.set(interfaceLook, "no such look");
    preferences.refresh();
    EXPECT_EQ(theme.look(), QStringLiteral("desktop"));
}

TEST(DesktopLook, readsWhatGTKIsToldToPrefer) {
    TemporaryFolder const folder;
    auto const file = folder / "settings.ini";
    std::map<std::string, std::optional<LookWish>> const wishes{
        {"[Settings]\ngtk-application-prefer-dark-theme=1\n", LookWish::dark},
        {"[Settings]\ngtk-application-prefer-dark-theme=true\n", LookWish::dark},
        {"[Settings]\ngtk-application-prefer-dark-theme=0\ngtk-theme-name=Adwaita-dark\n", LookWish::light},
        {"[Settings]\ngtk-theme-name=Adwaita-dark\n", LookWish::dark},
        {"[Settings]\ngtk-theme-name=Adwaita\n", std::nullopt},
        {"\0\xff[[", std::nullopt},
        {"", std::nullopt},
    };
    EXPECT_EQ(DesktopLook::wishOfGTK(QString::fromStdString(file.string())), std::nullopt);
    for (auto const& [text, wish] : wishes) {
        writeFileAtomically(file, text);
        EXPECT_EQ(DesktopLook::wishOfGTK(QString::fromStdString(file.string())), wish) << text;
    }
}
