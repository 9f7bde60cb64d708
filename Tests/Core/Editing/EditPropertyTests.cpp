#include "RandomDocument.h"

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/Private/EditError.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/SilenceRemoval.h>
#include <TavaroCore/Editing/TimedLists.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Editing/TypingSpeed.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include <fmt/format.h>

using namespace tavaro;

namespace {

constexpr unsigned seeds = 200;
constexpr double shortestItem = 0.05; // no item gets shorter when it is retimed
constexpr double justInside = 1e-5;   // a probe this far behind an item's start avoids the edges of clips

/// An edit of a document at random; gives by how much the output has to get longer.
using Edit = std::function<double(DemoProject&, RandomDocument&)>;

double randomTrim(DemoProject& project, RandomDocument& random) {
    auto const& clip =
        project.timeline.clips[static_cast<std::size_t>(random.below(static_cast<int>(project.timeline.clips.size())))];
    auto const edge = random.below(2) ? ClipEdge::leading : ClipEdge::trailing;
    double const at = edge == ClipEdge::leading ? clip.start : clip.end();
    double const to = std::clamp(at + random.time(-3, 3), trimBounds(project, clip.id, edge).earliest,
                                 trimBounds(project, clip.id, edge).latest);
    double const longer = edge == ClipEdge::leading ? at - to : to - at;
    auto const id = clip.id;
    EXPECT_NEAR(trimClip(project, id, edge, to), std::abs(longer) > 0.001 ? longer : 0, 1e-9);
    EXPECT_NE(std::ranges::find(project.timeline.clips, id, &VideoClip::id), project.timeline.clips.end());
    return longer;
}

std::map<std::string, Edit> const edits{
    {"cut",
     [](DemoProject& project, RandomDocument& random) {
         auto const cut = random.range(project.duration());
         removeTimeRange(project, cut.start, cut.duration);
         return -cut.duration;
     }},
    {"keep",
     [](DemoProject& project, RandomDocument& random) {
         double const before = project.duration();
         auto const kept = random.range(before);
         keepTimeRange(project, kept);
         return kept.duration - before;
     }},
    {"speed",
     [](DemoProject& project, RandomDocument& random) {
         auto const range = random.range(project.duration());
         double const rate = random.below(2) ? 2 : 0.5;
         changeSpeed(project, range, rate);
         return range.duration / rate - range.duration;
     }},
    {"insert",
     [](DemoProject& project, RandomDocument& random) {
         double const duration = random.time(0.25, 4);
         insertTime(project, random.time(0, project.duration()), duration);
         return duration;
     }},
    {"split",
     [](DemoProject& project, RandomDocument& random) {
         splitClip(project, random.time(0, project.duration()));
         return 0.0;
     }},
    {"trim", randomTrim},
    {"clip speed",
     [](DemoProject& project, RandomDocument&) {
         auto const clip = project.timeline.clips.back();
         if (clip.speed == 0) return 0.0;
         setSpeed(project, clip.id, 8);
         return clip.sourceSpan() / 8 - clip.duration;
     }},
    {"silence", [](DemoProject& project, RandomDocument&) { return -removeAllSilence(project).seconds; }},
    {"typing", [](DemoProject& project, RandomDocument&) { return -speedUpTyping(project, 2).seconds; }},
};

/// An item at some place of the document, by its id and its list.
struct Placed {
    TimeRange span;
    std::optional<double> source; // that is on show just behind its start
};

bool isShown(Timeline const& timeline, double source) {
    return std::ranges::any_of(timeline.clips, [&](VideoClip const& clip) {
        return clip.sourceStart <= source && source <= clip.sourceStart + clip.sourceSpan();
    });
}

std::map<UUID, Placed> placesOf(DemoProject const& project) {
    std::map<UUID, Placed> places;
    forEachTimedList(project, [&](auto const& items) {
        for (auto const& item : items) {
            auto span = TimeRange{};
            if constexpr (requires { item.time; }) {
                span.start = item.time;
            } else {
                span = spanOf(item);
            }
            auto const* shown = project.timeline.clip(span.start + justInside);
            bool isMoving = shown && shown->speed > 0; // a held frame does not tell one time from another
            if constexpr (requires { item.gain; }) isMoving &= item.asset == "music.mp3"; // recorded sound may grow
            places[item.id] = {span, isMoving ? project.timeline.sourceTime(span.start + justInside) : std::nullopt};
        }
    });
    return places;
}

/// Runs `check(name, before, after, seed)` on many documents for each edit.
void onRandomEdits(
    std::function<void(DemoProject const&, DemoProject const&, double, std::string const&)> const& check) {
    for (auto const& [name, edit] : edits) {
        for (unsigned seed = 1; seed <= seeds && !testing::Test::HasFailure(); ++seed) {
            RandomDocument random(seed);
            auto const before = random.make();
            auto after = before;
            double const longer = edit(after, random);
            check(before, after, longer,
                  fmt::format("{} with seed {}\n{}→\n{}", name, seed, drawn(before), drawn(after)));
        }
    }
}

}

