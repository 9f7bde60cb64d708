#include "../TemporaryFolder.h"

#include <TavaroCapture/Events/Private/EventLog.h>
#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>
#include <TavaroCapture/Recovery/Private/WorkingFolderClaim.h>
#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCapture/Segments/Private/SegmentWriter.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

enum class End { finished, abandoned };

/// While it lives, the process has the rights of an ordinary user, who owns the folder: nothing stops the root user.
class OrdinaryUser {
public:
    explicit OrdinaryUser(fs::path const& folder) : before_(geteuid()) {
        if (before_ != 0) return;
        for (auto const& entry : fs::recursive_directory_iterator(folder))
            EXPECT_EQ(chown(entry.path().c_str(), user, user), 0);
        EXPECT_EQ(chown(folder.c_str(), user, user), 0);
        EXPECT_EQ(seteuid(user), 0);
    }
    ~OrdinaryUser() { EXPECT_EQ(seteuid(before_), 0); }

private:
    static constexpr uid_t user = 65534;
    uid_t const before_;
};

class RecoveryStoreTest : public testing::Test {
protected:
    /// A working folder with a take of 100 frames in segments of half a second.
    fs::path makeTake(End end) {
        UUID const id = UUID::random();
        auto const directory = recordings.path() / id.text();
        fs::create_directory(directory);
        RecoveryStore::markInProgress(directory, id, "display");
        auto const manifest = std::make_shared<TakeManifest>(directory, id);
        SegmentWriter writer({.manifest = manifest, .width = 64, .height = 48, .fps = 60, .segmentDuration = 0.5});
        writer.prepare();
        Image image(64, 48);
        for (int i = 0; i < 100; ++i) {
            auto picture = writer.picture();
            fillPicture(picture, image.view());
            writer.append(std::move(picture), i / 60.0);
        }
        if (end == End::finished) {
            writer.finish();
            manifest->complete();
            manifest->write();
            RecoveryStore::markComplete(directory);
        }
        return directory;
    }
    static void hear(fs::path const& directory, double seconds) {
        AudioFileWriter sound(directory / segmentFileName(0, StreamRole::microphone), AudioFileFormat::whole16);
        sound.append(std::vector<StereoSample>(static_cast<std::size_t>(seconds * audioRate)));
        sound.finish();
    }
    /// Of an abandoned take, as where it ended before the first picture was on the disk.
    static void loseScreen(fs::path const& directory) {
        for (int i = 0; i < 4; ++i) fs::resize_file(directory / segmentFileName(i), 10);
        auto manifest = *readManifest(directory);
        manifest.segments.clear();
        writeManifest(directory, manifest);
    }
    auto found() { return RecoveryStore::findRecoverable(recordings.path()); }

    TemporaryFolder recordings;
};

}

TEST_F(RecoveryStoreTest, anAbandonedTakeComesBackAsOneMovieWithItsLog) {
    auto const directory = makeTake(End::abandoned);
    EventLog log;
    log.notePointer(0.5, {1, 1}, {0.1, 0.1}, CursorKind::arrow);
    log.notePointer(99, {1, 1}, {0.2, 0.2}, CursorKind::arrow); // later than the last readable frame
    MetadataCheckpoints(directory, 1e6, [&](auto const& mark) {
        return MetadataCheckpoints::Snapshot{log.since(mark, 1), log.settled()};
    }).writeNow();
    makeTake(End::finished);

    auto const takes = found();
    ASSERT_EQ(takes.size(), 1u) << "a finished take is nothing to recover";
    EXPECT_EQ(takes[0].directory(), directory);
    EXPECT_EQ(takes[0].marker.mode, "display");
    EXPECT_EQ(takes[0].segments.size(), 3u) << "the last sixth of a second had not reached the disk";
    EXPECT_GT(takes[0].estimatedDuration, 100 / 60.0 - 1);
    auto const recovered = RecoveryStore::recover(takes[0]);
    EXPECT_GT(recovered.duration, 100 / 60.0 - 1);
    EXPECT_NEAR(MovieReader(recovered.movie).info().duration, recovered.duration, 1e-3);
    EXPECT_TRUE(recovered.metadata.health.captureLost);
    EXPECT_EQ(recovered.metadata.cursorSamples.size(), 1u);
    EXPECT_EQ(recovered.metadata.captureSize, (Size2{64, 48}));
    EXPECT_EQ(found().size(), 1u) << "a movie that is nowhere else yet";
    EXPECT_TRUE(RecoveryStore::recover(found().at(0)).metadata.health.captureLost) << "however often it is tried";
    RecoveryStore::markComplete(directory);
    EXPECT_TRUE(readManifest(directory)->isComplete);
    RecoveryStore::removeWorkingDirectory(recovered.movie);
    EXPECT_TRUE(found().empty());
    EXPECT_FALSE(fs::exists(directory));
}

