#include "../TemporaryFolder.h"

#include <TavaroCapture/Segments/Private/StreamSync.h>
#include <TavaroCapture/Segments/Private/TakeManifest.h>

#include <fstream>
#include <gtest/gtest.h>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

class TakeManifestTest : public testing::Test {
protected:
    TakeManifestTest() { manifest->enter({.role = StreamRole::microphone}); }
    void close(StreamRole role, std::int64_t index) {
        manifest->add(role, {index, segmentFileName(index, role), 10.0 * static_cast<double>(index), 10});
    }
    std::uintmax_t grow(StreamRole role, std::int64_t index) const {
        std::string const bytes(1000, 'x');
        std::ofstream(manifest->segmentPath(role, index), std::ios::app) << bytes;
        return bytes.size();
    }

    TemporaryFolder folder;
    std::shared_ptr<TakeManifest> const manifest = std::make_shared<TakeManifest>(folder.path(), UUID::random());
};

}

/// As often as segments close in a short take; but whoever records for hours does not write megabytes for each of them.
TEST_F(TakeManifestTest, ofALongTakeItIsWrittenMoreSeldomAndListsNearlyAll) {
    int writes = 0;
    std::uintmax_t size = 0;
    for (std::int64_t n = 0; n < 300; ++n) {
        for (auto const role : {StreamRole::screen, StreamRole::microphone}) {
            close(role, n);
            manifest->writeIfDue();
            auto const now = fs::file_size(manifestPath(folder.path()));
            if (std::exchange(size, now) != now) ++writes;
        }
        if (n % 20 != 3) continue;
        auto const read = readManifest(folder.path());
        ASSERT_TRUE(read);
        auto const missing = 2 * (n + 1) - std::ssize(read->segments) - std::ssize(read->streams.at(0).segments);
        ASSERT_LE(missing, 2 * (n + 1) / 64) << n;
    }
    EXPECT_LT(writes, 300) << "of 600";
    EXPECT_GT(writes, 64);
}

TEST_F(TakeManifestTest, whatIsSyncedIsCountedOnceHoweverManySegmentsThereAre) {
    StreamSync disk(manifest);
    std::uintmax_t bytes = 0;
    for (std::int64_t n = 0; n < 12; ++n) {
        for (auto const role : {StreamRole::screen, StreamRole::microphone}) {
            bytes += grow(role, n);
            if (n > 0) bytes += grow(role, n - 1); // its index comes when it is finished
        }
        disk.sync();
        EXPECT_EQ(disk.written(), bytes) << n;
        for (auto const role : {StreamRole::screen, StreamRole::microphone}) close(role, n);
        disk.sync();
        EXPECT_EQ(disk.written(), bytes) << n;
    }
}

}