TEST(RandomEdits, theLengthChangesByWhatTheEditSays) {
    onRandomEdits([](DemoProject const& before, DemoProject const& after, double longer, std::string const& what) {
        EXPECT_NEAR(after.duration(), before.duration() + longer, 1e-9) << what;
        double end = 0;
        for (auto const& clip : after.timeline.clips) {
            EXPECT_EQ(clip.start, end) << what;
            EXPECT_GT(clip.duration, 0) << what;
            end += clip.duration;
        }
    });
}

TEST(RandomEdits, noItemLeavesTheTimeline) {
    onRandomEdits([](DemoProject const& before, DemoProject const& after, double, std::string const& what) {
        for (auto const& [id, place] : placesOf(after)) {
            EXPECT_GE(place.span.start, 0) << what;
            EXPECT_LE(place.span.start, after.duration() + 1e-9) << what;
            EXPECT_LE(place.span.end(), after.duration() + shortestItem) << what;
        }
        for (auto const& cue : after.captions.cues) {
            for (auto const& word : cue.words) {
                EXPECT_GE(word.start, cue.start - 1e-9) << what;
                EXPECT_LE(word.end, cue.start + cue.duration + shortestItem) << what;
            }
        }
        (void)before;
    });
}

TEST(RandomEdits, whatSurvivesStaysOverItsPicture) {
    onRandomEdits([](DemoProject const& before, DemoProject const& after, double, std::string const& what) {
        auto const places = placesOf(before);
        for (auto const& [id, now] : placesOf(after)) {
            auto const was = places.find(id);
            if (was == places.end() || !was->second.source || !isShown(after.timeline, *was->second.source)) continue;
            ASSERT_TRUE(now.source) << what;
            EXPECT_NEAR(*now.source, *was->second.source, 1e-3) << "at " << now.span.start << " in " << what;
        }
    });
}

TEST(RandomEdits, recordedSoundStaysUnderItsPicture) {
    onRandomEdits([](DemoProject const&, DemoProject const& after, double, std::string const& what) {
        for (auto const& clip : after.audioTracks[0].clips) {
            double const end = clip.start + clip.duration - (clip.duration <= shortestItem ? shortestItem : 0);
            for (double t = clip.start + justInside; t < end; t += 0.3) {
                auto const* shown = after.timeline.clip(t);
                if (!shown || shown->speed == 0) continue;
                EXPECT_NEAR(clip.sourceStart + (t - clip.start) * clip.speed, *after.timeline.sourceTime(t), 1e-3)
                    << "at " << t << " in " << what;
            }
        }
    });
}

TEST(RandomEdits, theLogIsNeitherCopiedNorChangedAndTheDocumentSavesAsItLoads) {
    onRandomEdits([](DemoProject const& before, DemoProject const& after, double, std::string const& what) {
        EXPECT_TRUE(after.metadata.sharesWith(before.metadata)) << what;
        auto const text = encodeProject(after);
        EXPECT_EQ(encodeProject(decodeProject(text)), text) << what;
    });
}

