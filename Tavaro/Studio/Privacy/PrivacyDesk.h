#pragma once

#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Studio/Privacy/FindingList.h>
#include <Tavaro/Studio/Privacy/FindingStills.h>
#include <Tavaro/Studio/Privacy/ScanRun.h>

#include <QObject>

#include <optional>

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

    /// Searches a new take of which that is due, unless somebody else does. What is stopped by hand is due no more;
    /// what ends otherwise before its time is taken up again.
    bool takeUp();

    ScanRun* run() { return &run_; }
    FindingList* findings() { return &findings_; }
    FindingStills* stills() { return &stills_; }

private:
    void settle();

    EditorSession& session_;
    std::optional<DueScan> due_;
    ScanRun run_;
    FindingList findings_;
    FindingStills stills_;
};

/// Makes them known to QML, in "Tavaro.Privacy". Once, before the first page is loaded.
void registerPrivacyTypes();

}
