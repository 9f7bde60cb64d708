#include "../../Core/Package/TemporaryFolder.h"

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

using Texts = std::vector<std::string>;

Preference<bool> const isOn{"com.tavaro.test.on", true};
Preference<std::int64_t> const count{"com.tavaro.test.count", 3};
Preference<double> const size{"com.tavaro.test.size", 0.5};
Preference<std::string> const name{"com.tavaro.test.name", "nobody"};
Preference<Texts> const list{"com.tavaro.test.list"};

class PreferencesTest : public testing::Test {
protected:
    TemporaryFolder const folder{TemporaryFolder::fastest()};
    fs::path const file = folder / "config/preferences.json";
    Texts remarks;

    Preferences opened() {
        return Preferences(file, [this](std::string const& sentence) { remarks.push_back(sentence); });
    }
    void put(std::string const& bytes) const {
        fs::create_directories(file.parent_path());
        writeFileAtomically(file, bytes);
    }
    std::string bytes() const { return readWholeFile(file).value_or(""); }
};

}

TEST_F(PreferencesTest, whatIsChosenIsThereForTheNextProgramAndForNobodyElse) {
    {
        auto preferences = opened();
        EXPECT_TRUE(preferences.get(isOn));
        EXPECT_EQ(preferences.get(name), "nobody");
        preferences.set(isOn, false);
        preferences.set(count, std::int64_t{1} << 60);
        preferences.set(size, 2.0);
        preferences.set(name, "Jo \"é\"\n");
        preferences.set(list, {"b", "a"});
    }
    auto preferences = opened();
    EXPECT_FALSE(preferences.get(isOn));
    EXPECT_EQ(preferences.get(count), std::int64_t{1} << 60);
    EXPECT_EQ(preferences.get(size), 2.0);
    EXPECT_EQ(preferences.get(name), "Jo \"é\"\n");
    EXPECT_THAT(preferences.get(list), ElementsAre("b", "a"));
    preferences.forget(isOn);
    EXPECT_TRUE(opened().get(isOn));
    struct stat about {};
    ASSERT_EQ(stat(file.c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0600u);
    EXPECT_THAT(remarks, ElementsAre());
}

TEST_F(PreferencesTest, whatNobodyHereKnowsStaysAndWhatDoesNotFitCountsAsUnset) {
    put(R"({"com.elsewhere":{"deep":[1,2.5,null]},"com.tavaro.test.on":"yes","com.tavaro.test.list":["a",7,"b"]})");
    auto preferences = opened();
    EXPECT_TRUE(preferences.get(isOn));
    EXPECT_THAT(preferences.get(list), ElementsAre("a", "b"));
    preferences.set(count, 4);
    EXPECT_THAT(bytes(), HasSubstr(R"("com.elsewhere":{"deep":[1,2.5,null]})"));
    EXPECT_THAT(bytes(), HasSubstr(R"("com.tavaro.test.on":"yes")"));
}

TEST_F(PreferencesTest, twoProgramsSeeEachOthersChoicesAndLoseNone) {
    auto one = opened(), other = opened();
    int changes = 0;
    auto const observation = one.observe([&] { ++changes; });
    EXPECT_THAT(one.get(list), ElementsAre()); // read once, so that what follows has to be noticed
    other.set(name, "other");
    one.update(list, [](Texts& names) { names.push_back("one"); });
    other.update(list, [](Texts& names) { names.push_back("other"); });
    EXPECT_EQ(one.get(name), "other");
    EXPECT_THAT(one.get(list), ElementsAre("one", "other"));
    EXPECT_EQ(changes, 2); // its own, with the name in it, and the second entry
    EXPECT_FALSE(one.refresh());
    one.set(name, "other"); // the same again
    EXPECT_EQ(changes, 2);
}

TEST_F(PreferencesTest, anObserverMayChooseInItsTurn) {
    auto preferences = opened();
    auto const observation = preferences.observe([&] { preferences.set(isOn, false); });
    preferences.set(name, "Jo");
    EXPECT_FALSE(opened().get(isOn));
}

TEST_F(PreferencesTest, aDamagedFileIsKeptAsideAndReportedOnce) {
    for (std::string const damaged : {"{\"com.tavaro.test.on\":fal", "[]", "", "\xff"}) {
        put(damaged);
        remarks.clear();
        auto preferences = opened();
        EXPECT_TRUE(preferences.get(isOn));
        EXPECT_TRUE(opened().get(isOn));
        EXPECT_EQ(remarks.size(), 1u) << damaged;
        preferences.set(isOn, false);
        EXPECT_FALSE(opened().get(isOn));
    }
    int kept = 0;
    for (auto const& entry : fs::directory_iterator(file.parent_path()))
        kept += entry.path().filename().string().starts_with("preferences.damaged");
    EXPECT_EQ(kept, 4);
    EXPECT_EQ(readWholeFile(file.parent_path() / "preferences.damaged.json"), "{\"com.tavaro.test.on\":fal");
}

TEST_F(PreferencesTest, aFileThatCannotBeReadIsNotWrittenOver) {
    fs::create_directories(file); // a folder of that name
    auto preferences = opened();
    EXPECT_TRUE(preferences.get(isOn));
    EXPECT_TRUE(preferences.get(isOn));
    EXPECT_EQ(remarks.size(), 1u);
    EXPECT_THROW(preferences.set(isOn, false), FileError);
    EXPECT_TRUE(preferences.get(isOn));
    EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(PreferencesTest, whatWouldMakeTheFileTooLargeToReadIsNotWritten) {
    auto preferences = opened();
    preferences.set(isOn, false);
    EXPECT_THROW(preferences.set(name, std::string(1 << 20, 'a')), FileError);
    EXPECT_FALSE(preferences.get(isOn));
    EXPECT_FALSE(opened().get(isOn));
    EXPECT_TRUE(remarks.empty());
}

TEST_F(PreferencesTest, theUsualFileIsInTheUsersConfigurationFolder) {
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    EXPECT_EQ(Preferences::usualFile(), folder / "Tavaro/preferences.json");
    setenv("XDG_CONFIG_HOME", "elsewhere", 1);
    setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(Preferences::usualFile(), "/home/someone/.config/Tavaro/preferences.json");
    unsetenv("XDG_CONFIG_HOME");
}
