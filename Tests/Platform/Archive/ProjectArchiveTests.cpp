#include <TavaroPlatform/Archive/Private/LibArchive.h>
#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <csignal>
#include <fstream>
#include <map>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::StartsWith;
namespace fs = std::filesystem;

namespace {

constexpr std::array halfWritten{"project.json.tmp", ".project.json.4711-0.tmp"};
constexpr auto goOn = [](ArchiveProgress const&) { return true; };

class ProjectArchiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "tavaro-archive-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        package.emplace(folder / "Größe 1.recproj");
        package->createDirectories();
        auto project = decodeProject("{}");
        project.name = "first";
        package->save(project);
        project.name = "second";
        package->save(project);
        std::mt19937 random(1);
        std::string movie(3 << 20, '\0');
        for (auto& byte : movie) byte = static_cast<char>(random());
        write(package->assetURL("screen 日.mp4"), movie);
        write(package->assetURL("note.txt"), std::string(200'000, 'a'));
        write(package->assetURL("empty.wav"), "");
        write(package->assetURL("notes.tmp"), "not ours");
        for (auto const half : halfWritten) write(package->url() / half, "half a save");
        fs::create_directories(folder / "out");
    }
    void TearDown() override { fs::remove_all(folder); }

    static void write(fs::path const& file, std::string_view text) { std::ofstream(file, std::ios::binary) << text; }

    /// Every file below, with its content.
    static std::map<std::string, std::string> contents(fs::path const& root) {
        std::map<std::string, std::string> files;
        for (auto const& entry : fs::recursive_directory_iterator(root)) {
            auto const name = entry.path().lexically_relative(root).string();
            files[name] = entry.is_regular_file() ? readWholeFile(entry.path()).value() : "(folder)";
        }
        return files;
    }

    struct Entry {
        std::string name;
        std::string content = "x";
        unsigned type = AE_IFREG;
    };
    /// A zip file as somebody else could have made it.
    fs::path foreign(std::vector<Entry> const& entries) const {
        auto const path = folder / "foreign.zip";
        ArchiveWriter const writer(archive_write_new());
        archive_write_set_format_zip(writer.get());
        archive_write_open_filename(writer.get(), path.c_str());
        for (auto const& each : entries) {
            ArchiveEntry const entry(archive_entry_new());
            archive_entry_set_pathname(entry.get(), each.name.c_str());
            archive_entry_set_filetype(entry.get(), each.type);
            archive_entry_set_perm(entry.get(), 0644);
            if (each.type == AE_IFLNK) archive_entry_set_symlink(entry.get(), each.content.c_str());
            archive_entry_set_size(entry.get(),
                                   each.type == AE_IFREG ? static_cast<la_int64_t>(each.content.size()) : 0);
            archive_write_header(writer.get(), entry.get());
            if (each.type == AE_IFREG) archive_write_data(writer.get(), each.content.data(), each.content.size());
        }
        archive_write_close(writer.get());
        return path;
    }
    void expectRefused(fs::path const& archive, ArchiveError::Kind kind, std::string const& sentence) const {
        try {
            unpackProject(archive, folder / "out", goOn);
            FAIL() << sentence;
        } catch (ArchiveError const& error) {
            EXPECT_EQ(error.kind, kind) << error.what();
            EXPECT_THAT(error.what(), StartsWith("Couldn't unpack “" + archive.string() + "”: "));
            EXPECT_THAT(error.what(), HasSubstr(sentence));
        }
        EXPECT_TRUE(fs::is_empty(folder / "out")) << sentence;
        EXPECT_FALSE(fs::exists(folder / "evil")) << sentence;
    }

    fs::path folder;
    std::optional<ProjectPackage> package;
};

}

