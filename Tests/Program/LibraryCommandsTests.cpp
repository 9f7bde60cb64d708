#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::AllOf;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

class LibraryCommands : public ProcessFixture {
protected:
    LibraryCommands() { setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1); }
    ~LibraryCommands() override { unsetenv("XDG_CACHE_HOME"); }

    ProjectPackage make(std::string const& place, std::string const& name) {
        ProjectPackage const package(folder / (place + ".recproj"));
        package.createDirectories();
        auto project = decodeProject("{}");
        project.name = name;
        package.save(project);
        return package;
    }
};

}

TEST_F(LibraryCommands, theLibraryShowsProjectsAndWhatIsWrongWithThem) {
    make("films/tour", "The Tour");
    make("films/work/bad", "Bad");
    write("films/work/bad.recproj/project.json", "{");
    for (int round = 0; round < 2; ++round) {
        auto const outcome = tavaro({"library", path("films")});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_THAT(outcome.out, AllOf(HasSubstr("The Tour"), HasSubstr("Could not open the project")));
    }
    auto const listed = tavaro({"library", path("films"), "--json"}).out;
    EXPECT_THAT(listed,
                AllOf(HasSubstr("\"name\":\"The Tour\""), HasSubstr("\"problem\":\"Could not open the project")));
    EXPECT_TRUE(fs::exists(folder / "cache/Tavaro/library.json"));
    auto const none = tavaro({"library", path("nowhere")});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_THAT(none.error, HasSubstr("Could not list the projects in"));
    make("data/Tavaro/Unsaved/take", "Not Saved Yet");
    EXPECT_THAT(tavaro({"library"}).out, HasSubstr("Not Saved Yet"));
}

TEST_F(LibraryCommands, aProjectTravelsAsAnArchive) {
    auto const package = make("tour", "The Tour");
    auto const packed = tavaro({"archive", path("tour")});
    ASSERT_EQ(packed.exitCode, 0) << packed.error;
    EXPECT_EQ(packed.out, path("tour.zip") + "\n");
    EXPECT_EQ(tavaro({"archive", path("tour")}).out, path("tour 2.zip") + "\n"); // never overwrites
    auto const unpacked = tavaro({"restore", path("tour.zip"), "-o", path("there"), "--json"});
    ASSERT_EQ(unpacked.exitCode, 0) << unpacked.error;
    EXPECT_EQ(unpacked.out, "{\"path\":\"" + path("there/tour.recproj") + "\"}\n");
    EXPECT_EQ(ProjectPackage(path("there/tour.recproj")).load(), package.load());
    write("no.zip", "no archive");
    auto const refused = tavaro({"restore", path("no.zip"), "-o", path("there")});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.error, HasSubstr("Couldn't unpack"));
    EXPECT_THAT(tavaro({"archive", path("absent")}).error, HasSubstr("Couldn't package the project: "));
}

TEST_F(LibraryCommands, restoringAProjectGoesBackOneSaveAndForthAgain) {
    auto const package = make("tour", "first");
    EXPECT_THAT(tavaro({"restore", path("tour")}).error, HasSubstr("it has no previous save"));
    auto project = package.load();
    project.name = "second";
    package.save(project);
    EXPECT_EQ(tavaro({"restore", path("tour.recproj")}).exitCode, 0);
    EXPECT_EQ(package.load().name, "first");
    EXPECT_EQ(tavaro({"restore", path("tour")}).exitCode, 0);
    EXPECT_EQ(package.load().name, "second");
    EXPECT_EQ(tavaro({"restore", path("tour"), "-o", path("elsewhere")}).exitCode, 2);
}
