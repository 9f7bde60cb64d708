#pragma once

#include <QColor>
#include <QObject>

namespace tavaro {

/// Every colour of the interface, by what it is for.
class ThemeColors {
    Q_GADGET
    Q_PROPERTY(QColor window MEMBER window)
    Q_PROPERTY(QColor sidebar MEMBER sidebar)
    Q_PROPERTY(QColor surface MEMBER surface)
    Q_PROPERTY(QColor raised MEMBER raised)
    Q_PROPERTY(QColor sunken MEMBER sunken)
    Q_PROPERTY(QColor hover MEMBER hover)
    Q_PROPERTY(QColor pressed MEMBER pressed)
    Q_PROPERTY(QColor selection MEMBER selection)
    Q_PROPERTY(QColor line MEMBER line)
    Q_PROPERTY(QColor strongLine MEMBER strongLine)
    Q_PROPERTY(QColor text MEMBER text)
    Q_PROPERTY(QColor secondaryText MEMBER secondaryText)
    Q_PROPERTY(QColor disabledText MEMBER disabledText)
    Q_PROPERTY(QColor accent MEMBER accent)
    Q_PROPERTY(QColor accentHover MEMBER accentHover)
    Q_PROPERTY(QColor accentPressed MEMBER accentPressed)
    Q_PROPERTY(QColor onAccent MEMBER onAccent)
    Q_PROPERTY(QColor accentText MEMBER accentText)
    Q_PROPERTY(QColor focus MEMBER focus)
    Q_PROPERTY(QColor danger MEMBER danger)
    Q_PROPERTY(QColor dangerHover MEMBER dangerHover)
    Q_PROPERTY(QColor dangerText MEMBER dangerText)
    Q_PROPERTY(QColor warning MEMBER warning)
    Q_PROPERTY(QColor good MEMBER good)
    Q_PROPERTY(QColor toast MEMBER toast)
    Q_PROPERTY(QColor toastText MEMBER toastText)
    Q_PROPERTY(QColor toastAction MEMBER toastAction)
    Q_PROPERTY(QColor veil MEMBER veil)
    Q_PROPERTY(QColor knob MEMBER knob)
    Q_PROPERTY(QColor loudness MEMBER loudness)
    Q_PROPERTY(QColor onFilm MEMBER onFilm)
    Q_PROPERTY(QColor filmShade MEMBER filmShade)
    Q_PROPERTY(QColor filmLabel MEMBER filmLabel)
    Q_PROPERTY(QColor guide MEMBER guide)

public:
    QColor window;  // what everything lies on
    QColor sidebar; // navigation
    QColor surface; // cards, panels
    QColor raised;  // menus, dialogs, buttons
    QColor sunken;  // fields, grooves
    QColor hover, pressed;
    QColor selection; // of what is chosen among others
    QColor line, strongLine;
    QColor text, secondaryText, disabledText; // on all of the above
    QColor accent, accentHover, accentPressed, onAccent;
    QColor accentText; // accented words on surfaces
    QColor focus;
    QColor danger, dangerHover, dangerText; // with `onAccent` on it; as words on surfaces
    QColor warning, good;                   // as words on surfaces
    QColor toast, toastText, toastAction;
    QColor veil; // over what a dialog keeps from being used
    QColor knob; // what slides in a switch or along a slider
    QColor loudness;
    // Over pictures, in every look: lines and words, what darkens a part, what words stand on, where things snap.
    QColor onFilm, filmShade, filmLabel, guide;

    static ThemeColors light();
    static ThemeColors dark();

    bool operator==(ThemeColors const&) const = default;
};

}
