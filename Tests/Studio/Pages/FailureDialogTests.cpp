#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Studio/Style/RegisterStyle.h>
#include <Tavaro/Studio/Style/Theme.h>

#include <gtest/gtest.h>

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickWindow>
#include <QSGRendererInterface>

#include <memory>

using namespace tavaro;

namespace {

constexpr auto page = R"(
    import QtQuick.Controls
    ApplicationWindow {
        width: 820; height: 520; visible: true
        property string text: dialog.contentItem.text
        property real dialogHeight: dialog.height
        function tell(sentence: string) { dialog.tell(sentence) }
        function dismiss() { dialog.close() }
        FailureDialog { id: dialog }
    })";

}

TEST(FailureDialog, whatFailsAtOnceIsReadTogetherAndStaysInTheWindow) {
    TemporaryFolder const folder{TemporaryFolder::fastest()};
    Preferences preferences{folder / "preferences.json"};
    DesktopLook desktop;
    Theme theme{preferences, desktop};
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    registerStyle(theme);
    QQmlEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    QQmlComponent component(&engine);
    component.setData(page, QUrl::fromLocalFile(QStringLiteral(TAVARO_PAGES "/Test.qml")));
    std::unique_ptr<QObject> const window(component.create());
    ASSERT_TRUE(window) << component.errorString().toStdString();

    auto const tell = [&](int number) {
        auto const sentence =
            QStringLiteral("“/home/somebody/Movies/%1.mp4” cannot be read: it is a folder.").arg(number);
        QMetaObject::invokeMethod(window.get(), "tell", Q_ARG(QString, sentence));
    };
    auto const shows = [&](QString const& text) { return window->property("text").toString().contains(text); };
    tell(1);
    tell(2); // before the dialog is all there
    EXPECT_TRUE(shows("1.mp4") && shows("2.mp4")) << window->property("text").toString().toStdString();
    for (int number = 3; number <= 40; ++number) tell(number);
    EXPECT_TRUE(shows("1.mp4") && shows("… and 36 more")) << window->property("text").toString().toStdString();
    EXPECT_LT(window->property("dialogHeight").toReal(), 520 - 2 * 16);
    QMetaObject::invokeMethod(window.get(), "dismiss");
    tell(41);
    EXPECT_TRUE(shows("41.mp4"));
}
