#include "../../Core/Editing/RandomDocument.h"
#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Operations/Perform.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Project/PendingSave.h>
#include <Tavaro/Model/Project/ProjectInUse.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <sys/wait.h>
#include <unistd.h>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int walkLength = 1000;
#else
constexpr int walkLength = 10'000;
#endif

ProjectPackage savedPackage(fs::path const& url, DemoProject project) {
    ProjectPackage package(url);
    project.modifiedAt = {}; // long ago
    package.createDirectories();
    package.save(project);
    return package;
}

void rename(DemoProject& project, std::string const& name) { project.name = name; }

/// The document on the disk with the date that only a file has taken out.
std::string onDisk(OpenProject const& open) {
    auto stored = open.package().load();
    stored.modifiedAt = open.document().modifiedAt;
    return encodeProject(stored);
}

template<class Value> void fillAtRandom(Value& value, RandomDocument& random) {
    static constexpr char const* texts[] = {"1", "3.5", "system", "A line of a script. And one more.", ""};
    if constexpr (std::is_same_v<Value, double>)
        value = random.time(0, 20);
    else if constexpr (std::is_same_v<Value, bool>)
        value = random.below(2) == 0;
    else if constexpr (std::is_same_v<Value, std::string>)
        value = texts[random.below(std::size(texts))];
    else if constexpr (std::is_same_v<Value, std::vector<std::string>>)
        value = {random.below(2) ? "name=Walk" : "cursor.clickSound=true", "zoomEvents.0.scale=2.5"};
}

/// Any operation of the registry, with arguments that it may refuse.
Operation operationAtRandom(RandomDocument& random) {
    Operation operation;
    int left = random.below(std::variant_size_v<Operation>);
    forEachOperation([&]<class Record>(std::type_identity<Record>) {
        if (left-- != 0) return;
        Record record;
        forEachField<Record>([&](auto const& field) { fillAtRandom(record.*field.member, random); });
        if constexpr (requires { record.end; }) record.end += record.start;
        operation = std::move(record);
    });
    return operation;
}

/// One edit of those that people make; a refusal is one as well.
void editAtRandom(DemoProject& project, RandomDocument& random) {
    double const length = project.duration(), at = random.time(0, std::max(std::floor(length), 1.0));
    if (length < 2) {
        project.timeline.clips.push_back({.asset = "screen.mp4", .start = length, .duration = 20});
        return;
    }
    constexpr double longest = 600; // slowed-down holds grow without end
    if (length > longest) return keepTimeRange(project, {0, longest / 4});
    auto const clip =
        project.timeline.clips[static_cast<std::size_t>(random.below(static_cast<int>(project.timeline.clips.size())))]
            .id;
    switch (random.below(14)) {
    case 0: return removeTimeRange(project, at, random.time(0, 2));
    case 1: return insertTime(project, at, random.time(0, 8));
    case 2: return changeSpeed(project, random.range(std::floor(length)), random.below(2) ? 2 : 0.5);
    case 3: splitClip(project, at); return;
    case 4: return setMuted(project, clip, random.below(2) == 0);
    case 5: return keepTimeRange(project, {0, length - 0.25});
    case 6: trimClip(project, clip, random.below(2) ? ClipEdge::leading : ClipEdge::trailing, at); return;
    case 7: project.zoomEvents.push_back({.start = at, .duration = 1}); return;
    case 8: project.metadata.edit().clicks.push_back({.t = at}); return;
    case 9: return rename(project, std::to_string(random.below(5)));
    default: perform(project, operationAtRandom(random));
    }
}

/// What an open project should be like, kept as texts beside it and told of every change.
class Shadow {
public:
    explicit Shadow(OpenProject& open) : open_(open), present_(encodeProject(open.document())) {
        observation_ = open.observe([this](ProjectChange const& change) { note(change); });
    }

