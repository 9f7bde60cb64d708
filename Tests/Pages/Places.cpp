#include "Places.h"

#include "Film.h"

#include <Tavaro/Studio/Program/Studio.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>

#include <algorithm>
#include <iterator>

namespace tavaro {

namespace {

QString const tour = QString::fromStdString(tourName);

QString const rail = QStringLiteral("Pages of the side panel"), views = QStringLiteral("Views of the page"),
              folded = QStringLiteral("Show the side panel"), usual = QStringLiteral("Background, frame and canvas");

/// A page that is open folds the panel when it is pressed.
void openPage(PageStage& stage, QString const& page) {
    stage.press(page, rail);
    if (stage.shows(folded)) stage.press(page, rail);
}

/// Whatever was looked at before.
void openTour(PageStage& stage) {
    stage.press(tour + QStringLiteral(", ")); // its card
    stage.becomes([&] { return stage.shows(filmShown) && stage.shows(QStringLiteral("Timeline")); });
    stage.key(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier); // nothing is selected
    openPage(stage, usual);
}

Place pressed(QString const& name, QStringList const& presses, Tab tab = Tab::goesThrough) {
    return {name,
            [presses](PageStage& stage) {
                for (auto const& press : presses) stage.press(press);
            },
            tab};
}

/// Whether all that shows what can be recorded has its picture.
bool hasStills(QQuickItem const& item) {
    if (!item.isVisible()) return true;
    if (item.inherits("tavaro::PictureItem") && item.property("shownRect").toRectF().isEmpty()) return false;
    return std::ranges::all_of(item.childItems(), [](QQuickItem const* child) { return hasStills(*child); });
}

Place withStills(QString const& name, QStringList const& presses) {
    auto const shown = pressed(name, presses).show;
    return {name, [shown](PageStage& stage) {
                shown(stage);
                stage.becomes([&] { return hasStills(*stage.window().contentItem()); });
            }};
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

QString slug(QString const& title) {
    static QRegularExpression const others(QStringLiteral("[^a-z0-9]+"));
    return title.toLower().replace(others, QStringLiteral("-"));
}

/// `view` is empty where the page has but one.
Place sidePage(QString const& page, QString const& view) {
    auto const show = [=](PageStage& stage) {
        openTour(stage);
        openPage(stage, page);
        if (!view.isEmpty()) stage.press(view, views);
    };
    return {QStringLiteral("project-") + slug(view.isEmpty() ? page : view), show};
}

/// The pages beside the film, by the rail that leads to them, each of their views; the first of the rail's buttons
/// folds them.
std::vector<Place> sidePages(PageStage& stage) {
    std::vector<Place> found;
    openTour(stage);
    for (auto const& page : stage.pressableIn(rail)) {
        if (page.contains(QStringLiteral("the side panel"))) continue;
        openPage(stage, page);
        stage.settle();
        auto const several = stage.pressableIn(views);
        for (auto const& view : several) found.push_back(sidePage(page, view));
        if (several.empty()) found.push_back(sidePage(page, {}));
    }
    stage.goHome();
    return found;
}

enum class Where { library, editor };

/// Behind a key, from there.
Place byKey(QString const& name, int key, Qt::KeyboardModifiers modifiers, Where where) {
    return {name, [=](PageStage& stage) {
                if (where == Where::editor) openTour(stage);
                stage.settle(); // so that the page has the keyboard
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
        pressed(text("library-files"), {text("Bring in")}),
        {text("library-toast"), trash, Tab::doesNot, bringBack},
        {text("project"), openTour},
        inTour(text("project-zoom"), {text("Zoom 1.8")}),
        {text("project-commands"),
         [](PageStage& on) {
             openTour(on);
             on.press(QStringLiteral("All commands"));
         },
         Tab::doesNot},
        inTour(text("script-draft"), {text("Script and voice"), text("Draft the script anew…")}),
        inTour(text("script-paste"), {text("Script and voice"), text("Edit or paste the whole script…")}),
        inTour(text("transcribe"), {text("Transcript"), text("Transcribe anew…")}),
        inTour(text("export"), {text("Export")}),
        inTour(text("export-custom"), {text("Export"), text("Custom")}),
        pressed(text("exports"), {text("Exports")}),
        byKey(text("shortcuts"), Qt::Key_F1, Qt::NoModifier, Where::library),
        byKey(text("speed"), Qt::Key_R, Qt::ControlModifier, Where::editor),
        withStills(text("record"), {text("Record"), text("Display"), text("screen, ")}),
        pressed(text("record-window"), {text("Record"), text("Window")}),
        withStills(text("record-area"), {text("Record"), text("Area")}),
        pressed(text("settings"), {text("Settings")}),
        {text("settings-end"),
         [](PageStage& on) {
             on.press(QStringLiteral("Settings"));
             on.settle();
             scrollToTheEnd(on.window().contentItem());
         }},
        {text("question"), ask},
        {text("failure"), fail},
    };
    std::ranges::move(sidePages(stage), std::back_inserter(all));
    return all;
}

}
