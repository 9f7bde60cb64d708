#include <Tavaro/Studio/Voice/VoiceOffer.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroVoice/Transcription/SpokenLocale.h>

#include <QLocale>

#include <algorithm>
#include <map>

namespace tavaro {

namespace {

constexpr double slowest = 0.5, fastest = 2;

/// Voices of one language are chosen from together, wherever it is spoken; those of a service speak many.
QString groupOf(Voice const& voice) {
    if (!isSystemVoice(voice.id)) return QStringLiteral("service");
    return toQString(languageOfLocale(voice.language));
}

QString nameOfGroup(QString const& group, Voice const& voice) {
    if (group == QStringLiteral("service")) return toQString(voice.engine);
    QLocale const locale(group);
    if (locale.language() == QLocale::C) return group;
    return QLocale::languageToString(locale.language());
}

QString nameOfVoice(Voice const& voice) {
    if (!isSystemVoice(voice.id)) return toQString(voice.name);
    return QStringLiteral("%1 · %2").arg(toQString(voice.name), toQString(voice.engine));
}

QString voiceNameOf(VoiceSettings const& settings) {
    return toQString(settings.voiceName.empty() ? settings.voiceID : settings.voiceName);
}

QString aboutOf(Voice const& voice) {
    QStringList parts;
    if (!voice.description.empty()) parts.push_back(toQString(voice.description));
    if (isSystemVoice(voice.id) && !voice.language.empty()) parts.push_back(toQString(voice.language));
    return parts.join(QStringLiteral(" · "));
}

}

VoiceOffer::VoiceOffer(MainQueue& queue, EditorSession& session, VoiceMeans const& means)
    : session_(session)
    , means_(means)
    , looking_(queue, "com.tavaro.studio.voices") {
    connect(&session, &EditorSession::documentChanged, this, &VoiceOffer::changed);
}

void VoiceOffer::look() {
    ++looks_;
    auto const find = [service = means_.service()] {
        auto const offered = service.offered();
        return Found{offered.voices, chosenVoice({}, {}, offered).voiceID};
    };
    looking_.ask(find, [this](Outcome<Found> const& found) {
        --looks_;
        session_.attempt([&] {
            voices_ = found.value().voices;
            usual_ = found.value().usual;
        });
        Q_EMIT changed();
    });
    Q_EMIT changed();
}

/// A service has more voices than the known ones, where there is a key. Where it does not answer these stay.
void VoiceOffer::askService() {
    if (hasAskedService_) return;
    hasAskedService_ = true;
    ++looks_;
    looking_.ask([speakers = means_.service().speakers] { return speakers()->voices(); },
                 [this](Outcome<std::vector<Voice>> const& found) {
                     --looks_;
                     if (!found.failure() && !std::ranges::all_of(found.value(), isSystemVoice, &Voice::id))
                         voices_ = found.value();
                     Q_EMIT changed();
                 });
}

QVariantList VoiceOffer::languages() const {
    std::map<QString, QString> names; // by what is shown
    for (auto const& voice : voices_) {
        auto const group = groupOf(voice);
        names.emplace(nameOfGroup(group, voice), group);
    }
    QVariantList rows;
    for (auto const& [name, group] : names)
        rows.push_back(QVariantMap{{QStringLiteral("id"), group}, {QStringLiteral("name"), name}});
    return rows;
}

QString VoiceOffer::language() const {
    if (!language_.isEmpty()) return language_;
    auto const* voice = chosen();
    return voice ? groupOf(*voice) : QString();
}

void VoiceOffer::setLanguage(QString const& language) {
    language_ = language;
    if (language == QStringLiteral("service")) askService();
    Q_EMIT changed();
}

QVariantList VoiceOffer::voices() const {
    auto const group = language();
    QVariantList rows;
    for (auto const& voice : voices_) {
        if (groupOf(voice) != group) continue;
        rows.push_back(QVariantMap{{QStringLiteral("id"), toQString(voice.id)},
                                   {QStringLiteral("name"), nameOfVoice(voice)},
                                   {QStringLiteral("about"), aboutOf(voice)},
                                   {QStringLiteral("isPaid"), !isSystemVoice(voice.id)}});
    }
    return rows;
}

// Who speaks

VoiceSettings VoiceOffer::planned() const {
    auto const& plan = session_.document().voiceover;
    return plan ? plan->voice : VoiceSettings{};
}

QString VoiceOffer::voice() const { return toQString(settings().voiceID); }

QString VoiceOffer::voiceName() const {
    auto const* voice = chosen();
    return voice ? nameOfVoice(*voice) : voiceNameOf(settings());
}

Voice const* VoiceOffer::chosen() const {
    auto const found = std::ranges::find(voices_, settings().voiceID, &Voice::id);
    return found == voices_.end() ? nullptr : &*found;
}

VoiceSettings VoiceOffer::settings() const {
    auto plan = planned();
    auto const& id = plan.voiceID.empty() ? usual_ : plan.voiceID;
    if (id.empty()) return plan;
    auto const asked = id;
    return chosenVoice(std::move(plan), asked, {.voices = voices_});
}

bool VoiceOffer::isPaid() const {
    auto const id = settings().voiceID;
    return !id.empty() && !isSystemVoice(id);
}

double VoiceOffer::speed() const { return planned().speed; }

void VoiceOffer::choose(QString const& id) {
    if (id.isEmpty()) return;
    auto plan = planned();
    plan.modelID.clear(); // of the voice before
    edit("Choose Voice", chosenVoice(std::move(plan), id.toStdString(), {.voices = voices_}));
}

void VoiceOffer::setSpeed(double speed) {
    auto plan = planned();
    plan.speed = std::clamp(speed, slowest, fastest);
    edit("Change Voice Speed", plan);
}

void VoiceOffer::edit(char const* step, VoiceSettings const& settings) {
    if (settings == planned()) return;
    session_.edit(step, [&](DemoProject& project) {
        if (!project.voiceover) project.voiceover.emplace();
        project.voiceover->voice = settings;
    });
}

}
