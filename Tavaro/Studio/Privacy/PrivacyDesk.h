#pragma once

#include <Tavaro/Studio/Privacy/FindingList.h>
#include <Tavaro/Studio/Privacy/FindingStills.h>
#include <Tavaro/Studio/Privacy/ScanRun.h>

#include <QObject>

namespace tavaro {

/// What an editor's film hides, and the search for it. Looks at no picture until it is asked to. Belongs to the
/// session's thread, and goes before the session.
class PrivacyDesk final : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::ScanRun* run READ run CONSTANT)
    Q_PROPERTY(tavaro::FindingList* findings READ findings CONSTANT)
    Q_PROPERTY(tavaro::FindingStills* stills READ stills CONSTANT)

public:
    /// A scan that is given stands in for the real one.
    PrivacyDesk(MainQueue& queue, EditorSession& session, MovieScan scan = {});

    ScanRun* run() { return &run_; }
    FindingList* findings() { return &findings_; }
    FindingStills* stills() { return &stills_; }

private:
    ScanRun run_;
    FindingList findings_;
    FindingStills stills_;
};

/// Makes them known to QML, in "Tavaro.Privacy". Once, before the first page is loaded.
void registerPrivacyTypes();

}
