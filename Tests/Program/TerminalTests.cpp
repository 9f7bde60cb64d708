#include "ProcessFixture.h"

#include <Tavaro/Commands/Terminal.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

#include <algorithm>

using namespace tavaro;
using terminal::harmless;
using terminal::Lines;
using ::testing::HasSubstr;

namespace {

// A window's title, an eight-bit control of the same, a carriage return, and a change of direction.
std::string const attack = "Tour\x1b]0;owned\a\u009b31m\r\u202ecod.exe\u2066\x7f";

class ForeignText : public ProcessFixture {
protected:
    /// Nothing of what a stranger wrote is acted on; what commands print themselves is text and line breaks.
    static void expectHarmless(Outcome const& outcome, std::string const& what) {
        for (auto const& text : {outcome.out, outcome.error}) EXPECT_EQ(harmless(Lines{text}), text) << what;
        EXPECT_FALSE(outcome.out.empty() && outcome.error.empty()) << what;
    }
    DemoProject foreign() const {
        DemoProject project;
        project.name = attack + "\nA line of its own";
        project.timeline.clips = {{.asset = attack + ".mp4", .duration = 10}};
        project.cameraAsset = attack;
        project.captions.cues = {{.start = 1, .duration = 2, .text = attack}};
        project.zoomEvents = {{.start = 1, .duration = 2, .note = attack}};
        project.overlays = {{.kind = {OverlayKind::Title{.text = attack}}, .start = 1, .duration = 2}};
        project.layoutCues = {{.time = 3, .reason = attack}};
        return project;
    }
};

}

TEST_F(ForeignText, ofADocumentOrAFilesNameReachesNoTerminal) {
    ProjectPackage const package(folder / (attack + ".recproj"));
    package.createDirectories();
    package.save(foreign());
    auto const project = package.url().string();
    for (Arguments const& words : std::vector<Arguments>{{"info", project},
                                                         {"info", project, "--json"},
                                                         {"captions", project},
                                                         {"captions", project, "-o", path(attack + ".srt")},
                                                         {"polish", project, "--report"},
                                                         {"edit", project, "trim", "0", "5"},
                                                         {"frame", project, "--at", "1", "-o", path("f.png")},
                                                         {"export", project, "-o", path("f.mp4")},
                                                         {"import", path(attack), "-o", path("new")},
                                                         {"library", folder.string()},
                                                         {"info", path(attack)},
                                                         {attack},
                                                         {"info", project, attack}})
        expectHarmless(tavaro(words), words[0]);
    EXPECT_EQ(tavaro({"info", project}).out.find("\nA line of its own"), std::string::npos) << "no lines are made up";
    EXPECT_THAT(tavaro({"info", project, "--json"}).out, HasSubstr("\\u009b31m\\r\\u202ecod.exe\\u2066\\u007f"));
    write("damaged.cube", "LUT_3D_SIZE " + attack);
    write("bad.srt", "1\n00:00:01,000 --> " + attack + "\nHello\n");
    expectHarmless(tavaro({"captions", project, "--import", path("bad.srt")}), "a subtitle file");
    std::filesystem::create_directories(path("bad.recproj"));
    write("bad.recproj/project.json", "{\"createdAt\":\"" + std::string("\xc2\x9b\xe2\x80\xae") + "\"}");
    expectHarmless(tavaro({"info", path("bad")}), "a damaged document");
}

TEST(Terminal, keepsWhatIsOnlyTextAndMarksTheRest) {
    for (std::string const text : {"", "plain", "naïve “quotes” 😀 日本語", "a\u00a0b"}) EXPECT_EQ(harmless(text), text);
    EXPECT_EQ(harmless("a\nb\tc"), "a�b�c");
    EXPECT_EQ(harmless(Lines{"a\nb\tc\r"}), "a\nb\tc�");
    EXPECT_EQ(harmless(attack), "Tour�]0;owned��31m��cod.exe��");
    // What is no UTF-8: a lone continuation, an overlong one, a surrogate, an eight-bit control, a cut character.
    EXPECT_EQ(harmless("\x80 \xc0\x9b \xed\xa0\x80 \x9b"
                       "1m \xe2\x80"),
              "� �� ��� �1m ��");
    for (int byte = 0; byte < 256; ++byte) {
        auto const shown = harmless(std::string("a") + static_cast<char>(byte) + "b");
        bool const isText = byte >= 0x20 && byte < 0x7F;
        EXPECT_EQ(shown, isText ? std::string("a") + static_cast<char>(byte) + "b" : "a�b") << byte;
    }
}
