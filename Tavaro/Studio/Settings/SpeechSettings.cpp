#include <Tavaro/Studio/Settings/SpeechSettings.h>

#include <Tavaro/Studio/Library/ShowInFolder.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>
#include <TavaroVoice/Voices/VoiceBox.h>

#include <QtQml>

#include <algorithm>
#include <memory>
#include <string_view>
#include <system_error>

namespace tavaro {

namespace {

using Key = SpeechSettings::Means::Key;

/// Throws the reason where the keychain could not be asked.
Key storedKey() {
    auto const found = elevenLabsKey::find();
    if (!found.problem.empty()) throw Error(found.problem);
    if (!found.key) return Key::none;
    return elevenLabsKey::isFromEnvironment() ? Key::environment : Key::stored;
}

QString nameOfState(Key key) {
    switch (key) {
    case Key::none: return QStringLiteral("none");
    case Key::stored: return QStringLiteral("stored");
    case Key::environment: return QStringLiteral("environment");
    }
    return {};
}

QVariantMap row(QString const& name, bool isReady, QString const& about) {
    return {{QStringLiteral("name"), name}, {QStringLiteral("isReady"), isReady}, {QStringLiteral("about"), about}};
}

QVariantList rowsOf(std::vector<TranscriptionEngine> const& engines) {
    QVariantList rows;
    for (auto const& engine : engines) {
        auto const about = "It understands " + engine.languages + ". " + engine.accuracy + " " + engine.advice;
        rows.push_back(row(toQString(engine.name), engine.isReady, toQString(about)));
    }
    return rows;
}

struct SpeakingEngine {
    char const* id;
    char const* good;   // what it is good for
    char const* advice; // how to get it, or more of it
};
constexpr SpeakingEngine speakingEngines[] = {
    {"festival", "It is understood best.",
     "Install the packages “festival” and “festvox-us-slt-hts”; other packages “festvox-…” bring more voices."},
    {"flite", "It is the fastest, and comes with Tavaro.", "It speaks English only."},
    {"espeak-ng", "It speaks more than a hundred languages, like a machine.", "Install the package “espeak-ng”."},
};

QVariantList rowsOf(std::vector<Voice> const& voices) {
    QVariantList rows;
    for (auto const& engine : speakingEngines) {
        auto const count = std::ranges::count(voices, std::string_view(engine.id), &Voice::engine);
        auto about = SpeechSettings::tr(engine.good);
        if (count == 0 || std::string_view(engine.id) != "espeak-ng")
            about += QLatin1Char(' ') + SpeechSettings::tr(engine.advice);
        auto const voicesText = count == 1 ? SpeechSettings::tr("1 voice") : SpeechSettings::tr("%1 voices").arg(count);
        auto const name = toQString(engine.id);
        rows.push_back(row(count == 0 ? name : QStringLiteral("%1, %2").arg(name, voicesText), count > 0, about));
    }
    return rows;
}

}

SpeechSettings::Means SpeechSettings::Means::ofThisUser() {
    auto const settings = std::make_shared<VoiceBox::Settings const>(VoiceBox::Settings::ofThisUser());
    return {.key = storedKey,
            .store = elevenLabsKey::store,
            .forget = elevenLabsKey::forget,
            .check = [settings] { VoiceBox(*settings).service().validateKey(); },
            .voices = [settings] { return VoiceBox(*settings).systemVoices(); }};
}

SpeechSettings::SpeechSettings(MainQueue& queue, Preferences& preferences, Means means)
    : preferences_(preferences)
    , means_(std::move(means))
    , keys_(queue, "com.tavaro.studio.key")
    , engines_(queue, "com.tavaro.studio.engines") {}

void SpeechSettings::look() {
    if (!isBusy_) ask(means_.key, {});
    lookForEngines();
}

// The key

/// Does it beside the window, and says what came of it.
void SpeechSettings::ask(std::function<Means::Key()> work, QString const& done) {
    if (isBusy_) return;
    isBusy_ = true;
    keys_.ask(std::move(work), [this, done](Outcome<Means::Key> const& outcome) {
        isBusy_ = false;
        isProblem_ = outcome.failure() != nullptr;
        try {
            keyState_ = nameOfState(outcome.value());
            said_ = done;
        } catch (Error const& error) {
            said_ = toQString(error.what());
        }
        Q_EMIT changed();
    });
    Q_EMIT changed();
}

void SpeechSettings::store(QString const& key) {
    auto bytes = key.trimmed().toUtf8();
    auto const problem = elevenLabsKey::problemOf({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    auto const secret =
        std::make_shared<Secret const>(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    bytes.fill('\0');
    if (!problem.empty()) {
        isProblem_ = true;
        said_ = toQString(problem);
        return Q_EMIT changed();
    }
    auto const work = [means = means_, secret] {
        means.store(*secret);
        return means.key();
    };
    ask(work, tr("The key is stored in your keychain. “Check” asks ElevenLabs whether it takes it."));
}

void SpeechSettings::check() {
    auto const work = [means = means_] {
        means.check();
        return means.key();
    };
    ask(work, tr("ElevenLabs takes the key."));
}

void SpeechSettings::forget() {
    auto const work = [means = means_] {
        means.forget();
        return means.key();
    };
    ask(work, tr("The key is forgotten."));
}

// The engines

void SpeechSettings::lookForEngines() {
    if (isLooking_) return;
    isLooking_ = true;
    auto const find = [means = means_, places = EnginePlaces::usual(preferences_)] {
        return Found{means.engines(places), means.voices()};
    };
    engines_.ask(find, [this](Outcome<Found> const& found) {
        isLooking_ = false;
        try {
            listeners_ = rowsOf(found.value().engines);
            speakers_ = rowsOf(found.value().voices);
        } catch (Error const& error) {
            Q_EMIT failed(toQString(error.what()));
        }
        Q_EMIT changed();
    });
    Q_EMIT changed();
}

QString SpeechSettings::modelFolder() const {
    return toQString(EnginePlaces::usual(preferences_).whisperModels.string());
}

QString SpeechSettings::model() const { return toQString(preferences_.get(whisperModelPreference)); }

void SpeechSettings::openModelFolder() {
    auto const folder = EnginePlaces::usual(preferences_).whisperModels;
    std::error_code code;
    std::filesystem::create_directories(folder, code);
    if (code) return Q_EMIT failed(tr("The folder “%1” cannot be made.").arg(toQString(folder.string())));
    showInFolder(folder / ".");
}

void SpeechSettings::setModel(QUrl const& file) {
    try {
        preferences_.set(whisperModelPreference, file.toLocalFile().toStdString());
    } catch (Error const& error) {
        Q_EMIT failed(toQString(error.what()));
    }
    lookForEngines();
    Q_EMIT changed();
}

void registerSpeechSettings(SpeechSettings& settings) {
    qmlRegisterSingletonInstance("Tavaro.Settings", 1, 0, "Speech", &settings);
}

}
