#include <Tavaro/Studio/Privacy/PrivacyDesk.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Privacy/FindingStillItem.h>

#include <QQmlEngine>

#include <utility>

namespace tavaro {

PrivacyDesk::PrivacyDesk(MainQueue& queue, EditorSession& session, MovieScan scan)
    : session_(session)
    , run_(queue, session, std::move(scan))
    , findings_(session)
    , stills_(queue, session) {
    for (auto* part :
         {static_cast<QObject*>(&run_), static_cast<QObject*>(&findings_), static_cast<QObject*>(&stills_)})
        QQmlEngine::setObjectOwnership(part, QQmlEngine::CppOwnership);
    connect(&run_, &ScanRun::changed, this, &PrivacyDesk::settle);
}

bool PrivacyDesk::takeUp() {
    if (run_.isRunning()) return false;
    auto due = DueScan::claim(session_.project().package(), session_.document());
    if (!due) return false;
    run_.start();
    if (run_.isRunning()) due_ = std::move(due);
    return run_.isRunning();
}

void PrivacyDesk::settle() {
    if (!due_ || run_.isRunning()) return;
    if (run_.failure().isEmpty()) due_->settle();
    due_.reset();
}

void registerPrivacyTypes() {
    auto const reason = QStringLiteral("They come with an editor.");
    qmlRegisterUncreatableType<PrivacyDesk>("Tavaro.Privacy", 1, 0, "PrivacyDesk", reason);
    qmlRegisterUncreatableType<ScanRun>("Tavaro.Privacy", 1, 0, "ScanRun", reason);
    qmlRegisterUncreatableType<FindingList>("Tavaro.Privacy", 1, 0, "FindingList", reason);
    qmlRegisterUncreatableType<FindingStills>("Tavaro.Privacy", 1, 0, "FindingStills", reason);
    qmlRegisterType<FindingStillItem>("Tavaro.Privacy", 1, 0, "FindingStill");
}

}
