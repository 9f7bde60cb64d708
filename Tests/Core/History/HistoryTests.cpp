#include "../Records/RandomRecord.h"

#include <TavaroCore/History/History.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

using namespace tavaro;

namespace {

DemoProject randomProject(unsigned seed) {
    DemoProject project;
    RandomRecord(seed).fill(project);
    return project;
}

/// What editors do: moves, cuts, insertions, changed texts and settings, in any mixture.
void disturb(DemoProject& project, std::mt19937& random) {
    auto const chance = [&] { return random() % 3 == 0; };
    double const shift = (static_cast<int>(random() % 200) - 100) / 7.0;
    for (auto& zoom : project.zoomEvents) zoom.start += shift;
    for (auto& cue : project.captions.cues) {
        cue.start += shift;
        for (auto& word : cue.words) word.start += shift, word.end += shift;
        if (chance() && !cue.words.empty()) cue.words.erase(cue.words.begin());
    }
    if (chance() && !project.overlays.empty())
        project.overlays.erase(project.overlays.begin() + random() % project.overlays.size());
    if (chance()) project.overlays.insert(project.overlays.begin(), Overlay{});
    if (chance()) project.intro.reset();
    if (chance()) project.intro.emplace().text = "Hello";
    if (chance()) project.background = BackgroundStyle{};
    if (chance()) project.assetDurations["a"] = shift;
    if (chance()) project.metadata.edit().clicks.emplace_back();
    if (chance()) project.transcript.reset();
    if (chance()) project.timeline.clips.push_back({.asset = "x.mov", .start = -0.0});
    if (chance()) project.canvas.width += 2;
}

/// New values for some items, at random; now and then what they are already.
std::vector<ItemEdit> randomEdits(DemoProject const& project, std::mt19937& random) {
    std::vector<ItemEdit> edits;
    forEachEditedList(project, [&](auto const& items) {
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (random() % 3 != 0) continue;
            auto item = items[i];
            if (random() % 4 != 0) item.start = static_cast<double>(random() % 7) - 1;
            if constexpr (requires { item.words; }) {
                item.text = random() % 2 ? "said" : item.text;
                if (random() % 4 == 0) item.words.clear();
            }
            edits.push_back({i, std::move(item)});
        }
    });
    std::ranges::shuffle(edits, random);
    return edits;
}

}

TEST(History, editsOfItemsAreTheStepsThatEditsOfTheDocumentAre) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        auto const document = randomProject(seed);
        History history(document), reference(document);
        auto group = history.newGroup();
        for (int i = 0; i < 60; ++i) {
            switch (random() % 8) {
            case 0: ASSERT_EQ(history.undo(), reference.undo()); break;
            case 1: ASSERT_EQ(history.redo(), reference.redo()); break;
            case 2: group = history.newGroup(); break;
            case 3: {
                auto const rename = [&](DemoProject& project) { project.name = std::to_string(random() % 2); };
                auto twin = random;
                history.edit("Edit", rename, group);
                std::swap(random, twin);
                reference.edit("Edit", rename, group);
                break;
            }
            default: {
                auto const edits = randomEdits(history.project(), random);
                auto const before = history.project();
                auto const change = [&](DemoProject& project) {
                    for (auto const& edit : edits) putItem(project, edit);
                };
                auto const isChanged = history.editItems("Edit", edits, group);
                ASSERT_EQ(isChanged, reference.edit("Edit", change, group));
                if (!isChanged) break;
                EXPECT_EQ(history.lastChange(), reference.lastChange());
                auto rest = before; // what is not told of is as it was
                for (auto const& edit : edits) {
                    if (std::ranges::count(history.lastItems(), itemPlace(edit)) == 1) putItem(rest, edit);
                }
                if (history.lastItems().empty()) break;
                ASSERT_EQ(encodeProject(rest), encodeProject(history.project()));
            }
            }
            ASSERT_EQ(encodeProject(history.project()), encodeProject(reference.project()));
            ASSERT_EQ(history.revision(), reference.revision());
            ASSERT_EQ(history.stepCount(), reference.stepCount());
        }
        while (history.undo()) reference.undo();
        EXPECT_EQ(encodeProject(history.project()), encodeProject(document));
        while (history.redo()) {
        }
        while (reference.redo()) {
        }
        EXPECT_EQ(encodeProject(history.project()), encodeProject(reference.project()));
        while (history.undo()) {
        }
        EXPECT_EQ(history.keptBytes() > 0, history.stepCount() > 0);
    }
}

