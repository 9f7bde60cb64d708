#include <Tavaro/Studio/Voice/TranscriptionRun.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroVoice/Transcription/SpokenLocale.h>

#include <algorithm>
#include <array>

namespace tavaro {

namespace {

constexpr qsizetype mostHeard = 1200; // characters that a page shows of what is being heard

QString nameOfTrack(AudioRole role) {
    switch (role) {
    case AudioRole::microphone: return TranscriptionRun::tr("Microphone");
    case AudioRole::system: return TranscriptionRun::tr("System sound");
    case AudioRole::voiceover: return TranscriptionRun::tr("Voiceover");
    case AudioRole::music: return TranscriptionRun::tr("Music");
    case AudioRole::camera: return TranscriptionRun::tr("Camera");
    }
    return {};
}

/// A sentence each: what it understands, how well, and what would be better.
QString aboutOf(TranscriptionEngine const& engine) {
    return toQString("It understands " + engine.languages + ". " + engine.accuracy + " " + engine.advice);
}

}

TranscriptionRun::TranscriptionRun(MainQueue& queue, EditorSession& session, VoiceMeans const& means)
    : queue_(queue)
    , session_(session)
    , means_(means)
    , locale_(toQString(usersLocale()))
    , looking_(queue, "com.tavaro.studio.engines") {
    connect(&session, &EditorSession::documentChanged, this, &TranscriptionRun::changed);
}

TranscriptionRun::~TranscriptionRun() = default;

// What there is

void TranscriptionRun::look() {
    if (isLooking_) return;
    isLooking_ = true;
    auto const answer = [this](Outcome<std::vector<TranscriptionEngine>> const& found) {
        isLooking_ = false;
        session_.attempt([&] { engines_ = found.value(); });
        Q_EMIT changed();
    };
    looking_.ask([places = means_.engines()] { return transcriptionEngines(places); }, answer);
    Q_EMIT changed();
}

QVariantList TranscriptionRun::engines() const {
    QVariantList rows;
    for (auto const& engine : engines_) {
        rows.push_back(QVariantMap{{QStringLiteral("id"), toQString(engine.id)},
                                   {QStringLiteral("name"), toQString(engine.name)},
                                   {QStringLiteral("isReady"), engine.isReady},
                                   {QStringLiteral("about"), aboutOf(engine)}});
    }
    return rows;
}

QString TranscriptionRun::engine() const {
    auto const isChosen = [&](auto const& each) { return each.isReady && toQString(each.id) == engine_; };
    auto found = std::ranges::find_if(engines_, isChosen);
    if (found == engines_.end()) found = std::ranges::find_if(engines_, &TranscriptionEngine::isReady);
    return found == engines_.end() ? QString() : toQString(found->id);
}

void TranscriptionRun::setEngine(QString const& id) {
    engine_ = id;
    Q_EMIT changed();
}

void TranscriptionRun::setLocale(QString const& locale) {
    locale_ = locale.trimmed();
    Q_EMIT changed();
}

std::vector<AudioRole> TranscriptionRun::roles() const {
    auto const& project = session_.document();
    std::vector<AudioRole> roles;
    for (auto const role : {AudioRole::microphone, AudioRole::system, AudioRole::camera, AudioRole::voiceover}) {
        auto const isHeard = [&](AudioTrack const& track) { return track.role == role && !track.clips.empty(); };
        bool const isSpoken = role == AudioRole::voiceover && project.voiceover &&
                              std::ranges::any_of(project.voiceover->segments,
                                                  [](auto const& line) { return line.audioAsset.has_value(); });
        if (isSpoken || std::ranges::any_of(project.audioTracks, isHeard)) roles.push_back(role);
    }
    return roles;
}

AudioRole TranscriptionRun::role() const {
    auto const there = roles();
    auto const chosen = enumNamed<AudioRole>(track_.toStdString());
    if (chosen && std::ranges::find(there, *chosen) != there.end()) return *chosen;
    return there.empty() ? AudioRole::microphone : there.front();
}

QVariantList TranscriptionRun::tracks() const {
    QVariantList rows;
    for (auto const role : roles()) {
        rows.push_back(QVariantMap{{QStringLiteral("role"), toQString(nameOf(role))},
                                   {QStringLiteral("name"), nameOfTrack(role)}});
    }
    return rows;
}

QString TranscriptionRun::track() const { return toQString(nameOf(role())); }

void TranscriptionRun::setTrack(QString const& role) {
    track_ = role;
    Q_EMIT changed();
}

// The run

void TranscriptionRun::start() {
    if (!canStart()) return;
    heard_.clear(), failure_.clear(), remarks_.clear();
    words_ = 0, progress_ = {};
    session_.attempt([&] {
        TranscriptionRequest request{
            .sounds = spokenSounds(session_.document(), session_.project().package(), role()),
            .choices = {.locale = locale_.toStdString(), .engine = engine().toStdString(), .track = role()},
            .places = means_.engines()};
        job_ = std::make_unique<TranscriptionTask>(transcriptionJob(queue_, std::move(request)));
        job_->onProgress([this](TranscriptionProgress const& progress) { hear(progress); });
        job_->onRemark([this](std::string const& sentence) {
            remarks_.push_back(toQString(sentence));
            Q_EMIT changed();
        });
        job_->onFinished([this] { finish(); });
        job_->start();
    });
    Q_EMIT changed();
}

void TranscriptionRun::cancel() {
    if (!job_ || isStopping_) return;
    isStopping_ = true;
    job_->cancel();
    Q_EMIT changed();
}

void TranscriptionRun::hear(TranscriptionProgress const& progress) {
    progress_ = {progress.seconds, progress.total};
    for (auto const& word : progress.words) {
        if (!heard_.isEmpty()) heard_ += QLatin1Char(' ');
        heard_ += toQString(word.text);
    }
    words_ += static_cast<int>(progress.words.size());
    if (heard_.size() > mostHeard) heard_ = QStringLiteral("… ") + heard_.right(mostHeard).section(u' ', 1);
    Q_EMIT changed();
}

void TranscriptionRun::finish() {
    auto const job = std::move(job_);
    bool const isCancelled = std::exchange(isStopping_, false);
    try {
        auto const& transcript = job->result().transcript;
        if (!isCancelled)
            session_.edit(transcriptionStep, [&](DemoProject& project) { keepTranscript(project, transcript); });
    } catch (Error const& error) {
        if (!isCancelled) failure_ = toQString(error.what());
    }
    heard_.clear();
    Q_EMIT changed();
}

}
