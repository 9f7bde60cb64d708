#include "../Editor/TestEditor.h"

#include <Tavaro/Studio/Settings/SpeechSettings.h>

#include <TavaroCore/Errors/Error.h>

#include <gtest/gtest.h>

#include <QMetaProperty>

#include <mutex>
#include <optional>

using namespace tavaro;

namespace {

/// A keychain and a service of a test's own.
class SpeechSettingsTest : public testing::Test {
protected:
    SpeechSettings::Means means() {
        using Key = SpeechSettings::Means::Key;
        return {.key = [this] { return stored ? Key::stored : Key::none; },
                .store =
                    [this](Secret const& key) {
                        if (isLocked) throw Error("The keychain is locked.");
                        stored = std::string(key.text());
                    },
                .forget = [this] { return std::exchange(stored, std::nullopt).has_value(); },
                .check =
                    [this] {
                        if (stored != "sk_0123456789") throw Error("That ElevenLabs API key was rejected.");
                    },
                .voices = [] { return std::vector<Voice>{{.id = "system:flite/slt", .engine = "flite"}}; },
                .engines =
                    [](EnginePlaces const& places) {
                        return std::vector<TranscriptionEngine>{
                            {.id = "whisper", .name = "whisper.cpp", .isReady = !places.whisperModel.empty()}};
                    }};
    }
    void settle() {
        TestEditor::waitFor([&] { return !settings.isBusy() && !settings.isLooking(); });
    }

    TemporaryFolder folder{TemporaryFolder::fastest()};
    Preferences preferences{folder / "preferences.json"};
    MainQueue queue;
    QueueInLoop loop{queue};
    std::optional<std::string> stored;
    bool isLocked = false;
    SpeechSettings settings{queue, preferences, means()};
};

QVariantMap rowOf(QVariantList const& rows, QString const& name) {
    for (auto const& row : rows)
        if (row.toMap().value(QStringLiteral("name")).toString().startsWith(name)) return row.toMap();
    return {};
}

}

TEST_F(SpeechSettingsTest, theKeyIsStoredCheckedAndForgottenAndShownNowhere) {
    settings.look(), settle();
    EXPECT_EQ(settings.keyState(), "none");
    settings.store(QStringLiteral(" sk_0123456789\n")), settle();
    EXPECT_EQ(stored, "sk_0123456789");
    EXPECT_EQ(settings.keyState(), "stored");
    for (int i = 0; i < settings.metaObject()->propertyCount(); ++i) {
        auto const property = settings.metaObject()->property(i);
        EXPECT_FALSE(property.read(&settings).toString().contains(QStringLiteral("0123456789"))) << property.name();
    }
    settings.check(), settle();
    EXPECT_EQ(settings.said(), "ElevenLabs takes the key.");
    EXPECT_FALSE(settings.isProblem());
    settings.forget(), settle();
    EXPECT_EQ(settings.keyState(), "none");
    EXPECT_FALSE(stored);
}

TEST_F(SpeechSettingsTest, whatGoesWrongIsASentenceAndChangesNothing) {
    settings.look(), settle();
    settings.store(QStringLiteral("my secret key")), settle();
    EXPECT_TRUE(settings.isProblem());
    EXPECT_FALSE(stored) << "that is no key";
    EXPECT_FALSE(settings.said().contains(QStringLiteral("secret")));
    isLocked = true;
    settings.store(QStringLiteral("sk_9876543210")), settle();
    EXPECT_EQ(settings.said(), "The keychain is locked.");
    EXPECT_EQ(settings.keyState(), "none");
    isLocked = false;
    settings.store(QStringLiteral("sk_9876543210")), settle();
    settings.check(), settle();
    EXPECT_EQ(settings.said(), "That ElevenLabs API key was rejected.");
    EXPECT_TRUE(settings.isProblem());
    EXPECT_EQ(settings.keyState(), "stored");
}

TEST_F(SpeechSettingsTest, enginesAreListedWithHowToGetThoseThatAreMissing) {
    settings.look(), settle();
    EXPECT_TRUE(rowOf(settings.speakers(), QStringLiteral("flite")).value(QStringLiteral("isReady")).toBool());
    auto const missing = rowOf(settings.speakers(), QStringLiteral("espeak-ng"));
    EXPECT_FALSE(missing.value(QStringLiteral("isReady")).toBool());
    EXPECT_TRUE(missing.value(QStringLiteral("about")).toString().contains(QStringLiteral("Install the package")));
    EXPECT_FALSE(rowOf(settings.listeners(), QStringLiteral("whisper")).value(QStringLiteral("isReady")).toBool());
    settings.setModel(QUrl::fromLocalFile(QStringLiteral("/models/ggml-base.bin"))), settle();
    EXPECT_EQ(settings.model(), "/models/ggml-base.bin");
    EXPECT_TRUE(rowOf(settings.listeners(), QStringLiteral("whisper")).value(QStringLiteral("isReady")).toBool());
}
