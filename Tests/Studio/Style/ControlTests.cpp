#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Studio/Style/RegisterStyle.h>
#include <Tavaro/Studio/Style/Theme.h>

#include <gtest/gtest.h>

#include <QAccessible>
#include <QDir>
#include <QFontMetricsF>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QSignalSpy>
#include <QTest>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

using namespace tavaro;

namespace {

/// The ways to one and the same.
enum class Way { tree, key, mouse };
constexpr std::array ways{Way::tree, Way::key, Way::mouse};

/// What a control did.
struct Done {
    int clicked = 0, toggled = 0, triggered = 0, activated = 0, moved = 0, modified = 0;
    bool isChecked = false;
    double value = 0;

    bool operator==(Done const&) const = default;
};
std::ostream& operator<<(std::ostream& out, Done const& done) {
    return out << done.clicked << " clicked, " << done.toggled << " toggled, " << done.triggered << " triggered, "
               << done.activated << " activated, " << done.moved << " moved, " << done.modified << " modified, checked "
               << done.isChecked << ", value " << done.value;
}

/// The engine with the style; Qt has the theme once in a process.
class Style {
public:
    Style() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        registerStyle(theme_);
        engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    }

private:
    TemporaryFolder const folder_;
    Preferences preferences_{folder_ / "preferences.json"};
    DesktopLook desktop_;
    Theme theme_{preferences_, desktop_};

public:
    QQmlEngine engine;
};

QDir const controls{QStringLiteral(":/qt/qml/Tavaro/Style")};

