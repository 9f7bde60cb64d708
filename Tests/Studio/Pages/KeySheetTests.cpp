#include "ShownPage.h"

#include "../../Core/Speech/SpokenFilm.h"
#include "../../Render/Export/TestTake.h"

#include <Tavaro/Studio/Editor/ShortcutList.h>
#include <Tavaro/Studio/Handles/FilmHandles.h>
#include <Tavaro/Studio/Timeline/TimelineItem.h>

#include <QFile>
#include <QKeyEvent>
#include <QKeySequence>
#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <set>
#include <vector>

using namespace tavaro;

namespace {

/// What the sheet has for what has the keyboard.
std::set<QKeySequence> sheetOf(QString const& group) {
    std::set<QKeySequence> keys;
    ShortcutList const sheet;
    for (int row = 0; row < sheet.rowCount(); ++row) {
        auto const role = [&](char const* name) {
            return sheet.index(row).data(sheet.roleNames().key(name)).toString();
        };
        if (role("group") != group) continue;
        for (auto const& each : role("keys").split(QStringLiteral(" / ")))
            keys.insert(QKeySequence(each, QKeySequence::NativeText));
    }
    return keys;
}

/// Without the modifiers; what is the same key by another name.
int plain(int key) {
    switch (key) {
    case Qt::Key_Enter: return Qt::Key_Return;
    case Qt::Key_Equal: return Qt::Key_Plus;
    default: return key;
    }
}

std::vector<int> allKeys() {
    std::vector<int> keys;
    for (int key = Qt::Key_Space; key <= Qt::Key_AsciiTilde; ++key) keys.push_back(key);
    for (int key = Qt::Key_F1; key <= Qt::Key_F12; ++key) keys.push_back(key);
    for (int key = Qt::Key_Home; key <= Qt::Key_PageDown; ++key) keys.push_back(key); // with the arrows
    for (int const key : {Qt::Key_Escape, Qt::Key_Backspace, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Insert,
                          Qt::Key_Delete, Qt::Key_Menu})
        keys.push_back(key);
    return keys;
}

/// Every key that an item takes is on the sheet, in its group, and each of those there does something.
void compare(QString const& group, QQuickItem& item, std::function<void()> const& prepare) {
    SCOPED_TRACE(group.toStdString());
    auto const sheet = sheetOf(group);
    ASSERT_FALSE(sheet.empty());
    std::set<int> listed;
    for (auto const& keys : sheet) listed.insert(plain(keys[0].key()));
    auto const isTaken = [&](QKeyCombination keys) {
        prepare();
        QKeyEvent press(QEvent::KeyPress, keys.key(), keys.keyboardModifiers());
        QCoreApplication::sendEvent(&item, &press);
        return press.isAccepted();
    };
    for (int const key : allKeys()) {
        if (key == Qt::Key_Backslash) continue; // the film's, but the window takes it
        for (auto const modifiers : {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier}) {
            QKeyCombination const keys(modifiers, static_cast<Qt::Key>(key));
            auto const name = QKeySequence(keys).toString().toStdString();
            if (sheet.contains(QKeySequence(keys))) {
                EXPECT_TRUE(isTaken(keys)) << name;
            } else if (!listed.contains(plain(key))) {
                EXPECT_FALSE(isTaken(keys)) << name << " is on no sheet";
            }
        }
    }
}

}

TEST(KeySheet, hasWhatTheFilmTakes) {
    TestTake const take("key-sheet", 30);
    DemoProject project;
    project.sourceSize = {320, 180};
    project.assetDurations = {{"screen.mp4", 1}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 1}};
    project.overlays = {{.kind = {OverlayKind::Title{.text = "Welcome"}}, .duration = 1, .position = {0.5, 0.4}}};
    ShownPage page("FilmArea.qml", project,
                   {{900, 560}, {{QStringLiteral("name"), QStringLiteral("Film")}}, take.package.assetsURL()});
    auto* const handles = page.view->findChild<FilmHandles*>();
    page.session().setPlayhead(0.5);
    TestEditor::waitFor([&] { return !handles->things().empty(); });
    std::vector const title{page.document().overlays.front().id};
    auto const select = [&] {
        page.session().select(title);
        handles->setTool(QStringLiteral("select"));
    };
    compare(QStringLiteral("On the Film"), *handles, select);
}

TEST(KeySheet, hasWhatTheTimelineTakes) {
    TimelineItem timeline;
    compare(QStringLiteral("Timeline"), timeline, [] {});
}

TEST(KeySheet, hasWhatTheTranscriptTakes) {
    ShownPage page("TranscriptPanel.qml", spokenFilm({{"one", 1, 1.5}, {"two", 2, 2.4}, {"three", 3, 3.5}}, 10));
    page.waitForItem(QStringLiteral("Transcript"));
    QTest::qWait(50);           // its words are laid out
    QQuickItem* list = nullptr; // the heading has its name, too
    for (auto* const item : page.view->rootObject()->findChildren<QQuickItem*>())
        if (item->inherits("QQuickListView") && item->activeFocusOnTab()) list = item;
    ASSERT_NE(list, nullptr);
    compare(QStringLiteral("Transcript"), *list, [] {});
}

TEST(KeySheet, hasWhatTheLibraryTakes) {
    QFile file(QStringLiteral(TAVARO_PAGES "/ProjectGrid.qml"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    static QRegularExpression const handled(QStringLiteral("Keys\\.on(\\w+)Pressed|Qt\\.Key_(\\w+)"));
    std::set<QKeySequence> found;
    for (auto keys = handled.globalMatch(QString::fromUtf8(file.readAll())); keys.hasNext();) {
        auto const key = keys.next();
        auto const name = key.captured(1) + key.captured(2);
        if (!name.isEmpty() && name != QLatin1String("Enter")) found.insert(QKeySequence(name));
    }
    EXPECT_EQ(found, sheetOf(QStringLiteral("Library")));
}
