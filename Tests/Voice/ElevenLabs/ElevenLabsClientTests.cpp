#include "TestService.h"

#include <TavaroVoice/ElevenLabs/ElevenLabsSpeaker.h>
#include <TavaroVoice/Errors/VoiceError.h>

#include <TavaroPlatform/Queues/SerialQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using Kind = VoiceError::Kind;

constexpr auto key = "sk_0123456789abcdef";

class Folder {
public:
    Folder() {
        auto pattern = (fs::temp_directory_path() / "tavaro-voice-XXXXXX").string();
        path = ::mkdtemp(pattern.data());
    }
    ~Folder() { fs::remove_all(path); }
    std::string file(char const* name) const { return (path / name).string(); }
    fs::path path;
};

ElevenLabsClient clientOf(std::string const& host, std::string const& withKey = key,
                          WebClient::Limits const& limits = {}, std::string const& certificates = "") {
    return {[withKey] { return std::optional(Secret(withKey)); },
            {.host = host, .limits = limits, .certificates = certificates}};
}

template<class Work> VoiceError failureOf(Work const& work) {
    try {
        work();
    } catch (VoiceError const& error) {
        EXPECT_THAT(error.what(), Not(HasSubstr(key)));
        return error;
    }
    return {Kind::failed, "nothing failed"};
}

VoiceError failureOf(ElevenLabsClient client, std::string const& voice) {
    return failureOf([&] { client.synthesize("Hello.", {.voiceID = voice}); });
}

/// A second of 440 Hz, as the service would send it.
std::string madeMP3(Folder const& folder) {
    auto const file = folder.file("tone.mp3");
    auto const command = "ffmpeg -loglevel error -f lavfi -i sine=440:duration=1:sample_rate=44100 -b:a 128k " + file;
    EXPECT_EQ(std::system(command.c_str()), 0);
    return file;
}

}

TEST(ElevenLabsClient, asksAsTheServiceWants) {
    TestService service;
    auto client = clientOf(service.host());
    auto const voices = client.voices();
    ASSERT_EQ(voices.size(), 1u) << "entries without an id or a name are none";
    EXPECT_EQ(voices[0].labels, (std::map<std::string, std::string>{{"accent", "Irish"}, {"language", "en"}}));
    EXPECT_EQ(voices[0].previewURL, "https://example.com/a.mp3");
    EXPECT_FALSE(voices[0].description);
    auto const models = client.models();
    ASSERT_EQ(models.size(), 2u);
    EXPECT_TRUE(models[0].canDoTextToSpeech);
    EXPECT_FALSE(models[1].canDoTextToSpeech);
    client.validateKey();
    EXPECT_EQ(client.synthesize("Say \"hi\"\n", {.voiceID = "ok", .stability = 0.25, .style = 0.5, .speed = 1.1}),
              "no sound");

    auto const requests = service.requests();
    ASSERT_EQ(requests.size(), 4u) << "nothing is asked twice";
    for (auto const& request : requests) EXPECT_EQ(*request.find("headers")->find<std::string>("xi-api-key"), key);
    EXPECT_EQ(requests[2].find("client")->content, requests[0].find("client")->content) << "a second connection";
    EXPECT_EQ(*requests[0].find<std::string>("path"), "/v1/voices");
    EXPECT_EQ(*requests[1].find("headers")->find<std::string>("accept"), "application/json");
    auto const& speech = requests[3];
    EXPECT_EQ(*speech.find<std::string>("method"), "POST");
    EXPECT_EQ(*speech.find<std::string>("path"), "/v1/text-to-speech/ok");
    EXPECT_EQ(*speech.find("headers")->find<std::string>("accept"), "audio/mpeg");
    EXPECT_EQ(*speech.find("headers")->find<std::string>("content-type"), "application/json");
    EXPECT_EQ(JSONValue::parse(*speech.find<std::string>("body")),
              JSONValue::parse(R"({"text": "Say \"hi\"\n", "model_id": "eleven_multilingual_v2", "voice_settings":
                  {"stability": 0.25, "similarity_boost": 0.75, "style": 0.5, "use_speaker_boost": true, "speed": 1.1}})"));
}

