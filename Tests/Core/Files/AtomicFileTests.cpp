#include <TavaroCore/Files/AtomicFile.h>

#include <TavaroCore/Files/FileBytes.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
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
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator{}), 1);
    EXPECT_THROW(writeFileAtomically(folder / "missing" / "a.json", "x"), FileError);
}

TEST_F(AtomicFileTest, aFullDiskIsToldFromOtherFailures) {
    auto const full = FileDescriptor::open("/dev/full", FileDescriptor::Opening::overwriting);
    if (!full.isOpen()) GTEST_SKIP() << "no /dev/full here";
    auto const failure = full.write(std::as_bytes(std::span("x")));
    EXPECT_EQ(FileError::writing("a.json", failure).kind, FileError::Kind::diskFull);
    EXPECT_EQ(FileError::writing("a.json", EACCES).kind, FileError::Kind::cannotWrite);
}

TEST_F(AtomicFileTest, aBackupThatIsTheDocumentItselfLeavesNoThirdName) {
    // So a crash leaves them between the two last steps of a save.
    writeFileAtomically(folder / "a.json", "one");
    fs::create_hard_link(folder / "a.json", folder / "b.json");
    replaceFileKeepingBackup(folder / "a.json", folder / "b.json", "two");
    EXPECT_EQ(readWholeFile(folder / "a.json"), "two");
    EXPECT_EQ(readWholeFile(folder / "b.json"), "one");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator{}), 2);
}

TEST_F(AtomicFileTest, aPipeIsRefusedAtOnceAndNotWaitedFor) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_THROW(readWholeFile(folder / "pipe"), FileError);
    EXPECT_THROW(FileBytes::read(folder / "pipe"), FileError);
}

TEST_F(AtomicFileTest, bytesThatWereReadOutliveAFileThatIsCutShort) {
    std::string const document(100'000, 'x');
    writeFileAtomically(folder / "a", document);
    auto const read = FileBytes::read(folder / "a");
    fs::resize_file(folder / "a", 0);
    EXPECT_EQ(read->bytes(), document);
    EXPECT_EQ(FileBytes::read(folder / "a")->bytes(), "");
    EXPECT_FALSE(FileBytes::read(folder / "none"));
}

TEST_F(AtomicFileTest, whatIsNoFileOrTooLargeIsRefused) {
    EXPECT_THROW(readWholeFile(folder), FileError);
    writeFileAtomically(folder / "a", "0123456789");
    EXPECT_THROW(readWholeFile(folder / "a", 9), FileError);
}

}