TEST_F(ProjectArchiveTest, whatIsPackedIsUnpackedEqualUnderTheProjectsName) {
    std::uint64_t last = 0, calls = 0;
    archiveProject(*package, folder / "a.zip", [&](ArchiveProgress const& progress) {
        EXPECT_GE(progress.bytesDone, last);
        EXPECT_LE(progress.bytesDone, progress.bytesTotal);
        last = progress.bytesDone, ++calls;
        return true;
    });
    EXPECT_GE(calls, 4u);
    EXPECT_GT(last, std::uint64_t{3} << 20);
    EXPECT_FALSE(fs::exists(folder / "a.zip.tmp"));
    // The movie is stored, the text deflated.
    EXPECT_NEAR(static_cast<double>(fs::file_size(folder / "a.zip")), 3 << 20, 10'000);
    auto const unpacked = unpackProject(folder / "a.zip", folder / "out/new", goOn);
    EXPECT_EQ(unpacked, folder / "out/new/Größe 1.recproj");
    auto expected = contents(package->url());
    for (auto const half : halfWritten) expected.erase(half);
    EXPECT_EQ(contents(unpacked), expected);
    EXPECT_EQ(ProjectPackage(unpacked).load().name, "second");
    EXPECT_EQ(unpackProject(folder / "a.zip", folder / "out/new", goOn).filename(), "Größe 1 2.recproj");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out/new"), fs::directory_iterator()), 2);
}

TEST_F(ProjectArchiveTest, otherToolsReadTheArchiveAndFindOneFolder) {
    if (std::system("command -v unzip >/dev/null") != 0) GTEST_SKIP() << "no unzip here";
    archiveProject(*package, folder / "a.zip", goOn);
    auto const command = "cd '" + (folder / "out").string() + "' && LC_ALL=C.UTF-8 unzip -q ../a.zip";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(contents(folder / "out").count("Größe 1.recproj/assets/screen 日.mp4"), 1u);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out"), fs::directory_iterator()), 1);
}

TEST_F(ProjectArchiveTest, aProjectThatCannotBePackedSaysWhyAndLeavesNoFile) {
    auto const failure = [&](fs::path const& source, fs::path const& to) -> std::string {
        try {
            archiveProject(ProjectPackage(source), to, goOn);
        } catch (ArchiveError const& error) {
            return error.what();
        }
        return "no failure";
    };
    EXPECT_THAT(failure(folder / "none.recproj", folder / "a.zip"), StartsWith("Couldn't package the project: "));
    EXPECT_THAT(failure(package->url(), folder / "nowhere/a.zip"), StartsWith("Couldn't package the project: "));
    EXPECT_THAT(failure(package->url(), package->url() / "a.zip"), HasSubstr("inside the project"));
    fs::create_directory(folder / "taken.zip");
    EXPECT_THAT(failure(package->url(), folder / "taken.zip"), StartsWith("Couldn't package the project: "));
    EXPECT_FALSE(fs::exists(folder / "taken.zip.tmp"));
    EXPECT_FALSE(fs::exists(folder / "a.zip"));
}

TEST_F(ProjectArchiveTest, cancellingLeavesNothing) {
    EXPECT_THROW(archiveProject(*package, folder / "a.zip", [](ArchiveProgress const&) { return false; }),
                 ArchiveError);
    EXPECT_FALSE(fs::exists(folder / "a.zip") || fs::exists(folder / "a.zip.tmp"));
    archiveProject(*package, folder / "a.zip", goOn);
    try {
        unpackProject(folder / "a.zip", folder / "out", [](ArchiveProgress const&) { return false; });
        FAIL();
    } catch (ArchiveError const& error) {
        EXPECT_EQ(error.kind, ArchiveError::Kind::cancelled);
    }
    EXPECT_TRUE(fs::is_empty(folder / "out"));
}

TEST_F(ProjectArchiveTest, aFullDiskStopsBothWaysAndLeavesNothing) {
    archiveProject(*package, folder / "a.zip", goOn);
    pid_t const child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        rlimit const limit{1 << 20, 1 << 20}; // stands for a full disk: every write past this fails
        setrlimit(RLIMIT_FSIZE, &limit);
        int failures = 0;
        try {
            archiveProject(*package, folder / "b.zip", goOn);
        } catch (ArchiveError const&) {
            ++failures;
        }
        try {
            unpackProject(folder / "a.zip", folder / "out", goOn);
        } catch (ArchiveError const&) {
            ++failures;
        }
        _exit(failures);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 2);
    EXPECT_FALSE(fs::exists(folder / "b.zip") || fs::exists(folder / "b.zip.tmp"));
    EXPECT_TRUE(fs::is_empty(folder / "out"));
}