TEST(RandomEdits, aCutInTwoHalvesEqualsTheCutAtOnce) {
    for (unsigned seed = 1; seed <= 4 * seeds; ++seed) {
        RandomDocument random(seed);
        auto const whole = random.make();
        auto const cut = random.range(whole.duration(), 0.25);
        double const middle = random.time(cut.start + 0.0625, cut.end() - 0.0625);
        auto once = whole, laterFirst = whole, earlierFirst = whole;
        removeTimeRange(once, cut.start, cut.duration);
        removeTimeRange(laterFirst, middle, cut.end() - middle);
        removeTimeRange(laterFirst, cut.start, middle - cut.start);
        removeTimeRange(earlierFirst, cut.start, middle - cut.start);
        removeTimeRange(earlierFirst, cut.start, cut.end() - middle);
        auto const what = fmt::format("seed {} cut {}–{}–{} of\n{}", seed, cut.start, middle, cut.end(), drawn(whole));
        ASSERT_EQ(drawn(laterFirst), drawn(once)) << what;
        ASSERT_EQ(drawn(earlierFirst), drawn(once)) << what;
    }
}

TEST(RandomEdits, cutsThatBarelyMissAClipEdgeMoveItemsExactlyAsThePicture) {
    for (unsigned seed = 1; seed <= 4 * seeds; ++seed) {
        RandomDocument random(seed);
        auto project = random.make();
        auto const& clips = project.timeline.clips;
        double const edge = clips[static_cast<std::size_t>(random.below(static_cast<int>(clips.size())))].start;
        double const start = edge + (random.below(19) - 9) * 0.0001;
        double const end = random.below(2) ? start + random.time(0.25, 4) : clips.back().start - 0.0005;
        double const before = project.duration();
        project.overlays = {{.start = before, .duration = 1}}; // just behind the picture
        removeTimeRange(project, start, end - start);
        if (end > before) continue;
        EXPECT_NEAR(project.overlays.at(0).start, project.duration(), 1e-12)
            << "seed " << seed << " cut " << start << "–" << end << "\n"
            << drawn(project);
    }
}

TEST(RandomEdits, halfSpeedAndDoubleSpeedRestoreTheDocument) {
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        RandomDocument random(seed);
        auto project = random.make();
        for (auto& zoom : project.zoomEvents) zoom.rampIn = zoom.rampOut = 0; // capped, not restored
        auto const& clips = project.timeline.clips;
        auto const first = static_cast<std::size_t>(random.below(static_cast<int>(clips.size())));
        TimeRange const range{clips[first].start, clips.back().end() - clips[first].start};
        changeSpeed(project, range, 0.5); // splits what reaches into the range
        changeSpeed(project, {range.start, 2 * range.duration}, 2);
        auto const split = project;
        changeSpeed(project, range, 0.5);
        changeSpeed(project, {range.start, 2 * range.duration}, 2);
        ASSERT_EQ(drawn(project), drawn(split)) << "seed " << seed;
    }
}

TEST(RandomEdits, wildNumbersInADocumentNeitherHangNorCrash) {
    static constexpr double wild[] = {0, -1, 1e308, -1e308, 5e-324, 1e-9, 1e9, -0.0, 0.0005};
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        RandomDocument random(seed);
        auto project = random.make();
        auto const spoil = [&](double& number) {
            if (random.below(3) == 0) number = wild[random.below(std::size(wild))];
        };
        for (auto& clip : project.timeline.clips) {
            for (auto* number : {&clip.start, &clip.duration, &clip.sourceStart, &clip.speed}) spoil(*number);
        }
        forEachTimedList(project, [&](auto& items) {
            for (auto& item : items) {
                spoil(startOf(item));
                if constexpr (requires { item.duration = 0; }) spoil(item.duration);
                if constexpr (requires { item.speed; }) spoil(item.speed);
            }
        });
        auto const clips = project.timeline.clips.size();
        double const cut[] = {wild[random.below(std::size(wild))], wild[random.below(std::size(wild))]};
        removeTimeRange(project, cut[0], cut[1]);
        rippleInsert(project, cut[0], cut[1]);
        timeWarp(project, {cut[0], 1}, 2, cut[1]);
        try {
            changeSpeed(project, {cut[0], cut[1]}, cut[1]);
            insertTime(project, cut[0], cut[1]);
            keepTimeRange(project, {cut[0], cut[1]});
        } catch (EditError const& refused) {
            EXPECT_GT(std::string(refused.what()).size(), 20u);
        }
        removeAllSilence(project);
        speedUpTyping(project, 3);
        EXPECT_LE(project.timeline.clips.size(), 2 * clips + 400) << "seed " << seed;
    }
}
