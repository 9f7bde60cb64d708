#include <Tavaro/Studio/Editor/EditorCommand.h>

#include <Tavaro/Studio/Editor/EditorCommands.h>
#include <Tavaro/Studio/Editor/EditorSession.h>

namespace tavaro {

EditorCommand::EditorCommand(EditorCommandSpec const& spec, EditorSession& session)
    : spec_(spec)
    , session_(session)
    , isEnabled_(spec.isPossible(session)) {}

QString EditorCommand::name() const { return QString::fromUtf8(spec_.name); }
QString EditorCommand::title() const { return QString::fromUtf8(spec_.title); }
QString EditorCommand::group() const { return QString::fromUtf8(spec_.group); }
QString EditorCommand::shortcut() const { return QString::fromUtf8(spec_.shortcut); }

void EditorCommand::trigger() {
    update();
    if (isEnabled_) spec_.run(session_);
}

void EditorCommand::update() {
    auto const isPossible = spec_.isPossible(session_);
    if (isPossible == isEnabled_) return;
    isEnabled_ = isPossible;
    Q_EMIT enabledChanged();
}

}