TEST_F(ProjectArchiveTest, noArchiveWritesOutsideItsProject) {
    using Kind = ArchiveError::Kind;
    Entry const document{"p.recproj/project.json", "{}"};
    expectRefused(foreign({document, {"p.recproj/../../evil"}}), Kind::unsafe, "climbs");
    expectRefused(foreign({{"../evil"}}), Kind::unsafe, "climbs");
    expectRefused(foreign({document, {(folder / "evil").string()}}), Kind::unsafe, "absolute");
    expectRefused(foreign({document, {"p.recproj/assets", folder.string(), AE_IFLNK}, {"p.recproj/assets/evil"}}),
                  Kind::unsafe, "neither a file nor a folder");
    expectRefused(foreign({document, document}), Kind::unsafe, "twice");
    expectRefused(foreign({document, {"q.recproj/project.json", "{}"}}), Kind::notAProject, "one project");
    expectRefused(foreign({document, {"evil"}}), Kind::notAProject, "one project");
    expectRefused(foreign({{"p.recproj/assets/a.mov"}}), Kind::notAProject, "no project");
    expectRefused(foreign({{"p.recproj/project.json", "", AE_IFDIR}}), Kind::notAProject, "no project");
    std::string deep = "p.recproj";
    for (int i = 0; i < 40; ++i) deep += "/d";
    expectRefused(foreign({document, {deep}}), Kind::unsafe, "too deep");
    expectRefused(foreign({document, {"p.recproj/assets/zeros", std::string(80 << 20, '\0')}}), Kind::unsafe,
                  "far more");
    EXPECT_EQ(unpackProject(foreign({{"__MACOSX/._p"}, document, {"p.recproj/.DS_Store"}}), folder / "out", goOn),
              folder / "out/p.recproj");
    EXPECT_EQ(contents(folder / "out/p.recproj").size(), 1u);
}

TEST_F(ProjectArchiveTest, whatAKilledUnpackingLeftGoesWithTheNext) {
    archiveProject(*package, folder / "a.zip", goOn);
    pid_t const child = fork();
    if (child == 0)
        unpackProject(folder / "a.zip", folder / "out", [](ArchiveProgress const&) { return raise(SIGKILL) == 0; });
    waitpid(child, nullptr, 0);
    auto const former = folder / "out/.unpacking-Ab3dEf", recent = folder / "out/.unpacking-Zb3dEf";
    for (auto const& left : {former, recent}) fs::create_directories(left / "p.recproj");
    fs::last_write_time(former, fs::file_time_type::clock::now() - std::chrono::hours(2));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out"), fs::directory_iterator()), 3);
    auto const unpacked = unpackProject(folder / "a.zip", folder / "out", goOn);
    EXPECT_FALSE(fs::exists(former));
    EXPECT_TRUE(fs::exists(recent)) << "an earlier version may be unpacking there";
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out"), fs::directory_iterator()), 2) << unpacked;
}

TEST_F(ProjectArchiveTest, damagedArchivesAreRefusedOrReadNeverWorse) {
    archiveProject(*package, folder / "a.zip", goOn);
    auto const whole = readWholeFile(folder / "a.zip").value();
    std::mt19937 random(9);
    for (int i = 0; i < 60; ++i) {
        auto damaged = whole;
        if (i % 3 == 0) damaged.resize(random() % damaged.size());
        // The directory at the end is what readers trust most.
        for (int n = 0; n < 4; ++n)
            damaged[damaged.size() - 1 - random() % std::min<std::size_t>(damaged.size(), 1200)] =
                static_cast<char>(random());
        write(folder / "b.zip", damaged);
        try {
            fs::remove_all(unpackProject(folder / "b.zip", folder / "out", goOn));
        } catch (ArchiveError const& error) {
            ASSERT_THAT(error.what(), StartsWith("Couldn't unpack “")) << "round " << i;
        }
        ASSERT_TRUE(fs::is_empty(folder / "out")) << "round " << i;
    }
    for (std::size_t const tenth : {2, 5, 8}) { // in the movie, which is most of the file
        auto damaged = whole;
        damaged[whole.size() / 10 * tenth] ^= 1;
        write(folder / "b.zip", damaged);
        expectRefused(folder / "b.zip", ArchiveError::Kind::cannotUnpack, "CRC");
    }
    write(folder / "b.zip", "this is no archive");
    expectRefused(folder / "b.zip", ArchiveError::Kind::cannotUnpack, "");
    expectRefused(folder / "absent.zip", ArchiveError::Kind::cannotUnpack, "No such file");
}
