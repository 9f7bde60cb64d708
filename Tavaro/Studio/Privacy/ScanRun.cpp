#include <Tavaro/Studio/Privacy/ScanRun.h>

#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Values/Timecode.h>

#include <QLocale>

#include <algorithm>
#include <array>
#include <utility>

namespace tavaro {

namespace {

constexpr qsizetype mostSpans = 3; // that a sentence names
constexpr double shortest = 0.05;  // seconds that somebody could see anything in

QString clock(double seconds) { return toQString(Timecode::format(seconds)); }

/// "a", "a and b", "a, b and c"
QString enumerated(QStringList const& parts) {
    if (parts.size() < 2) return parts.value(0);
    return ScanRun::tr("%1 and %2").arg(parts.mid(0, parts.size() - 1).join(QStringLiteral(", ")), parts.back());
}

QString lowered(QString const& name) {
    bool const isWord = name.size() > 1 && name[1].isLower(); // not "API key"
    return isWord ? name[0].toLower() + name.mid(1) : name;
}

QString counted(qsizetype count, QString const& one, QString const& many) { return count == 1 ? one : many.arg(count); }

QString sentenceOf(KeptScan const& kept, bool isStopped) {
    auto const hidden = static_cast<qsizetype>(kept.hidden), rejected = static_cast<qsizetype>(kept.rejected);
    auto said = hidden == 0
                    ? ScanRun::tr("Nothing private was found.")
                    : counted(hidden, ScanRun::tr("1 place was hidden."), ScanRun::tr("%1 places were hidden."));
    if (rejected > 0)
        said += QLatin1Char(' ') + counted(rejected, ScanRun::tr("1 stays shown, as you chose before."),
                                           ScanRun::tr("%1 stay shown, as you chose before."));
    if (isStopped) said = ScanRun::tr("Stopped early.") + QLatin1Char(' ') + said;
    return said;
}

bool concerns(ProjectChange const& change) {
    return std::ranges::any_of(
        std::array<std::string_view, 5>{"redactionSettings", "redactionScan", "timeline", "assetDurations", "metadata"},
        [&](auto const field) { return change.fields.contains(field); });
}

}

ScanRun::ScanRun(MainQueue& queue, EditorSession& session, MovieScan scan)
    : queue_(queue)
    , session_(session)
    , scan_(std::move(scan)) {
    observation_ = session.project().observe([this](ProjectChange const& change) {
        if (concerns(change)) follow();
    });
    follow();
}

ScanRun::~ScanRun() = default;

void ScanRun::follow() {
    checkPatterns();
    missing_ = missingSpans();
    Q_EMIT changed();
}

/// A pattern that is wrong is told of while it is written, not at the end of a scan.
void ScanRun::checkPatterns() {
    auto const& settings = session_.document().redactionSettings;
    if (checked_ == settings) return;
    checked_ = settings;
    remarks_.clear();
    RedactionSettings const own{.kinds = {}, .customWords = {}, .customPatterns = settings.customPatterns};
    SensitiveTextClassifier const classifier(own);
    for (auto const& warning : classifier.warnings()) remarks_.push_back(toQString(warning));
}

QStringList ScanRun::missingSpans() const {
    auto const& project = session_.document();
    auto const shown = recordingOnTimeline(project);
    QStringList spans;
    for (auto const& range : unscannedRanges(project, project.redactionSettings))
        for (auto const& stretch : shown.stretches(range))
            if (stretch.range.duration > shortest)
                spans.push_back(tr("%1–%2").arg(clock(stretch.range.start), clock(stretch.range.end())));
    return spans;
}

// What it says

bool ScanRun::canStart() const { return !isRunning() && !session_.document().timeline.clips.empty(); }

bool ScanRun::wasScanned() const { return session_.document().redactionScan.has_value(); }

QString ScanRun::lastScan() const {
    auto const& project = session_.document();
    if (!wasScanned()) return {};
    auto const moment = QDateTime::fromMSecsSinceEpoch(project.redactionScan->date.milliseconds);
    auto said = tr("Last looked at on %1.").arg(QLocale().toString(moment, QLocale::ShortFormat));
    if (!looksForTheSame(project.redactionScan->settings, project.redactionSettings))
        return said + QLatin1Char(' ') + tr("What to find has changed since then.");
    if (missing_.isEmpty()) return said;
    auto parts = missing_.mid(0, mostSpans);
    if (missing_.size() > mostSpans)
        parts.push_back(counted(missing_.size() - mostSpans, tr("1 more part"), tr("%1 more parts")));
    return said + QLatin1Char(' ') + tr("Not looked at: %1 of the film.").arg(enumerated(parts));
}

QString ScanRun::looksFor() const {
    auto const& settings = session_.document().redactionSettings;
    QStringList parts;
    for (auto const kind : settings.kinds)
        if (kind != SensitiveKind::custom) parts.push_back(lowered(toQString(displayName(kind))));
    auto const words = static_cast<qsizetype>(settings.customWords.size());
    auto const patterns = static_cast<qsizetype>(settings.customPatterns.size());
    if (words > 0) parts.push_back(counted(words, tr("1 word of yours"), tr("%1 words of yours")));
    if (patterns > 0) parts.push_back(counted(patterns, tr("1 pattern of yours"), tr("%1 patterns of yours")));
    return parts.isEmpty() ? tr("Nothing is chosen to be found.") : tr("Looks for: %1.").arg(enumerated(parts));
}

// The run

void ScanRun::start() {
    if (!canStart()) return;
    failure_.clear(), result_.clear();
    progress_ = {}, found_ = 0;
    auto const& project = session_.document();
    try {
        auto request = privacyScanRequest(project, session_.project().package(), project.redactionSettings,
                                          isWhole() ? ScanExtent::everything : ScanExtent::missing);
        if (scan_) request.scan = scan_;
        job_ = std::make_unique<ScanTask>(privacyScanJob(queue_, std::move(request)));
        job_->onProgress([this](ScanProgress const& progress) {
            progress_ = {progress.seconds, progress.total}, found_ = static_cast<int>(progress.found);
            Q_EMIT changed();
        });
        job_->onFinished([this] { finish(); });
        job_->start();
    } catch (Error const& error) {
        failure_ = toQString(error.what());
    }
    Q_EMIT changed();
}

void ScanRun::stop() {
    if (!job_ || isStopping_) return;
    isStopping_ = true;
    job_->cancel();
    Q_EMIT changed();
}

void ScanRun::finish() {
    auto const job = std::move(job_);
    isStopping_ = false;
    try {
        keep(job->result());
    } catch (Error const& error) {
        failure_ = toQString(error.what());
    }
    Q_EMIT changed();
}

void ScanRun::keep(MadePrivacyScan const& made) {
    if (made.isStopped && made.recordings.empty()) return;
    KeptScan kept;
    session_.edit(privacyScanStep, [&](DemoProject& project) { kept = keepPrivacyScan(project, made); });
    result_ = sentenceOf(kept, made.isStopped);
    if (made.failure) failure_ = toQString(*made.failure);
    for (auto const& warning : made.warnings)
        if (auto const said = toQString(warning); !remarks_.contains(said)) remarks_.push_back(said);
}

}