    void undo() {
        travel(done_, [&] { return open_.undo(); });
    }
    void redo() {
        travel(undone_, [&] { return open_.redo(); });
    }
    std::string const& present() const { return present_; }
    std::size_t depth() const { return done_.size(); }
    int steps() const { return steps_; }

private:
    /// The texts to where the step leads; what is left behind is noted on the other side.
    void travel(std::vector<std::string>& from, std::function<bool()> const& go) {
        auto& to = &from == &done_ ? undone_ : done_;
        bool const hasStep = !from.empty();
        auto const left = present_;
        isTravelling_ = true;
        bool const isGone = go();
        isTravelling_ = false;
        ASSERT_EQ(isGone, hasStep);
        if (!hasStep) return;
        ASSERT_EQ(present_, from.back());
        from.pop_back();
        to.push_back(left);
    }
    void note(ProjectChange const& change) {
        auto now = encodeProject(open_.document());
        EXPECT_EQ(change.fields.any(), now != present_);
        if (change.fields.any() && !isTravelling_) {
            undone_.clear();
            done_.push_back(present_);
            ++steps_;
            constexpr std::size_t mostSteps = 1000; // of a history
            if (done_.size() > mostSteps) done_.erase(done_.begin());
        }
        present_ = std::move(now);
    }

    OpenProject& open_;
    std::string present_;
    std::vector<std::string> done_, undone_;
    OpenProject::Observation observation_;
    bool isTravelling_ = false;
    int steps_ = 0; // made so far
};

void editSomewhere(OpenProject& open, RandomDocument& random, bool saves) {
    auto const change = [&](DemoProject& project) { editAtRandom(project, random); };
    try {
        if (saves)
            open.commit("Edit", change);
        else
            open.edit("Edit", change);
    } catch (Error const&) {
        // refused, and nothing changed: the shadow would see it
    }
}

class OpenProjectTest : public ::testing::Test {
protected:
    OpenProjectTest() : package(savedPackage(folder / "take.recproj", RandomDocument(3).make())) {}

    void damage() const { writeFileAtomically(package.projectFileURL(), "{\"name\": \"half"); }

    TemporaryFolder const folder{TemporaryFolder::fastest()};
    ProjectPackage package;
};

}

TEST_F(OpenProjectTest, aLongWalkCanBeTakenBackToTheLastByteAlsoWithAnotherProgramSavingBetween) {
    for (unsigned seed : {1u, 2u}) {
        SCOPED_TRACE(seed);
        RandomDocument random(seed);
        OpenProject open(package.url()), other(package.url());
        Shadow shadow(open);
        auto const undoAll = [&] {
            while (shadow.depth() > 0 && !HasFatalFailure()) shadow.undo();
        };
        for (int i = 0; i < walkLength && !HasFatalFailure(); ++i) {
            int const what = random.below(1000);
            if (what < 550)
                editSomewhere(open, random, false);
            else if (what < 580)
                editSomewhere(open, random, true);
            else if (what < 780)
                shadow.undo();
            else if (what < 930)
                shadow.redo();
            else if (what < 960) {
                if (open.save() == SaveOutcome::changedOutside) continue;
                ASSERT_FALSE(open.hasUnsavedChanges());
                ASSERT_EQ(onDisk(open), shadow.present());
            } else if (what < 995)
                editSomewhere(other, random, true);
            else if (what < 998)
                open.refresh();
            else
                undoAll();
            ASSERT_EQ(encodeProject(open.document()), shadow.present());
        }
        undoAll();
        EXPECT_FALSE(HasFatalFailure() || open.undo());
        EXPECT_GT(shadow.steps(), walkLength / 8) << "most edits change something";
    }
}

TEST_F(OpenProjectTest, aWalkBesideAnotherProcessThatSavesCanBeTakenBackToTheLastByte) {
    auto const child = fork();
    if (child == 0) {
        RandomDocument random(8);
        OpenProject other(package.url());
        for (int i = 0; i < walkLength / 20; ++i) editSomewhere(other, random, true);
        _exit(0);
    }
    RandomDocument random(9);
    OpenProject open(package.url());
    Shadow shadow(open);
    int status = -1, steps = 0;
    bool isAlone = false;
    while ((!isAlone || steps < walkLength / 10) && !HasFatalFailure()) {
        editSomewhere(open, random, random.below(4) == 0);
        if (random.below(3) == 0) shadow.undo();
        if (random.below(4) == 0) shadow.redo();
        ASSERT_EQ(encodeProject(open.document()), shadow.present());
        isAlone = isAlone || waitpid(child, &status, WNOHANG) == child;
        ++steps;
    }
    EXPECT_EQ(status, 0);
    while (shadow.depth() > 0 && !HasFatalFailure()) shadow.undo();
    EXPECT_FALSE(HasFatalFailure() || open.undo());
}

