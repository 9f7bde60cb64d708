#pragma once

#include <Tavaro/Studio/Style/DesktopLook.h>
#include <Tavaro/Studio/Style/ThemeColors.h>

#include <TavaroPlatform/Preferences/Preferences.h>

#include <QObject>
#include <QString>
#include <QUrl>

#include <string>

namespace tavaro {

/// "light", "dark", or as the desktop likes it.
inline Preference<std::string> const interfaceLook{"com.tavaro.studio.look", "desktop"};

/// How everything looks: colours, sizes in device-independent pixels, type, motion. Controls and pages take nothing
/// from elsewhere. What can change, changes with the one signal.
class Theme : public QObject {
    Q_OBJECT
    Q_PROPERTY(ThemeColors colors READ colors NOTIFY changed)
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
    Q_PROPERTY(QString look READ look WRITE setLook NOTIFY changed)
    Q_PROPERTY(QString face MEMBER face CONSTANT)
    Q_PROPERTY(int captionSize MEMBER captionSize CONSTANT)
    Q_PROPERTY(int bodySize MEMBER bodySize CONSTANT)
    Q_PROPERTY(int headingSize MEMBER headingSize CONSTANT)
    Q_PROPERTY(int titleSize MEMBER titleSize CONSTANT)
    Q_PROPERTY(int gap MEMBER gap CONSTANT)
    Q_PROPERTY(int wideGap MEMBER wideGap CONSTANT)
    Q_PROPERTY(int pageMargin MEMBER pageMargin CONSTANT)
    Q_PROPERTY(int controlHeight MEMBER controlHeight CONSTANT)
    Q_PROPERTY(int rowHeight MEMBER rowHeight CONSTANT)
    Q_PROPERTY(int radius MEMBER radius CONSTANT)
    Q_PROPERTY(int cardRadius MEMBER cardRadius CONSTANT)
    Q_PROPERTY(int iconSize MEMBER iconSize CONSTANT)
    Q_PROPERTY(int quick MEMBER quick CONSTANT)
    Q_PROPERTY(int calm MEMBER calm CONSTANT)

public:
    Theme(Preferences& preferences, DesktopLook& desktop);

    ThemeColors const& colors() const { return colors_; }
    bool isDark() const { return isDark_; }
    /// "light", "dark" or "desktop".
    QString const& look() const { return look_; }
    /// Remembered; where it cannot be, it lasts as long as the program.
    void setLook(QString const& look);

    /// Where the picture of an icon is: "trash".
    Q_INVOKABLE static QUrl icon(QString const& name);
    /// For labels that read mnemonics and markup out of their texts: what they show of it is the text itself.
    Q_INVOKABLE static QString literal(QString text);

    QString const face = QStringLiteral("Inter");
    int const captionSize = 12, bodySize = 13, headingSize = 16, titleSize = 24;
    int const gap = 8, wideGap = 16, pageMargin = 32;
    int const controlHeight = 32, rowHeight = 36;
    int const radius = 6, cardRadius = 10;
    int const iconSize = 16;
    int const quick = 90, calm = 180; // milliseconds

Q_SIGNALS:
    void changed();

private:
    void take(QString const& look);
    void apply();

    Preferences& preferences_;
    DesktopLook& desktop_;
    QString look_;
    bool isDark_ = false;
    ThemeColors colors_;
    Preferences::Observation observation_;
};

}
