#include <Tavaro/Studio/Exports/ExportQueue.h>

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Studio/Exports/ExportText.h>
#include <Tavaro/Studio/Exports/FilmCaptions.h>
#include <Tavaro/Studio/Library/LibraryText.h>
#include <Tavaro/Studio/Library/ShowInFolder.h>
#include <Tavaro/Studio/Library/Stills.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroRender/Export/ExportError.h>

#include <QClipboard>
#include <QDateTime>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QPointer>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t keptMeasures = 12;

QString text(std::string_view value) { return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size())); }

QString inQuotes(std::string const& name) { return QStringLiteral("“%1”").arg(text(name)); }

}

ExportQueue::ExportQueue(MainQueue& queue, Application& application, Settings settings)
    : queue_(queue)
    , application_(application)
    , settings_(std::move(settings))
    , observation_(application.exporter().observe([this](auto const& running) { follow(running); }))
    , side_(queue, "com.tavaro.exports.files")
    , awaited_(application, std::chrono::milliseconds(settings_.scanTick),
               [this](auto const& id, auto const& opened) { goOn(id, opened); }) {
    connect(&tick_, &QTimer::timeout, this, &ExportQueue::tick);
    connect(this, &QAbstractItemModel::rowsInserted, this, &ExportQueue::countChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &ExportQueue::countChanged);
    side_.ask([file = settings_.memory] { return ExportMemory::read(file); },
              [this](Outcome<ExportMemory> const& read) { load(read.value()); });
}

ExportQueue::~ExportQueue() {
    side_.thread().sync([] {}); // what was to be remembered is
}

void ExportQueue::load(ExportMemory memory) {
    bool const hasBegun = count() > 0; // and was written over what is here
    measures_.insert(measures_.begin(), memory.measures.begin(), memory.measures.end());
    for (auto& record : memory.exports) insert(count(), std::make_unique<Row>(Row{.record = std::move(record)}));
    prune();
    if (hasBegun) keep();
    Q_EMIT measured();
}

ExportMemory ExportQueue::memory() const {
    ExportMemory memory{.measures = measures_};
    for (auto const& row : rows_) memory.exports.push_back(row->record);
    return memory;
}

void ExportQueue::keep() {
    side_.thread().async([memory = memory(), file = settings_.memory] { memory.write(file); });
}

void ExportQueue::insert(int row, std::unique_ptr<Row> made) {
    beginInsertRows({}, row, row);
    rows_.insert(rows_.begin() + row, std::move(made));
    endInsertRows();
}

void ExportQueue::add(ExportOrder order) {
    auto const settings = settingsFor(order.choices, order.document);
    auto path = order.choices.output.value_or("");
    bool const isAwaited = order.awaitsScan && DueScan::isDue(order.package, order.document);
    auto made = std::make_unique<Row>(Row{.record = {.id = UUID::random(),
                                                     .package = order.package.url().string(),
                                                     .name = order.document.name,
                                                     .title = std::move(order.title),
                                                     .detail = exportText::all(settings).toStdString(),
                                                     .choices = std::move(order.choices),
                                                     .hasCaptions = order.writesCaptions,
                                                     .typedName = std::move(order.typedName),
                                                     .path = std::move(path),
                                                     .checksFilm = order.checksFilm},
                                          .document = std::move(order.document)});
    if (isAwaited) awaited_.add(made->record.id, made->record.package);
    insert(activeCount(), std::move(made));
    keep();
    Q_EMIT progressed();
    startNextSoon();
}

void ExportQueue::addCaptions(ExportOrder const& order, fs::path const& file) {
    requireCaptions(order.document);
    auto made = std::make_unique<Row>(Row{.record = {.id = UUID::random(),
                                                     .package = order.package.url().string(),
                                                     .name = order.document.name,
                                                     .title = order.title,
                                                     .detail = "SubRip",
                                                     .choices = order.choices,
                                                     .typedName = order.typedName,
                                                     .state = ExportState::done,
                                                     .path = file.string(),
                                                     .endedAt = Date::now()},
                                          .document = order.document});
    auto const row = activeCount();
    insert(row, std::move(made));
    writeCaptions(*rows_[static_cast<std::size_t>(row)], file);
}

/// Not from inside of the controller's own notice.
void ExportQueue::startNextSoon() { QTimer::singleShot(0, this, &ExportQueue::startNext); }

void ExportQueue::startNext() {
    if (isEnding_ || running_ || application_.exporter().isExporting()) return;
    auto const next = std::ranges::find_if(rows_, [this](auto const& row) {
        return row->record.state == ExportState::waiting && !awaited_.contains(row->record.id);
    });
    if (next == rows_.end()) return;
    start(**next);
}

