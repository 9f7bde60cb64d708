#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/SideQueue.h>
#endif
#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Exports/ExportQueue.h>
#include <Tavaro/Studio/Exports/ExportWishes.h>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariantList>

#include <optional>
#include <string>

namespace tavaro {

/// What a user sets up for an export of the film in an editor, what that comes to, and asking for it. It begins with
/// what was asked for last: of that project, else of any. Main thread; the folder is looked at beside it.
class ExportForm final : public QObject {
    Q_OBJECT
    // {id, title, detail, icon, picture, size, time}: the places to go to, "custom", and "captions" of a film with any
    Q_PROPERTY(QVariantList places READ places NOTIFY changed)
    Q_PROPERTY(QVariantList ways READ ways NOTIFY placeChanged) // of the place: {text, value}
    Q_PROPERTY(QVariantList formats READ formats CONSTANT)      // {text, value}
    Q_PROPERTY(QString place READ place WRITE setPlace NOTIFY changed)
    Q_PROPERTY(QString preset READ preset WRITE setPreset NOTIFY changed)
    Q_PROPERTY(int width READ width WRITE setWidth NOTIFY changed)
    Q_PROPERTY(int height READ height WRITE setHeight NOTIFY changed)
    Q_PROPERTY(bool keepsShape MEMBER keepsShape_ NOTIFY changed) // the canvas's, while a side is typed
    Q_PROPERTY(int rate READ rate WRITE setRate NOTIFY changed)
    Q_PROPERTY(int fastest READ fastest NOTIFY changed)
    Q_PROPERTY(QString format READ format WRITE setFormat NOTIFY changed)
    Q_PROPERTY(bool isGIF READ isGIF NOTIFY changed)
    Q_PROPERTY(int kilobits READ kilobits WRITE setKilobits NOTIFY changed) // a second; 0: as size and rate want it
    Q_PROPERTY(bool hasBitrate READ hasBitrate NOTIFY changed)
    Q_PROPERTY(QString fit READ fit WRITE setFit NOTIFY changed)
    Q_PROPERTY(bool sound READ sound WRITE setSound NOTIFY changed)
    Q_PROPERTY(bool watermark READ watermark WRITE setWatermark NOTIFY changed)
    Q_PROPERTY(bool hasCaptions READ hasCaptions NOTIFY changed)
    Q_PROPERTY(bool captionsBeside READ captionsBeside WRITE setCaptionsBeside NOTIFY changed)
    Q_PROPERTY(bool isScanDue READ isScanDue NOTIFY changed) // for private text
    Q_PROPERTY(bool awaitsScan MEMBER awaitsScan_ NOTIFY changed)
    Q_PROPERTY(bool canCheck READ canCheck NOTIFY changed) // the film hides something, or will
    Q_PROPERTY(bool checksFilm READ checksFilm WRITE setChecksFilm NOTIFY changed)
    Q_PROPERTY(QString range READ range NOTIFY changed) // "0:04.00–0:10.50", of the edit; empty: none is marked
    Q_PROPERTY(bool rangeOnly MEMBER rangeOnly_ NOTIFY changed)
    // Without its ending: as it was typed, and what counts where nothing was.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY changed)
    Q_PROPERTY(QString suggestion READ suggestion NOTIFY changed)
    Q_PROPERTY(QString ending READ ending NOTIFY changed)
    Q_PROPERTY(QString folder READ folder NOTIFY changed)
    Q_PROPERTY(QUrl folderUrl READ folderUrl WRITE setFolderUrl NOTIFY changed)
    Q_PROPERTY(QString outcome READ outcome NOTIFY changed) // what it comes to, in a line
    Q_PROPERTY(QString remark READ remark NOTIFY changed)   // on the file: it is taken, the disk is full
    Q_PROPERTY(QString problem READ problem NOTIFY changed) // why it cannot be exported so; empty: it can

public:
    ExportForm(MainQueue& queue, Preferences& preferences, ExportQueue& exports);

    /// The film in that editor from now on, as it was exported last.
    Q_INVOKABLE void begin(tavaro::EditorSession* session);
    /// Asks for it, and remembers what was set up. False where it cannot be; `problem` says why.
    Q_INVOKABLE bool submit();
    /// The film in that editor once more as it was exported last, at once.
    Q_INVOKABLE bool repeat(tavaro::EditorSession* session);

    QVariantList places() const;
    QVariantList ways() const;
    static QVariantList formats();
    QString place() const { return text(wishes_.place); }
    void setPlace(QString const& id);
    QString preset() const { return text(wishes_.preset); }
    void setPreset(QString const& id);
    int width() const { return static_cast<int>(wishes_.size.width); }
    int height() const { return static_cast<int>(wishes_.size.height); }
    void setWidth(int pixels);
    void setHeight(int pixels);
    int rate() const { return static_cast<int>(wishes_.fps); }
    void setRate(int framesASecond);
    int fastest() const;
    QString format() const { return text(nameOf(wishes_.format)); }
    void setFormat(QString const& name);
    bool isGIF() const;
    int kilobits() const { return static_cast<int>(wishes_.bitrate.value_or(0) / 1000); }
    void setKilobits(int kilobits);
    bool hasBitrate() const;
    QString fit() const { return text(nameOf(wishes_.fit)); }
    void setFit(QString const& name);
    bool sound() const { return wishes_.sound; }
    void setSound(bool isOn) { change(wishes_.sound, isOn); }
    bool watermark() const { return wishes_.watermark; }
    void setWatermark(bool isOn) { change(wishes_.watermark, isOn); }
    bool hasCaptions() const;
    bool captionsBeside() const { return wishes_.captionsBeside; }
    void setCaptionsBeside(bool isOn) { change(wishes_.captionsBeside, isOn); }
    bool isScanDue() const;
    bool canCheck() const;
    bool checksFilm() const { return wishes_.checksFilm; }
    void setChecksFilm(bool isOn) { change(wishes_.checksFilm, isOn); }
    QString range() const;
    QString name() const { return typedName_ ? text(*typedName_) : suggestion(); }
    QString suggestion() const;
    void setName(QString const& name);
    QString ending() const;
    QString folder() const;
    QUrl folderUrl() const;
    void setFolderUrl(QUrl const& folder);
    QString outcome() const;
    QString remark() const { return remark_; }
    QString problem() const { return problem_; }

Q_SIGNALS:
    void changed();
    void placeChanged();

private:
    static QString text(std::string_view value) {
        return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
    }

    template<class Value> void change(Value& value, Value const& wanted) {
        if (value == wanted) return;
        value = wanted;
        update();
    }
    void update();
    void look();
    bool writesCaptionsOnly() const { return wishes_.place == ExportWishes::captions; }
    std::optional<ExportSettings> settings() const;
    ExportSettings settings(ExportWishes const& wishes) const;
    ExportEstimate estimate(ExportSettings const& settings) const;
    QVariantMap card(std::string const& id) const;
    std::optional<TimeRange> filmRange() const;
    double duration() const;
    std::optional<std::string> typedStem() const;
    std::filesystem::path file() const;
    ExportOrder order() const;
    void keepShape(std::int64_t& other, std::int64_t side, std::int64_t canvasSide, std::int64_t canvasOther) const;

    Preferences& preferences_;
    ExportQueue& exports_;
    QPointer<EditorSession> session_;
    ExportWishes wishes_;
    bool keepsShape_ = true;
    bool rangeOnly_ = false;
    bool awaitsScan_ = true;
    std::optional<std::string> typedName_;
    std::string shownPlace_;
    QString remark_, problem_;
    int looks_ = 0; // asked for; only the last answer counts
    SideQueue side_;
};

}
