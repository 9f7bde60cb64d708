#include <Tavaro/Studio/Editor/EditorCommand.h>

#include <Tavaro/Studio/Editor/EditorCommands.h>
#include <Tavaro/Studio/Editor/EditorSession.h>

namespace tavaro {

EditorCommand::EditorCommand(ListedCommand const& listed, EditorSession& session)
    : listed_(listed)
    , session_(session)
    , isEnabled_(listed.isPossible(session)) {}

QString EditorCommand::name() const { return QString::fromUtf8(listed_.name); }
QString EditorCommand::title() const { return QString::fromUtf8(listed_.title); }
QString EditorCommand::group() const { return QString::fromUtf8(listed_.group); }
QString EditorCommand::shortcut() const { return QString::fromUtf8(listed_.shortcut); }

void EditorCommand::trigger() {
    update();
    if (isEnabled_) listed_.run(session_);
}

void EditorCommand::update() {
    auto const isPossible = listed_.isPossible(session_);
    if (isPossible == isEnabled_) return;
    isEnabled_ = isPossible;
    Q_EMIT enabledChanged();
}

}
