#include <Tavaro/Studio/Desk/DeskTypes.h>

#include <Tavaro/Studio/Desk/EditorDesk.h>
#include <Tavaro/Studio/Editor/RegisterTypes.h>
#include <Tavaro/Studio/Files/FileTypes.h>
#include <Tavaro/Studio/Handles/HandleTypes.h>
#include <Tavaro/Studio/Preview/PreviewTypes.h>
#include <Tavaro/Studio/Privacy/PrivacyDesk.h>
#include <Tavaro/Studio/Timeline/TimelineTypes.h>
#include <Tavaro/Studio/Voice/VoiceDesk.h>

#include <QtQml>

namespace tavaro {

void registerDeskTypes() {
    registerFileTypes();
    registerEditorTypes();
    registerPreviewTypes();
    registerTimelineTypes();
    registerHandleTypes();
    registerVoiceTypes();
    registerPrivacyTypes();
    qmlRegisterUncreatableType<EditorDesk>("Tavaro.Editor", 1, 0, "EditorDesk",
                                           QStringLiteral("It comes with a project."));
}

}