/// Its scan is over: it is of what the project hides now.
void ExportQueue::goOn(UUID const& id, Outcome<OpenProjects::Opened> const& opened) {
    auto const at = rowOf(id);
    auto& row = *rows_[static_cast<std::size_t>(at)];
    try {
        row.document = opened.value()->document();
        changed(at);
        startNextSoon();
    } catch (Error const& error) {
        row.record.sentence = error.what();
        settle(at, ExportState::failed);
    }
}

void ExportQueue::start(Row& row) {
    auto const id = row.record.id;
    QPointer<ExportQueue> const self(this); // the exporter lives longer
    running_ = id;
    row.record.state = ExportState::running;
    row.pace.emplace(mediaClockNow());
    tick_.start(settings_.tick);
    changed(rowOf(id));
    try {
        application_.exporter().start({.package = ProjectPackage(row.record.package),
                                       .project = *row.document,
                                       .choices = row.record.choices,
                                       .encoder = settings_.encoder},
                                      {.remark =
                                           [self](std::string const& remark) {
                                               if (self && self->running()) self->running()->record.sentence = remark;
                                           },
                                       .over =
                                           [self, id](ExportOutcome const& outcome) {
                                               if (self) self->finish(id, outcome);
                                           }});
    } catch (...) {
        finish(id, asError(std::current_exception()));
    }
}

void ExportQueue::follow(std::optional<RunningExport> const& running) {
    auto* const row = this->running();
    if (!row && !running) return startNextSoon(); // an agent's is over
    if (!row || !running || reading_) return;
    row->pace->note(running->progress, mediaClockNow());
    row->share = running->share;
}

void ExportQueue::tick() {
    if (!running_) return;
    auto const row = rowOf(*running_);
    Q_EMIT dataChanged(index(row), index(row), {shareRole, statusRole, warningRole});
    Q_EMIT progressed();
}

void ExportQueue::finish(UUID const& id, ExportOutcome const& outcome) {
    auto const at = rowOf(id);
    auto& row = *rows_[static_cast<std::size_t>(at)];
    auto state = ExportState::failed;
    try {
        take(row, outcome.value());
        state = ExportState::done;
    } catch (Error const& error) {
        auto const* const known = dynamic_cast<ExportError const*>(&error);
        bool const isCancelled = known && known->kind() == ExportError::Kind::cancelled;
        if (isCancelled) state = isEnding_ ? ExportState::interrupted : ExportState::cancelled;
        row.record.sentence = isCancelled ? "" : error.what();
    }
    if (state == ExportState::done && row.record.checksFilm && !isEnding_)
        read(row);
    else
        endRunning(at, state);
}

void ExportQueue::endRunning(int row, ExportState state) {
    running_.reset();
    tick_.stop();
    settle(row, state);
    startNextSoon();
}

void ExportQueue::read(Row const& row) {
    auto const id = row.record.id;
    keep(); // the film is there, whatever comes now
    try {
        reading_ = std::make_unique<FilmReading>(queue_, row.record.path, *row.document, settings_.scan,
                                                 [this, id](FilmVerdict const& verdict) { note(id, verdict); });
        changed(rowOf(id));
    } catch (Error const& error) {
        note(id, {.said = std::string("The film could not be read again: ") + error.what()});
    }
}

void ExportQueue::note(UUID const& id, FilmVerdict const& verdict) {
    auto const reading = std::move(reading_); // its handler is running
    auto const at = rowOf(id);
    auto& record = rows_[static_cast<std::size_t>(at)]->record;
    record.checked = verdict.said;
    record.isLegible = verdict.isLegible;
    endRunning(at, ExportState::done);
}

void ExportQueue::take(Row& row, ExportedFilm const& film) {
    row.record.path = film.path;
    row.record.bytes = film.bytes;
    measure(row, film);
    if (row.record.hasCaptions) writeCaptions(row, fs::path(film.path).replace_extension(".srt"));
}

/// What is under way comes before what has ended, so it moves behind the last of those.
void ExportQueue::settle(int row, ExportState state) {
    auto const last = activeCount() - 1;
    auto& ends = *rows_[static_cast<std::size_t>(row)];
    ends.record.state = state;
    ends.record.endedAt = Date::now();
    ends.pace.reset();
    ends.document.reset();
    if (row < last) {
        beginMoveRows({}, row, row, {}, last + 1);
        std::rotate(rows_.begin() + row, rows_.begin() + row + 1, rows_.begin() + last + 1);
        endMoveRows();
    }
    changed(last);
    keep();
    prune();
    if (state == ExportState::done || state == ExportState::failed) Q_EMIT ended(last);
}

