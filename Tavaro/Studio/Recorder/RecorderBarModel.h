#pragma once

#include <Tavaro/Studio/Recorder/RecorderModel.h>

#include <TavaroPlatform/Preferences/Preferences.h>

#include <QObject>
#include <QPoint>
#include <QSize>

namespace tavaro {

/// "X,Y" on the desktop, where its user put the recorder's bar; empty: nowhere yet.
inline Preference<std::string> const barPlaceChosen{"com.tavaro.recorder.barPlace"};

/// Whether the small window over all others is shown, and where. It stays out of the picture of what is filmed where
/// there is room beside that, and goes where there is none, as long as a shortcut or a tray can end the take.
class RecorderBarModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isShown READ isShown NOTIFY changed)
    Q_PROPERTY(bool isInPicture READ isInPicture NOTIFY changed) // there is no place beside what is filmed
    Q_PROPERTY(QPoint place READ place NOTIFY placeChanged)
    Q_PROPERTY(QSize size READ size WRITE setSize NOTIFY sizeChanged) // of the window
    Q_PROPERTY(bool hasOtherWay READ hasOtherWay WRITE setHasOtherWay NOTIFY changed)

public:
    RecorderBarModel(RecorderModel& recorder, Preferences& preferences);

    bool isShown() const;
    bool isInPicture() const { return isInPicture_; }
    QPoint place() const { return place_; }
    QSize size() const { return size_; }
    bool hasOtherWay() const { return hasOtherWay_; }
    void setSize(QSize size);
    void setHasOtherWay(bool hasOtherWay);

    /// Its user has moved it there.
    Q_INVOKABLE void keep(QPoint place);

Q_SIGNALS:
    void changed();
    void placeChanged();
    void sizeChanged();

private:
    void follow();
    void settle();

    RecorderModel& recorder_;
    Preferences& preferences_;
    QSize size_{380, 52};
    QPoint place_;
    bool isInPicture_ = false;
    bool hasOtherWay_ = false;
    RecorderModel::Phase phase_ = RecorderModel::Idle;
    bool isFilming_ = false; // or will in a moment
};

}
