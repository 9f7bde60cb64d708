#include <Tavaro/Studio/Exports/ExportForm.h>

#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Studio/Exports/ExportPlace.h>
#include <Tavaro/Studio/Exports/ExportText.h>
#include <Tavaro/Studio/Exports/FilmCaptions.h>
#include <Tavaro/Studio/Library/LibraryText.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroMedia/GIF/GIFWriter.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <QDir>

#include <algorithm>
#include <cmath>
#include <unistd.h>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// What is to be said of a place for a file.
struct Place {
    std::string remark, problem;
};

fs::path firstThatIs(fs::path folder) {
    std::error_code ignored;
    while (folder.has_relative_path() && !fs::exists(folder, ignored)) folder = folder.parent_path();
    return folder;
}

Place lookedAt(fs::path const& file, double mostBytes) {
    auto const folder = firstThatIs(file.parent_path());
    std::error_code code;
    if (!fs::is_directory(folder, code)) return {.problem = "“" + folder.string() + "” is not a folder."};
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return {.problem = "Nothing can be written into “" + folder.string() + "”."};
    auto const room = fs::space(folder, code);
    if (!code && static_cast<double>(room.available) < mostBytes)
        return {.remark = "Only " + fileSizeText(static_cast<std::int64_t>(room.available)) +
                          " are free there, which may not be enough."};
    try {
        auto const free = unusedFile(file);
        if (free == file) return {};
        return {.remark = "There is one of that name: this will be “" + free.filename().string() + "”."};
    } catch (Error const& error) {
        return {.problem = error.what()};
    }
}

QVariantMap option(QString const& text, QString const& value) {
    return {{QStringLiteral("text"), text}, {QStringLiteral("value"), value}};
}

}

ExportForm::ExportForm(MainQueue& queue, Preferences& preferences, ExportQueue& exports)
    : preferences_(preferences)
    , exports_(exports)
    , wishes_(ExportWishes::last(preferences))
    , side_(queue, "com.tavaro.exports.places") {
    connect(&exports, &ExportQueue::measured, this, &ExportForm::changed);
}

void ExportForm::begin(EditorSession* session) {
    session_ = session;
    wishes_ = ExportWishes::last(preferences_).of(session->document());
    typedName_ = exports_.lastName(session->project().package().url());
    rangeOnly_ = session->range().duration > 0;
    awaitsScan_ = true;
    remark_.clear();
    update();
}

bool ExportForm::repeat(EditorSession* session) {
    begin(session);
    rangeOnly_ = false; // it was marked for something else since
    return submit();
}

bool ExportForm::submit() {
    if (!session_ || !problem_.isEmpty()) return false;
    return session_->attempt([&] {
        auto made = order();
        if (writesCaptionsOnly())
            exports_.addCaptions(made, file());
        else
            exports_.add(std::move(made));
        wishes_.remember(preferences_);
        if (!writesCaptionsOnly()) rememberExportSettings(session_->project(), settings(wishes_));
    });
}

ExportOrder ExportForm::order() const {
    auto choices = writesCaptionsOnly() ? ExportChoices{} : wishes_.choices();
    choices.output = file().string();
    choices.range = filmRange();
    return {.package = session_->project().package(),
            .document = session_->document(),
            .choices = choices,
            .title = wishes_.title(),
            .writesCaptions = !writesCaptionsOnly() && wishes_.captionsBeside && hasCaptions(),
            .typedName = typedStem(),
            .checksFilm = canCheck() && wishes_.checksFilm,
            .awaitsScan = awaitsScan_};
}

void ExportForm::update() {
    if (!session_) return;
    problem_.clear();
    try {
        if (writesCaptionsOnly())
            requireCaptions(session_->document());
        else
            settings(wishes_);
        if (session_->document().timeline.clips.empty()) problem_ = QStringLiteral("The film is empty.");
    } catch (Error const& error) {
        problem_ = QString::fromUtf8(error.what());
    }
    if (problem_.isEmpty()) look();
    if (std::exchange(shownPlace_, wishes_.place) != wishes_.place) Q_EMIT placeChanged();
    Q_EMIT changed();
}

/// At the place where the file is to be.
void ExportForm::look() {
    constexpr double ofCaptions = 100'000; // bytes
    auto const needed = writesCaptionsOnly() ? ofCaptions : estimate(settings(wishes_)).bytes.least;
    side_.ask([file = file(), needed] { return lookedAt(file, needed); },
              [this, look = ++looks_](Outcome<Place> const& seen) {
                  if (look != looks_) return;
                  remark_ = text(seen.value().remark);
                  if (problem_.isEmpty()) problem_ = text(seen.value().problem);
                  Q_EMIT changed();
              });
}

