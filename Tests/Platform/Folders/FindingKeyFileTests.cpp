#include <TavaroPlatform/Folders/FindingKeyFile.h>

#include <TavaroCore/Files/AtomicFile.h>

#include <Tests/Core/Package/TemporaryFolder.h>

#include <gtest/gtest.h>

using namespace tavaro;

TEST(FindingKeyFile, isMadeOnceForItsUserAlone) {
    TemporaryFolder const folder;
    auto const file = folder / "state" / "findings.key";
    auto const key = ensureFindingKey(file);
    EXPECT_EQ(ensureFindingKey(file), key);
    EXPECT_NE(key, FindingKey{});
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
    EXPECT_NE(ensureFindingKey(folder / "other.key"), key);
}

TEST(FindingKeyFile, aDamagedKeyIsReportedAndNotReplaced) {
    TemporaryFolder const folder;
    auto const file = folder / "findings.key";
    for (std::string const damaged : {"", "12", "0123456789abcdefghijklmnopqrstuv"}) {
        writeFileAtomically(file, damaged);
        try {
            ensureFindingKey(file);
            ADD_FAILURE() << damaged;
        } catch (FileError const& error) {
            EXPECT_NE(std::string(error.what()).find("may be deleted"), std::string::npos) << error.what();
        }
        EXPECT_EQ(readWholeFile(file), damaged);
    }
}
