#include <TavaroCore/Files/AtomicFile.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

class AtomicFileTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "tavaro-test-XXXXXX").string();
        ASSERT_TRUE(mkdtemp(pattern.data()));
        folder = pattern;
    }
    void TearDown() override { fs::remove_all(folder); }

    fs::path folder;
};

TEST_F(AtomicFileTest, theNewBytesReplaceTheOldOnesAndNothingElseIsLeft) {
    auto const file = folder / "a.json";
    EXPECT_EQ(readWholeFile(file), std::nullopt);
    std::string const bytes("first\0second", 12);
    writeFileAtomically(file, std::string(100000, 'x'));
    writeFileAtomically(file, bytes);
    EXPECT_EQ(readWholeFile(file), bytes);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator{}), 1);
}

TEST_F(AtomicFileTest, aWriteThatFailsNamesTheFileAndLeavesWhatWasThere) {
    fs::create_directory(folder / "occupied");
    try {
        writeFileAtomically(folder / "occupied", "x"); // a folder cannot be replaced by a file
        FAIL();
    } catch (FileError const& error) {
        EXPECT_NE(std::string(error.what()).find("occupied"), std::string::npos);
    }
    EXPECT_TRUE(fs::is_directory(folder / "occupied"));
    EXPECT_FALSE(fs::exists(folder / "occupied.tmp"));
    EXPECT_THROW(writeFileAtomically(folder / "missing" / "a.json", "x"), FileError);
}

TEST_F(AtomicFileTest, aFullDiskIsToldFromOtherFailures) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    fs::create_symlink("/dev/full", folder / "a.json.tmp");
    try {
        writeFileAtomically(folder / "a.json", "x");
        FAIL();
    } catch (FileError const& error) {
        EXPECT_EQ(error.kind, FileError::Kind::diskFull) << error.what();
    }
    EXPECT_FALSE(fs::exists(folder / "a.json"));
}

TEST_F(AtomicFileTest, whatIsNoFileOrTooLargeIsRefused) {
    EXPECT_THROW(readWholeFile(folder), FileError);
    writeFileAtomically(folder / "a", "0123456789");
    EXPECT_THROW(readWholeFile(folder / "a", 9), FileError);
}

}
