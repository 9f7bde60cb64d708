#include <Tavaro/Studio/Exports/FilmFrames.h>

#include <Tavaro/Studio/Library/LibraryText.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>

#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

/// The playhead's moment of the film, which begins with its title card.
double filmTime(EditorSession const& session) { return session.playhead() + session.document().introDuration(); }

QByteArray bytesOf(DrawnFrame const& frame) { return {frame.png.data(), static_cast<qsizetype>(frame.png.size())}; }

}

FilmFrames::FilmFrames(MainQueue& queue, FrameDrawer& drawer)
    : drawer_(drawer)
    , side_(queue, "com.tavaro.exports.frames") {}

void FilmFrames::attempt(std::function<void()> const& action) {
    try {
        action();
    } catch (Error const& error) {
        Q_EMIT failed(QString::fromUtf8(error.what()));
    }
}

void FilmFrames::draw(EditorSession const& session, std::function<void(DrawnFrame const&)> use) {
    auto const& document = session.document();
    wanted_ = drawer_.draw(
        {.package = session.project().package(),
         .project = document,
         .at = filmTime(session),
         .longestSide = std::max(document.canvas.width, document.canvas.height)},
        [this, use = std::move(use)](Outcome<DrawnFrame> const& drawn) { attempt([&] { use(drawn.value()); }); });
}

void FilmFrames::copy(EditorSession* session) {
    auto const at = QString::fromStdString(Timecode::format(filmTime(*session), Timecode::Fraction::hundredths));
    draw(*session, [this, at](DrawnFrame const& frame) {
        auto* const data = new QMimeData; // the clipboard's
        data->setData(QStringLiteral("image/png"), bytesOf(frame));
        QGuiApplication::clipboard()->setMimeData(data);
        Q_EMIT done(QStringLiteral("The frame at %1 is copied").arg(at), {});
    });
}

QUrl FilmFrames::fileFor(EditorSession* session) const {
    auto folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (!QFileInfo(folder).isDir()) folder = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
    auto time = Timecode::format(filmTime(*session), Timecode::Fraction::hundredths);
    std::ranges::replace(time, ':', '.');
    auto const name = fileNamePart(session->document().name) + " at " + time + ".png";
    return QUrl::fromLocalFile(libraryText::text(unusedFile(libraryText::path(folder) / name)));
}

void FilmFrames::save(EditorSession* session, QUrl const& url) {
    auto file = libraryText::path(url.toLocalFile());
    if (!file.has_extension()) file += ".png";
    draw(*session, [this, file](DrawnFrame const& frame) {
        auto const write = [file, png = frame.png] {
            writeFileAtomically(file, png);
            return file;
        };
        side_.ask(write, [this](Outcome<std::filesystem::path> const& written) {
            attempt([&] {
                auto const name = libraryText::text(written.value().filename());
                Q_EMIT done(QStringLiteral("Saved as “%1”").arg(name), libraryText::text(written.value()));
            });
        });
    });
}

}
