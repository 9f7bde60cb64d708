#include "../../Core/Package/TemporaryFolder.h"

#include <TavaroPlatform/Folders/Trash.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FileError.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::StartsWith;
namespace fs = std::filesystem;

namespace {

class Trash : public testing::Test {
protected:
    Trash() { setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1); }
    ~Trash() override { unsetenv("XDG_DATA_HOME"); }

    fs::path make(fs::path const& file, std::string const& text) const {
        fs::create_directories(file.parent_path());
        writeFileAtomically(file, text);
        return file;
    }
    static std::string read(fs::path const& file) { return readWholeFile(file).value_or("nothing"); }

    TemporaryFolder const folder;
};

dev_t deviceOf(fs::path const& path) {
    struct stat found {};
    stat(path.c_str(), &found);
    return found.st_dev;
}

}

TEST_F(Trash, whatIsPutThereIsNotedAndComesBackWhereItWas) {
    auto const file = make(folder / "Movies/Größe 100%.recproj", "film");
    auto const trashed = trash::put(file);
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(trashed.files, folder / "data/Trash/files/Größe 100%.recproj");
    auto const note = read(trashed.info);
    EXPECT_THAT(note, StartsWith("[Trash Info]\nPath=" + folder.path().string() +
                                 "/Movies/Gr%C3%B6%C3%9Fe%20100%25.recproj\nDeletionDate=2"));
    fs::remove_all(folder / "Movies"); // meanwhile
    EXPECT_EQ(trash::restore(trashed), file);
    EXPECT_EQ(read(file), "film");
    EXPECT_FALSE(fs::exists(trashed.info) || fs::exists(trashed.files));
}

TEST_F(Trash, nothingThereOrWhereItComesBackIsReplaced) {
    auto const place = folder / "take.mov";
    auto const first = trash::put(make(place, "first")), second = trash::put(make(place, "second"));
    EXPECT_NE(first.files, second.files);
    make(place, "third");
    auto const back = trash::restore(second);
    EXPECT_EQ(back, folder / "take 2.mov");
    EXPECT_EQ(read(back), "second");
    EXPECT_EQ(read(place), "third");
    EXPECT_EQ(read(first.files), "first");
    EXPECT_THROW(trash::put(folder / "not there"), FileError);
}

TEST_F(Trash, whatIsOnAnotherDiskStaysOnIt) {
    TemporaryFolder const elsewhere(TemporaryFolder::fastest());
    if (deviceOf(elsewhere.path()) == deviceOf(folder.path())) GTEST_SKIP() << "there is one disk";
    auto const trashed = trash::put(make(elsewhere / "take.mov", "film"));
    EXPECT_EQ(deviceOf(trashed.files), deviceOf(elsewhere.path()));
    EXPECT_THAT(trashed.files.string(), HasSubstr(".Trash"));
    EXPECT_THAT(read(trashed.info), HasSubstr("Path=" + elsewhere.path().filename().string() + "/take.mov\n"));
    EXPECT_EQ(read(trash::restore(trashed)), "film");
    // What is empty goes again.
    for (auto const& part :
         {trashed.files.parent_path(), trashed.info.parent_path(), trashed.files.parent_path().parent_path()})
        ::rmdir(part.c_str());
}
