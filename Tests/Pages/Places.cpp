#include "Places.h"

#include "Film.h"

#include <Tavaro/Studio/Program/Studio.h>

#include <QQuickItem>
#include <QQuickWindow>

namespace tavaro {

namespace {

QString const tour = QString::fromStdString(tourName);

void openTour(PageStage& stage) {
    stage.press(tour + QStringLiteral(", ")); // its card
    stage.becomes([&] { return stage.shows(filmShown) && stage.shows(QStringLiteral("Timeline")); });
}

Place pressed(QString const& name, QStringList const& presses, Tab tab = Tab::goesThrough) {
    return {name,
            [presses](PageStage& stage) {
                for (auto const& press : presses) stage.press(press);
            },
            tab};
}

Place inTour(QString const& name, QStringList const& presses) {
    return {name, [presses](PageStage& stage) {
                openTour(stage);
                for (auto const& press : presses) stage.press(press);
            }};
}

void scrollToTheEnd(QQuickItem* item) {
    if (item->inherits("QQuickFlickable") && item->isVisible()) {
        auto const room = item->property("contentHeight").toDouble() - item->height();
        if (room > 0) item->setProperty("contentY", room);
    }
    for (auto* child : item->childItems()) scrollToTheEnd(child);
}

void ask(PageStage& stage) {
    stage.studio().consent().asker()({.title = "claude-code wants to control Tavaro.",
                                      .text = "It will be able to record your screen, edit your projects and export "
                                              "videos. Recordings it starts are labelled in the recorder bar. You can "
                                              "change this in Settings → MCP."},
                                     [](std::optional<bool>) {});
    stage.becomes([&] { return stage.shows(QStringLiteral("Allow")); });
}

void fail(PageStage& stage) {
    Q_EMIT stage.studio().failed(QStringLiteral("The movie “tour.mp4” cannot be read: it ends in the middle."));
}

void trash(PageStage& stage) {
    stage.press(QStringLiteral("More for Onboarding"));
    stage.press(QStringLiteral("Move to the trash"));
    stage.becomes([&] { return stage.shows(QStringLiteral("“Onboarding” is in the trash")); });
}

void bringBack(PageStage& stage) {
    stage.press(QStringLiteral("Undo"));
    stage.becomes([&] { return stage.shows(QStringLiteral("Onboarding, ")); });
}

/// The pages beside the film, by the rail that leads to them; the first of its buttons folds them.
QStringList sidePages(PageStage& stage) {
    openTour(stage);
    QStringList found;
    for (auto const& name : stage.pressableIn(QStringLiteral("Pages of the side panel")))
        if (!name.contains(QStringLiteral("the side panel"))) found.push_back(name);
    stage.goHome();
    return found;
}

enum class Where { library, editor };

/// Behind a key, from there.
Place byKey(QString const& name, int key, Qt::KeyboardModifiers modifiers, Where where) {
    return {name, [=](PageStage& stage) {
                if (where == Where::editor) openTour(stage);
                stage.settledPicture();
                stage.key(key, modifiers);
            }};
}

}

std::vector<Place> places(PageStage& stage) {
    auto const text = [](char const* of) { return QString::fromUtf8(of); };
    std::vector<Place> all{
        {text("library"), [](PageStage&) {}},
        pressed(text("library-order"), {text("Order")}, Tab::doesNot),
        pressed(text("library-menu"), {text("More for Onboarding")}, Tab::doesNot),
        pressed(text("library-rename"), {text("More for Onboarding"), text("Rename")}),
        {text("library-toast"), trash, Tab::doesNot, bringBack},
        {text("project"), openTour},
        inTour(text("project-zoom"), {text("Zoom 1.8")}),
        {text("project-commands"),
         [](PageStage& on) {
             openTour(on);
             on.press(QStringLiteral("All commands"));
         },
         Tab::doesNot},
        inTour(text("export"), {text("Export")}),
        pressed(text("exports"), {text("Exports")}),
        byKey(text("shortcuts"), Qt::Key_F1, Qt::NoModifier, Where::library),
        byKey(text("speed"), Qt::Key_R, Qt::ControlModifier, Where::editor),
        pressed(text("record"), {text("Record"), text("Display"), text("screen, ")}),
        pressed(text("record-window"), {text("Record"), text("Window")}),
        pressed(text("record-area"), {text("Record"), text("Area")}),
        pressed(text("settings"), {text("Settings")}),
        {text("settings-end"),
         [](PageStage& on) {
             on.press(QStringLiteral("Settings"));
             on.settledPicture();
             scrollToTheEnd(on.window().contentItem());
         }},
        {text("question"), ask},
        {text("failure"), fail},
    };
    for (auto const& page : sidePages(stage))
        all.push_back(inTour(text("project-") + page.toLower().replace(QLatin1Char(' '), QLatin1Char('-')), {page}));
    return all;
}

}