TEST_F(RecoveryStoreTest, aRunningTakeIsNeitherFoundNorRemoved) {
    auto const directory = makeTake(End::abandoned);
    auto const takes = found();
    ASSERT_EQ(takes.size(), 1u);
    auto const claim = WorkingFolderClaim::take(directory);
    ASSERT_TRUE(claim);
    EXPECT_TRUE(found().empty());
    EXPECT_THROW(RecoveryStore::recover(takes[0]), CaptureError);
    EXPECT_THROW(RecoveryStore::discard(takes[0]), CaptureError);
    EXPECT_THROW(RecoveryStore::removeWorkingDirectory(directory / "recording.mov"), CaptureError);
    EXPECT_TRUE(fs::exists(directory));
}

TEST_F(RecoveryStoreTest, aDamagedManifestOrSegmentCostsOnlyItself) {
    auto const directory = makeTake(End::abandoned);
    std::ofstream(manifestPath(directory), std::ios::trunc) << "{\"segments\":[{\"index\":1,\"start\":-5}";
    std::ofstream(directory / "in-progress.json", std::ios::trunc) << "not JSON";
    std::ofstream(directory / segmentFileName(1), std::ios::trunc) << "not a movie";
    std::ofstream(directory / "segment-7.mov") << "not a segment";
    auto const takes = found();
    ASSERT_EQ(takes.size(), 1u);
    EXPECT_EQ(takes[0].segments.size(), 2u);
    auto const recovered = RecoveryStore::recover(takes[0]);
    EXPECT_NEAR(recovered.duration, 1.0, 1e-3) << "the first and the third half second";
}

TEST_F(RecoveryStoreTest, aStreamThatCannotBeWrittenLeavesTheTakeForLater) {
    auto const directory = makeTake(End::abandoned);
    hear(directory, 1);
    auto const place = joinedStreamPath(directory, StreamRole::microphone);
    fs::create_directories(place / "in the way");
    auto const takes = found();
    ASSERT_EQ(takes.size(), 1u);
    EXPECT_THROW(RecoveryStore::recover(takes[0]), CaptureError);
    fs::remove_all(place);
    EXPECT_EQ(RecoveryStore::recover(found().at(0)).streams.size(), 1u);
}

TEST_F(RecoveryStoreTest, aTakeOfTheTimeWhenThereWasOnlyAScreenComesBack) {
    auto const directory = makeTake(End::abandoned);
    std::ofstream(manifestPath(directory), std::ios::trunc)
        << R"({"createdAt":"2026-03-01T09:30:15Z","fps":60,"height":48,"isComplete":false,)"
        << R"("recordingID":"6F9619FF-8B86-D011-B42D-00CF4FC964FF","segments":[)"
        << R"({"duration":0.5,"fileName":"segment-000.mov","index":0,"start":0},)"
        << R"({"duration":0.5,"fileName":"segment-001.mov","index":1,"start":0.7}],"width":64})";
    auto const takes = found();
    ASSERT_EQ(takes.size(), 1u);
    ASSERT_EQ(takes[0].segments.size(), 3u);
    EXPECT_EQ(takes[0].segments[1].start, 0.7);
    EXPECT_TRUE(takes[0].streams.empty());
    auto const recovered = RecoveryStore::recover(takes[0]);
    EXPECT_NEAR(recovered.duration, 1.2 + takes[0].segments[2].duration, 1e-3);
    EXPECT_TRUE(recovered.streams.empty());
    EXPECT_TRUE(recovered.warnings.empty());
    EXPECT_FALSE(recovered.metadata.health.cameraLost);
}

