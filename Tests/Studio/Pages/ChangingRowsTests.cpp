#include "ShownPage.h"

#include <QAccessible>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QTest>

#include <memory>
#include <vector>

using namespace tavaro;

namespace {

/// What a desktop that reads the tree asks of a widget that it hears of: all that Qt knows, up to the window.
void read(QAccessibleEvent* event) {
    for (auto* node = event->accessibleInterface(); node && node->isValid(); node = node->parent()) {
        node->role();
        node->state();
        node->text(QAccessible::Name);
        node->rect();
        for (int i = 0; i < node->childCount(); ++i) node->child(i);
    }
}

/// A desktop reads the tree for as long as this lives.
class ReadTree {
public:
    ReadTree() : before_(QAccessible::installUpdateHandler(read)) { QAccessible::setActive(true); }
    ~ReadTree() {
        QAccessible::setActive(false);
        QAccessible::installUpdateHandler(before_);
    }

private:
    QAccessible::UpdateHandler const before_;
};

/// Rows of controls that are made anew and go while somebody looks at them.
class ChangingRows : public testing::Test {
protected:
    ~ChangingRows() override { EXPECT_TRUE(page.warnings.empty()) << page.warnings.front(); }

    std::unique_ptr<QObject> made(QQmlComponent& component, QVariantMap properties) {
        properties.insert(QStringLiteral("parent"), QVariant::fromValue(page.view->contentItem()));
        std::unique_ptr<QObject> object(component.createWithInitialProperties(properties));
        EXPECT_NE(object, nullptr) << component.errorString().toStdString();
        return object;
    }
    /// An item of that text, over the page.
    std::unique_ptr<QQuickItem> item(QByteArray const& text) {
        QQmlComponent component(page.view->engine());
        component.setData(
            "import QtQuick\nimport QtQuick.Controls\nimport QtQuick.Layouts\nimport Tavaro.Style\n" + text, {});
        return std::unique_ptr<QQuickItem>(qobject_cast<QQuickItem*>(made(component, {}).release()));
    }

    ReadTree const tree;
    ShownPage page{"StepsPanel.qml", shortFilm()};
};

/// Those that show, from left to right.
std::vector<QQuickItem*> optionsOf(QQuickItem* control) {
    std::vector<QQuickItem*> found;
    for (auto* const item : control->childItems()) {
        if (item->inherits("QQuickRadioButton") && item->isVisible()) found.push_back(item);
        for (auto* const inner : optionsOf(item)) found.push_back(inner);
    }
    return found;
}

QVariantList numbered(int count) {
    QVariantList options;
    for (int i = 0; i < count; ++i)
        options.push_back(
            QVariantMap{{QStringLiteral("text"), QStringLiteral("Option %1").arg(i)}, {QStringLiteral("value"), i}});
    return options;
}

}

// Else they would be taken apart after it, which Qt 6.4 does not survive where a desktop reads the tree.
TEST_F(ChangingRows, aClosedListOfChoicesHasNoneToOutliveIt) {
    for (int i = 0; i < 12 && !HasFailure(); ++i) {
        auto const box = item("ComboBox { model: 20; Accessible.name: 'Name' }");
        auto* const list = QQmlProperty::read(box.get(), QStringLiteral("popup.contentItem")).value<QQuickItem*>();
        auto const isLong = [&](int length) {
            TestEditor::waitFor([&] { return list->property("count").toInt() == length; });
        };
        QAccessible::queryAccessibleInterface(box.get())->actionInterface()->doAction(
            QAccessibleActionInterface::pressAction());
        isLong(20);
        if (i % 2) {
            QQmlProperty::write(box.get(), QStringLiteral("popup.visible"), false);
            isLong(0);
        }
        if (i % 3) QCoreApplication::processEvents();
    }
}

TEST_F(ChangingRows, oneOfAFewTakesOthersInPlace) {
    auto const host = item("ColumnLayout { property var options: []\n"
                           "Segmented { name: 'Wide'; options: parent.options; Layout.fillWidth: true }"
                           "Segmented { name: 'Narrow'; options: parent.options; visible: options.length > 0 } }");
    for (int i = 0; i < 60; ++i) {
        auto const count = i * 7 % 6;
        host->setProperty("options", numbered(count));
        if (i % 2) host->setWidth(340 + i);
        if (i % 3) QCoreApplication::processEvents();
        if (i % 5) continue;
        QTest::qWait(20);
        for (auto* const control : host->childItems()) {
            double end = 0;
            int found = 0;
            for (auto* const option : optionsOf(control)) {
                EXPECT_EQ(option->property("text").toString(), QStringLiteral("Option %1").arg(found++));
                EXPECT_GT(option->mapToItem(control, {0, 0}).x(), end);
                EXPECT_GE(option->width(), option->implicitWidth());
                end = option->mapToItem(control, {option->width(), 0}).x();
            }
            EXPECT_EQ(found, count);
            EXPECT_LT(end, control->width());
        }
    }
}

