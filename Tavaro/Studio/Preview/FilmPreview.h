#pragma once

#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Playback/FilmPlayback.h>
#include <Tavaro/Studio/Preview/FilmView.h>
#include <Tavaro/Studio/Preview/PreviewPlayer.h>

#include <QImage>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <cstdint>
#include <memory>

namespace tavaro {

/// The film of an open project as a window shows and plays it: every revision as soon as it is there, the moment at
/// which the playback is. It belongs to the main thread, and the project outlives it.
class FilmPreview : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::FilmPlayback* playback READ playback CONSTANT)
    Q_PROPERTY(QStringList problems READ problems NOTIFY problemsChanged)

public:
    explicit FilmPreview(OpenProject& project);
    FilmPreview(OpenProject& project, FilmPlayback::Means means);
    ~FilmPreview() override;

    FilmPlayback* playback() { return &playback_; }
    PreviewPlayer const& player() const { return player_; }
    /// What the picture lacks of what the project asks for, or why there is none, as sentences.
    QStringList problems() const;

    /// Pixels of the canvas that the film is drawn for.
    Size2 canvas() const { return project_.document().canvas; }
    /// The picture to be shown now.
    PreviewPicture const& picture() const { return picture_; }
    /// Whether it shows the latest edit, and as it is looked at now.
    bool isCurrent() const { return picture_.revision == shows_; }
    /// A copy of it, as it was drawn.
    QImage grab() const;

    /// Room for it, in pixels; 0 × 0 while it is not to be seen.
    void fit(Size2 room) { player_.fit(room); }
    /// How the film is looked at from now on. While it plays, only the take as it was recorded is another picture.
    void lookAt(FilmView view);
    FilmView const& view() const { return view_; }
    /// While something on the picture is dragged, each edit may be drawn coarser, until the hand rests.
    void setDragged(bool isDragged);
    /// As `seek` of the playback, while the pointer drags the playhead: pictures may be coarser until it rests.
    Q_INVOKABLE void scrub(double at);

Q_SIGNALS:
    void pictureChanged();
    void problemsChanged();

private:
    void show();
    void showPicture();
    FilmView seen(FilmView const& view) const;
    void takePicture();
    void follow();
    void draft();

    OpenProject& project_;
    FilmPlayback playback_;
    PreviewPicture picture_;
    std::int64_t shows_ = 0; // revisions that the player was shown
    FilmView view_, shown_;  // that is asked for, and that the picture is of
    QTimer rest_;
    bool isScrubbing_ = false, isDragged_ = false;
    OpenProject::Observation observation_;
    PreviewPlayer player_; // goes first: it reads the playback's clock
};

/// The picture as somebody else's pixels, which live as long as the image.
QImage imageOf(std::shared_ptr<Image const> canvas);

}
