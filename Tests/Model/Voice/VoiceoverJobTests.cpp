#include "../../Media/Audio/TestSounds.h"
#include "../../Render/Export/TestTake.h"
#include "../../Voice/Voiceover/ToneSpeaker.h"

#include <Tavaro/Model/Exporting/PreparedExport.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Voice/VoiceoverJob.h>
#include <Tavaro/Model/Voice/VoiceoverListing.h>

#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroMedia/Audio/LoudnessMeter.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

/// A take of twelve seconds with clicks, and a line for each.
class VoiceoverJobTest : public testing::Test {
protected:
    VoiceoverJobTest() {
        take.project.timeline.clips = {{.asset = "screen.mp4", .duration = 12}};
        take.project.metadata.edit().clicks = {{.t = 3}, {.t = 5}, {.t = 9}};
        auto& plan = take.project.voiceover.emplace();
        plan.voice = {.voiceID = "system:tone", .voiceName = "Tone"};
        plan.segments = {{.text = "I click here to open it.", .anchor = 3},
                         {.text = "Then I choose the second one.", .anchor = 5},
                         {.text = "That is all.", .anchor = 9}};
        take.package.save(take.project);
    }

    VoiceService service() {
        return {studio.speakers(), [] { return OfferedVoices(); }};
    }
    GeneratedVoiceover generate(OpenProject& open, VoiceoverTaking const& taking = {}, VoiceoverRequest request = {}) {
        MainQueue queue;
        request.plan = *open.document().voiceover;
        request.service = service();
        auto job = voiceoverJob(queue, open.package(), std::move(request));
        job.start();
        auto const& generated = job.wait();
        open.commit(voiceoverStep, [&](DemoProject& project) { takeIn(project, open.package(), generated, taking); });
        return generated;
    }

    /// The film's sound as it is exported.
    Sound exported(DemoProject const& project, std::string const& name) {
        ExportChoices choices{.preset = "web", .output = take.output(name).string()};
        auto const prepared = std::make_shared<PreparedExport>(take.package, project, choices, EncoderChoice::software);
        MainQueue queue;
        auto job = exportJob(queue, prepared);
        job.start();
        return soundOf(job.wait().path);
    }

    /// When the tone of a line is heard first after a time without it.
    static std::vector<double> heardStarts(Sound const& sound) {
        std::vector<double> starts;
        constexpr std::size_t window = audioRate / 100;
        std::size_t silent = window * 50;
        for (std::size_t at = 0; at + window <= sound.size(); at += window) {
            bool const isHeard = level(std::span(sound).subspan(at, window)) > -40;
            if (isHeard && silent > audioRate * 13 / 100) starts.push_back(static_cast<double>(at) / audioRate);
            silent = isHeard ? 0 : silent + window;
        }
        return starts;
    }

    TestTake take{"model-voiceover", 360};
    ToneStudio studio;
};

double loudness(Sound const& sound, TimeRange const& range) {
    auto const at = [](double seconds) { return static_cast<std::size_t>(std::llround(seconds * audioRate)); };
    LoudnessMeter meter;
    meter.add(std::span(sound).subspan(at(range.start), at(range.duration)));
    return meter.integrated().value_or(-100);
}

/// The clicks where the film shows them.
std::vector<double> shownClicks(DemoProject const& project) {
    std::vector<double> times;
    recordingOnTimeline(project).forEachShown(project.metadata->clicks,
                                              [&](ClickEvent const&, double time) { times.push_back(time); });
    return times;
}

void expectTogether(DemoProject const& project, Sound const& film, std::vector<double> const& heard) {
    auto const clicks = shownClicks(project);
    auto const& lines = project.voiceover->segments;
    ASSERT_EQ(clicks.size(), lines.size());
    ASSERT_EQ(heard.size(), lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_NEAR(heard[i], lines[i].start, 0.1) << lines[i].text;
        EXPECT_NEAR(heard[i], clicks[i], 0.1) << lines[i].text;
        EXPECT_NEAR(project.captions.cues[i].start, heard[i], 0.1) << lines[i].text;
        EXPECT_NEAR(loudness(film, {heard[i], lines[i].duration() - 0.2}), -16, 1) << lines[i].text;
    }
    EXPECT_LT(peak(film), 0.95) << "nothing is clipped";
}