void ExportQueue::writeCaptions(Row const& row, fs::path const& file) {
    ++writing_;
    auto const write = [file, document = *row.document, range = row.record.choices.range] {
        return writeFilmCaptions(file, document, range);
    };
    side_.ask(write, [this, id = row.record.id](Outcome<fs::path> const& written) {
        --writing_;
        auto const at = rowOf(id);
        if (at < 0) return;
        auto& record = rows_[static_cast<std::size_t>(at)]->record;
        try {
            if (record.hasCaptions)
                written.value();
            else
                record.path = written.value().string();
        } catch (Error const& error) {
            record.sentence = error.what();
            if (!record.hasCaptions) record.state = ExportState::failed;
        }
        rows_[static_cast<std::size_t>(at)]->document.reset();
        changed(at);
        keep();
        if (!record.hasCaptions) Q_EMIT ended(at);
    });
}

void ExportQueue::measure(Row const& row, ExportedFilm const& film) {
    auto const settings = settingsFor(row.record.choices, *row.document);
    measures_.push_back({.kind = ExportMeasure::kindOf(settings),
                         .width = film.width,
                         .height = film.height,
                         .frames = film.frames,
                         .seconds = row.pace->elapsed(mediaClockNow()),
                         .estimatedBytes = film.estimatedBytes,
                         .bytes = film.bytes.value_or(0)});
    if (measures_.size() > keptMeasures) measures_.erase(measures_.begin());
    Q_EMIT measured();
}

void ExportQueue::prune() {
    auto const most = activeCount() + static_cast<int>(settings_.remembered);
    if (count() <= most) return;
    beginRemoveRows({}, most, count() - 1);
    rows_.resize(static_cast<std::size_t>(most));
    endRemoveRows();
}

void ExportQueue::cancel(int row) {
    if (!isRow(row) || hasEnded(record(row).state)) return;
    if (running_ == record(row).id) return reading_ ? reading_->cancel() : application_.exporter().cancel();
    awaited_.remove(record(row).id);
    settle(row, ExportState::cancelled);
}

void ExportQueue::again(int row) {
    if (!isRow(row) || !hasEnded(record(row).state)) return;
    auto const before = record(row);
    QPointer<ExportQueue> const self(this);
    application_.projects().open(before.package, [self, before](Outcome<OpenProjects::Opened> const& opened) {
        if (self) self->repeat(before, opened);
    });
}

void ExportQueue::repeat(ExportRecord const& before, Outcome<OpenProjects::Opened> const& opened) {
    try {
        auto const& project = *opened.value();
        ExportOrder order{.package = project.package(),
                          .document = project.document(),
                          .choices = before.choices,
                          .title = before.title,
                          .writesCaptions = before.hasCaptions,
                          .typedName = before.typedName,
                          .checksFilm = before.checksFilm,
                          .awaitsScan = true};
        if (fs::path(before.choices.output.value_or("")).extension() == captionsEnding)
            addCaptions(order, *before.choices.output);
        else
            add(std::move(order));
    } catch (Error const& error) {
        Q_EMIT failed(QString::fromUtf8(error.what()));
    }
}

void ExportQueue::remove(int row) {
    if (!isRow(row) || !hasEnded(record(row).state)) return;
    beginRemoveRows({}, row, row);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
    keep();
}

void ExportQueue::removeEnded() {
    auto const first = activeCount();
    if (first == count()) return;
    beginRemoveRows({}, first, count() - 1);
    rows_.resize(static_cast<std::size_t>(first));
    endRemoveRows();
    keep();
}

void ExportQueue::showInFolder(int row) {
    if (isRow(row)) tavaro::showInFolder(record(row).path);
}

void ExportQueue::open(int row) {
    if (isRow(row)) QDesktopServices::openUrl(QUrl::fromLocalFile(text(record(row).path)));
}

void ExportQueue::copyPath(int row) {
    if (isRow(row)) QGuiApplication::clipboard()->setText(text(record(row).path));
}

int ExportQueue::activeCount() const {
    return static_cast<int>(std::ranges::count_if(rows_, [](auto const& row) { return !hasEnded(row->record.state); }));
}

double ExportQueue::share() const {
    auto const* const row = running();
    return row ? share(*row) : 0;
}

/// To read a film takes about as long as to draw it.
double ExportQueue::share(Row const& row) const {
    constexpr double drawing = 0.6;
    if (!row.record.checksFilm || hasEnded(row.record.state)) return row.share;
    bool const isRead = reading_ && running_ == row.record.id;
    return isRead ? drawing + (1 - drawing) * reading_->share() : drawing * row.share;
}