TEST_F(RecoveryStoreTest, aDamagedLogCostsOnlyItsOwnPartAndTheTakeSaysSo) {
    auto const directory = makeTake(End::abandoned);
    EventLog log;
    MetadataCheckpoints checkpoints(directory, 1e6, [&](auto const& mark) {
        return MetadataCheckpoints::Snapshot{log.since(mark, 1), log.settled()};
    });
    for (int part = 0; part < 3; ++part) {
        log.notePress(0.4 * part, {MouseButton::left, {1, 1}, {0.1, 0.1}});
        log.noteRelease(0.4 * part, MouseButton::left, {1, 1});
        for (int i = 0; i < 1200; ++i) log.notePointer(0.4 * part, {1, 1}, {0.1, 0.1}, CursorKind::arrow);
        checkpoints.writeNow();
    }
    EXPECT_TRUE(found().at(0).warnings.empty());
    std::ofstream(directory / "metadata-001.json", std::ios::trunc) << "rubbish";
    auto const recovered = RecoveryStore::recover(found().at(0));
    ASSERT_EQ(recovered.warnings.size(), 1u);
    EXPECT_TRUE(recovered.warnings[0].starts_with("Parts of the log are damaged")) << recovered.warnings[0];
    ASSERT_EQ(recovered.metadata.clicks.size(), 2u);
    EXPECT_EQ(recovered.metadata.clicks[1].t, 0.8);
}

TEST_F(RecoveryStoreTest, aFolderWithoutAReadableSegmentIsNoTake) {
    auto const directory = makeTake(End::abandoned);
    for (int i = 0; i < 4; ++i) fs::resize_file(directory / segmentFileName(i), 10);
    fs::remove(manifestPath(directory));
    EXPECT_TRUE(found().empty());
    EXPECT_TRUE(RecoveryStore::findRecoverable(recordings.path() / "missing").empty());
}

TEST_F(RecoveryStoreTest, aTakeOfWhichOnlyTheSoundIsLeftComesBackWithADarkFilm) {
    for (bool const isListed : {false, true}) {
        auto const directory = makeTake(End::abandoned);
        EventLog log;
        log.notePress(2.5, {MouseButton::left, {1, 1}, {0.1, 0.1}});
        log.noteRelease(2.6, MouseButton::left, {1, 1});
        MetadataCheckpoints(directory, 1e6, [&](auto const& mark) {
            return MetadataCheckpoints::Snapshot{log.since(mark, 3), log.settled()};
        }).writeNow();
        hear(directory, 3.25);
        auto const manifest = *readManifest(directory);
        loseScreen(directory);
        if (isListed) writeManifest(directory, manifest);
        auto const takes = found();
        ASSERT_EQ(takes.size(), 1u);
        if (!isListed) EXPECT_NEAR(takes[0].estimatedDuration, 3.25, 0.01);
        auto const recovered = RecoveryStore::recover(takes[0]);
        EXPECT_NEAR(recovered.duration, 3.25, 0.01);
        auto const info = MovieReader(recovered.movie).info();
        EXPECT_NEAR(info.duration, 3.25, 0.01);
        EXPECT_EQ((Size2{info.width, info.height}), (Size2{64, 48})) << "the clicks are where they were";
        EXPECT_FALSE(info.isCutShort);
        EXPECT_EQ(recovered.metadata.clicks.size(), 1u);
        EXPECT_EQ(recovered.streams.size(), 1u);
        ASSERT_EQ(recovered.warnings.size(), 1u);
        EXPECT_TRUE(recovered.warnings[0].starts_with("What the screen recorded cannot be read"));
        RecoveryStore::discard(takes[0]);
        EXPECT_TRUE(found().empty());
    }
}

