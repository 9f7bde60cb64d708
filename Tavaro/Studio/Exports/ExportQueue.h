#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Exporting/ExportController.h>
#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Project/OpenProjects.h>
#include <Tavaro/Studio/Exports/AwaitedScans.h>
#endif
#include <Tavaro/Studio/Exports/ExportPace.h>
#include <Tavaro/Studio/Exports/ExportRecord.h>
#include <Tavaro/Studio/Exports/FilmReading.h>
#include <Tavaro/Studio/Lists/RowsModel.h>

#include <QString>
#include <QTimer>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tavaro {

class Application;

/// A film that is to be exported, as its project is now.
struct ExportOrder {
    ProjectPackage package;
    DemoProject document;
    ExportChoices choices; // with the file to write
    std::string title;     // where the film goes
    bool writesCaptions = false;
    std::optional<std::string> typedName; // of the file, where the user gave one
    bool checksFilm = false;              // reads it again, whether anything private is legible
    bool awaitsScan = false; // for private text, where one is due; the film is of the project as it is after that
};

/// The exports of the program: one after the other in the order in which they were asked for, each of the document as
/// it was then, while the user goes on. Those under way come first, then what ended, the newest first; what ended is
/// remembered in a file. A film that is to be read again is under way until that is done. Exports that agents ask for
/// go between them. Belongs to the main thread; files are read and written beside it.
class ExportQueue final : public RowsModel {
    Q_OBJECT
    Q_PROPERTY(int activeCount READ activeCount NOTIFY progressed)
    Q_PROPERTY(double share READ share NOTIFY progressed)      // of what is under way now, 0…1
    Q_PROPERTY(QString summary READ summary NOTIFY progressed) // "Exporting “Tour”, 2 more to come"; "" when none is

public:
    enum Role {
        nameRole = firstRole,
        titleRole,
        detailRole,
        stateRole,   // the name of an `ExportState`
        shareRole,   // 0…1
        statusRole,  // how it is, in a few words
        warningRole, // what is not as it should be; empty where nothing is
        fileRole,    // the name of what was, or is to be, written
        stillRole,
        checkedRole, // what reading it again came to; empty where it was not
        legibleRole, // whether something private is legible
    };

    struct Settings {
        std::filesystem::path memory = ExportMemory::usualFile();
        int tick = 250;              // milliseconds between two looks at the one under way
        int scanTick = 1000;         // and at the scans that are awaited
        double patience = 10;        // seconds without progress before it is said
        std::size_t remembered = 50; // exports that have ended
        EncoderChoice encoder = EncoderChoice::automatic;
        MovieScan scan = {}; // stands in for the real one, where films are read again
    };

    ExportQueue(MainQueue& queue, Application& application) : ExportQueue(queue, application, Settings()) {}
    ExportQueue(MainQueue& queue, Application& application, Settings settings);
    ~ExportQueue() override;

    void add(ExportOrder order);
    /// Writes the captions of the film to a free name like that, beside the main thread. Throws `Error` where it has
    /// none.
    void addCaptions(ExportOrder const& order, std::filesystem::path const& file);

    /// Ends one under way; it stays listed.
    Q_INVOKABLE void cancel(int row);
    /// Once more to the same place, as the project is now.
    Q_INVOKABLE void again(int row);
    /// Takes one that has ended off the list. Its file stays.
    Q_INVOKABLE void remove(int row);
    Q_INVOKABLE void removeEnded();
    Q_INVOKABLE void showInFolder(int row);
    Q_INVOKABLE void open(int row);
    Q_INVOKABLE void copyPath(int row);

    int activeCount() const;
    double share() const;
    QString summary() const;
    /// Whether nothing is under way, and nothing waits to be written.
    bool isIdle() const { return activeCount() == 0 && writing_ == 0; }
    /// Starts nothing any more: what has not ended then is remembered as interrupted.
    void end() { isEnding_ = true; }

    ExportRecord const& record(int row) const { return rows_[static_cast<std::size_t>(row)]->record; }
    std::span<ExportMeasure const> measures() const { return measures_; }
    /// The name that the user gave a film of that project last.
    std::optional<std::string> lastName(std::filesystem::path const& package) const;

    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// Something of the one under way, or which one that is, or how many wait.
    void progressed();
    /// One is done or has failed. It is in that row.
    void ended(int row);
    /// What the user did could not be done.
    void failed(QString const& sentence);
    /// What exports take here is known anew.
    void measured();

private:
    struct Row {
        ExportRecord record;
        std::optional<DemoProject> document; // until it has ended
        std::optional<ExportPace> pace;      // while it runs
        double share = 0;
    };

    void load(ExportMemory memory);
    void keep();
    ExportMemory memory() const;
    void insert(int row, std::unique_ptr<Row> made);
    void startNext();
    void startNextSoon();
    void start(Row& row);
    void goOn(UUID const& id, Outcome<OpenProjects::Opened> const& opened);
    void repeat(ExportRecord const& before, Outcome<OpenProjects::Opened> const& opened);
    void follow(std::optional<RunningExport> const& running);
    void finish(UUID const& id, ExportOutcome const& outcome);
    void read(Row const& row);
    void note(UUID const& id, FilmVerdict const& verdict);
    void endRunning(int row, ExportState state);
    void take(Row& row, ExportedFilm const& film);
    void settle(int row, ExportState state);
    void writeCaptions(Row const& row, std::filesystem::path const& file);
    void measure(Row const& row, ExportedFilm const& film);
    void tick();
    void changed(int row);
    void prune();
    int rowOf(UUID const& id) const;
    Row* running() const;
    bool isRow(int row) const { return row >= 0 && row < count(); }
    double share(Row const& row) const;
    QString status(Row const& row) const;
    QString pace(Row const& row) const;
    QString warning(Row const& row) const;
    QString still(Row const& row) const;

    MainQueue& queue_;
    Application& application_;
    Settings const settings_;
    std::vector<std::unique_ptr<Row>> rows_;
    std::vector<ExportMeasure> measures_;
    std::optional<UUID> running_;
    bool isEnding_ = false;
    int writing_ = 0; // files of captions
    QTimer tick_;
    ExportController::Observation observation_;
    SideQueue side_;
    std::unique_ptr<FilmReading> reading_; // of the one under way
    AwaitedScans awaited_;
};

}
