#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
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

TEST_F(LibraryCommands, anArchiveOfAGivenNameReplacesAFileOnlyWhenAsked) {
    make("tour", "The Tour");
    write("taken.zip", "mine");
    auto const refused = tavaro({"archive", path("tour"), "-o", path("taken.zip")});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.error, AllOf(HasSubstr(path("taken.zip")), HasSubstr("exists already"),
                                     HasSubstr("--overwrite replaces it.")));
    EXPECT_EQ(read("taken.zip"), "mine");
    EXPECT_EQ(tavaro({"archive", path("tour"), "-o", path("taken.zip"), "--overwrite"}).out, path("taken.zip") + "\n");
    EXPECT_EQ(tavaro({"restore", path("taken.zip"), "-o", path("there")}).exitCode, 0);
    EXPECT_EQ(ProjectPackage(path("there/tour.recproj")).load().name, "The Tour");
}

TEST_F(LibraryCommands, aStrangersLinkAndWhatWasTypedStayHere) {
    auto const package = make("tour", "The Tour");
    write("secret", "secret");
    fs::create_symlink(path("secret"), package.assetURL("film.mov"));
    auto const refused = tavaro({"archive", path("tour")});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.error, AllOf(HasSubstr("“assets/film.mov” to “" + path("secret") + "” leads out of it"),
                                     HasSubstr("--follow-links")));
    EXPECT_FALSE(fs::exists(path("tour.zip")));
    write("tour.recproj/project.json", R"({"metadata":{"keystrokes":[{"t":1,"keys":["h"],"characters":"h"}]}})");
    auto const keysAfter = [&](std::string const& place, Arguments arguments) {
        arguments.insert(arguments.begin(), {"archive", path("tour"), "-o", path(place + ".zip"), "--follow-links"});
        EXPECT_EQ(tavaro(arguments).exitCode, 0);
        EXPECT_EQ(tavaro({"restore", path(place + ".zip"), "-o", path(place)}).exitCode, 0);
        EXPECT_EQ(read(place + "/tour.recproj/assets/film.mov"), "secret");
        return ProjectPackage(path(place + "/tour.recproj")).load().metadata->keystrokes.at(0).keys.at(0);
    };
    EXPECT_EQ(keysAfter("masked", {}), "•");
    EXPECT_EQ(keysAfter("whole", {"--with-typed-text"}), "h");
}

TEST_F(LibraryCommands, restoringSaysWhatIsMissingOrDamaged) {
    for (auto const* name : {"absent.zip", "absent.ZIP"}) {
        auto const outcome = tavaro({"restore", path(name)});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_THAT(outcome.error, HasSubstr("Couldn't unpack “" + path(name) + "”: there is no such file"));
    }
    make("tour", "The Tour");
    write("tour.recproj/project.json", R"({"metadata":{"keystrokes":[{"keys":["h"]},)");
    EXPECT_THAT(tavaro({"archive", path("tour")}).error,
                AllOf(HasSubstr("its document is damaged"), HasSubstr("--with-typed-text")));
    ASSERT_EQ(tavaro({"archive", path("tour"), "--with-typed-text"}).exitCode, 0);
    auto const restored = tavaro({"restore", path("tour.zip"), "-o", path("there")});
    EXPECT_EQ(restored.exitCode, 0);
    EXPECT_EQ(restored.out, path("there/tour.recproj") + "\n");
    EXPECT_THAT(restored.error, HasSubstr("The document of “" + path("there/tour.recproj") + "” is damaged: "));
}

TEST_F(LibraryCommands, readersOfAnOldDocumentTakeNothingFromAnEditBesideThem) {
    constexpr int rounds = 12, readers = 4;
    auto const package = make("tour", "The Tour");
    std::string samples; // so that reading and writing take their time
    for (int i = 0; i < 30'000; ++i) samples += R"({"t":)" + std::to_string(i) + "},";
    for (int round = 0; round < rounds; ++round) {
        write("tour.recproj/project.json", R"({"metadata":{"cursorSamples":[)" + samples +
                                               R"({"t":30000}],"keystrokes":[{"t":1,"characters" : "hunter2"}]}})");
        auto const name = "round " + std::to_string(round);
        std::vector<RunningProcess> running;
        auto edit = start(TAVARO_PROGRAM, {"edit", path("tour"), "set", "name=" + name});
        for (int i = 0; i < readers; ++i) running.push_back(start(TAVARO_PROGRAM, {"info", path("tour")}));
        EXPECT_EQ(edit.wait().exitCode, 0);
        for (auto& reader : running) {
            auto const outcome = reader.wait();
            EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        }
        ASSERT_EQ(package.load().name, name);
        for (auto const* file : {"tour.recproj/project.json", "tour.recproj/project.previous.json"})
            ASSERT_THAT(read(file), Not(HasSubstr("hunter2"))) << name;
    }
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
