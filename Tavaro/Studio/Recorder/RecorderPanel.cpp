#include <Tavaro/Studio/Recorder/RecorderPanel.h>

#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCore/Values/Timecode.h>

#include <cmath>

namespace tavaro {

namespace {

constexpr int countdownSeconds = 3;
constexpr double silenceWorthSaying = 5; // seconds
constexpr double littleRoom = 5 * 60;    // seconds

QString text(std::string_view from) { return QString::fromUtf8(from.data(), static_cast<qsizetype>(from.size())); }

QVariantMap source(char const* kind, std::string const& id, std::string const& name, QString const& detail) {
    return {{QStringLiteral("kind"), QLatin1String(kind)},
            {QStringLiteral("id"), text(id)},
            {QStringLiteral("name"), text(name)},
            {QStringLiteral("detail"), detail}};
}

QString sizeOf(PixelRect const& frame) { return QStringLiteral("%1 × %2").arg(frame.width).arg(frame.height); }

QString timeOf(RecorderState const& state) {
    if (state.phase == RecorderPhase::countdown)
        return state.countdown > 0 ? QString::number(state.countdown) : QString();
    return text(Timecode::format(state.take.seconds));
}

QString nameOf(StreamRole role) { return QStringLiteral("The ") + text(spokenName(role)); }

}

QString noteOf(RecorderProgress const& take) {
    if (take.isScreenAway) return QStringLiteral("The screen gives no pictures");
    if (take.isCameraAway) return QStringLiteral("The camera gives no pictures");
    for (auto const& sound : take.sounds) {
        if (sound.isAway) return nameOf(sound.role) + QStringLiteral(" is gone");
        if (sound.silentSeconds >= silenceWorthSaying) return nameOf(sound.role) + QStringLiteral(" is silent");
    }
    if (take.roomSeconds && *take.roomSeconds < littleRoom)
        return QStringLiteral("%1 left on the disk").arg(text(Timecode::format(*take.roomSeconds)));
    if (take.droppedFrames > 0) return QStringLiteral("Pictures lost: %1").arg(take.droppedFrames);
    return {};
}

RecorderPanel::RecorderPanel(Application& application)
    : application_(application)
    , observation_(application.recorder().observe([this](RecorderState const& state) { show(state); }))
    , choices_(application.preferences().observe([this] { Q_EMIT choicesChanged(); })) {}

bool RecorderPanel::microphone() const { return application_.preferences().get(microphoneRecorded); }

bool RecorderPanel::systemSound() const { return application_.preferences().get(systemAudioRecorded); }

bool RecorderPanel::camera() const { return application_.preferences().get(cameraRecorded); }

void RecorderPanel::setMicrophone(bool isRecorded) { choose(microphoneRecorded, isRecorded); }

void RecorderPanel::setSystemSound(bool isRecorded) { choose(systemAudioRecorded, isRecorded); }

void RecorderPanel::setCamera(bool isRecorded) { choose(cameraRecorded, isRecorded); }

void RecorderPanel::choose(Preference<bool> const& preference, bool isRecorded) {
    attempt([&] { application_.preferences().set(preference, isRecorded); });
    Q_EMIT choicesChanged();
}

template<class Work> void RecorderPanel::attempt(Work const& work) {
    try {
        work();
    } catch (Error const& error) {
        Q_EMIT failed(QString::fromUtf8(error.what()));
    }
}

void RecorderPanel::look() {
    application_.sources([this](Outcome<SourceList> const& found) { attempt([&] { list(found.value()); }); });
}

void RecorderPanel::list(SourceList const& found) {
    sources_.clear();
    for (auto const& display : found.displays)
        sources_.push_back(source("display", display.id, display.name, sizeOf(display.frame)));
    for (auto const& window : found.windows)
        sources_.push_back(source("window", window.id(), window.title, text(window.application)));
    if (found.displays.empty()) // the desktop asks, and shares what the user says
        sources_.push_back(source("display", "", "Screen", QStringLiteral("The desktop asks what to share")));
    QStringList limits;
    for (auto const& limit : found.limits) limits.push_back(text(limit));
    limits_ = limits.join(QLatin1Char(' '));
    found_ = {!found.microphones.empty(), found.systemSound.has_value(), !found.cameras.empty()};
    Q_EMIT sourcesChanged();
}

RecordingRequest RecorderPanel::request(QString const& kind, QString const& id) {
    auto& preferences = application_.preferences();
    RecordingRequest request{.countdown = countdownSeconds};
    auto& options = request.recorder;
    if (kind == QStringLiteral("window"))
        options.source = parseWindowSource(id.toStdString());
    else
        options.source = DisplaySource{id.toStdString()};
    if (microphone() && found_.hasMicrophone) options.microphone = MicrophoneSource{preferences.get(microphoneChosen)};
    if (systemSound() && found_.hasSystemSound) options.systemSound = SystemSoundSource{};
    if (camera() && found_.hasCamera) options.camera = cameraSource(preferences.get(cameraChosen), preferences);
    return request;
}

void RecorderPanel::start(QString const& kind, QString const& id) {
    attempt([&] {
        application_.recorder().expectIdle();
        isOurs_ = true;
        application_.record(request(kind, id), {.over = [this](RecordingOutcome const& outcome) { over(outcome); }});
    });
}

void RecorderPanel::over(RecordingOutcome const& outcome) {
    isOurs_ = false;
    if (outcome.made) Q_EMIT saved(text(outcome.made->made.path));
    if (outcome.failure && outcome.kind != RecordingOutcome::Kind::discarded) Q_EMIT failed(text(outcome.sentence()));
    if (outcome.made && outcome.made->endedEarly) Q_EMIT failed(text(*outcome.made->endedEarly));
}

void RecorderPanel::pause() {
    attempt([&] { application_.recorder().pause(); });
}

void RecorderPanel::resume() {
    attempt([&] { application_.recorder().resume(); });
}

void RecorderPanel::stop() {
    attempt([&] {
        application_.recorder().isTaking() ? application_.recorder().stop() : application_.recorder().cancel();
    });
}

void RecorderPanel::discard() {
    attempt([&] { application_.recorder().cancel(); });
}

/// Some fifty times a second in a take: what is shown changes once.
void RecorderPanel::show(RecorderState const& state) {
    Shown shown{text(namesOf(RecorderPhase{})[static_cast<std::size_t>(state.phase)]), timeOf(state),
                noteOf(state.take), isOurs_};
    if (shown == shown_) return;
    shown_ = std::move(shown);
    Q_EMIT changed();
}

}
