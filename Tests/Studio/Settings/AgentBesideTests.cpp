#include "../../Core/Package/TemporaryFolder.h"
#include "../Editor/TestEditor.h"

#include <Tavaro/Agents/AppMCPBackend.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Studio/Editor/StepList.h>
#include <Tavaro/Studio/Settings/ConsentQuestions.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Bridge/BridgeCaller.h>

#include <gmock/gmock.h>

#include <future>

using namespace tavaro;
using ::testing::HasSubstr;

namespace {

/// What a call came to, as its client reads it.
struct Answer {
    bool isError = false;
    std::string text;
};

/// An application that has a project open in an editor, and that agents reach over its socket.
class AgentBeside : public testing::Test {
protected:
    AgentBeside() {
        ProjectPackage package(folder / "Movies/Film.recproj");
        package.createDirectories();
        package.save(shortFilm());
        application.projects().open(package.url(), [this](Outcome<OpenProjects::Opened> const& opened) {
            editor = std::make_unique<EditorSession>(queue, opened.value());
        });
        TestEditor::waitFor([&] { return editor != nullptr; });
    }

    DemoProject const& document() const { return editor->document(); }
    std::future<Answer> calling(std::string const& client, std::string const& tool, JSONValue::Object arguments) {
        arguments["project_id"] = document().id.text();
        return std::async(std::launch::async, [this, client, tool, arguments] {
            auto const result = BridgeCaller({.socket = socket, .command = {}})
                                    .call({tool, JSONValue(arguments), client}, [](auto, auto const&) {})
                                    .value();
            auto const* isError = result.find<bool>("isError");
            return Answer{isError && *isError,
                          *result.find<JSONValue::Array>("content")->front().find<std::string>("text")};
        });
    }
    static Answer answered(std::future<Answer> call) {
        TestEditor::waitFor([&] { return call.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        return call.get();
    }
    /// Patches as somebody who is allowed.
    Answer patch(JSONValue::Object change) {
        return answered(calling("claude-code", "edit_project", {{"patch", JSONValue(std::move(change))}}));
    }
    std::string stepAt(int row, char const* role) const {
        auto* const steps = editor->stepsModel();
        return steps->index(row, 0).data(steps->roleNames().key(role)).toString().toStdString();
    }

    TemporaryFolder const folder{TemporaryFolder::fastest()};
    std::filesystem::path const socket = folder / "mcp.sock";
    MainQueue queue;
    QueueInLoop loop{queue};
    ConsentQuestions questions;
    Application application{queue,
                            {.library = {folder / "Movies"},
                             .index = folder / "cache/library.json",
                             .preferences = folder / "config/preferences.json"}};
    AppMCPBackend agents{queue, application, {.version = "1", .ask = questions.asker(), .socket = socket}};
    std::unique_ptr<EditorSession> editor;
};

}

TEST_F(AgentBeside, theViewFollowsItsPatchAndUndoTakesItBackWherePlayheadAndSelectionStay) {
    MCPConsent(application.preferences()).allow("claude-code");
    auto const first = encodeProject(document());
    auto const zooms = document().zoomEvents;
    auto* const list = editor->list(QStringLiteral("zoom"));
    editor->select(std::vector{zooms[1].id});
    editor->setPlayhead(7.5);
    auto moved = zooms;
    moved[1].scale = 3, moved.erase(moved.begin());
    EXPECT_FALSE(patch({{"name", "Tour"}, {"zoomEvents", JSONValue::parse(encodeJSON(moved))}}).isError);
    EXPECT_EQ(editor->name(), QStringLiteral("Tour"));
    EXPECT_EQ(list->rowCount(), 2);
    EXPECT_EQ(editor->playhead(), 7.5);
    EXPECT_EQ(editor->selection(), std::vector{zooms[1].id});
    EXPECT_EQ(stepAt(0, "maker"), "agent");
    EXPECT_EQ(stepAt(0, "agent"), "claude-code");
    EXPECT_THAT(editor->undoName().toStdString(), HasSubstr("(claude-code)"));
    EXPECT_FALSE(answered(calling("claude-code", "edit_timeline", {{"op", "cut"}, {"start", 0}, {"end", 3}})).isError);
    EXPECT_DOUBLE_EQ(editor->playhead(), 4.5) << "it stays on its picture";
    EXPECT_EQ(editor->selection(), std::vector{zooms[1].id});
    EXPECT_EQ(editor->stepsModel()->rowCount(), 2);
    editor->undo(), editor->undo();
    EXPECT_EQ(encodeProject(document()), first);
    EXPECT_EQ(editor->playhead(), 7.5);
    EXPECT_EQ(editor->selection(), std::vector{zooms[1].id});
}

TEST_F(AgentBeside, whatItPatchesIsUndoneByThePersonAndNotByItsNextPatch) {
    MCPConsent(application.preferences()).allow("claude-code");
    editor->rename(QStringLiteral("Mine"));
    EXPECT_FALSE(patch({{"layout", JSONValue::Object{}}, {"name", "Its"}}).isError);
    editor->undo();
    EXPECT_EQ(editor->name(), QStringLiteral("Mine"));
    auto const refused = patch({{"timeline", JSONValue::Object{}}, {"name", "Other"}});
    EXPECT_TRUE(refused.isError);
    EXPECT_EQ(editor->name(), QStringLiteral("Mine")) << "a patch that is refused changes nothing";
    EXPECT_FALSE(editor->redoName().isEmpty());
    EXPECT_FALSE(patch({{"name", "Third"}}).isError);
    EXPECT_EQ(editor->undoName(), QStringLiteral("Change Project (claude-code)"));
    EXPECT_EQ(ProjectPackage(editor->project().package().url()).load().name, "Third");
}

TEST_F(AgentBeside, anUnknownClientIsAskedForInTheseWordsAndOnceRefusedNeverAgain) {
    auto first = calling("new-agent", "edit_project", {{"patch", JSONValue(JSONValue::Object{{"name", "Its"}})}});
    TestEditor::waitFor([&] { return questions.isAsking(); });
    EXPECT_EQ(questions.title(), QStringLiteral("new-agent wants to control Tavaro"));
    EXPECT_EQ(questions.text(), QStringLiteral("It will be able to record your screen, edit your projects and export "
                                               "videos. Recordings it starts are labelled in the recorder bar. You can "
                                               "change this in Settings → MCP."));
    questions.deny();
    int asked = 0;
    QObject::connect(&questions, &ConsentQuestions::changed, [&] { asked += questions.isAsking() ? 1 : 0; });
    auto const words = "new-agent isn't allowed to control Tavaro. Allow it in Tavaro → Settings → MCP.";
    EXPECT_THAT(answered(std::move(first)).text, HasSubstr(words));
    EXPECT_THAT(answered(calling("new-agent", "get_project", {})).text, HasSubstr(words));
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(editor->name(), QStringLiteral("Film"));
}
