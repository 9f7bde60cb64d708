#include "TestEditor.h"

#include <Tavaro/Studio/Editor/ContextMenus.h>
#include <Tavaro/Studio/Editor/EditorCommands.h>
#include <Tavaro/Studio/Editor/ShortcutList.h>

#include <TavaroCore/Records/JSON.h>

#include <QAbstractItemModelTester>
#include <QDirIterator>
#include <QFile>
#include <QKeySequence>
#include <QMetaEnum>
#include <QRegularExpression>

#include <algorithm>
#include <set>
#include <vector>

using namespace tavaro;

namespace {

QStringList texts(QList<QKeySequence> const& keys) {
    QStringList result;
    for (auto const& each : keys) result.push_back(each.toString(QKeySequence::NativeText));
    return result;
}

/// The keys of all `Shortcut`s of the pages but those of the editor's commands; a standard key counts by any of its
/// own.
std::vector<QStringList> shortcutsOfPages() {
    static QRegularExpression const written(QStringLiteral("Shortcut \\{\\s*sequences?: (\\[[^\\]]*\\]|\"[^\"]*\")"));
    static QRegularExpression const part(QStringLiteral("\"([^\"]+)\"|StandardKey\\.(\\w+)"));
    std::vector<QStringList> found;
    QDirIterator pages(QStringLiteral(TAVARO_PAGES), {QStringLiteral("*.qml")});
    while (pages.hasNext()) {
        QFile page(pages.next());
        if (!page.open(QIODevice::ReadOnly)) continue;
        auto const text = QString::fromUtf8(page.readAll());
        for (auto shortcuts = written.globalMatch(text); shortcuts.hasNext();) {
            for (auto parts = part.globalMatch(shortcuts.next().captured(1)); parts.hasNext();) {
                auto const key = parts.next();
                QStringList keys{key.captured(1)};
                if (!key.captured(2).isEmpty()) {
                    bool isKnown = false;
                    auto const standard = QMetaEnum::fromType<QKeySequence::StandardKey>().keyToValue(
                        key.captured(2).toUtf8().constData(), &isKnown);
                    EXPECT_TRUE(isKnown) << key.captured(2).toStdString();
                    keys = texts(QKeySequence::keyBindings(static_cast<QKeySequence::StandardKey>(standard)));
                }
                found.push_back(keys);
            }
        }
    }
    return found;
}

}

TEST(EditorMenus, contextMenusOfferCommandsThatThereAreEachOnce) {
    TestEditor const editor(shortFilm());
    for (auto const place : namesOf(MenuPlace{})) {
        SCOPED_TRACE(place);
        auto const menu = EditorSession::menu(QString::fromUtf8(place.data()));
        EXPECT_GT(menu.size(), 2);
        EXPECT_FALSE(menu.front().startsWith(QLatin1Char('-'))) << "nothing is above the first";
        std::set<QString> names;
        for (auto name : menu) {
            name.remove(QLatin1Char('-'));
            EXPECT_NE(editor->command(name), nullptr) << name.toStdString();
            EXPECT_TRUE(names.insert(name).second) << name.toStdString();
        }
    }
}

TEST(EditorMenus, noTwoCommandsHaveOneShortcutAndAllShortcutsCanBeRead) {
    std::set<QString> seen;
    for (auto const& command : editorCommands()) {
        if (std::string_view(command.shortcut).empty()) continue;
        QKeySequence const keys(QString::fromUtf8(command.shortcut), QKeySequence::PortableText);
        EXPECT_EQ(keys.count(), 1) << command.name;
        EXPECT_NE(keys[0].key(), Qt::Key_unknown) << command.name;
        EXPECT_TRUE(seen.insert(keys.toString()).second) << command.name;
    }
}

