#include "ShownPage.h"

#include "PageEngine.h"

#include <QAccessible>
#include <QQmlEngine>
#include <QTest>

namespace tavaro {

namespace {

ShownPage* listening = nullptr;

void note(QtMsgType type, QMessageLogContext const& context, QString const& text) {
    (void)context;
    if (type != QtDebugMsg && type != QtInfoMsg && listening) listening->warnings.push_back(text.toStdString());
}

QQuickItem* findIn(QQuickItem* item, QString const& name) {
    if (!item->isVisible()) return nullptr;
    auto* const face = QAccessible::queryAccessibleInterface(item);
    if (face && face->text(QAccessible::Name) == name) return item;
    for (auto* const child : item->childItems()) {
        if (auto* const found = findIn(child, name)) return found;
    }
    return nullptr;
}

}

ShownPage::ShownPage(std::string const& file, DemoProject document, PageLook look) : project(std::move(document)) {
    if (!look.assets.empty())
        std::filesystem::copy(look.assets, project.package().assetsURL(), std::filesystem::copy_options::recursive);
    auto& engine = pageEngine();
    listening = this;
    qInstallMessageHandler(note);
    desk = std::make_unique<EditorDesk>(queue, project.open(),
                                        FilmPlayback::Means{std::make_unique<FakeOutput>(device), {}});
    if (look.voices) desk->setVoiceMeans(*look.voices);
    desk->setMovieScan(look.scan);
    view = std::make_unique<QQuickView>(&engine, nullptr);
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->resize(look.size);
    look.properties.insert(QStringLiteral("desk"), QVariant::fromValue(desk.get()));
    view->setInitialProperties(look.properties);
    view->setSource(QUrl::fromLocalFile(QStringLiteral(TAVARO_PAGES "/") + QString::fromStdString(file)));
    view->show();
    view->requestActivate();
    TestEditor::waitFor([&] { return view->isActive() && view->isExposed(); });
}

ShownPage::~ShownPage() {
    // As the test left it, for who wants to look.
    if (auto const folder = qEnvironmentVariable("TAVARO_PICTURES"); !folder.isEmpty()) {
        auto const* test = testing::UnitTest::GetInstance()->current_test_info();
        view->grabWindow().save(folder +
                                QStringLiteral("/%1.%2.png")
                                    .arg(QString::fromUtf8(test->test_suite_name()), QString::fromUtf8(test->name())));
    }
    view.reset();
    qInstallMessageHandler(nullptr);
    listening = nullptr;
}

QQuickItem* ShownPage::find(QString const& name) const { return findIn(view->contentItem(), name); }

void ShownPage::waitForItem(QString const& name) const {
    SCOPED_TRACE(name.toStdString());
    TestEditor::waitFor([&] {
        auto const* item = find(name);
        return item && item->width() > 0 && item->height() > 0;
    });
}

void ShownPage::click(QString const& name) {
    waitForItem(name);
    auto const* item = find(name);
    if (item) clickAt(*item, {item->width() / 2, item->height() / 2});
}

void ShownPage::clickAt(QQuickItem const& item, QPointF place) {
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, item.mapToScene(place).toPoint());
}

void ShownPage::press(Qt::Key key, Qt::KeyboardModifiers modifiers) { QTest::keyClick(view.get(), key, modifiers); }

void ShownPage::type(std::string const& text) {
    for (char const letter : text) {
        if (letter == '\n')
            press(Qt::Key_Return);
        else
            QTest::keyClick(view.get(), letter);
    }
}

}
