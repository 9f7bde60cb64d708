#include <Tavaro/Studio/Preview/FilmPreview.h>

#include <TavaroCore/Project/DemoProject.h>

#include <utility>

namespace tavaro {

namespace {

constexpr int restMilliseconds = 120; // a pointer that has not moved for so long rests

}

QImage imageOf(std::shared_ptr<Image const> canvas) {
    if (!canvas) return {};
    auto* const owner = new std::shared_ptr<Image const>(std::move(canvas));
    auto const& image = **owner;
    return {image.row(0),
            image.width(),
            image.height(),
            static_cast<qsizetype>(image.stride()),
            QImage::Format_RGBX8888,
            [](void* kept) { delete static_cast<std::shared_ptr<Image const>*>(kept); },
            owner};
}

FilmPreview::FilmPreview(OpenProject& project) : FilmPreview(project, FilmPlayback::Means{}) {}

FilmPreview::FilmPreview(OpenProject& project, FilmPlayback::Means means)
    : project_(project)
    , playback_(project.package(), std::move(means))
    , player_(project.package(), playback_.clock(),
              [this] { QMetaObject::invokeMethod(this, &FilmPreview::takePicture, Qt::QueuedConnection); }) {
    observation_ = project_.observe([this](ProjectChange const& change) {
        if (!change.fields.any()) return;
        if (!change.items.empty() && shown_ == FilmView{})
            player_.show(project_.document(), change.items); // and nothing that is heard
        else
            show();
        if (isDragged_ && !playback_.isPlaying()) draft();
    });
    rest_.setSingleShot(true);
    rest_.setInterval(restMilliseconds);
    connect(&rest_, &QTimer::timeout, this, &FilmPreview::follow);
    connect(&playback_, &FilmPlayback::playingChanged, this, [this] {
        if (shown_ != seen(view_)) showPicture();
        follow();
    });
    connect(&playback_, &FilmPlayback::positionChanged, this, [this] {
        if (!playback_.isPlaying() && !isScrubbing_) follow();
    });
    show();
    follow();
}

FilmPreview::~FilmPreview() = default;

QStringList FilmPreview::problems() const {
    QStringList sentences;
    for (auto const& sentence : picture_.problems) sentences.push_back(QString::fromStdString(sentence));
    return sentences;
}

QImage FilmPreview::grab() const { return imageOf(picture_.canvas).copy(); }

void FilmPreview::scrub(double at) {
    isScrubbing_ = true;
    playback_.scrub(at);
    isScrubbing_ = false;
    if (!playback_.isPlaying()) draft();
}

void FilmPreview::draft() {
    player_.seek(playback_.position(), PreviewPlayer::Pace::dragged);
    rest_.start();
}

void FilmPreview::setDragged(bool isDragged) {
    isDragged_ = isDragged;
    if (!isDragged) follow();
}

void FilmPreview::lookAt(FilmView view) {
    if (view == view_) return;
    view_ = std::move(view);
    if (shown_ != seen(view_)) showPicture();
}

FilmView FilmPreview::seen(FilmView const& view) const { return playback_.isPlaying() ? view.playing() : view; }

void FilmPreview::show() {
    playback_.show(project_.document());
    showPicture();
}

void FilmPreview::showPicture() {
    shown_ = seen(view_);
    ++shows_;
    if (shown_ == FilmView{})
        player_.show(project_.document());
    else
        player_.show(shown_.of(project_.document()), shown_.zooms);
}

void FilmPreview::follow() {
    rest_.stop();
    if (playback_.isPlaying())
        player_.follow();
    else
        player_.seek(playback_.position());
}

void FilmPreview::takePicture() {
    auto next = player_.take();
    if (!next) return;
    bool const saysOther = next->problems != picture_.problems;
    picture_ = std::move(*next);
    Q_EMIT pictureChanged();
    if (saysOther) Q_EMIT problemsChanged();
}

}