TEST(History, undoAndRedoRestoreEveryDocumentExactly) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 random(seed);
        History history(randomProject(seed));
        std::vector<std::string> texts{encodeProject(history.project())};
        std::vector<std::uint64_t> revisions{history.revision()};
        for (int step = 0; step < 8; ++step) {
            if (random() % 5 == 0)
                history.replace("Replace", randomProject(seed * 100 + static_cast<unsigned>(step)));
            else
                history.edit("Edit", [&](DemoProject& project) { disturb(project, random); });
            if (history.revision() == revisions.back()) continue;
            texts.push_back(encodeProject(history.project()));
            revisions.push_back(history.revision());
        }
        for (int round = 0; round < 2; ++round) {
            for (auto i = texts.size(); i-- > 0;) {
                ASSERT_EQ(encodeProject(history.project()), texts[i]) << "seed " << seed;
                ASSERT_EQ(history.revision(), revisions[i]) << "seed " << seed;
                ASSERT_EQ(history.undo(), i > 0) << "seed " << seed;
            }
            for (std::size_t i = 0; i < texts.size(); ++i) {
                ASSERT_EQ(encodeProject(history.project()), texts[i]) << "seed " << seed;
                ASSERT_EQ(history.redo(), i + 1 < texts.size()) << "seed " << seed;
            }
        }
    }
}

TEST(History, numbersThatAreNoneComeBackBitForBit) {
    for (double const odd : {std::numeric_limits<double>::quiet_NaN(), -0.0, std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()}) {
        DemoProject project;
        project.zoomEvents.resize(3);
        project.zoomEvents[1].start = odd;
        History history(project);
        ASSERT_TRUE(history.edit("Move", [](DemoProject& moved) {
            for (auto& zoom : moved.zoomEvents) zoom.start = 1;
        }));
        ASSERT_TRUE(history.undo());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(history.project().zoomEvents[1].start),
                  std::bit_cast<std::uint64_t>(odd));
        EXPECT_FALSE(history.edit("Nothing", [](DemoProject&) {}));
    }
}

TEST(History, stepsAreNamedAndANewEditEndsTheWayForward) {
    History history(DemoProject{});
    EXPECT_FALSE(history.undoName() || history.redoName() || history.undo() || history.redo());
    history.edit("Rename", [](DemoProject& project) { project.name = "a"; });
    history.edit("Cut", [](DemoProject& project) { project.timeline.clips.emplace_back(); });
    history.undo();
    EXPECT_EQ(history.undoName(), "Rename");
    EXPECT_EQ(history.redoName(), "Cut");
    history.edit("Polish", [](DemoProject& project) { project.zoomEvents.emplace_back(); });
    EXPECT_FALSE(history.redoName());
    EXPECT_EQ(history.undoName(), "Polish");
    EXPECT_TRUE(history.project().timeline.clips.empty());
}

TEST(History, anEditThatFailsLeavesEverythingAsItWas) {
    History history(DemoProject{});
    history.edit("Rename", [](DemoProject& project) { project.name = "a"; });
    history.undo();
    auto const before = history.project();
    EXPECT_THROW(history.edit("Break",
                              [](DemoProject& project) {
                                  project.name = "half";
                                  throw std::runtime_error("no");
                              }),
                 std::runtime_error);
    EXPECT_EQ(history.project(), before);
    EXPECT_EQ(history.redoName(), "Rename");
}