TEST_F(VoiceoverJobTest, linesCaptionsAndActionsMeetInTheFilmAlsoAfterCutsAndASpeedUp) {
    OpenProject open(take.package.url());
    studio.wordSeconds = 0.4; // longer than the gap between the first two
    generate(open, {.longLines = LongLines::holdTheFrame, .captions = VoiceoverCaptions::made});
    auto project = open.document();
    ASSERT_EQ(project.captions.cues.size(), 3u);
    auto film = exported(project, "placed.mp4");
    expectTogether(project, film, heardStarts(film));

    removeTimeRange(project, 1, 1.5);
    removeTimeRange(project, project.duration() - 1, 0.5);
    double const second = project.voiceover->segments[1].start;
    changeSpeed(project, {second, project.voiceover->segments[1].duration() + 0.5}, 1.5);
    film = exported(project, "edited.mp4");
    expectTogether(project, film, heardStarts(film));
}

TEST_F(VoiceoverJobTest, isOneStepThatAnUndoTakesBackAndThatIsFoundAgainForNothing) {
    OpenProject open(take.package.url());
    auto const before = open.document();
    auto const first = generate(open);
    EXPECT_EQ(first.lines.newlySpoken, 3u);
    auto const after = open.document();
    EXPECT_TRUE(open.undo());
    EXPECT_EQ(open.document(), before);
    EXPECT_EQ(generate(open).lines.newlySpoken, 0u);
    EXPECT_EQ(studio.count, 3);
    EXPECT_EQ(open.document().voiceover, after.voiceover);
    auto const steps = open.steps().size();
    generate(open);
    EXPECT_EQ(open.steps().size(), steps) << "doing it again changes nothing";
}

TEST_F(VoiceoverJobTest, keepsWhatWasEditedMeanwhileAndSaysWhichLinesAreLeft) {
    OpenProject open(take.package.url());
    MainQueue queue;
    auto job = voiceoverJob(queue, open.package(), {.plan = *open.document().voiceover, .service = service()});
    job.start();
    open.edit("Rewrite", [](DemoProject& project) {
        project.name = "Renamed";
        project.voiceover->segments[1].text = "Another text.";
        project.voiceover->voice.speed = 1.5;
    });
    auto const& generated = job.wait();
    open.commit(voiceoverStep, [&](DemoProject& project) { takeIn(project, open.package(), generated); });
    EXPECT_EQ(open.document().name, "Renamed");
    EXPECT_EQ(open.document().voiceover->voice.speed, 1.5) << "whoever chose last";
    EXPECT_FALSE(open.document().voiceover->segments[1].audioAsset);
    EXPECT_TRUE(open.document().voiceover->segments[0].audioAsset);
}

TEST_F(VoiceoverJobTest, withoutAKeyAsksForOneOnlyWhereThereIsSomethingToPay) {
    OpenProject open(take.package.url());
    open.edit("Voice", [](DemoProject& project) { project.voiceover->voice.voiceID = "service"; });
    try {
        generate(open);
        FAIL();
    } catch (VoiceError const& error) {
        EXPECT_EQ(error.kind, VoiceError::Kind::noKey);
        EXPECT_STREQ(error.what(), "Add your ElevenLabs API key in Settings to generate voiceover.");
    }
    EXPECT_EQ(studio.count, 0);
    for (auto const& segment : open.document().voiceover->segments) EXPECT_FALSE(segment.audioAsset);
}

TEST_F(VoiceoverJobTest, listsEveryLineWithItsPlaceAndItsFailure) {
    OpenProject open(take.package.url());
    studio.mishap = [](std::string const& text, int) {
        if (text.starts_with("Then")) throw VoiceError(VoiceError::Kind::failed, "The engine broke down.");
    };
    VoiceoverRequest const request{.plan = *open.document().voiceover, .service = service()};
    EXPECT_EQ(voiceoverCost(open.package(), request).lines, 3);
    auto const listing = listingOf(open.document(), generate(open));
    EXPECT_EQ(listing.spoken, 2);
    EXPECT_EQ(listing.unspoken, 1);
    ASSERT_EQ(listing.lines.size(), 3u);
    EXPECT_EQ(listing.lines[1].failure, "The engine broke down.");
    EXPECT_FALSE(listing.lines[1].isSpoken);
    EXPECT_TRUE(listing.lines[2].isSpoken);
    auto const again = voiceoverCost(open.package(), {.plan = *open.document().voiceover, .service = service()});
    EXPECT_EQ(again.lines, 1);
    EXPECT_EQ(again.characters, 29);
}

}

}