std::optional<ExportSettings> ExportForm::settings() const {
    try {
        return settings(wishes_);
    } catch (Error const&) {
        return std::nullopt; // `problem` says what is wrong
    }
}

/// Throws as `settingsFor`.
ExportSettings ExportForm::settings(ExportWishes const& wishes) const {
    return settingsFor(wishes.choices(), session_->document());
}

ExportEstimate ExportForm::estimate(ExportSettings const& settings) const {
    return ExportEstimate::of(settings, duration(), exports_.measures());
}

QVariantMap ExportForm::card(std::string const& id) const {
    auto const* const place = ExportPlace::withID(id);
    auto wishes = wishes_;
    if (wishes.place != id) wishes.choose(place->ways.front().preset);
    auto const settings = this->settings(wishes);
    auto const estimate = this->estimate(settings);
    return {{QStringLiteral("id"), text(id)},
            {QStringLiteral("title"), text(place->title)},
            {QStringLiteral("detail"), text(place->detail)},
            {QStringLiteral("icon"), text(place->icon)},
            {QStringLiteral("picture"), exportText::picture(settings)},
            {QStringLiteral("size"), exportText::size(estimate.bytes)},
            {QStringLiteral("time"), exportText::time(estimate.seconds)}};
}

QVariantList ExportForm::places() const {
    if (!session_) return {};
    QVariantList cards;
    for (auto const& place : ExportPlace::all()) cards.push_back(card(place.id));
    auto const plain = [](char const* id, char const* title, char const* detail, char const* icon) {
        return QVariantMap{{QStringLiteral("id"), text(id)},         {QStringLiteral("title"), text(title)},
                           {QStringLiteral("detail"), text(detail)}, {QStringLiteral("icon"), text(icon)},
                           {QStringLiteral("picture"), QString()},   {QStringLiteral("size"), QString()},
                           {QStringLiteral("time"), QString()}};
    };
    cards.push_back(plain("custom", "Custom", "Size, rate and format", "sliders"));
    if (hasCaptions()) cards.push_back(plain("captions", "Captions only", "A SubRip file", "badge-cc"));
    return cards;
}

QVariantList ExportForm::ways() const {
    QVariantList options;
    auto const* const place = ExportPlace::withID(wishes_.place);
    if (place && place->ways.size() > 1)
        for (auto const& way : place->ways) options.push_back(option(text(way.title), text(way.preset)));
    return options;
}

QVariantList ExportForm::formats() {
    QVariantList options;
    for (std::size_t i = 0; i < namesOf(ExportFormat{}).size(); ++i)
        options.push_back(option(text(displayName(static_cast<ExportFormat>(i))), text(namesOf(ExportFormat{})[i])));
    return options;
}

/// The numbers of "custom" begin with those of the place before it.
void ExportForm::setPlace(QString const& id) {
    auto const wanted = id.toStdString();
    if (wanted == wishes_.place) return;
    if (auto const* const place = ExportPlace::withID(wanted))
        wishes_.choose(place->ways.front().preset);
    else
        wishes_.place = wanted;
    update();
}

void ExportForm::setPreset(QString const& id) {
    if (id == preset()) return;
    wishes_.choose(id.toStdString());
    update();
}

void ExportForm::keepShape(std::int64_t& other, std::int64_t side, std::int64_t canvasSide,
                           std::int64_t canvasOther) const {
    if (!keepsShape_ || canvasSide <= 0) return;
    auto const exact = static_cast<double>(side) * static_cast<double>(canvasOther) / static_cast<double>(canvasSide);
    other =
        std::clamp(std::llround(exact / 2) * 2, ExportChoices::shortestSide * 1LL, ExportChoices::longestSide * 1LL);
}

void ExportForm::setWidth(int pixels) {
    if (pixels == width() || !session_) return;
    auto const canvas = session_->document().canvas;
    wishes_.size.width = pixels;
    keepShape(wishes_.size.height, pixels, canvas.width, canvas.height);
    update();
}

void ExportForm::setHeight(int pixels) {
    if (pixels == height() || !session_) return;
    auto const canvas = session_->document().canvas;
    wishes_.size.height = pixels;
    keepShape(wishes_.size.width, pixels, canvas.height, canvas.width);
    update();
}

void ExportForm::setRate(int framesASecond) { change(wishes_.fps, static_cast<std::int64_t>(framesASecond)); }