TEST(History, aDragIsOneStepAndADragBackIsNone) {
    History history(DemoProject{});
    auto const before = history.project();
    auto const moveTo = [&](double x, EditGroup group) {
        history.edit(
            "Move Camera", [&](DemoProject& project) { project.cameraOffset = x; }, group);
    };
    auto const drag = history.newGroup();
    for (double const x : {0.1, 0.2, 0.3}) moveTo(x, drag);
    moveTo(0.5, history.newGroup()); // the next drag is a step of its own
    EXPECT_EQ(history.stepCount(), 2u);
    history.undo();
    EXPECT_EQ(history.project().cameraOffset, 0.3);
    moveTo(0.4, drag); // after an undo nothing joins
    EXPECT_EQ(history.stepCount(), 2u);
    history.undo(), history.undo();
    EXPECT_EQ(history.project(), before);
    auto const there = history.newGroup();
    auto const revision = history.revision();
    moveTo(0.9, there), moveTo(before.cameraOffset, there);
    EXPECT_FALSE(history.undoName());
    EXPECT_EQ(history.revision(), revision);
}

TEST(History, keepsOnlyWhatStepsDoNotShareAndForgetsTheOldestFirst) {
    DemoProject project;
    project.metadata.edit().cursorSamples.resize(100'000); // 3 MB
    for (int i = 0; i < 1000; ++i) project.zoomEvents.push_back({.start = i * 3.1, .duration = 2});
    History history(project, {.steps = 5, .keptBytes = 1 << 20});
    for (int i = 0; i < 5; ++i) {
        history.edit("Move", [](DemoProject& moved) {
            for (auto& zoom : moved.zoomEvents) zoom.start += 0.7;
        });
    }
    EXPECT_EQ(history.stepCount(), 5u);
    EXPECT_LT(history.keptBytes(), 5 * 6000u); // some bytes a zoom, no log
    EXPECT_TRUE(history.project().metadata.sharesWith(project.metadata));
    history.edit("Rename", [](DemoProject& renamed) { renamed.name = "x"; });
    EXPECT_EQ(history.stepCount(), 5u);
    // A step that keeps a log of its own is too much for the rest, but can still be undone.
    history.edit("Smooth", [](DemoProject& smoothed) { smoothed.metadata.edit().cursorSamples[0].t = 1; });
    EXPECT_EQ(history.stepCount(), 1u);
    EXPECT_GT(history.keptBytes(), 3'000'000u);
    history.undo();
    EXPECT_EQ(*history.project().metadata, *project.metadata);
    history.redo();
    history.edit("Rename", [](DemoProject& renamed) { renamed.name = "y"; });
    EXPECT_EQ(history.undoName(), "Rename");
    EXPECT_LT(history.keptBytes(), 1000u);
}

TEST(History, itsListTellsWhoMadeEachStepAndWhichAreUndone) {
    History history{DemoProject{}};
    auto const rename = [&](StepLabel const& label) {
        history.edit(label, [&](DemoProject& project) { project.name += label.name; });
    };
    rename("Cut");
    rename({"Polish", StepMaker::agent, "claude-code"});
    rename({"Changed Outside", StepMaker::otherProgram});
    history.undo();
    EXPECT_EQ(history.undoName(), "Polish (claude-code)");
    auto const steps = history.steps();
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[1].name, "Polish");
    EXPECT_EQ(steps[1].agent, "claude-code");
    EXPECT_EQ(steps[0].maker, StepMaker::person);
    EXPECT_EQ(steps[1].maker, StepMaker::agent);
    EXPECT_EQ(steps[2].maker, StepMaker::otherProgram);
    EXPECT_EQ((std::array{steps[0].isUndone, steps[1].isUndone, steps[2].isUndone}), (std::array{false, false, true}));

    // A step keeps its number there and back; a new one in place of undone ones has another.
    history.redo();
    EXPECT_EQ(history.steps()[2].number, steps[2].number);
    history.undo();
    rename("Zoom");
    EXPECT_NE(history.steps()[2].number, steps[2].number);
}