QString ExportQueue::summary() const {
    auto const active = activeCount();
    if (active == 0) return {};
    auto const doing = reading_ ? QStringLiteral("Reading %1 again") : QStringLiteral("Exporting %1");
    auto const* const row = running();
    auto const first = doing.arg(inQuotes((row ? *row : *rows_.front()).record.name));
    return active == 1 ? first : QStringLiteral("%1, %2 more to come").arg(first).arg(active - 1);
}

std::optional<std::string> ExportQueue::lastName(fs::path const& package) const {
    auto const found = std::ranges::find_if(
        rows_, [&](auto const& row) { return row->record.typedName && row->record.package == package.string(); });
    return found == rows_.end() ? std::nullopt : (*found)->record.typedName;
}

int ExportQueue::rowOf(UUID const& id) const {
    auto const found = std::ranges::find(rows_, id, [](auto const& row) { return row->record.id; });
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

ExportQueue::Row* ExportQueue::running() const {
    return running_ ? rows_[static_cast<std::size_t>(rowOf(*running_))].get() : nullptr;
}

void ExportQueue::changed(int row) {
    Q_EMIT dataChanged(index(row), index(row));
    Q_EMIT progressed();
}

QString ExportQueue::pace(Row const& row) const {
    auto const now = mediaClockNow();
    auto const frames = row.pace->framesASecond(now);
    if (!frames) return {};
    auto const rate = settingsFor(row.record.choices, *row.document).fps;
    auto const speed = *frames / static_cast<double>(rate);
    auto text = QStringLiteral(" · %1× real time").arg(speed, 0, 'f', speed < 10 ? 1 : 0);
    if (auto const left = row.pace->secondsLeft(now))
        text += QStringLiteral(" · %1 left").arg(exportText::about(*left));
    return text;
}

QString ExportQueue::status(Row const& row) const {
    auto const& record = row.record;
    switch (record.state) {
    case ExportState::waiting:
        return awaited_.contains(record.id) ? QStringLiteral("Waiting until private text is hidden")
                                            : QStringLiteral("Waiting");
    case ExportState::running:
        if (reading_) return QStringLiteral("Reading it again · ") + reading_->state();
        return text(displayName(row.pace->progress().stage)) + pace(row);
    case ExportState::done: {
        auto const age = libraryText::age(record.endedAt, QDateTime::currentDateTime());
        return record.bytes ? QString::fromStdString(fileSizeText(*record.bytes)) + QStringLiteral(" · ") + age : age;
    }
    case ExportState::failed: return QStringLiteral("Failed");
    case ExportState::cancelled: return QStringLiteral("Cancelled");
    case ExportState::interrupted: return QStringLiteral("Tavaro ended before this was done");
    }
    return {};
}

/// Where it stands still, which moment of the film it is at says what may be the matter with it.
QString ExportQueue::warning(Row const& row) const {
    if (!row.pace || reading_) return text(row.record.sentence);
    auto const still = row.pace->still(mediaClockNow());
    if (still < settings_.patience) return text(row.record.sentence);
    auto const& progress = row.pace->progress();
    auto const since = QStringLiteral("No progress for %1.").arg(exportText::about(still));
    if (progress.stage != ExportStage::rendering) return since;
    auto const rate = settingsFor(row.record.choices, *row.document).fps;
    auto const start = row.record.choices.range.value_or(TimeRange{}).start;
    double const at = start + static_cast<double>(progress.framesWritten) / static_cast<double>(rate);
    return since + QStringLiteral(" The frame at %1 is being drawn.").arg(QString::fromStdString(Timecode::format(at)));
}

QString ExportQueue::still(Row const& row) const {
    fs::path const film = row.record.path;
    bool const isFilm = row.record.state == ExportState::done && film.extension() != captionsEnding;
    return isFilm ? Stills::ofMovie(film) : Stills::ofPicture(ProjectPackage(row.record.package).thumbnailURL());
}

int ExportQueue::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant ExportQueue::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto const& row = *rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case nameRole: return text(row.record.name);
    case titleRole: return text(row.record.title);
    case detailRole: return text(row.record.detail);
    case stateRole: return text(nameOf(row.record.state));
    case shareRole: return share(row);
    case statusRole: return status(row);
    case warningRole: return warning(row);
    case fileRole: return libraryText::text(fs::path(row.record.path).filename());
    case stillRole: return still(row);
    case checkedRole: return text(row.record.checked);
    case legibleRole: return row.record.isLegible;
    default: return {};
    }
}

QHash<int, QByteArray> ExportQueue::roleNames() const {
    return {{nameRole, "name"},   {titleRole, "title"},     {detailRole, "detail"},    {stateRole, "phase"},
            {shareRole, "share"}, {statusRole, "status"},   {warningRole, "warning"},  {fileRole, "file"},
            {stillRole, "still"}, {checkedRole, "checked"}, {legibleRole, "isLegible"}};
}

}
