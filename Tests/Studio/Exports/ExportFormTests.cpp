#include "TestExports.h"

#include <Tavaro/Model/Exporting/FilmFrame.h>
#include <Tavaro/Studio/Exports/ExportForm.h>
#include <Tavaro/Studio/Exports/FilmFrames.h>
#include <Tavaro/Studio/Library/LibraryText.h>

#include <TavaroMedia/Frames/PNG.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <optional>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

class ExportFormTest : public ExportsTest {
protected:
    ExportFormTest() {
        application.projects().open(take.package.url(), [this](auto const& outcome) { open = outcome.value(); });
        waitFor([&] { return open != nullptr; });
        session.emplace(queue, open);
    }
    static QUrl url(fs::path const& path) { return QUrl::fromLocalFile(libraryText::text(path)); }
    QStringList places() {
        QStringList ids;
        for (auto const& place : form.places()) ids.push_back(place.toMap().value("id").toString());
        return ids;
    }

    std::shared_ptr<OpenProject> open;
    std::optional<EditorSession> session;
    ExportQueue exports{queue, application, settings()};
    ExportForm form{queue, application.preferences(), exports};
};

}

TEST_F(ExportFormTest, whatIsSetUpIsExportedAndIsWhereTheNextExportBegins) {
    form.begin(&*session);
    EXPECT_EQ(form.preset(), "youtube-1080");
    EXPECT_EQ(form.name(), "Tour 1080p");
    form.setPlace("custom");
    EXPECT_EQ(form.width(), 1920) << "as the place before";
    form.setWidth(160);
    EXPECT_EQ(form.height(), 90) << "the shape of the canvas";
    form.setRate(30);
    form.setFormat("mov");
    form.setFolderUrl(url(folder / "films"));
    form.setName("My/film.MOV");
    EXPECT_EQ(form.outcome().section(" · ", 0, 2), "160 × 90 · 30 fps · MOV, H.264");
    ASSERT_TRUE(form.submit()) << form.problem().toStdString();
    EXPECT_EQ(open->document().exportSettings.size, (Size2{160, 90}));
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(exports.record(0).path, folder / "films/My-film.mov") << exports.record(0).sentence;

    ExportForm next(queue, application.preferences(), exports);
    next.begin(&*session);
    EXPECT_EQ(next.place(), "custom");
    EXPECT_EQ(next.name(), "My-film");
    waitFor([&] { return !next.remark().isEmpty(); });
    EXPECT_EQ(next.remark(), "There is one of that name: this will be “My-film 2.mov”.");
    next.setName(" ");
    EXPECT_EQ(next.suggestion(), "Tour 90p");
    waitFor([&] { return next.remark().isEmpty(); }); // since nothing typed is the suggestion

    ASSERT_TRUE(form.repeat(&*session));
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(exports.record(0).path, folder / "films/My-film 2.mov");
}

TEST_F(ExportFormTest, everyPlaceAndWayCanBeChosenAndTellsWhatItComesTo) {
    int renewed = 0; // lists of ways, whose buttons lose the keyboard then
    QObject::connect(&form, &ExportForm::placeChanged, [&] { ++renewed; });
    form.begin(&*session);
    EXPECT_FALSE(places().contains("captions"));
    for (auto const& id : places()) {
        form.setPlace(id);
        EXPECT_EQ(form.place(), id);
        EXPECT_EQ(form.problem(), "") << id.toStdString();
        EXPECT_FALSE(form.outcome().isEmpty());
        EXPECT_TRUE(form.ending().startsWith('.'));
        for (auto const& way : form.ways()) {
            auto const preset = way.toMap().value("value").toString();
            form.setPreset(preset);
            EXPECT_EQ(form.preset(), preset);
            EXPECT_EQ(form.place(), id);
        }
    }
    EXPECT_EQ(renewed, places().size());
    form.setPlace("custom");
    for (auto const& format : ExportForm::formats()) {
        form.setFormat(format.toMap().value("value").toString());
        form.setRate(form.fastest());
        EXPECT_EQ(form.problem(), "");
        EXPECT_TRUE(form.outcome().contains(format.toMap().value("text").toString())) << form.outcome().toStdString();
    }
    session->edit({"Caption"}, [](DemoProject& project) { project.captions.cues = {{.duration = 1, .text = "said"}}; });
    form.begin(&*session);
    form.setPlace("captions");
    form.setFolderUrl(url(folder.path()));
    EXPECT_EQ(form.name() + form.ending(), "Tour.srt");
    EXPECT_TRUE(form.submit());
    waitFor([&] { return exports.isIdle(); });
    EXPECT_TRUE(fs::exists(folder / "Tour.srt"));
}

TEST_F(ExportFormTest, aMarkedPartIsOfferedAndWhatCannotBeWrittenIsSaidBeforehand) {
    open->edit("Intro", [](DemoProject& project) { project.intro = TitleCard{.text = "Hello", .duration = 2}; });
    session->setRange(0.25, 0.5);
    form.begin(&*session);
    EXPECT_EQ(form.range(), "0:00.25–0:00.75");
    form.setPlace("site");
    form.setFolderUrl(url(folder.path()));
    ASSERT_TRUE(form.submit());
    EXPECT_EQ(exports.record(0).choices.range, (TimeRange{2.25, 0.5})) << "in times of the film";
    exports.cancel(0);

    std::ofstream(folder / "file") << "no folder";
    form.setFolderUrl(url(folder / "file/below"));
    waitFor([&] { return !form.problem().isEmpty(); });
    EXPECT_TRUE(form.problem().endsWith("is not a folder."));
    EXPECT_FALSE(form.submit());
    open->edit("Nothing", [](DemoProject& project) { project.timeline.clips.clear(); });
    form.setFolderUrl(url(folder.path()));
    EXPECT_EQ(form.problem(), "The film is empty.");
    waitFor([&] { return exports.isIdle(); });
}

TEST_F(ExportFormTest, framesThatAreCopiedAndSavedAreThoseOfTheFilm) {
    FilmFrames frames(queue, application.frames());
    open->edit("Intro", [](DemoProject& project) { project.intro = TitleCard{.text = "Hello", .duration = 1}; });
    session->setPlayhead(0.5);
    std::string said, failure;
    QObject::connect(&frames, &FilmFrames::done,
                     [&](QString const& text, QString const&) { said = text.toStdString(); });
    QObject::connect(&frames, &FilmFrames::failed, [&](QString const& text) { failure = text.toStdString(); });
    auto painter = framePainter(open->document(), take.package, open->document().canvas);
    auto const expected = encodePNG(filmFrame(painter, 1.5).view(), PNGPacking::quick); // as `tavaro frame` writes it
    frames.copy(&*session);
    waitFor([&] { return !said.empty() || !failure.empty(); });
    EXPECT_EQ(said, "The frame at 0:01.50 is copied") << failure;
    EXPECT_EQ(QGuiApplication::clipboard()->mimeData()->data("image/png").toStdString(), expected);
    frames.save(&*session, url(folder / "frame"));
    waitFor([&] { return said == "Saved as “frame.png”" || !failure.empty(); });
    EXPECT_EQ(bytesIn(folder / "frame.png"), expected);
    frames.save(&*session, url(folder / "none/frame.png"));
    waitFor([&] { return !failure.empty(); });
    EXPECT_EQ(frames.fileFor(&*session).fileName(), "Tour at 0.01.50.png");
}
