#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>
#endif

#include <QCache>
#include <QImage>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace tavaro {

class EditorSession;
class MainQueue;

/// Small pictures of what is around findings, none of which shows what it hides: drawn beside the window, each kept as
/// long as there is room. Belongs to the session's thread.
class FindingStills final : public QObject {
    Q_OBJECT

public:
    FindingStills(MainQueue& queue, EditorSession const& session);
    ~FindingStills() override;

    /// Whoever gives this up gets no answer; what nobody waits for is not drawn.
    using Interest = std::shared_ptr<void const>;
    /// As large as the room allows; null where there is nothing to see.
    [[nodiscard]] Interest draw(UUID const& redaction, Size2 room, std::function<void(QImage const&)> answer);

Q_SIGNALS:
    /// What is hidden is another, or elsewhere.
    void changed();

private:
    struct Movie;

    EditorSession const& session_;
    QCache<QString, QImage> known_; // by bytes
    std::shared_ptr<Movie> movie_;  // the side's
    SideQueue side_;
};

}