TEST(ElevenLabsClient, saysWhatEachStatusMeans) {
    TestService service;
    struct Case {
        std::string voice, sentence;
        Kind kind;
    };
    for (auto const& [voice, sentence, kind] : std::vector<Case>{
             {"empty", "ElevenLabs returned no audio.", Kind::service},
             {"status-204", "ElevenLabs returned no audio.", Kind::service},
             {"status-401", "That ElevenLabs API key was rejected.", Kind::rejectedKey},
             {"status-403", "That ElevenLabs API key was rejected.", Kind::rejectedKey},
             {"status-429", "Your ElevenLabs character quota is used up.", Kind::quotaUsedUp},
             {"status-500", R"(ElevenLabs returned 500: {"detail":"it went wrong"})", Kind::service},
             {"status-422", R"(ElevenLabs returned 422: {"detail":"it went wrong"})", Kind::service},
             {"redirect", "ElevenLabs returned 302.", Kind::service},
         }) {
        auto const error = failureOf(clientOf(service.host()), voice);
        EXPECT_EQ(error.what(), sentence);
        EXPECT_EQ(error.kind, kind) << voice;
        auto const requests = service.requests();
        ASSERT_EQ(requests.size(), 1u) << voice
                                       << ": a request that may be paid is repeated, or a redirection followed";
    }
    auto const echo = failureOf(clientOf(service.host()), "echo");
    EXPECT_THAT(echo.what(), StartsWith("ElevenLabs returned 500: your key is … xxx"));
    EXPECT_LT(std::string(echo.what()).size(), 400u);
    EXPECT_THAT(failureOf(clientOf(service.host(), "\xA6"), "echo").what(), StartsWith("ElevenLabs returned 500: your"))
        << "a key that is part of what is shown for it is looked for without an end";
}

TEST(ElevenLabsClient, repeatsNoRequestThatMayBePaidWhenItsConnectionIsLost) {
    TestService service;
    auto client = clientOf(service.host());
    client.voices(); // over a connection that is kept, and may have been closed by the service since
    client.synthesize("Hello.", {.voiceID = "ok"});
    EXPECT_EQ(failureOf([&] { client.synthesize("Hello.", {.voiceID = "drop"}); }).kind, Kind::notReached);
    EXPECT_EQ(service.requests().size(), 3u);
}

TEST(ElevenLabsClient, saysWhyItIsNotReached) {
    TestService service;
    WebClient::Limits const quick{.toConnect = 500ms, .stalled = 1s, .whole = 2s};
    for (std::string const voice : {"half", "silent", "slow", "huge"}) {
        auto const begun = std::chrono::steady_clock::now();
        auto const error = failureOf(clientOf(service.host(), key, quick), voice);
        EXPECT_EQ(error.kind, Kind::notReached) << voice;
        EXPECT_THAT(error.what(), StartsWith("Could not reach ElevenLabs: ")) << voice;
        EXPECT_LT(std::chrono::steady_clock::now() - begun, 10s) << voice;
    }
    EXPECT_EQ(failureOf(clientOf("http://localhost:1"), "ok").kind, Kind::notReached);
    service.requests();
    for (auto const* host : {"http://api.example.com", "http://127.0.0.1.example.com", "http://localhost@example.com",
                             "ftp://localhost", "file:///etc"})
        EXPECT_THAT(failureOf(clientOf(host), "ok").what(), HasSubstr("its address is none of HTTPS")) << host;
    EXPECT_EQ(elevenLabsRoot(""), "https://api.elevenlabs.io/v1");
    EXPECT_EQ(elevenLabsRoot("voices.example.com/"), "https://voices.example.com/v1");
    EXPECT_EQ(elevenLabsRoot("http://[::1]:80/v1/"), "http://[::1]:80/v1");
}

/// Takes eight seconds: speeds are those of the last five.
TEST(ElevenLabsClient, waitsForSoundThatIsLongInTheMakingButNotForWhatStops) {
    TestService service;
    SerialQueue beside("com.tavaro.test.late");
    beside.async([&] {
        WebClient::Limits const limits{.stalled = 1s, .whole = 5s};
        std::string const text(100, 'a'); // for which it has five seconds more
        try {
            EXPECT_EQ(clientOf(service.host(), key, limits).synthesize(text, {.voiceID = "late-8"}), "no sound");
        } catch (VoiceError const& error) {
            ADD_FAILURE() << error.what();
        }
    });
    WebClient::Limits const patient{.stalled = 1s, .whole = 60s};
    auto const begun = std::chrono::steady_clock::now();
    EXPECT_EQ(failureOf(clientOf(service.host(), key, patient), "stuck").kind, Kind::notReached);
    EXPECT_EQ(failureOf([&] { clientOf(service.host(), "list-silent", patient).voices(); }).kind, Kind::notReached);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 30s);
}

TEST(ElevenLabsClient, givesItsKeyToNobodyElse) {
    Folder const folder;
    auto const certificate = folder.file("cert.pem"), secret = folder.file("key.pem");
    auto const command =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=localhost "
        "-addext subjectAltName=DNS:localhost -keyout " +
        secret + " -out " + certificate + " 2>/dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0);
    TestService service({"--tls", certificate, secret});
    auto const host = "https://" + service.place();
    EXPECT_EQ(clientOf(host, key, {}, certificate).voices().size(), 1u);
    EXPECT_EQ(service.requests().size(), 1u);
    EXPECT_THAT(failureOf(clientOf(host), "ok").what(), HasSubstr("certificate")) << "nobody vouches for it";
    auto const other = "https://127.0.0.1" + host.substr(host.rfind(':'));
    EXPECT_EQ(failureOf(clientOf(other, key, {}, certificate), "ok").kind, Kind::notReached)
        << "it is for another host";
    EXPECT_TRUE(service.requests().empty());
}

