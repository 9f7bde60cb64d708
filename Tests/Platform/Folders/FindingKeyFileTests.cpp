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
        EXPECT_THROW(ensureFindingKey(file), FileError) << damaged;
        EXPECT_EQ(readWholeFile(file), damaged);
    }
}
