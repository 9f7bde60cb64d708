#include <Tavaro/Studio/Editor/RegisterTypes.h>

#include <Tavaro/Studio/Editor/CaptionEditor.h>
#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Editor/ShortcutList.h>
#include <Tavaro/Studio/Editor/StepList.h>
#include <Tavaro/Studio/Editor/TranscriptModel.h>
#include <Tavaro/Studio/Inspectors/InspectorModel.h>
#include <Tavaro/Studio/Inspectors/NumberText.h>
#include <Tavaro/Studio/Inspectors/ShownFields.h>

#include <QQmlEngine>

namespace tavaro {

void registerEditorTypes() {
    qmlRegisterType<ShortcutList>("Tavaro.Editor", 1, 0, "ShortcutList");
    auto const reason = QStringLiteral("An editor's parts come with its session.");
    qmlRegisterUncreatableType<EditorSession>("Tavaro.Editor", 1, 0, "EditorSession", reason);
    qmlRegisterUncreatableType<EditorCommand>("Tavaro.Editor", 1, 0, "EditorCommand", reason);
    qmlRegisterUncreatableType<InspectorModel>("Tavaro.Editor", 1, 0, "InspectorModel", reason);
    qmlRegisterUncreatableType<TranscriptModel>("Tavaro.Editor", 1, 0, "TranscriptModel", reason);
    qmlRegisterUncreatableType<CaptionEditor>("Tavaro.Editor", 1, 0, "CaptionEditor", reason);
    qmlRegisterUncreatableType<PolishRun>("Tavaro.Editor", 1, 0, "PolishRun", reason);
    qmlRegisterType<ShownFields>("Tavaro.Editor", 1, 0, "ShownFields");
    qmlRegisterSingletonType<NumberText>("Tavaro.Editor", 1, 0, "NumberText",
                                         [](QQmlEngine*, QJSEngine*) { return new NumberText; });
    qmlRegisterUncreatableType<StepList>("Tavaro.Editor", 1, 0, "StepList", reason);
}

}
