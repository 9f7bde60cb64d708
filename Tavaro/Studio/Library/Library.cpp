#include <Tavaro/Studio/Library/Library.h>

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Making/ImportedMovie.h>
#include <Tavaro/Model/Project/DuplicatedProject.h>
#include <Tavaro/Model/Project/MovedProject.h>
#include <Tavaro/Model/Project/PackingJob.h>
#include <Tavaro/Model/Project/StoredProject.h>
#include <Tavaro/Model/Recording/TakeNames.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>
#include <Tavaro/Studio/Library/LibraryText.h>
#include <Tavaro/Studio/Library/ShowInFolder.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroPlatform/Folders/Trash.h>

#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <atomic>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr int untilSettled = 400; // milliseconds, in which others may go on writing

QString sentence(Error const& error) { return QString::fromUtf8(error.what()); }

double part(std::uint64_t done, std::uint64_t total) {
    return total == 0 ? -1 : static_cast<double>(done) / static_cast<double>(total);
}

double partOfCopy(CopyProgress const& copy) { return part(copy.bytesDone, copy.bytesTotal); }

double partOfArchive(ArchiveProgress const& archive) { return part(archive.bytesDone, archive.bytesTotal); }

double partOfImport(ImportProgress const& import) {
    return import.stage == ImportStage::measuring ? import.measured : part(import.bytesDone, import.bytesTotal);
}

QString inQuotes(QString const& name) { return QStringLiteral("“%1”").arg(name); }

QString named(fs::path const& file) { return inQuotes(libraryText::text(file.stem())); }

bool isPackage(fs::path const& path) { return path.extension() == ProjectPackage::directoryExtension; }

}

Library::Library(MainQueue& queue, Application& application)
    : queue_(queue)
    , application_(application)
    , side_(queue, "com.tavaro.library.files") {
    settled_.setSingleShot(true);
    settled_.setInterval(untilSettled);
    connect(&settled_, &QTimer::timeout, this, &Library::refresh);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, &settled_, qOverload<>(&QTimer::start));
    connect(&takes_, &UnfinishedTakes::countChanged, this, &Library::changed);
    refresh();
}

void Library::refresh() {
    isStale_ = true;
    if (isListing_) return;
    isListing_ = true;
    isStale_ = false;
    watchFolders();
    application_.catalogue().listAll([this](auto const& found) { listed(found); });
    listTakes();
}

void Library::watchFolders() {
    for (auto const& folder : application_.library()) {
        std::error_code ignored;
        auto const path = libraryText::text(folder);
        if (fs::is_directory(folder, ignored) && !watcher_.directories().contains(path)) watcher_.addPath(path);
    }
}

void Library::listed(Outcome<std::vector<LibraryItem>> const& found) {
    isListing_ = false;
    attempt([&] { projects_.setItems(found.value()); });
    isLoaded_ = true;
    Q_EMIT changed();
    if (isStale_) refresh();
}

void Library::listTakes() {
    aside([] { return RecoveryStore::findRecoverable(); }, [this](auto const& takes) { takes_.setTakes(takes); });
}

template<class Work> void Library::attempt(Work const& work) {
    try {
        work();
    } catch (Error const& error) {
        Q_EMIT failed(sentence(error));
    }
}

/// Short work on files; a failure is said.
template<class Work, class Done> void Library::aside(Work work, Done done) {
    side_.ask(std::move(work),
              [this, done = std::move(done)](auto const& outcome) { attempt([&] { done(outcome.value()); }); });
}

template<class Result, class Progress>
void Library::run(Job<Result, Progress> made, Watched<Result, Progress> watched) {
    auto const job = std::make_shared<Job<Result, Progress>>(std::move(made));
    auto const isCancelled = std::make_shared<bool>(false);
    auto const number = activities_.add(watched.title, [isCancelled, job = job.get()] {
        *isCancelled = true;
        job->cancel();
    });
    job->onProgress([this, number, part = watched.part](Progress const& progress) {
        if (part) activities_.setProgress(number, part(progress));
    });
    job->onFinished([this, number, isCancelled, job = job.get(), watched = std::move(watched)] {
        auto const ends = jobs_.extract(number);
        activities_.remove(number);
        try {
            watched.done(job->result());
        } catch (Error const& error) {
            if (!*isCancelled) Q_EMIT failed(sentence(error));
        }
        refresh();
        if (watched.over) watched.over();
    });
    jobs_.emplace(number, job);
    job->start();
}