int ExportForm::fastest() const { return static_cast<int>(isGIF() ? GIFWriter::fastestRate : ExportChoices::fastest); }

void ExportForm::setFormat(QString const& name) {
    auto const wanted = enumNamed<ExportFormat>(name.toStdString());
    if (!wanted || *wanted == wishes_.format) return;
    wishes_.format = *wanted;
    wishes_.fps = std::min<std::int64_t>(wishes_.fps, fastest());
    update();
}

bool ExportForm::isGIF() const { return wishes_.format == ExportFormat::gif; }

bool ExportForm::hasBitrate() const {
    return wishes_.format != ExportFormat::gif && wishes_.format != ExportFormat::proRes;
}

void ExportForm::setKilobits(int kilobits) {
    change(wishes_.bitrate, kilobits > 0 ? std::optional(std::int64_t{1000} * kilobits) : std::nullopt);
}

void ExportForm::setFit(QString const& name) {
    if (auto const wanted = enumNamed<ContentFit>(name.toStdString())) change(wishes_.fit, *wanted);
}

bool ExportForm::hasCaptions() const { return session_ && !session_->document().captions.cues.empty(); }

bool ExportForm::isScanDue() const {
    return session_ && !writesCaptionsOnly() && DueScan::isDue(session_->project().package(), session_->document());
}

bool ExportForm::canCheck() const {
    if (!session_ || writesCaptionsOnly()) return false;
    return std::ranges::any_of(*session_->document().redactions, &RedactionTrack::isEnabled) || isScanDue();
}

QString ExportForm::range() const {
    if (!session_ || session_->range().duration <= 0) return {};
    auto const& range = session_->range();
    return QString::fromStdString(Timecode::format(range.start, Timecode::Fraction::hundredths) + "–" +
                                  Timecode::format(range.end(), Timecode::Fraction::hundredths));
}

std::optional<TimeRange> ExportForm::filmRange() const {
    if (!rangeOnly_ || session_->range().duration <= 0) return std::nullopt;
    auto const& range = session_->range();
    return TimeRange{range.start + session_->document().introDuration(), range.duration};
}

double ExportForm::duration() const {
    auto const part = filmRange();
    return part ? part->duration : session_->document().presentationDuration();
}

QString ExportForm::suggestion() const {
    if (!session_) return {};
    auto const& project = session_->document().name;
    auto const made = settings();
    if (writesCaptionsOnly() || !made) return text(fileNamePart(project));
    return text(suggestedFileName(*made, project));
}

void ExportForm::setName(QString const& name) {
    if (name == this->name()) return;
    typedName_ = name.toStdString();
    update();
}

/// Less the ending, which people type as well; none where nothing but blanks was typed.
std::optional<std::string> ExportForm::typedStem() const {
    auto typed = typedName_ ? text(*typedName_).trimmed() : QString();
    if (typed.endsWith(ending(), Qt::CaseInsensitive)) typed.chop(ending().size());
    return typed.trimmed().isEmpty() ? std::nullopt : std::optional(fileNamePart(typed.toStdString()));
}

QString ExportForm::ending() const {
    if (writesCaptionsOnly()) return text(captionsEnding);
    auto const made = session_ ? settings() : std::nullopt;
    return made ? QStringLiteral(".") + text(fileExtension(made->container)) : QString();
}

fs::path ExportForm::file() const {
    return libraryText::path(folderUrl().toLocalFile()) /
           (typedStem().value_or(suggestion().toStdString()) + ending().toStdString());
}

QUrl ExportForm::folderUrl() const {
    auto const usual = folders::movies() / "Tavaro" / "Exports";
    return QUrl::fromLocalFile(libraryText::text(wishes_.folder.empty() ? usual : fs::path(wishes_.folder)));
}

void ExportForm::setFolderUrl(QUrl const& folder) { change(wishes_.folder, folder.toLocalFile().toStdString()); }

/// "~/Movies/Tavaro/Exports"
QString ExportForm::folder() const {
    auto const path = folderUrl().toLocalFile();
    auto const home = QDir::homePath();
    return path.startsWith(home + QLatin1Char('/')) ? QStringLiteral("~") + path.mid(home.size()) : path;
}

QString ExportForm::outcome() const {
    auto const made = session_ ? settings() : std::nullopt;
    if (writesCaptionsOnly() || !made) return {};
    auto const estimate = this->estimate(*made);
    auto const time = exportText::time(estimate.seconds);
    auto line = exportText::all(*made) + QStringLiteral(" · ") + exportText::size(estimate.bytes);
    return time.isEmpty() ? line : line + QStringLiteral(" · takes ") + time;
}

}
