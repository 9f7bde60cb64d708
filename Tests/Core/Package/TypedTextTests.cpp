#include "TemporaryFolder.h"

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Package/TypedText.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONError.h>

#include <gmock/gmock.h>

#include <array>
#include <random>
#include <string>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::Not;
namespace fs = std::filesystem;

namespace {

/// A document with that member among those of a keystroke.
std::string withMember(std::string const& member, std::string const& between = ",") {
    return R"({"name":"old","metadata":{"keystrokes":[{"t":1,"keys":["a"])" + between + member + "}]}}";
}

// Every way of JSON to write the field.
std::array const spellings{
    withMember(R"("characters":"hunter2")"),
    withMember(R"("characters" : "hunter2")"),
    withMember("\"characters\"\n\t:\r\n\"hunter2\""),
    withMember(R"("\u0063haracters":"hunter2")"),
    withMember(R"("charact\u0065\u0072s":["hunter2"])"),
    withMember(R"("characters":"\u0068unter2","characters":"hunter2")", " \n, "),
    std::string(R"({"metadata":{"keystrokes":[{"characters":"hunter2","t":1,"keys":["a"]}]}})"),
    std::string(R"({"metadata":{"keystrokes":[{"characters":{"text":"hunter2"}}]}})"),
    std::string(R"({"metadata":{"keystrokes":[{"characters":"hunter2"}],"keystrokes":[]}})"),
    std::string(R"({"later":{"log":[[{"characters":"hunter2"}]]}})"),
};

// Where the word is something else.
std::array const harmless{
    std::string(R"({"assetDurations":{"characters":4.5}})"),
    std::string(R"({"captions":{"cues":[{"text":"\"characters\": are no field"}]}})"),
    std::string(R"({"name":"characters","later":["characters"]})"),
    withMember(R"("characters":null)"),
    std::string(R"({"name":"\u0063haracters"})"),
};

std::string read(fs::path const& file) { return readWholeFile(file).value_or("(no file)"); }

class TypedText : public ::testing::Test {
protected:
    TypedText() { package.createDirectories(); }

    void put(std::string const& document, std::string const& backup) const {
        writeFileAtomically(package.projectFileURL(), document);
        writeFileAtomically(package.backupFileURL(), backup);
    }
    std::string everything() const { return read(package.projectFileURL()) + read(package.backupFileURL()); }

    TemporaryFolder folder;
    ProjectPackage package{folder / "take.recproj"};
};

}

TEST_F(TypedText, ofOlderDocumentsLeavesDocumentAndBackupHoweverItIsSpelled) {
    auto const clean = encodeProject(decodeProject("{}"));
    for (auto const& spelling : spellings) {
        SCOPED_TRACE(spelling);
        for (auto const& [document, backup] : {std::pair(spelling, spelling), {spelling, clean}, {clean, spelling}}) {
            put(document, backup);
            auto const project = package.load();
            EXPECT_THAT(everything(), Not(HasSubstr("hunter2")));
            EXPECT_EQ(package.load(), project);
            EXPECT_NO_THROW(package.loadBackup());
        }
    }
}

TEST_F(TypedText, leavesAProjectThatHasNoFolderForAssets) {
    fs::remove(package.assetsURL());
    put(spellings[0], spellings[0]);
    package.load();
    EXPECT_THAT(everything(), Not(HasSubstr("hunter2")));
}

TEST_F(TypedText, isNotSeenInOtherFieldsAndTexts) {
    for (auto const& document : harmless) {
        put(document, document);
        package.load();
        EXPECT_EQ(everything(), document + document);
        EXPECT_EQ(withoutFormerTypedText(document), std::nullopt) << document;
    }
}

TEST_F(TypedText, staysWhileSomebodyEditsAndGoesWithTheEdit) {
    for (auto const& spelling : spellings) {
        put(spelling, spelling);
        {
            auto const lock = package.lockForEditing();
            package.load();
            EXPECT_EQ(everything(), spelling + spelling) << "what is read without the lock is not written";
            auto project = package.load();
            project.name = "edited";
            package.save(project);
        }
        EXPECT_THAT(everything(), Not(HasSubstr("hunter2")));
        EXPECT_EQ(package.load().name, "edited");
    }
}

TEST_F(TypedText, leavesABackupThatIsNoDocumentOfTheseDays) {
    auto const strange = R"({"createdAt":"soon","metadata":{"keystrokes":[{"characters":"hunter2","t":1}]}})";
    put("{}", strange);
    package.load();
    EXPECT_EQ(read(package.backupFileURL()), R"({"createdAt":"soon","metadata":{"keystrokes":[{"t":1}]}})");
}

TEST_F(TypedText, leavesADiskThatCannotBeWrittenReadable) {
    put(spellings[0], "{}");
    fs::remove(package.backupFileURL());
    fs::create_directories(package.backupFileURL() / "in the way");
    EXPECT_EQ(package.load().name, "old");
    EXPECT_THAT(read(package.projectFileURL()), Not(HasSubstr("hunter2")));
}

TEST(TypedTextOfLogs, isMaskedToTheCharacterAndNothingElseChanges) {
    auto const masked = [](std::string const& text) { return withoutTypedText(text).value_or("unchanged"); };
    EXPECT_EQ(masked(R"({"keystrokes":[{"t":1, "keys" : ["⇧","A"]},{"t":2,"keys":["é"],"isShortcut":false}]})"),
              R"({"keystrokes":[{"t":1, "keys" : ["⇧","•"]},{"t":2,"keys":["•"],"isShortcut":false}]})");
    EXPECT_EQ(masked(R"({"keystrokes":[{"keys":["⌘","S"],"isShortcut":true},{"isShortcut":true,"keys":["⌃","C"]}]})"),
              "unchanged");
    EXPECT_EQ(masked(R"({"metadata":{"\u006beystrokes":[{"\u006beys":["\u0061","Space"]}]},"x":{"keys":["b"]}})"),
              R"({"metadata":{"\u006beystrokes":[{"\u006beys":["•","•"]}]},"x":{"keys":["b"]}})");
    EXPECT_EQ(
        masked(R"([{"characters":"a","characters":"b"},{"characters":"a","t":1},{"t":1,"characters":"b","x":2}])"),
        R"([{},{"t":1},{"t":1,"x":2}])");
    EXPECT_EQ(masked(R"({"keystrokes":[{"keys":["•","⌥"]}]})"), "unchanged");
    EXPECT_THROW(masked("{\"keystrokes\":[}"), JSONError);
    EXPECT_THROW(masked(std::string(100'000, '[') + std::string(100'000, ']')), JSONError);
}

TEST(TypedTextOfLogs, keepsItsTimesAndCountAndIsMaskedOnce) {
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        auto project = decodeProject("{}");
        auto& log = project.metadata.edit();
        for (auto left = random() % 20; left > 0; --left) {
            bool const isShortcut = random() % 3 == 0;
            log.keystrokes.push_back({.t = static_cast<double>(random() % 1000) / 7,
                                      .keys = {isShortcut ? "⌘" : "⇧", std::string(1, char('a' + random() % 26))},
                                      .isShortcut = isShortcut});
        }
        auto expected = project;
        for (auto& stroke : expected.metadata.edit().keystrokes) {
            if (!stroke.isShortcut) stroke.keys.back() = "•";
        }
        auto const document = encodeProject(project);
        auto const once = withoutTypedText(document).value_or(document);
        ASSERT_EQ(once, encodeProject(expected)) << "round " << round;
        ASSERT_EQ(withoutTypedText(once), std::nullopt) << "round " << round;
    }
}