void Library::say(QString const& text, Offer offer) {
    lapse();
    offer_ = std::move(offer);
    Q_EMIT said(text, offer_.action);
}

void Library::accept() {
    auto const offer = std::exchange(offer_, {});
    if (offer.accept) attempt(offer.accept);
}

void Library::lapse() {
    auto const offer = std::exchange(offer_, {});
    if (offer.lapse) attempt(offer.lapse);
}

/// As its card has it: a project that was open while it got its name has that of its file from before.
QString Library::nameOf(fs::path const& package) const {
    auto const* const item = projects_.find(package);
    return item ? QString::fromStdString(item->name) : libraryText::text(package.stem());
}

void Library::rename(QString const& package, QString const& name) {
    auto const path = libraryText::path(package);
    auto const wanted = name.trimmed().toStdString();
    auto const* const item = projects_.find(path);
    if (wanted.empty() || !item || !item->id || wanted == item->name) return;
    auto const open = application_.projects().find(*item->id);
    if (!open || open->package().url() != path) return renameFile(path, wanted);
    // Who has it open knows it by its place, so that stays.
    attempt([&] { open->commit("Rename", [&](DemoProject& project) { project.name = wanted; }); });
    refresh();
}

void Library::renameFile(fs::path const& package, std::string const& name) {
    auto const rename = [package, name] {
        auto const stem = fileNamePart(name);
        auto to = package;
        if (stem != package.stem().string()) {
            to = unusedFile(package.parent_path() / (stem + std::string(ProjectPackage::directoryExtension)));
            moveProject(package, to);
        }
        OpenProject(to, LockHolding::whileOpen).commit("Rename", [&](DemoProject& project) { project.name = name; });
        return to;
    };
    aside(rename, [this, package](fs::path const& to) {
        if (to != package) Q_EMIT left(libraryText::text(package));
        refresh();
    });
}

void Library::duplicate(QString const& package) {
    auto const path = libraryText::path(package);
    run<fs::path, CopyProgress>(duplicationJob(queue_, path),
                                {.title = QStringLiteral("Duplicating %1").arg(inQuotes(nameOf(path))),
                                 .part = partOfCopy,
                                 .done = [this](fs::path const& made) {
                                     application_.newTakes().add(made);
                                     say(QStringLiteral("%1 is in the library").arg(named(made)),
                                         {.action = QStringLiteral("Open"),
                                          .accept = [this, made] { Q_EMIT openRequested(libraryText::text(made)); }});
                                 }});
}

QUrl Library::archiveFor(QString const& package) const {
    auto folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    if (!QFileInfo(folder).isDir()) folder = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
    auto const name = fileNamePart(nameOf(libraryText::path(package)).toStdString()) + ".zip";
    return QUrl::fromLocalFile(libraryText::text(unusedFile(libraryText::path(folder) / name)));
}

void Library::archive(QString const& package, QUrl const& file) {
    auto const path = libraryText::path(package);
    // The user has agreed to replace what has the name.
    PackingRequest const request{.file = libraryText::path(file.toLocalFile()),
                                 .ifTaken = PackingRequest::IfTaken::replace};
    run<PackedProject, ArchiveProgress>(
        packingJob(queue_, path, request),
        {.title = QStringLiteral("Packing %1").arg(inQuotes(nameOf(path))),
         .part = partOfArchive,
         .done = [this](PackedProject const& made) {
             auto text = QStringLiteral("Packed as “%1”").arg(libraryText::text(made.file.filename()));
             for (auto const& remark : made.remarks) text += QStringLiteral(". ") + QString::fromStdString(remark);
             say(text,
                 {.action = QStringLiteral("Show in folder"), .accept = [file = made.file] { showInFolder(file); }});
         }});
}

