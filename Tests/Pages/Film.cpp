#include "Film.h"

#include "FilmedApp.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <chrono>
#include <cmath>
#include <fstream>
#include <numbers>
#include <sstream>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr int width = 1280, height = 720, fps = 10;
constexpr double length = 12; // seconds

void writeMovie(fs::path const& file) {
    MovieWriter writer(file, {.intent = MovieIntent::live, .width = width, .height = height, .fps = fps});
    Image image(width, height);
    for (int n = 0; n < length * fps; ++n) {
        drawFilmedApp(image, FilmedApp::dashboard, static_cast<double>(n) / fps);
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        writer.append(std::move(picture), static_cast<double>(n) / fps);
    }
    writer.finish();
}

/// As a voice is to the eye: syllables, and pauses between sentences.
void writeVoice(fs::path const& file) {
    std::vector<StereoSample> samples(static_cast<std::size_t>(length * audioRate));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        double const t = static_cast<double>(i) / audioRate;
        double const syllable = std::abs(std::sin(t * 7)) * std::abs(std::sin(t * 1.1));
        auto const value = static_cast<float>(0.6 * syllable * (std::fmod(t, 4) < 3.2 ? 1 : 0) *
                                              std::sin(2 * std::numbers::pi * 180 * t));
        samples[i] = {value, value};
    }
    AudioFileWriter writer(file, AudioFileFormat::whole16);
    writer.append(samples);
    writer.finish();
}

Transcript spoken() {
    Transcript transcript;
    transcript.createdAt = {};
    std::istringstream words("This is the page where everything begins. Um, here you write, and it saves by itself. "
                             "That is all there is to it.");
    double at = 0.2;
    for (std::string word; words >> word; at += 0.5)
        transcript.words.push_back({.text = word, .start = at, .end = at + 0.4, .confidence = 0.9F});
    return transcript;
}

/// Written, and not yet spoken: a voice that is there wherever Tavaro is.
VoiceoverPlan narration() {
    VoiceoverPlan plan;
    plan.voice.voiceID = "system:flite/slt";
    plan.voice.voiceName = "slt";
    plan.segments = {{.text = "Let me show you the dashboard.", .anchor = 0.5, .start = 0.5},
                     {.text = "I type in what I'm looking for.", .anchor = 5.5, .start = 5.5},
                     {.text = "And that's all there is to it.", .anchor = 9, .start = 9}};
    return plan;
}

RecordingMetadata logged() {
    RecordingMetadata log;
    log.captureSize = {width, height};
    for (int i = 0; i <= length * 20; ++i) {
        double const t = i / 20.0;
        log.cursorSamples.push_back({t, {0.5 + 0.3 * std::sin(t * 0.9), 0.5 + 0.2 * std::cos(t * 0.7)}});
    }
    for (double const t : {2.0, 5.5, 9.0}) log.clicks.push_back({.t = t, .position = *log.cursorPosition(t)});
    return log;
}

RedactionTrack hidden(SensitiveKind kind, std::string const& masked, double start, NormalizedRect const& area) {
    return {.kind = kind,
            .label = masked,
            .textHash = masked,
            .start = start,
            .end = start + 2,
            .keyframes = {{start, area}},
            .isAutomatic = true};
}

/// Two of each sort, one of them shown, and an area that somebody hid.
std::vector<RedactionTrack> findings() {
    std::vector all{hidden(SensitiveKind::email, "m•••••• (21 bytes)", 9.5, {0.1, 0.12, 0.16, 0.04}),
                    hidden(SensitiveKind::email, "s•••••• (18 bytes)", 5, {0.7, 0.5, 0.16, 0.04}),
                    hidden(SensitiveKind::apiKey, "s•••••• (51 bytes)", 9.5, {0.3, 0.8, 0.3, 0.04}),
                    hidden(SensitiveKind::custom, "Area", 4.5, {0.8, 0.85, 0.12, 0.08})};
    all[1].isEnabled = false;
    all[3].textHash.clear();
    return all;
}

DemoProject tour() {
    DemoProject project;
    project.name = tourName;
    project.sourceSize = project.canvas = {width, height};
    project.assetDurations = {{"screen.mp4", length}, {"voice.caf", length}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 7},
                              {.asset = "screen.mp4", .start = 7, .sourceStart = 7, .duration = 5}};
    project.audioTracks = {{.role = AudioRole::microphone, .clips = {{.asset = "voice.caf", .duration = length}}}};
    project.background.content = BackgroundStyle::LinearGradient{};
    project.screen = {
        .padding = 0.06, .cornerRadius = 14, .shadowRadius = 60, .shadowOpacity = 0.45, .shadowOffsetY = 18};
    project.zoomEvents = {{.start = 1.5, .duration = 2.5, .center = {0.4, 0.5}, .scale = 1.8, .isAutomatic = true},
                          {.start = 8, .duration = 2, .center = {0.6, 0.4}, .scale = 1.5}};
    project.overlays = {{.start = 0.5, .duration = 3}};
    project.captions.cues = {{.start = 0.2, .duration = 3, .text = "This is the page where everything begins."},
                             {.start = 4, .duration = 4, .text = "Here you write, and it saves by itself."},
                             {.start = 8.5, .duration = 3, .text = "That is all there is to it."}};
    project.silences = {{.start = 3.3, .duration = 0.7}};
    project.transcript = spoken();
    project.voiceover = narration();
    project.metadata = logged();
    project.redactions = findings();
    project.redactionScan = {.date = {}, .settings = {}, .ranges = {{0, 9}}};
    return project;
}

/// Its identity and its age are the same in each run.
void save(fs::path const& library, DemoProject project, FilmedApp app, int number, double hoursAgo) {
    ProjectPackage const package(library / (project.name + ".recproj"));
    package.createDirectories();
    project.modifiedAt = {Date::now().milliseconds - static_cast<std::int64_t>(hoursAgo * 3'600'000)};
    project.id = *UUID::parse("6C64D78E-656C-468E-929C-B92836EFC9" + std::to_string(10 + number));
    package.save(project);
    Image still(480, 270);
    drawStill(still, app);
    writePNG(package.url() / "thumbnail.png", still.view());
    fs::last_write_time(package.url() / "project.json",
                        fs::file_time_type::clock::now() - std::chrono::minutes(static_cast<int>(hoursAgo * 60)));
}

DemoProject listed(std::string const& name, double seconds) {
    DemoProject project;
    project.name = name;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}};
    return project;
}

}

void makeLibrary(fs::path const& library) {
    fs::create_directories(library);
    int number = 0;
    save(library, tour(), FilmedApp::dashboard, ++number, 2.5);
    auto const assets = library / (tourName + ".recproj") / "assets";
    writeMovie(assets / "screen.mp4");
    writeVoice(assets / "voice.caf");
    for (auto const& [name, app, seconds, hours] : {std::tuple{"Onboarding", FilmedApp::dashboard, 83.0, 24.0},
                                                    {"Release notes 2.4", FilmedApp::document, 214.0, 72.0},
                                                    {"How exports work", FilmedApp::editor, 41.0, 96.0},
                                                    {"Bug 1173, again", FilmedApp::terminal, 12.0, 120.0}})
        save(library, listed(name, seconds), app, ++number, hours);
}

void addDamagedProject(fs::path const& library) {
    fs::create_directories(library / "Damaged.recproj");
    auto const damaged = library / "Damaged.recproj/project.json";
    std::ofstream(damaged) << "{";
    fs::last_write_time(damaged, fs::file_time_type::clock::now() - std::chrono::hours(144));
}

}