TEST_F(RecoveryStoreTest, onlyOldUnclaimedTakesThatAreCompleteOrEmptyArePruned) {
    auto const age = [](fs::path const& directory, double seconds) {
        auto manifest = *readManifest(directory);
        manifest.createdAt.milliseconds -= static_cast<std::int64_t>(seconds * 1000);
        writeManifest(directory, manifest);
    };
    auto const young = makeTake(End::finished);
    auto const old = makeTake(End::finished);
    auto const claimed = makeTake(End::finished);
    auto const unfinished = makeTake(End::abandoned);
    auto const heard = makeTake(End::abandoned), begun = makeTake(End::abandoned), empty = makeTake(End::abandoned);
    for (auto const& directory : {heard, begun, empty}) loseScreen(directory);
    hear(heard, 1);
    hear(begun, 0.2);
    for (auto const& directory : {old, claimed, unfinished, heard, begun, empty}) age(directory, 15 * 86400);
    fs::create_directory(recordings.path() / "somebody's folder");
    auto const claim = WorkingFolderClaim::take(claimed);
    auto const pruned = RecoveryStore::pruneOldRecordings(14 * 86400, recordings.path());
    EXPECT_EQ(pruned.removed, 3);
    EXPECT_TRUE(pruned.problems.empty());
    EXPECT_FALSE(fs::exists(old));
    for (auto const& nothing : {begun, empty}) EXPECT_FALSE(fs::exists(nothing)) << "it ended before it had a picture";
    for (auto const& kept : {young, claimed, unfinished, heard, recordings.path() / "somebody's folder"})
        EXPECT_TRUE(fs::exists(kept)) << kept;
}

TEST_F(RecoveryStoreTest, aRemovalThatWasInterruptedIsFinishedByTheNextPruning) {
    auto const directory = makeTake(End::abandoned);
    auto const left = recordings.path() / (".removing-" + directory.filename().string());
    fs::rename(directory, left); // what a kill leaves at the worst: all of it, under the name of what is to go
    EXPECT_TRUE(found().empty()) << "it was not to be brought back any more";
    EXPECT_EQ(RecoveryStore::pruneOldRecordings(14 * 86400, recordings.path()).removed, 0);
    EXPECT_TRUE(fs::is_empty(recordings.path()));
}

TEST_F(RecoveryStoreTest, aTakeThatCannotBeRemovedIsSaidAndTheOthersGo) {
    std::vector<fs::path> const olds{makeTake(End::finished), makeTake(End::finished)};
    auto const stuck = olds[0] / "stuck";
    fs::create_directory(stuck);
    std::ofstream(stuck / "file") << "that cannot be removed";
    fs::permissions(stuck, fs::perms(0500));
    OrdinaryUser const user(recordings.path());
    auto const pruned = RecoveryStore::pruneOldRecordings(-1, recordings.path());
    EXPECT_EQ(pruned.removed, 1);
    EXPECT_FALSE(fs::exists(olds[1]));
    ASSERT_EQ(pruned.problems.size(), 1u);
    EXPECT_EQ(pruned.problems[0], "Could not remove “" + olds[0].string() + "”: permission denied.");
    EXPECT_EQ(RecoveryStore::pruneOldRecordings(-1, recordings.path()).problems.size(), 1u) << "said until it is gone";
    fs::permissions(recordings.path() / (".removing-" + olds[0].filename().string()) / "stuck", fs::perms(0700));
    EXPECT_TRUE(RecoveryStore::pruneOldRecordings(-1, recordings.path()).problems.empty());
    EXPECT_TRUE(fs::is_empty(recordings.path()));
}

TEST_F(RecoveryStoreTest, onlyWorkingFoldersAreRemoved) {
    fs::create_directory(recordings.path() / "documents");
    std::ofstream(recordings.path() / "documents" / "recording.mov") << "precious";
    EXPECT_THROW(RecoveryStore::removeWorkingDirectory(recordings.path() / "documents" / "recording.mov"),
                 CaptureError);
    EXPECT_TRUE(fs::exists(recordings.path() / "documents" / "recording.mov"));
}

}