void Library::moveToTrash(QString const& package) {
    auto const path = libraryText::path(package);
    auto const name = inQuotes(nameOf(path));
    projects_.hide(path);
    Q_EMIT left(package);
    auto const move = [path] {
        auto const lock = lockForEditing(path);
        return trash::put(path);
    };
    auto const restore = [this](trash::Trashed const& trashed) {
        aside([trashed] { return trash::restore(trashed); },
              [this](fs::path const& back) {
                  projects_.show(back);
                  refresh();
              });
    };
    side_.ask(move, [this, path, name, restore](Outcome<trash::Trashed> const& moved) {
        if (moved.failure()) projects_.show(path);
        attempt([&] {
            auto const& trashed = moved.value();
            say(QStringLiteral("%1 is in the trash").arg(name),
                {.action = QStringLiteral("Undo"), .accept = [restore, trashed] { restore(trashed); }});
        });
        refresh();
    });
}

void Library::bring(QList<QUrl> const& files) {
    bool const isFirst = arrivals_.empty();
    for (auto const& url : files) {
        if (!url.isLocalFile()) {
            Q_EMIT failed(QStringLiteral("“%1” is no file of this machine. Save it here first, then bring in the file.")
                              .arg(url.toDisplayString()));
            continue;
        }
        auto path = libraryText::path(url.toLocalFile());
        if (!path.has_filename()) path = path.parent_path(); // "folder/"
        if (path.filename() == "project.json" && isPackage(path.parent_path())) path = path.parent_path();
        if (isPackage(path))
            Q_EMIT openRequested(libraryText::text(path));
        else
            arrivals_.push_back(path);
    }
    if (isFirst) bringNext();
}

void Library::bringNext() {
    for (; !arrivals_.empty(); arrivals_.pop_front()) {
        auto const file = arrivals_.front();
        QString const ending = libraryText::text(file.extension()).toLower();
        try {
            return ending == QStringLiteral(".zip") ? unpack(file) : import(file);
        } catch (Error const& error) {
            Q_EMIT failed(sentence(error));
        }
    }
}

void Library::import(fs::path const& movie) {
    ImportRequest const request{.movie = movie,
                                .package = application_.newProject(fileNamePart(movie.stem().string()))};
    run<MadeProject, ImportProgress>(
        importJob(queue_, request),
        {.title = QStringLiteral("Bringing in %1").arg(named(movie)),
         .part = partOfImport,
         .done = [this](MadeProject const& made) { Q_EMIT openRequested(QString::fromStdString(made.path)); },
         .over =
             [this] {
                 arrivals_.pop_front();
                 bringNext();
             }});
}

void Library::unpack(fs::path const& archive) {
    auto const& folder = application_.library().front();
    std::error_code ignored; // what is wrong with it, unpacking says
    fs::create_directories(folder, ignored);
    run<UnpackedProject, ArchiveProgress>(unpackingJob(queue_, archive, folder),
                                          {.title = QStringLiteral("Unpacking %1").arg(named(archive)),
                                           .part = partOfArchive,
                                           .done =
                                               [this](UnpackedProject const& made) {
                                                   if (made.problem)
                                                       Q_EMIT failed(QString::fromStdString(*made.problem));
                                                   if (!made.problem)
                                                       Q_EMIT openRequested(libraryText::text(made.package));
                                               },
                                           .over =
                                               [this] {
                                                   arrivals_.pop_front();
                                                   bringNext();
                                               }});
}

void Library::keep(QString const& id) {
    auto const take = takes_.claim(id);
    if (!take) return;
    auto const name = recoveredName(static_cast<std::time_t>(take->marker.startedAt.milliseconds / 1000));
    auto const isKept = std::make_shared<bool>(false);
    run<MadeTake, NoProgress>(recoveryJob(queue_, *take, application_.recovered(name)),
                              {.title = QStringLiteral("Bringing back an unfinished recording"),
                               .done =
                                   [this, isKept](MadeTake const& made) {
                                       *isKept = true;
                                       Q_EMIT openRequested(QString::fromStdString(made.made.path));
                                   },
                               .over =
                                   [this, isKept, take] {
                                       if (!*isKept) takes_.putBack(*take);
                                   }});
}

void Library::discard(QString const& id) {
    auto const take = takes_.claim(id);
    if (!take) return;
    auto const remove = [this, take] {
        aside(
            [take] {
                RecoveryStore::discard(*take);
                return true;
            },
            [](bool) {});
    };
    say(QStringLiteral("The unfinished recording is thrown away"),
        {.action = QStringLiteral("Undo"), .accept = [this, take] { takes_.putBack(*take); }, .lapse = remove});
}

}