/// One control in a window of its own.
class Stage {
public:
    Stage(Style& style, QString const& file) {
        QQmlComponent component(&style.engine, QUrl(QStringLiteral("qrc") + controls.filePath(file)));
        object_.reset(component.createWithInitialProperties(required(file)));
        if (!object_) ADD_FAILURE() << component.errorString().toStdString();
        item = qobject_cast<QQuickItem*>(object_.get());
        if (!item) return;
        item->setParentItem(window.contentItem());
        item->setPosition({20, 20});
        if (item->property("text").isValid() && !item->inherits("QQuickTextField"))
            item->setProperty("text", QStringLiteral("Name"));
        window.resize(400, 300);
        window.show();
        window.requestActivate();
        EXPECT_TRUE(QTest::qWaitFor([&] { return window.isActive(); }, 20'000));
    }

    bool is(char const* type) const { return item && item->inherits(type); }
    QPoint middle(QQuickItem const* of) const { return of->mapRectToScene(of->boundingRect()).center().toPoint(); }
    void click(QQuickItem const* of) { QTest::mouseClick(&window, Qt::LeftButton, {}, middle(of)); }
    void key(Qt::Key key) {
        item->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(&window, key);
    }
    void act(QQuickItem* of, QString const& action) {
        auto* const node = QAccessible::queryAccessibleInterface(of);
        if (!node || !node->actionInterface() || !node->actionInterface()->actionNames().contains(action))
            ADD_FAILURE() << "the tree has no action " << action.toStdString();
        else
            node->actionInterface()->doAction(action);
    }
    void press(Way way) {
        switch (way) {
        case Way::tree: return act(item, QAccessibleActionInterface::pressAction());
        case Way::key: return key(Qt::Key_Space);
        case Way::mouse: return click(item);
        }
    }

    QQuickWindow window;
    QQuickItem* item = nullptr; // none where it is no item, as a menu is

private:
    QVariantMap required(QString const& file) const {
        if (file == QStringLiteral("Segmented.qml")) return {{QStringLiteral("name"), QStringLiteral("Name")}};
        if (file == QStringLiteral("FocusRing.qml"))
            return {{QStringLiteral("control"), QVariant::fromValue(window.contentItem())}};
        return {};
    }
    std::unique_ptr<QObject> object_;
};

/// Counts what an item tells while something is done with it.
class Watch {
public:
    explicit Watch(QQuickItem* item) : item_(item) {
        for (auto const* signal :
             {"clicked()", "toggled()", "triggered()", "activated(int)", "moved()", "valueModified()"})
            if (item->metaObject()->indexOfSignal(signal) >= 0)
                spies_[signal] = std::make_unique<QSignalSpy>(item, QByteArray("2").append(signal).constData());
    }
    Done done() const {
        return {count("clicked()"),
                count("toggled()"),
                count("triggered()"),
                count("activated(int)"),
                count("moved()"),
                count("valueModified()"),
                item_->property("checked").toBool(),
                item_->property("value").toDouble()};
    }

private:
    int count(char const* signal) const {
        return spies_.contains(signal) ? static_cast<int>(spies_.at(signal)->count()) : 0;
    }
    QQuickItem* item_;
    std::map<std::string, std::unique_ptr<QSignalSpy>> spies_;
};

class Controls : public testing::Test {
protected:
    static Style& style() {
        static auto* const style = new Style; // as long as Qt's types, which last as long as the process
        return *style;
    }
    static QStringList files() { return controls.entryList({QStringLiteral("*.qml")}); }

    /// The same for each way, on a control each.
    static void expectTheSame(QString const& file, std::function<void(Stage&, Way)> const& use,
                              std::function<bool(Done const&)> const& isDone) {
        std::optional<Done> first;
        for (auto const way : ways) {
            Stage stage(style(), file);
            Watch const watch(stage.item);
            use(stage, way);
            auto const done = watch.done();
            EXPECT_TRUE(isDone(done)) << "way " << static_cast<int>(way) << ": " << done;
            if (!first) first = done;
            EXPECT_EQ(done, *first) << "way " << static_cast<int>(way);
        }
    }
};

}

TEST_F(Controls, thatArePressedAreTheSameByTreeByKeyAndByMouse) {
    int count = 0;
    for (auto const& file : files()) {
        SCOPED_TRACE(file.toStdString());
        Stage const stage(style(), file);
        if (!stage.is("QQuickAbstractButton")) continue;
        ++count;
        expectTheSame(
            file, [](Stage& on, Way way) { on.press(way); }, [](Done const& done) { return done.clicked == 1; });
    }
    EXPECT_GE(count, 8);
}

TEST_F(Controls, showNamesFromElsewhereAsTheyAreWrittenWithoutMnemonicsAndMarkup) {
    QString const name = QStringLiteral("R&D <b>plan</b> <img src='file:///none.png'>");
    int count = 0;
    for (auto const& file : files()) {
        SCOPED_TRACE(file.toStdString());
        Stage const stage(style(), file);
        if (!stage.is("QQuickAbstractButton")) continue;
        stage.item->setProperty("text", name);
        auto const* const content = stage.item->property("contentItem").value<QQuickItem*>();
        if (!content) continue;
        for (auto* const child : content->findChildren<QQuickItem*>()) {
            if (!child->inherits("QQuickText")) continue;
            ++count;
            QFontMetricsF const metrics(child->property("font").value<QFont>());
            EXPECT_NEAR(child->implicitWidth(), metrics.horizontalAdvance(name), 2);
        }
    }
    EXPECT_GE(count, 5);
}

TEST_F(Controls, thatArePressedHaveTheirTextAsNameAndARole) {
    for (auto const& file : files()) {
        SCOPED_TRACE(file.toStdString());
        Stage const stage(style(), file);
        if (!stage.is("QQuickAbstractButton")) continue;
        auto* const node = QAccessible::queryAccessibleInterface(stage.item);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->text(QAccessible::Name), QStringLiteral("Name"));
        EXPECT_NE(node->role(), QAccessible::Client);
    }
}

// Qt 6.4 has no other way to tell.
TEST_F(Controls, thatAreDisabledSayToTheTreeThatTheyAre) {
    int count = 0;
    for (auto const& file : files()) {
        SCOPED_TRACE(file.toStdString());
        Stage const stage(style(), file);
        if (!stage.is("QQuickControl") || !stage.item->activeFocusOnTab()) continue;
        ++count;
        auto* const node = QAccessible::queryAccessibleInterface(stage.item);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->text(QAccessible::Description), QString());
        stage.item->setEnabled(false);
        EXPECT_NE(node->text(QAccessible::Description), QString());
    }
    EXPECT_GE(count, 8);
}