TEST(ElevenLabsClient, sendsNothingWithoutAKeyNorForVoicesThatAreNone) {
    TestService service;
    ElevenLabsClient client([] { return std::optional<Secret>(); }, {.host = service.host()});
    auto const error = failureOf([&] { client.voices(); });
    EXPECT_EQ(error.kind, Kind::noKey);
    EXPECT_STREQ(error.what(), "Add your ElevenLabs API key in Settings to generate voiceover.");
    for (auto const* voice : {"", "../voices", "a/b", "system:flite/slt", "a?b", "ä"})
        EXPECT_EQ(failureOf(clientOf(service.host()), voice).kind, Kind::noVoice) << voice;
    EXPECT_TRUE(service.requests().empty());
    for (auto const* lists : {"list-garbage", "list-empty", "list-status-500"})
        EXPECT_EQ(failureOf([&] { clientOf(service.host(), lists).voices(); }).kind, Kind::service) << lists;
}

TEST(ElevenLabsClient, stoppedGivesWhatWasSentAndMayBePaidForAMomentAndNothingElse) {
    TestService service;
    auto const whenAsked = [&](auto const& work) {
        std::stop_source source;
        SerialQueue stopper("com.tavaro.test.stop");
        stopper.async([&] {
            for (int i = 0; i < 50 && service.requests().empty(); ++i) {
            }
            source.request_stop();
        });
        return work(source.get_token());
    };
    auto const said = [&](std::stop_token const& stop) {
        return clientOf(service.host()).synthesize("Hello.", {.voiceID = "late-2"}, stop);
    };
    EXPECT_EQ(whenAsked(said), "no sound") << "it is to be paid for again";

    auto const begun = std::chrono::steady_clock::now();
    auto const unsaid = [&](std::stop_token const& stop) {
        auto client = clientOf(service.host(), key, {.afterStop = 1s});
        return failureOf([&] { client.synthesize("Hello.", {.voiceID = "silent"}, stop); }).kind;
    };
    EXPECT_EQ(whenAsked(unsaid), Kind::cancelled);
    auto const unlisted = [&](std::stop_token const& stop) {
        return failureOf([&] { clientOf(service.host(), "list-silent").voices(stop); }).kind;
    };
    EXPECT_EQ(whenAsked(unlisted), Kind::cancelled);
    std::stop_source source;
    source.request_stop();
    EXPECT_EQ(failureOf([&] { said(source.get_token()); }).kind, Kind::cancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 10s);
    EXPECT_TRUE(service.requests().empty()) << "it was stopped before anything was sent";
}

TEST(ElevenLabsSpeaker, speaksAsLongAsTheSoundIs) {
    Folder const folder;
    TestService service({"--audio", madeMP3(folder)});
    ElevenLabsSpeaker speaker([] { return std::optional(Secret(key)); }, {.host = service.host()});
    auto const speech = speaker.speak("Hello.", {.voiceID = "ok"}, {});
    EXPECT_EQ(speech.sampleRate, 48'000);
    EXPECT_NEAR(speech.duration(), 1, 0.06);
    double power = 0;
    for (float const sample : speech.samples) power += sample * sample;
    EXPECT_NEAR(std::sqrt(power / static_cast<double>(speech.samples.size())), 0.125 / std::sqrt(2), 0.01);
    for (auto const& [speed, sent] : {std::pair(2.0, 1.2), std::pair(0.5, 0.7)}) {
        auto const other = speaker.speak("Hello.", {.voiceID = "ok", .speed = speed}, {});
        EXPECT_NEAR(other.duration(), speech.duration() * sent / speed, 0.01) << "the rest is made here";
        auto const body = JSONValue::parse(*service.requests().back().find<std::string>("body"));
        EXPECT_EQ(*body.find("voice_settings")->find<double>("speed"), sent) << "more than the service takes";
    }
    EXPECT_EQ(failureOf([&] { speaker.speak("Hello.", {.voiceID = "garbage"}, {}); }).kind, Kind::service);
    service.requests();
    EXPECT_EQ(failureOf([&] { speaker.speak(" 🎉 ", {.voiceID = "ok"}, {}); }).kind, Kind::nothingToSay);
    EXPECT_TRUE(service.requests().empty()) << "nothing is paid for nothing";

    auto client = clientOf(service.host());
    client.write("Hello.", {.voiceID = "ok"}, folder.file("line.mp3"));
    EXPECT_EQ(fs::file_size(folder.file("line.mp3")), fs::file_size(folder.file("tone.mp3")));
    failureOf([&] { client.write("Hello.", {.voiceID = "half"}, folder.file("other.mp3")); });
    EXPECT_FALSE(fs::exists(folder.file("other.mp3")));
}

}