TEST_F(OpenProjectTest, twoProcessesThatCommitAtTheSameTimeLoseNothing) {
    constexpr int each = 40;
    package.save([&] {
        auto project = package.load();
        project.name = "0";
        return project;
    }());
    auto const count = [&] {
        OpenProject open(package.url());
        for (int i = 0; i < each; ++i)
            open.commit("Count",
                        [](DemoProject& project) { project.name = std::to_string(std::stoi(project.name) + 1); });
    };
    auto const child = fork();
    if (child == 0) {
        count();
        _exit(0);
    }
    count();
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(package.load().name, std::to_string(2 * each));
}

TEST_F(OpenProjectTest, whoMustNotWaitForAnotherProgramIsToldThatItHasTheLock) {
    OpenProject open(readProject(package.url()));
    auto const before = encodeProject(open.document());
    auto const change = [](DemoProject& project) { rename(project, "mine"); };
    {
        auto const theirs = package.lockForEditing();
        EXPECT_THROW(open.commit("Rename", change), ProjectInUse);
        EXPECT_EQ(encodeProject(open.document()), before);
        open.edit("Rename", change);
        EXPECT_THROW(open.save(), ProjectInUse);
        EXPECT_TRUE(open.hasUnsavedChanges());
    }
    EXPECT_EQ(open.save(), SaveOutcome::saved);
    EXPECT_EQ(package.load().name, "mine");
}

TEST_F(OpenProjectTest, whatIsUnsavedWhenAnotherProgramSavesIsOneUndoAway) {
    OpenProject open(package.url()), other(package.url());
    open.edit("Rename", [](DemoProject& project) { rename(project, "mine"); });
    auto const mine = encodeProject(open.document());
    other.commit("Rename", [](DemoProject& project) { rename(project, "theirs"); });
    EXPECT_EQ(open.save(), SaveOutcome::changedOutside);
    EXPECT_EQ(open.document().name, "theirs");
    EXPECT_EQ(open.undoName(), "Changed Outside");
    EXPECT_FALSE(open.hasUnsavedChanges());
    EXPECT_EQ(open.savedAt(), other.savedAt());
    ASSERT_TRUE(open.undo());
    EXPECT_EQ(encodeProject(open.document()), mine);
    EXPECT_EQ(open.save(), SaveOutcome::saved);
    EXPECT_EQ(onDisk(open), mine);
    EXPECT_TRUE(other.refresh());
    EXPECT_EQ(other.document().name, "mine");
}

TEST_F(OpenProjectTest, aFileThatIsOnlyWrittenAgainTakesNothingThatIsUnsavedAway) {
    OpenProject open(package.url());
    for (auto const* name : {"mine", "mine too"}) {
        open.edit("Rename", [&](DemoProject& project) { rename(project, name); });
        fs::last_write_time(package.projectFileURL(), fs::file_time_type::clock::now() + std::chrono::hours(1));
        EXPECT_FALSE(open.refresh());
        EXPECT_TRUE(open.hasUnsavedChanges());
        EXPECT_EQ(open.save(), SaveOutcome::saved);
        EXPECT_EQ(package.load().name, name);
    }
}

