#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;
namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

/// Works on a project of twenty seconds with a click at 5 s, made without any movie: scripts need none.
class ScriptCommand : public ProcessFixture {
protected:
    ScriptCommand() {
        DemoProject project;
        project.mode = DemoMode::desktopApp;
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 20}};
        project.assetDurations["screen.mp4"] = 20;
        project.metadata.edit().clicks = {{.t = 5, .position = {0.5, 0.1}}};
        project.metadata.edit().appSpans = {{0, 20, "geany", "Geany"}};
        ProjectPackage const package(path("tour.recproj"));
        package.createDirectories();
        package.save(project);
    }
    VoiceoverPlan plan() { return ProjectPackage(path("tour.recproj")).load().voiceover.value_or(VoiceoverPlan{}); }
    Outcome script(Arguments words) {
        words.insert(words.begin(), {"script", path("tour.recproj")});
        return tavaro(words);
    }
    void expectRefusal(Arguments const& words, int exitCode, std::string const& sentence) {
        auto const before = read("tour.recproj/project.json");
        auto const outcome = script(words);
        EXPECT_EQ(outcome.exitCode, exitCode) << sentence;
        EXPECT_THAT(outcome.error, HasSubstr(sentence));
        EXPECT_EQ(read("tour.recproj/project.json"), before);
    }

    std::string const drafted = "0:00.00  Let me show you Geany.\n"
                                "0:05.00  Here I'm opening the top of the window.\n"
                                "0:17.10  And that's all there is to it.\n";
};

}

TEST_F(ScriptCommand, aDraftIsPrintedAndBecomesTheProjectsScript) {
    auto const outcome = script({});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.out, drafted);
    EXPECT_EQ(outcome.error, "Drafted a script of 3 lines, 0:07.40 spoken\n");
    ASSERT_EQ(plan().segments.size(), 3u);
    EXPECT_EQ(plan().segments[1].anchor, 5);
    EXPECT_TRUE(plan().segments[1].isDirty);

    EXPECT_THAT(script({"--style", "launch", "--product", "Mossfile"}).out,
                StartsWith("0:00.00  Mossfile is live today."));
    auto const shown = script({});
    EXPECT_THAT(shown.out, StartsWith("0:00.00  Mossfile is live today."))
        << "nothing is drafted unless it is asked for";
    EXPECT_THAT(shown.error, HasSubstr("--draft"));
    EXPECT_EQ(script({"--draft"}).out, drafted);
}

TEST_F(ScriptCommand, aScriptGoesOutAndComesBackAndLinesThatStayKeepTheirIdentity) {
    EXPECT_EQ(script({"-o", path("tour.txt")}).out, "Wrote 3 lines to " + path("tour.txt") + "\n");
    EXPECT_EQ(read("tour.txt"), drafted);
    auto const before = plan();
    write("mine.txt", "0:00 Let me show you Geany.\n0:06.5 Mine.\n");
    auto const taken = script({"--from", path("mine.txt")});
    EXPECT_EQ(taken.out, "0:00.00  Let me show you Geany.\n0:06.50  Mine.\n");
    EXPECT_EQ(plan().segments[0].id, before.segments[0].id);
    EXPECT_EQ(plan().segments[1].anchor, 6.5);
    EXPECT_THAT(script({"--from", path("tour.txt"), "--json"}).out, HasSubstr("\"count\":3,\"lines\":[{\"anchor\":0,"));
    write("plain.txt", "One.\nTwo.\n");
    script({"--from", path("plain.txt")});
    EXPECT_NEAR(plan().segments[1].anchor.value(), 10, 1e-9) << "spread over the film";
}

TEST_F(ScriptCommand, whatIsNoScriptIsExplainedAndChangesNothing) {
    script({});
    write("empty.txt", "");
    write("late.txt", "0:01 Hello\n5:00 Too late\n");
    write("taken.txt", "mine");
    write("large.txt", "a");
    fs::resize_file(folder / "large.txt", (4 << 20) + 1);
    expectRefusal({"--from", path("empty.txt")}, 1, "cannot be the script: There is no text to speak in it.");
    expectRefusal({"--from", path("late.txt")}, 1, "“Too late” is to begin at 5:00.00, but the video ends at 0:20.00.");
    expectRefusal({"--from", path("large.txt")}, 1, "large.txt");
    expectRefusal({"--from", path("none.txt")}, 1, "There is no file “" + path("none.txt") + "”.");
    expectRefusal({"--draft", "-o", path("taken.txt")}, 1, "something with that name exists already");
    expectRefusal({"--style", "launch", "-o", path("no/such.txt")}, 1, "such.txt");
    expectRefusal({"--style", "loud"}, 2, "--style");
    expectRefusal({"--from", path("late.txt"), "--style", "demo"}, 2, "excludes");
    EXPECT_EQ(read("taken.txt"), "mine");
}
