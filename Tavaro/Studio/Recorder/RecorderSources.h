#pragma once

#include <Tavaro/Studio/Recorder/AreaModel.h>
#include <Tavaro/Studio/Recorder/LiveStills.h>
#include <Tavaro/Studio/Recorder/SourceModel.h>

#include <TavaroCapture/Sources/SourceList.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <QObject>
#include <QStringList>

#include <optional>

namespace tavaro {

/// What can be recorded of this desktop, with live stills, and what of it is chosen.
class RecorderSources : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::SourceModel* displays READ displays CONSTANT)
    Q_PROPERTY(tavaro::SourceModel* windows READ windows CONSTANT)
    Q_PROPERTY(tavaro::SourceModel* applications READ applications CONSTANT)
    Q_PROPERTY(tavaro::AreaModel* area READ area CONSTANT)
    Q_PROPERTY(QImage areaStill READ areaStill NOTIFY areaStillChanged) // of the area's whole display
    Q_PROPERTY(QString chosen READ chosen WRITE choose NOTIFY chosenChanged)
    Q_PROPERTY(QString chosenName READ chosenName NOTIFY chosenChanged) // empty: it is not there now
    Q_PROPERTY(bool isArea READ isArea NOTIFY chosenChanged)
    Q_PROPERTY(bool asksUser READ asksUser CONSTANT)                // the desktop does, when the recording begins
    Q_PROPERTY(QStringList limits READ limits NOTIFY limitsChanged) // what cannot be done here, as sentences
    Q_PROPERTY(QString problem READ problem NOTIFY limitsChanged)   // why nothing can be recorded; empty: something can

public:
    enum class Desktop { open, asksUser };

    RecorderSources(MainQueue& queue, Preferences& preferences, Desktop desktop,
                    LiveStills::Take const& take = smallStill);

    SourceModel* displays() { return &displays_; }
    SourceModel* windows() { return &windows_; }
    SourceModel* applications() { return &applications_; }
    AreaModel* area() { return &area_; }
    QImage const& areaStill() const { return areaStill_; }
    QString const& chosen() const { return chosen_; }
    QString chosenName() const;
    bool isArea() const { return chosen_.startsWith(QLatin1String("area:")); }
    bool asksUser() const { return desktop_ == Desktop::asksUser; }
    QStringList const& limits() const { return limits_; }
    QString const& problem() const { return problem_; }

    /// The id of a row, or of an area as preferences keep it. Throws nothing; what cannot be kept is chosen all the
    /// same.
    Q_INVOKABLE void choose(QString const& id);
    Q_INVOKABLE void chooseArea();
    /// What was chosen before the area, else the main display; nothing where no area is chosen.
    Q_INVOKABLE void leaveArea();

    /// Stills are taken only while somebody looks at them.
    void setWatched(bool isWatched) { stills_.setWatched(isWatched && desktop_ == Desktop::open); }
    void show(SourceList const& list);
    void fail(QString const& sentence);

    /// Where on the desktop the source is now; none for windows, whose own pixels are filmed, and where it is not
    /// known.
    std::optional<PixelRect> placeOf(CaptureSource const& source) const;

Q_SIGNALS:
    void chosenChanged();
    void areaStillChanged();
    void limitsChanged();

private:
    bool isThere(QString const& id) const;
    void chooseAtFirst();
    void watchStills();
    void takeStill(QString const& id, QImage const& still);
    void keep(QString const& id);
    DisplayInfo const* display(std::string const& id) const;

    Preferences& preferences_;
    Desktop const desktop_;
    SourceModel displays_, windows_, applications_;
    AreaModel area_;
    QImage areaStill_;
    QString chosen_, beforeArea_;
    bool hasChosenAtFirst_ = false;
    QStringList limits_;
    QString problem_;
    std::vector<DisplayInfo> known_; // displays
    LiveStills stills_;
};

}
