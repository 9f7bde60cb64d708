#include <Tavaro/Studio/Privacy/FindingStills.h>

#include <Tavaro/Model/Privacy/FindingPicture.h>
#include <Tavaro/Studio/Editor/EditorSession.h>

#include <TavaroCore/Records/Hash.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <exception>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

constexpr double keptSeconds = 20;             // that a movie stays open after the last picture
constexpr qsizetype most = qsizetype{4} << 20; // bytes; some 300 pictures

class Unwanted : public Error {
public:
    Unwanted() : Error("Nobody waits for this picture any more.") {}
};

QString keyOf(FindingScene const& scene, Size2 room) {
    auto hash = hashOf(scene.asset);
    detail::mixHash(hash, hashOf(scene.time));
    detail::mixHash(hash, hashOf(scene.area));
    detail::mixHash(hash, hashOf(scene.others));
    return QStringLiteral("%1 %2 %3").arg(hash).arg(room.width).arg(room.height);
}

}

/// The movie that pictures were taken of last.
struct FindingStills::Movie {
    explicit Movie(ProjectPackage of) : package(std::move(of)) {}

    ProjectPackage const package;
    std::string asset;
    std::optional<MovieReader> reader;
    FrameConverter converter;
    Image pixels;

    QImage taken(FindingScene const& scene, Size2 room) {
        if (!reader || asset != scene.asset) {
            reader.reset();
            reader.emplace(package.assetURL(scene.asset), MovieReaderOptions{.threads = 1});
            asset = scene.asset;
        }
        converter.convert(reader->frame(scene.time), pixels);
        auto const picture = findingPicture(pixels.view(), scene.area, scene.others, room);
        auto const view = picture.view();
        return QImage(view.pixels, view.width, view.height, view.stride, QImage::Format_RGBX8888).copy();
    }
    void close() {
        reader.reset();
        pixels = {};
    }
};

FindingStills::FindingStills(MainQueue& queue, EditorSession const& session)
    : session_(session)
    , movie_(std::make_shared<Movie>(session.project().package()))
    , side_(queue, "com.tavaro.findings") {
    known_.setMaxCost(most);
    connect(&session, &EditorSession::documentChanged, this, &FindingStills::changed);
}

FindingStills::~FindingStills() { side_.thread().stopTimer(); }

FindingStills::Interest FindingStills::draw(UUID const& redaction, Size2 room,
                                            std::function<void(QImage const&)> answer) {
    auto const interest = std::make_shared<int const>();
    auto const scene = sceneOf(session_.document(), redaction);
    if (!scene) {
        answer({});
        return interest;
    }
    auto const key = keyOf(*scene, room);
    if (auto const* const known = known_.object(key)) {
        answer(QImage(*known));
        return interest;
    }
    side_.thread().stopTimer();
    side_.ask(
        [movie = movie_, scene = *scene, room, still = std::weak_ptr<int const>(interest)] {
            if (still.expired()) throw Unwanted();
            return movie->taken(scene, room);
        },
        [this, key, still = std::weak_ptr<int const>(interest),
         answer = std::move(answer)](Outcome<QImage> const& outcome) {
            side_.thread().startTimer(mediaClockNow() + keptSeconds, keptSeconds,
                                      [movie = movie_](double) { movie->close(); });
            QImage picture;
            try {
                picture = outcome.value();
            } catch (std::exception const&) {
                // What cannot be shown is listed by its words alone.
            }
            if (!picture.isNull()) known_.insert(key, new QImage(picture), picture.sizeInBytes());
            if (!still.expired()) answer(picture);
        });
    return interest;
}

}