namespace {

/// The one that shows this, below an item.
QQuickItem* itemWithText(QQuickItem* in, QString const& text) {
    if (in->isVisible() && in->inherits("QQuickAbstractButton") && in->property("text").toString() == text) return in;
    for (auto* child : in->childItems())
        if (auto* const found = itemWithText(child, text)) return found;
    return nullptr;
}

void chooseSecond(Stage& stage, Way way) {
    stage.item->setProperty("model", QStringList{QStringLiteral("one"), QStringLiteral("two")});
    stage.press(way);
    QQuickItem* two = nullptr;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return (two = itemWithText(stage.window.contentItem(), QStringLiteral("two"))) != nullptr; }, 20'000));
    QTest::qWait(50); // until its place is known
    switch (way) {
    case Way::tree: return stage.act(two, QAccessibleActionInterface::pressAction());
    case Way::key:
        QTest::keyClick(&stage.window, Qt::Key_Down);
        QTest::keyClick(&stage.window, Qt::Key_Return);
        return;
    case Way::mouse: return stage.click(two);
    }
}

void stepUp(Stage& stage, Way way) {
    auto const isSlider = stage.is("QQuickSlider");
    if (isSlider) stage.item->setProperty("stepSize", 0.5), stage.item->setProperty("snapMode", 1);
    switch (way) {
    case Way::tree: return stage.act(stage.item, QAccessibleActionInterface::increaseAction());
    case Way::key: return stage.key(isSlider ? Qt::Key_Right : Qt::Key_Up);
    case Way::mouse: {
        if (!isSlider)
            return stage.click(QQmlProperty::read(stage.item, QStringLiteral("up.indicator")).value<QQuickItem*>());
        auto const handle = stage.middle(QQmlProperty::read(stage.item, QStringLiteral("handle")).value<QQuickItem*>());
        auto const middle = stage.middle(stage.item);
        QTest::mousePress(&stage.window, Qt::LeftButton, {}, handle);
        QTest::mouseMove(&stage.window, middle);
        QTest::mouseRelease(&stage.window, Qt::LeftButton, {}, middle);
    }
    }
}

}

TEST_F(Controls, thatOfferAChoiceAreTheSameByTreeByKeyAndByMouse) {
    int count = 0;
    for (auto const& file : files()) {
        SCOPED_TRACE(file.toStdString());
        Stage const stage(style(), file);
        if (!stage.is("QQuickComboBox")) continue;
        ++count;
        expectTheSame(file, chooseSecond, [](Done const& done) { return done.activated == 1; });
    }
    EXPECT_GE(count, 1);
}

TEST_F(Controls, withAValueAreTheSameByTreeByKeyAndByMouse) {
    int count = 0;
    for (auto const& file : files()) {
        SCOPED_TRACE(file.toStdString());
        Stage const stage(style(), file);
        if (!stage.is("QQuickSlider") && !stage.is("QQuickSpinBox")) continue;
        ++count;
        expectTheSame(file, stepUp, [](Done const& done) { return done.value > 0 && done.moved + done.modified == 1; });
    }
    EXPECT_GE(count, 2);
}

TEST_F(Controls, thatTakeTextShowTheTreeWhatWasTyped) {
    int count = 0;
    for (auto const& file : files()) {
        SCOPED_TRACE(file.toStdString());
        Stage stage(style(), file);
        if (!stage.is("QQuickTextField")) continue;
        ++count;
        stage.key(Qt::Key_A);
        auto* const node = QAccessible::queryAccessibleInterface(stage.item);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->text(QAccessible::Value), QStringLiteral("a"));
        EXPECT_EQ(node->role(), QAccessible::EditableText);
    }
    EXPECT_GE(count, 1);
}
