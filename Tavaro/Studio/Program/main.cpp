#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>

#include <TavaroPlatform/Queues/MainQueue.h>

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char** argv) {
    QGuiApplication qt(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Tavaro"));
    QGuiApplication::setApplicationVersion(QStringLiteral(TAVARO_VERSION));
    tavaro::MainQueue queue;
    tavaro::QueueInLoop const loop(queue);
    tavaro::Application application(queue);
    QQmlApplicationEngine engine;
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Tavaro/Studio/Pages/StudioWindow.qml")));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
