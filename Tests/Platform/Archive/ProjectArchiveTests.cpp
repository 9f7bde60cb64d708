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
using IfTaken = PackingRequest::IfTaken;
using Links = PackingRequest::Links;

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
    std::string failureToPack(PackingRequest const& request) const {
        try {
            archiveProject(*package, request, goOn);
        } catch (ArchiveError const& error) {
            return error.what();
        }
        return "no failure";
    }
    /// What is in the package after it was packed and unpacked.
    std::map<std::string, std::string> travelled(PackingRequest request) const {
        request.file = folder / "travel.zip";
        request.ifTaken = IfTaken::replace;
        archiveProject(*package, request, goOn);
        fs::remove_all(folder / "there");
        return contents(unpackProject(request.file, folder / "there", goOn).package);
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
    archiveProject(*package, {.file = folder / "a.zip"}, [&](ArchiveProgress const& progress) {
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
    auto const unpacked = unpackProject(folder / "a.zip", folder / "out/new", goOn).package;
    EXPECT_EQ(unpacked, folder / "out/new/Größe 1.recproj");
    auto expected = contents(package->url());
    for (auto const half : halfWritten) expected.erase(half);
    EXPECT_EQ(contents(unpacked), expected);
    EXPECT_EQ(ProjectPackage(unpacked).load().name, "second");
    EXPECT_EQ(unpackProject(folder / "a.zip", folder / "out/new", goOn).package.filename(), "Größe 1 2.recproj");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out/new"), fs::directory_iterator()), 2);
}

TEST_F(ProjectArchiveTest, ofSeveralThatWantOneNameEachEndsWhole) {
    constexpr int packers = 4;
    for (auto const ifTaken : {IfTaken::addNumber, IfTaken::refuse, IfTaken::replace}) {
        auto const place = folder / ("place" + std::to_string(static_cast<int>(ifTaken)));
        fs::create_directory(place);
        std::vector<pid_t> children;
        for (int i = 0; i < packers; ++i) {
            pid_t const child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                try {
                    archiveProject(*package, {.file = place / "a.zip", .ifTaken = ifTaken}, goOn);
                    _exit(0);
                } catch (ArchiveError const& error) {
                    _exit(error.kind == ArchiveError::Kind::nameTaken ? 1 : 2);
                }
            }
            children.push_back(child);
        }
        int packed = 0;
        for (auto const child : children) {
            int status = 0;
            waitpid(child, &status, 0);
            EXPECT_LE(WEXITSTATUS(status), ifTaken == IfTaken::refuse ? 1 : 0);
            packed += WEXITSTATUS(status) == 0;
        }
        EXPECT_EQ(packed, ifTaken == IfTaken::refuse ? 1 : packers);
        EXPECT_EQ(contents(place).size(), ifTaken == IfTaken::addNumber ? std::size_t{packers} : 1u);
        for (auto const& [name, bytes] : contents(place))
            EXPECT_EQ(unpackProject(place / name, folder / "out", goOn).problem, std::nullopt) << name;
    }
}

TEST_F(ProjectArchiveTest, everyAssetTravelsWhateverItIsCalled) {
    fs::create_directory(package->assetsURL() / "more");
    for (auto const* name : {"clip.tmp", "project.json.tmp", "more/editor.json.tmp", ".hidden"})
        write(package->assetsURL() / name, name);
    write(package->assetsURL() / ".clip.mov.4711-0.tmp", "half a copy");
    auto const packed = archiveProject(*package, {.file = folder / "a.zip"}, goOn);
    EXPECT_THAT(packed.remarks,
                testing::ElementsAre("“assets/.clip.mov.4711-0.tmp” is half written and was left out."));
    auto expected = contents(package->url());
    expected.erase("assets/.clip.mov.4711-0.tmp");
    for (auto const half : halfWritten) expected.erase(half);
    EXPECT_EQ(contents(unpackProject(folder / "a.zip", folder / "out", goOn).package), expected);
}

TEST_F(ProjectArchiveTest, linksThatLeaveThePackageAreRefusedByNameOrFollowed) {
    fs::create_directories(folder / "elsewhere/deep");
    write(folder / "elsewhere/secret", "secret");
    write(folder / "elsewhere/deep/film.mov", "film");
    auto const assets = package->assetsURL();
    for (auto const& [link, target] : {std::pair(assets / "linked.mov", folder / "elsewhere/secret"),
                                       {assets / "folder", folder / "elsewhere"},
                                       {assets / "climbing", fs::path("../../elsewhere/secret")},
                                       {package->url() / "thumbnail.png", "/etc/passwd"}}) {
        fs::create_symlink(target, link);
        auto const name = link.lexically_relative(package->url()).string();
        EXPECT_THAT(failureToPack({.file = folder / "b.zip"}),
                    testing::AllOf(StartsWith("Couldn't package the project: the link “" + name + "” to “" +
                                              target.string() + "” leads out of it")));
        EXPECT_FALSE(fs::exists(folder / "b.zip"));
        auto const followed = travelled({.links = Links::followed});
        if (fs::is_directory(link)) {
            EXPECT_EQ(followed.at(name + "/deep/film.mov"), "film");
        } else {
            EXPECT_EQ(followed.at(name), readWholeFile(link));
        }
        fs::remove(link);
    }
    fs::rename(assets, folder / "large disk");
    fs::create_directory_symlink(folder / "large disk", assets);
    EXPECT_THAT(failureToPack({.file = folder / "b.zip"}), HasSubstr("the link “assets” to “"));
    EXPECT_EQ(travelled({.links = Links::followed}).at("assets/notes.tmp"), "not ours");
}

TEST_F(ProjectArchiveTest, linksInsideThePackageArePackedAndThoseToNothingAreRefused) {
    auto const assets = package->assetsURL();
    fs::create_symlink("note.txt", assets / "same.txt");
    fs::create_symlink(package->projectFileURL(), assets / "document");
    auto const found = travelled({});
    EXPECT_EQ(found.at("assets/same.txt"), found.at("assets/note.txt"));
    EXPECT_EQ(found.at("assets/document"), found.at("project.json"));
    auto const refusal = [&](fs::path const& target, std::string const& why) {
        fs::create_symlink(target, assets / "link");
        for (auto const links : {Links::insideOnly, Links::followed})
            EXPECT_THAT(failureToPack({.file = folder / "b.zip", .links = links}),
                        HasSubstr("the link “assets/link” to “" + target.string() + "” " + why));
        fs::remove(assets / "link");
    };
    refusal("gone.mov", "leads nowhere");
    refusal("link", "leads nowhere");
    refusal("..", "leads to a folder that it lies in");
    refusal(package->url(), "leads to a folder that it lies in");
    ASSERT_EQ(mkfifo((assets / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(failureToPack({.file = folder / "b.zip"}), HasSubstr("“assets/pipe” is neither a file nor a folder"));
}

TEST_F(ProjectArchiveTest, whatWasTypedStaysHomeUnlessItIsAskedFor) {
    auto const log = [](std::string const& keystrokes) {
        return R"({"metadata":{"keystrokes":[)" + keystrokes + "]}}";
    };
    auto const typed = log(R"({"t":1.5,"keys":["h"]},{"t":2,"keys":["⇧","U"],"characters":"hunter2"},)"
                           R"({"t":3,"keys":["⌘","S"],"isShortcut":true})");
    auto const masked = log(R"({"t":1.5,"keys":["•"]},{"t":2,"keys":["⇧","•"]},)"
                            R"({"t":3,"keys":["⌘","S"],"isShortcut":true})");
    std::string const blank(10'000, '\n');
    std::map<std::string, std::string> const logs{
        {"project.json", typed}, {"project.previous.json", blank + typed}, {"assets/events.log", blank + typed}};
    for (auto const& [name, text] : logs) write(package->url() / name, text);
    fs::create_symlink("../project.json", package->assetsURL() / "copy.mov");
    auto const kept = travelled({.typedText = PackingRequest::TypedText::kept});
    EXPECT_EQ(kept.at("assets/events.log"), logs.at("assets/events.log"));
    auto const sent = travelled({});
    EXPECT_EQ(sent.at("project.json"), masked);
    EXPECT_EQ(sent.at("project.previous.json"), blank + masked);
    EXPECT_EQ(sent.at("assets/events.log"), blank + masked);
    EXPECT_EQ(sent.at("assets/copy.mov"), masked);
    EXPECT_EQ(readWholeFile(package->projectFileURL()), typed) << "the project itself keeps it";
}

TEST_F(ProjectArchiveTest, aLogThatIsDamagedIsLeftOutWithAWord) {
    std::string const damaged = R"({"metadata":{"keystrokes":[{"keys":["h"]},)";
    write(package->damagedFileURL(), damaged);
    write(package->backupFileURL(), std::string(512, '\0') + damaged); // as a power cut leaves it
    write(package->assetURL("harmless.json"), "{ a text that is no JSON");
    auto const packed = archiveProject(*package, {.file = folder / "a.zip"}, goOn);
    EXPECT_THAT(packed.remarks,
                testing::ElementsAre(StartsWith("“project.damaged.json” was left out: it is damaged"),
                                     StartsWith("“project.previous.json” was left out: it is damaged")));
    auto const found = contents(unpackProject(packed.file, folder / "out", goOn).package);
    EXPECT_FALSE(found.contains("project.damaged.json") || found.contains("project.previous.json"));
    EXPECT_TRUE(found.contains("assets/harmless.json"));
    write(package->projectFileURL(), damaged);
    EXPECT_THAT(failureToPack({.file = folder / "b.zip"}), HasSubstr("its document is damaged"));
    auto const whole = travelled({.typedText = PackingRequest::TypedText::kept});
    EXPECT_EQ(whole.at("project.json"), damaged);
}

TEST_F(ProjectArchiveTest, aDamagedDocumentIsUnpackedAndSaid) {
    auto const problem = [&](std::string const& document) {
        return unpackProject(foreign({{"p.recproj/project.json", document}}), folder / "out", goOn)
            .problem.value_or("none");
    };
    EXPECT_EQ(problem("{}"), "none");
    for (auto const* damaged : {"", "{", "[]", "{\"timeline\":7}", "no JSON"})
        EXPECT_THAT(problem(damaged), StartsWith("The document of “" + (folder / "out/p").string())) << damaged;
    EXPECT_EQ(fs::status(folder / "out/p.recproj").permissions(), fs::perms::owner_all);
}

TEST_F(ProjectArchiveTest, nobodyElseSeesWhatIsBeingUnpacked) {
    archiveProject(*package, {.file = folder / "a.zip"}, goOn);
    int looks = 0;
    unpackProject(folder / "a.zip", folder / "out", [&](ArchiveProgress const&) {
        for (auto const& entry : fs::directory_iterator(folder / "out")) {
            EXPECT_EQ(entry.status().permissions(), fs::perms::owner_all) << entry.path();
            ++looks;
        }
        return true;
    });
    EXPECT_GE(looks, 1);
}

TEST_F(ProjectArchiveTest, otherToolsReadTheArchiveAndFindOneFolder) {
    if (std::system("command -v unzip >/dev/null") != 0) GTEST_SKIP() << "no unzip here";
    archiveProject(*package, {.file = folder / "a.zip"}, goOn);
    auto const command = "cd '" + (folder / "out").string() + "' && LC_ALL=C.UTF-8 unzip -q ../a.zip";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(contents(folder / "out").count("Größe 1.recproj/assets/screen 日.mp4"), 1u);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out"), fs::directory_iterator()), 1);
}

TEST_F(ProjectArchiveTest, aProjectThatCannotBePackedSaysWhyAndLeavesNoFile) {
    auto const failure = [&](fs::path const& source, fs::path const& to) -> std::string {
        try {
            archiveProject(ProjectPackage(source), {.file = to, .ifTaken = IfTaken::replace}, goOn);
        } catch (ArchiveError const& error) {
            return error.what();
        }
        return "no failure";
    };
    EXPECT_THAT(failure(folder / "none.recproj", folder / "a.zip"), StartsWith("Couldn't package the project: "));
    EXPECT_THAT(failure(folder / std::string(300, 'x'), folder / "a.zip"), HasSubstr("too long"));
    EXPECT_THAT(failure(package->url(), folder / "nowhere/a.zip"), StartsWith("Couldn't package the project: "));
    EXPECT_THAT(failure(package->url(), package->url() / "a.zip"), HasSubstr("inside the project"));
    fs::create_directory(folder / "taken.zip");
    EXPECT_THAT(failure(package->url(), folder / "taken.zip"), StartsWith("Couldn't package the project: "));
    EXPECT_FALSE(fs::exists(folder / "taken.zip.tmp"));
    EXPECT_FALSE(fs::exists(folder / "a.zip"));
}

TEST_F(ProjectArchiveTest, cancellingLeavesNothing) {
    EXPECT_THROW(archiveProject(*package, {.file = folder / "a.zip"}, [](ArchiveProgress const&) { return false; }),
                 ArchiveError);
    EXPECT_FALSE(fs::exists(folder / "a.zip") || fs::exists(folder / "a.zip.tmp"));
    archiveProject(*package, {.file = folder / "a.zip"}, goOn);
    try {
        unpackProject(folder / "a.zip", folder / "out", [](ArchiveProgress const&) { return false; });
        FAIL();
    } catch (ArchiveError const& error) {
        EXPECT_EQ(error.kind, ArchiveError::Kind::cancelled);
    }
    EXPECT_TRUE(fs::is_empty(folder / "out"));
}

TEST_F(ProjectArchiveTest, aFullDiskStopsBothWaysAndLeavesNothing) {
    archiveProject(*package, {.file = folder / "a.zip"}, goOn);
    pid_t const child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        rlimit const limit{1 << 20, 1 << 20}; // stands for a full disk: every write past this fails
        setrlimit(RLIMIT_FSIZE, &limit);
        int failures = 0;
        try {
            archiveProject(*package, {.file = folder / "b.zip"}, goOn);
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
    expectRefused(foreign({document, {"p.recproj/../" + std::string(5000, 'x')}}), Kind::unsafe, "x…” climbs");
    expectRefused(foreign({document, {"p.recproj/" + std::string(5000, 'x')}}), Kind::cannotUnpack, "x…: ");
    expectRefused(foreign({document, {"p.recproj/assets/zeros", std::string(80 << 20, '\0')}}), Kind::unsafe,
                  "far more");
    EXPECT_EQ(
        unpackProject(foreign({{"__MACOSX/._p"}, document, {"p.recproj/.DS_Store"}}), folder / "out", goOn).package,
        folder / "out/p.recproj");
    EXPECT_EQ(contents(folder / "out/p.recproj").size(), 1u);
}

TEST_F(ProjectArchiveTest, whatAKilledUnpackingLeftGoesWithTheNext) {
    archiveProject(*package, {.file = folder / "a.zip"}, goOn);
    pid_t const child = fork();
    if (child == 0)
        unpackProject(folder / "a.zip", folder / "out", [](ArchiveProgress const&) { return raise(SIGKILL) == 0; });
    waitpid(child, nullptr, 0);
    auto const former = folder / "out/.unpacking-Ab3dEf", recent = folder / "out/.unpacking-Zb3dEf";
    for (auto const& left : {former, recent}) fs::create_directories(left / "p.recproj");
    fs::last_write_time(former, fs::file_time_type::clock::now() - std::chrono::hours(2));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out"), fs::directory_iterator()), 3);
    auto const unpacked = unpackProject(folder / "a.zip", folder / "out", goOn).package;
    EXPECT_FALSE(fs::exists(former));
    EXPECT_TRUE(fs::exists(recent)) << "an earlier version may be unpacking there";
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out"), fs::directory_iterator()), 2) << unpacked;
}

TEST_F(ProjectArchiveTest, damagedArchivesAreRefusedOrReadNeverWorse) {
    archiveProject(*package, {.file = folder / "a.zip"}, goOn);
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
            fs::remove_all(unpackProject(folder / "b.zip", folder / "out", goOn).package);
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
    expectRefused(folder / "absent.zip", ArchiveError::Kind::notThere, "there is no such file");
}
