#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Operations/PatchOperations.h>
#endif
#include <Tavaro/Studio/Editor/EditorSession.h>

#include <QCache>
#include <QImage>
#include <QObject>
#include <QTimer>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// What of the film a look is tried on.
enum class LookSubject {
    background, // nothing but what is behind the recording
    film,       // the picture at the playhead, whole
    camera,     // what the camera sees there
    pointer,    // the pointer, close by, at a click near the playhead
    captions,   // a line of its own
};

constexpr std::array<std::string_view, 5> namesOf(LookSubject) {
    return {"background", "film", "camera", "pointer", "captions"};
}

/// Small pictures of what choices would make of a project, drawn beside the window by the composition that the film is
/// drawn by. Belongs to the project's thread.
class LookStills final : public QObject {
    Q_OBJECT

public:
    struct Look {
        LookSubject subject = LookSubject::film;
        std::vector<operations::FieldChange> changes; // of the document
        Size2 room;                                   // pixels
    };

    LookStills(MainQueue& queue, EditorSession const& session);
    ~LookStills() override;

    /// Whoever gives this up gets no answer; what nobody waits for is not drawn.
    using Interest = std::shared_ptr<void const>;
    /// The answer is null where there is nothing to see: no camera, no click, a change that is refused.
    [[nodiscard]] Interest draw(Look const& look, std::function<void(QImage const&)> answer);

    /// The document that shows a look, and the moment at which it does; nothing where the project has no such thing.
    struct Sample {
        DemoProject project;
        double at = 0; // seconds of its film
    };
    static std::optional<Sample> sample(LookSubject subject, DemoProject const& document, double playhead);

Q_SIGNALS:
    /// The document is another, or the playhead rests elsewhere, for a while by now.
    void changed();

private:
    struct Easel;

    std::shared_ptr<Sample const> sampleNow(LookSubject subject);

    EditorSession const& session_;
    QTimer settling_;
    std::map<LookSubject, std::shared_ptr<Sample const>> samples_; // of the document and the playhead as they are
    QCache<QString, QImage> backgrounds_;                          // which depend on nothing else, by bytes
    std::shared_ptr<Easel> easel_;                                 // the side's
    SideQueue side_;
};

}