TEST(EditorMenus, theSheetHasEveryShortcutAndFindsItByAnyOfItsWords) {
    ShortcutList sheet;
    QAbstractItemModelTester const tester(&sheet, QAbstractItemModelTester::FailureReportingMode::Fatal);
    std::set<QString> titles;
    auto const read = [&] {
        titles.clear();
        for (int row = 0; row < sheet.count(); ++row) {
            EXPECT_FALSE(sheet.index(row).data(sheet.roleNames().key("keys")).toString().isEmpty()) << row;
            titles.insert(sheet.index(row).data().toString());
        }
    };
    read();
    for (auto const& command : editorCommands()) {
        bool const isListed = titles.contains(QString::fromUtf8(command.title));
        EXPECT_EQ(isListed, !std::string_view(command.shortcut).empty()) << command.name;
    }
    sheet.setSought(QStringLiteral(" clip SPLIT "));
    read();
    EXPECT_EQ(titles, std::set{QStringLiteral("Split Clip")});
    sheet.setSought(QStringLiteral("no such key"));
    EXPECT_EQ(sheet.count(), 0);
}

TEST(EditorMenus, theSheetHasEveryShortcutOfThePagesAndNoOthers) {
    ShortcutList const sheet;
    QStringList listed, own; // own: of pages, not of what has the keyboard
    for (int row = 0; row < sheet.rowCount(); ++row) {
        auto const role = [&](char const* name) {
            return sheet.index(row).data(sheet.roleNames().key(name)).toString();
        };
        auto const keys = role("keys").split(QStringLiteral(" / "));
        listed += keys;
        if (role("group") == QLatin1String("Window") || role("group") == QLatin1String("Play")) own += keys;
    }
    auto const pages = shortcutsOfPages();
    EXPECT_GT(pages.size(), 10u);
    for (auto const& keys : pages) {
        auto const isListed = [&](QString const& key) { return listed.contains(key); };
        EXPECT_TRUE(std::ranges::any_of(keys, isListed)) << keys.join(QLatin1Char(' ')).toStdString();
    }
    for (auto const& key : own) {
        auto const isOfPage = [&](QStringList const& keys) { return keys.contains(key); };
        EXPECT_TRUE(std::ranges::any_of(pages, isOfPage)) << key.toStdString();
    }
}

TEST(EditorMenus, speedsAreThoseOfWhatIsInHandAndDoubleEachTime) {
    TestEditor editor(shortFilm());
    EXPECT_EQ(editor->speed(), 1);
    EXPECT_EQ(editor->speedSeconds(), 6) << "the clip at the playhead";
    editor.run("speedUp"), editor.run("speedUp");
    EXPECT_EQ(editor->speed(), 4);
    EXPECT_EQ(editor->speedSeconds(), 1.5);
    editor.run("slowDown");
    EXPECT_EQ(editor->speed(), 2);
    editor->setRange(1, 2);
    EXPECT_EQ(editor->speed(), 1) << "a range is as fast as it is";
    EXPECT_EQ(editor->speedSeconds(), 2);
    editor->clearRange();
    editor.run("holdFrame");
    editor->setPlayhead(0.5);
    EXPECT_EQ(editor->speed(), 0) << "a held frame has none";
    EXPECT_FALSE(editor.isEnabled("changeSpeed"));
}

TEST(EditorMenus, commandsThatNeedMoreAskForTheirDialogs) {
    TestEditor const editor(shortFilm());
    std::string asked;
    QObject::connect(editor.session.get(), &EditorSession::wanted,
                     [&](QString const& dialog) { asked += dialog.toStdString() + " "; });
    for (auto const* name : {"changeSpeed", "rename", "shortcuts"}) editor.run(name);
    EXPECT_EQ(asked, "speed rename shortcuts ");
}

TEST(EditorMenus, theSaveBeforeIsGoneBackToAsAStep) {
    TestEditor editor(shortFilm());
    editor.run("earlierSave");
    TestEditor::waitFor([&] { return !editor.told.empty(); }); // nothing was saved before
    editor->rename(QStringLiteral("Second"));
    editor->save();
    TestEditor::waitFor([&] { return editor->isSaved(); });
    auto const second = encodeProject(editor.document());
    editor.run("earlierSave");
    TestEditor::waitFor([&] { return editor.document().name == "Film"; });
    EXPECT_EQ(editor->undoName(), QStringLiteral("Go Back to Earlier Save"));
    editor.run("undo");
    EXPECT_EQ(encodeProject(editor.document()), second);
}