TEST_F(ChangingRows, rowsComeGoAndMoveInsideOfALayout) {
    auto const host = item(R"(ColumnLayout {
        id: host
        property var names: []
        function change(seed: int) {
            const at = seed % (rows.count + 1), name = "Row " + seed;
            if (seed % 7 < 3 || rows.count === 0) rows.insert(at, { name: name });
            else if (seed % 7 < 5) rows.remove(Math.min(at, rows.count - 1));
            else if (seed % 7 < 6) rows.move(0, rows.count - 1, 1);
            else if (seed % 5 === 0) rows.clear();
            else rows.setProperty(Math.min(at, rows.count - 1), "name", name + " that wraps where it is narrow");
            names = Array.from({ length: rows.count }, (_, i) => rows.get(i).name);
        }
        ListModel { id: rows }
        Label { text: "Above" }
        Rows {
            objectName: "rows"
            model: rows
            spacing: 4
            RowLayout {
                required property string name
                Label { Layout.fillWidth: true; text: parent.name; wrapMode: Text.Wrap }
                Switch { Accessible.name: parent.name }
            }
        }
        Label { objectName: "below"; text: "Below" })" +
                           QByteArray("}"));
    auto* const rows = host->findChild<QQuickItem*>(QStringLiteral("rows"));
    auto* const below = host->findChild<QQuickItem*>(QStringLiteral("below"));
    unsigned random = 1;
    for (int i = 0; i < 1000 && !HasFailure(); ++i) {
        random = random * 1'664'525 + 1'013'904'223;
        QMetaObject::invokeMethod(host.get(), "change", Q_ARG(int, static_cast<int>(random >> 16)));
        host->setWidth(120 + i % 90);
        if (i % 3) QCoreApplication::processEvents();
        if (i % 100 != 99) continue;
        QTest::qWait(30);
        QStringList shown;
        double end = -4;
        for (auto* const row : rows->childItems().constFirst()->childItems()) {
            if (row->inherits("QQuickRepeater")) continue;
            shown.push_back(row->property("name").toString());
            EXPECT_EQ(row->y(), end + 4);
            EXPECT_EQ(row->width(), host->width());
            EXPECT_GE(row->height(), row->implicitHeight());
            end = row->y() + row->height();
        }
        EXPECT_EQ(shown, host->property("names").toStringList());
        EXPECT_TRUE(shown.empty() || below->y() >= rows->y() + end);
    }
}

TEST_F(ChangingRows, fieldsFollowOtherThingsThatAreSelected) {
    ShownPage inspector{"SelectionPanel.qml", shortFilm()};
    auto& session = inspector.session();
    session.add(QStringLiteral("overlay"), QStringLiteral("title"));
    session.add(QStringLiteral("overlay"), QStringLiteral("arrow"));
    session.add(QStringLiteral("caption"));
    session.add(QStringLiteral("redaction"));
    session.selectAll();
    auto const all = session.selection();
    ASSERT_GE(all.size(), 5u);
    for (std::size_t i = 0; i < 60; ++i) {
        session.select(std::vector{all[i * 5 % all.size()]});
        if (i % 4 == 3) session.undo();
        if (i % 4 == 0) session.redo();
        inspector.view->resize(300 + static_cast<int>(i), 700);
        if (i % 3) QCoreApplication::processEvents();
    }
    for (auto const& warning : inspector.warnings) ADD_FAILURE() << warning;
}

TEST_F(ChangingRows, aMenuShowsOtherCommandsInPlace) {
    QQmlComponent component(page.view->engine(), QUrl::fromLocalFile(QStringLiteral(TAVARO_PAGES "/CommandMenu.qml")));
    auto const menu = made(component, {{QStringLiteral("session"), QVariant::fromValue(&page.session())}});
    for (auto const* place : {"clip", "film", "item", "timeline", "clip"}) {
        auto const names = EditorSession::menu(QString::fromUtf8(place));
        menu->setProperty("names", names);
        QMetaObject::invokeMethod(menu.get(), "open");
        QTest::qWait(20);
        QStringList rows;
        for (int i = 0; i < menu->property("count").toInt(); ++i) {
            QQuickItem* row = nullptr;
            QMetaObject::invokeMethod(menu.get(), "itemAt", Q_RETURN_ARG(QQuickItem*, row), Q_ARG(int, i));
            rows.push_back(row ? row->property("name").toString() : QString());
        }
        EXPECT_EQ(rows, names) << place;
        EXPECT_FALSE(names.empty());
    }
}