TEST_F(OpenProjectTest, savingBesideLosesNothingWhateverHappensMeanwhile) {
    for (unsigned seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        RandomDocument random(seed);
        OpenProject open(package.url()), other(package.url());
        Shadow shadow(open);
        std::shared_ptr<PendingSave> saving;
        SerialQueue beside("test.save"); // goes first, and waits
        for (int i = 0; i < walkLength / 5 && !HasFatalFailure(); ++i) {
            switch (random.below(12)) {
            case 0: editSomewhere(open, random, true); break;
            case 1: shadow.undo(); break;
            case 2: shadow.redo(); break;
            case 3:
                if (random.below(4) == 0) editSomewhere(other, random, true);
                break;
            case 4:
                if (random.below(4) == 0) open.save();
                break;
            case 5: [[fallthrough]];
            case 6:
                if (auto const next = open.beginSave()) {
                    saving = next;
                    beside.async([next] { next->run(); });
                }
                break;
            case 7: {
                open.finishSave(saving);
                if (open.hasUnsavedChanges()) break;
                auto const here = encodeProject(open.document());
                if (open.refresh()) break;
                ASSERT_EQ(onDisk(open), here);
                break;
            }
            default: editSomewhere(open, random, false);
            }
            ASSERT_EQ(encodeProject(open.document()), shadow.present());
        }
        while (open.save() == SaveOutcome::changedOutside) {
        }
        EXPECT_EQ(onDisk(open), encodeProject(open.document()));
        while (shadow.depth() > 0 && !HasFatalFailure()) shadow.undo();
    }
}

TEST_F(OpenProjectTest, whatIsSavedBesideIsTheDocumentAsItWasAndWhatCameLaterIsStillToBeSaved) {
    OpenProject open(package.url());
    EXPECT_EQ(open.beginSave(), nullptr);
    open.edit("Rename", [](DemoProject& project) { rename(project, "first"); });
    open.setEditorState({.playhead = 3});
    auto const first = open.beginSave();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(open.beginSave(), nullptr) << "one at a time";
    open.edit("Rename", [](DemoProject& project) { rename(project, "second"); });
    first->run();
    EXPECT_FALSE(open.refresh()) << "that is no other program's";
    EXPECT_EQ(open.finishSave(first), SaveOutcome::saved);
    EXPECT_EQ(package.load().name, "first");
    EXPECT_EQ(package.loadEditorState().playhead, 3);
    EXPECT_TRUE(open.hasUnsavedChanges());
    auto const second = open.beginSave();
    EXPECT_EQ(open.finishSave(second), SaveOutcome::saved) << "who comes before the thread does it";
    second->run();
    EXPECT_EQ(open.finishSave(second), SaveOutcome::nothingToSave);
    EXPECT_FALSE(open.hasUnsavedChanges());
    EXPECT_EQ(package.load().name, "second");
    EXPECT_EQ(package.loadBackup().name, "first");
}

TEST_F(OpenProjectTest, aSaveBesideThatComesTooLateOrFailsLeavesItToTheNext) {
    OpenProject open(readProject(package.url())), other(package.url());
    open.edit("Rename", [](DemoProject& project) { rename(project, "mine"); });
    auto save = open.beginSave();
    other.commit("Rename", [](DemoProject& project) { rename(project, "theirs"); });
    save->run();
    EXPECT_EQ(package.load().name, "theirs");
    EXPECT_EQ(open.finishSave(save), SaveOutcome::changedOutside);
    EXPECT_EQ(open.document().name, "theirs");
    ASSERT_TRUE(open.undo());
    EXPECT_EQ(open.document().name, "mine");
    {
        auto const theirs = package.lockForEditing();
        save = open.beginSave();
        EXPECT_THROW(open.finishSave(save), ProjectInUse);
    }
    EXPECT_TRUE(open.hasUnsavedChanges());
    fs::remove(package.backupFileURL());
    fs::create_directories(package.backupFileURL() / "in the way");
    save = open.beginSave();
    EXPECT_THROW(open.finishSave(save), FileError);
    EXPECT_TRUE(open.hasUnsavedChanges());
    fs::remove_all(package.backupFileURL());
    save = open.beginSave();
    save->run();
    EXPECT_EQ(open.save(), SaveOutcome::nothingToSave) << "it is finished by who needs it";
    EXPECT_EQ(package.load().name, "mine");
}

TEST_F(OpenProjectTest, onlyASaveThatChangesTheDocumentDatesIt) {
    OpenProject open(package.url());
    auto const before = readWholeFile(package.projectFileURL());
    EXPECT_EQ(open.save(), SaveOutcome::nothingToSave);
    EXPECT_FALSE(open.edit("Nothing", [](DemoProject&) {}).isChanged);
    EXPECT_FALSE(open.commit("Nothing", [](DemoProject&) {}).isChanged);
    EXPECT_EQ(readWholeFile(package.projectFileURL()), before);
    open.edit("Rename", [](DemoProject& project) { rename(project, "new"); });
    auto const date = open.document().modifiedAt;
    EXPECT_EQ(open.save(), SaveOutcome::saved);
    EXPECT_EQ(package.load().modifiedAt, open.savedAt());
    EXPECT_GT(open.savedAt(), date);
    open.undo();
    EXPECT_TRUE(open.hasUnsavedChanges());
    open.redo();
    EXPECT_FALSE(open.hasUnsavedChanges());
}

TEST_F(OpenProjectTest, aDocumentThatIsDamagedOrRemovedOutsideIsToldOfOnceAndWrittenAgain) {
    for (bool const isRemoved : {false, true}) {
        OpenProject open(package.url());
        open.commit("Rename", [&](DemoProject& project) { rename(project, isRemoved ? "one" : "two"); });
        auto const backup = readWholeFile(package.backupFileURL());
        std::vector<std::string> problems;
        auto const observation = open.observe([&](ProjectChange const& change) {
            if (change.problem) problems.push_back(*change.problem);
        });
        if (isRemoved)
            fs::remove(package.projectFileURL());
        else
            damage();
        EXPECT_FALSE(open.refresh());
        open.edit("Zoom", [](DemoProject& project) { project.zoomEvents.emplace_back(); });
        ASSERT_EQ(problems.size(), 1u);
        EXPECT_TRUE(problems[0].starts_with("Could not open the project “" + package.url().string() + "”: "))
            << problems[0];
        EXPECT_TRUE(problems[0].ends_with(". What is open here is kept, and saving writes it again.")) << problems[0];
        EXPECT_TRUE(open.hasUnsavedChanges());
        EXPECT_EQ(open.save(), SaveOutcome::saved);
        EXPECT_EQ(onDisk(open), encodeProject(open.document()));
        EXPECT_EQ(readWholeFile(package.backupFileURL()), backup);
        EXPECT_EQ(readWholeFile(package.url() / "project.damaged.json"), "{\"name\": \"half"); // of the first round
    }
}

TEST_F(OpenProjectTest, aCommitThatCannotBeSavedOrIsRefusedLeavesDocumentAndHistoryAsTheyWere) {
    OpenProject open(package.url());
    open.edit("Zoom", [](DemoProject& project) { project.zoomEvents.emplace_back(); });
    ASSERT_TRUE(open.undo());
    auto const before = encodeProject(open.document());
    EXPECT_THROW(open.commit("Break",
                             [](DemoProject& project) {
                                 project.name = "half";
                                 throw Error("No.");
                             }),
                 Error);
    fs::create_directories(package.backupFileURL() / "in the way");
    EXPECT_THROW(open.commit("Rename", [](DemoProject& project) { rename(project, "new"); }), FileError);
    EXPECT_EQ(encodeProject(open.document()), before);
    EXPECT_FALSE(open.hasUnsavedChanges() || open.undoName());
    EXPECT_EQ(open.redoName(), "Zoom");
}

TEST_F(OpenProjectTest, theEditorsStateIsKeptOnlyWhenItChanged) {
    {
        OpenProject open(package.url());
        EXPECT_EQ(open.editorState(), EditorState{});
    }
    EXPECT_FALSE(fs::exists(package.editorStateURL()));
    { OpenProject(package.url()).setEditorState({.playhead = 4}); }
    EXPECT_EQ(OpenProject(package.url()).editorState().playhead, 4);
}

TEST_F(OpenProjectTest, tellsWhichFieldsChangedAndOnlyWhoStillWatches) {
    OpenProject open(package.url());
    std::vector<std::string_view> fields;
    auto observation = open.observe([&](ProjectChange const& change) { fields = change.fields.names(); });
    open.edit("Zoom", [](DemoProject& project) {
        project.zoomEvents.emplace_back();
        rename(project, "new");
    });
    EXPECT_EQ(fields, (std::vector<std::string_view>{"name", "zoomEvents"}));
    open.save();
    EXPECT_TRUE(fields.empty());
    open.undo();
    EXPECT_EQ(fields, (std::vector<std::string_view>{"name", "zoomEvents"}));
    observation.reset();
    fields.clear();
    open.redo();
    EXPECT_TRUE(fields.empty());
}
