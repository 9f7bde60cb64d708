#include "PageStage.h"

#include "../Capture/TestDisplay.h"
#include "Film.h"

#include <Tavaro/Studio/Loop/QueueInLoop.h>
#include <Tavaro/Studio/Program/ShowWindow.h>
#include <Tavaro/Studio/Program/Studio.h>
#include <Tavaro/Studio/Style/Theme.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include <QAccessible>
#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <mutex>

namespace tavaro {

namespace {

constexpr int patience = 20'000;          // milliseconds; a loaded machine is slow, and what is wrong never comes
constexpr int rest = 400, lookEvery = 80; // milliseconds without a change are the end of all changes
constexpr int undrawn = 60, undrawnPatience = 1500;

std::mutex complaintsMutex;
std::vector<std::string> complained;

void listen(QtMsgType type, QMessageLogContext const& context, QString const& message) {
    if (type != QtWarningMsg && type != QtCriticalMsg) return;
    // Of a window without a display, and of a picture taken while something moves.
    for (auto const* const ours : {"This plugin does not support", "QUnifiedTimer::"})
        if (message.startsWith(QLatin1String(ours))) return;
    std::lock_guard const lock(complaintsMutex);
    complained.push_back(message.toStdString() + " (" + (context.file ? context.file : "") + ")");
}

/// Before anything reads where the user's folders are.
std::filesystem::path homeIn(TemporaryFolder const& folder) {
    for (auto const& [name, place] : {std::pair{"HOME", "home"},
                                      {"XDG_DATA_HOME", "data"},
                                      {"XDG_CONFIG_HOME", "config"},
                                      {"XDG_CACHE_HOME", "cache"},
                                      {"XDG_STATE_HOME", "state"},
                                      {"XDG_RUNTIME_DIR", "run"}}) {
        std::filesystem::create_directories(folder / place);
        setenv(name, (folder / place).c_str(), 1);
    }
    return folder / "home";
}

struct FilmedDisplay : TestDisplay {
    FilmedDisplay() : TestDisplay(1280, 720) { setenv("DISPLAY", name().c_str(), 1); }
};

/// Of what is shown instead of what was expected.
std::string kept(QImage const& picture) {
    auto const file = std::filesystem::current_path() / "page-lost.png";
    picture.save(QString::fromStdString(file.string()));
    return file.string();
}

bool isPressable(QAccessibleInterface& node) {
    auto const* const item = qobject_cast<QQuickItem*>(node.object());
    auto* const actions = node.actionInterface();
    return (!item || item->isEnabled()) && actions &&
           actions->actionNames().contains(QAccessibleActionInterface::pressAction());
}

bool isNamed(QAccessibleInterface& node, QString const& name) { return node.text(QAccessible::Name) == name; }
bool beginsNamed(QAccessibleInterface& node, QString const& name) {
    return node.text(QAccessible::Name).startsWith(name);
}

/// Depth first, what is shown.
template<class Look> bool visit(QAccessibleInterface* node, Look const& look) {
    if (!node || !node->isValid() || node->state().invisible) return false;
    if (look(*node)) return true;
    for (int i = 0; i < node->childCount(); ++i)
        if (visit(node->child(i), look)) return true;
    return false;
}

}

struct PageStage::Parts {
    Parts() {
        qInstallMessageHandler(listen);
        if (!showWindow(engine, studio, theme)) throw Error("The window cannot be loaded.");
        window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
        QObject::connect(window, &QQuickWindow::frameSwapped, window, [this] { ++drawn; });
    }
    ~Parts() { qInstallMessageHandler(nullptr); }

    TemporaryFolder const folder;
    std::filesystem::path const home = homeIn(folder);
    FilmedDisplay const display; // what can be recorded
    MainQueue queue;
    QueueInLoop const loop{queue};
    Studio studio{queue, {}};
    DesktopLook desktop;
    Theme theme{studio.application().preferences(), desktop};
    QQmlApplicationEngine engine;
    QQuickWindow* window = nullptr;
    int drawn = 0; // how often
};

PageStage::PageStage() : parts_(std::make_unique<Parts>()) {
    window().requestActivate();
    becomes([this] { return shows("Library") && window().isExposed(); });
    picture(); // everything has its size from then on
}

PageStage::~PageStage() = default;

void PageStage::fillLibrary() {
    makeLibrary(parts_->home / "Movies/Tavaro");
    studio().library().refresh();
    goHome();
    becomes([this] { return shows(QString::fromStdString(tourName) + QStringLiteral(", ")); });
}

void PageStage::addDamagedProject() {
    tavaro::addDamagedProject(parts_->home / "Movies/Tavaro");
    studio().library().refresh();
    becomes([this] { return shows(QStringLiteral("Damaged")); });
}

Studio& PageStage::studio() { return parts_->studio; }
QQuickWindow& PageStage::window() { return *parts_->window; }

void PageStage::resize(QSize const& size) {
    window().resize(size);
    becomes([&] { return window().size() == size && window().contentItem()->size() == QSizeF(size); });
}

void PageStage::setLook(QString const& look) { parts_->theme.setLook(look); }

void PageStage::press(QString const& name, QString const& inside) {
    auto const pressOne = [&](QAccessibleInterface& in, auto const& isIt) {
        return visit(&in, [&](QAccessibleInterface& node) {
            if (!isIt(node, name) || !isPressable(node)) return false;
            node.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
            return true;
        });
    };
    auto const isPressed = [&](auto const& isIt) {
        bool isDone = false;
        visit(QAccessible::queryAccessibleInterface(&window()), [&](QAccessibleInterface& node) {
            bool const isPlace = inside.isEmpty() || isNamed(node, inside);
            if (isPlace) isDone = pressOne(node, isIt);
            return isPlace;
        });
        return isDone;
    };
    if (!becomes([&] { return isPressed(isNamed) || isPressed(beginsNamed); }))
        throw Error("There is no “" + name.toStdString() + "” to be pressed, but what is in " + kept(picture()));
}

bool PageStage::shows(QString const& name) {
    return visit(QAccessible::queryAccessibleInterface(&window()),
                 [&](QAccessibleInterface& node) { return beginsNamed(node, name); });
}

std::vector<QString> PageStage::pressableIn(QString const& name) {
    std::vector<QString> found;
    visit(QAccessible::queryAccessibleInterface(&window()), [&](QAccessibleInterface& node) {
        if (!isNamed(node, name)) return false;
        visit(&node, [&](QAccessibleInterface& inner) {
            if (isPressable(inner)) found.push_back(inner.text(QAccessible::Name));
            return false;
        });
        return true;
    });
    return found;
}

void PageStage::key(int key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(&window(), static_cast<Qt::Key>(key), modifiers);
}

void PageStage::goHome() {
    for (int i = 0; i < 3; ++i) key(Qt::Key_Escape);
    press(QStringLiteral("Library"));
}

QImage PageStage::picture() {
    auto picture = window().grabWindow().convertToFormat(QImage::Format_RGB32);
    picture.setDevicePixelRatio(window().effectiveDevicePixelRatio()); // which the software renderer does not say
    return picture;
}

void PageStage::settle() {
    QDeadlineTimer const deadline(undrawnPatience);
    for (int before = -1; before != parts_->drawn && !deadline.hasExpired();) {
        before = parts_->drawn;
        run(undrawn);
    }
}

QImage PageStage::settledPicture() {
    QImage now = picture();
    QDeadlineTimer const deadline(patience / 4);
    for (int still = 0; still < rest && !deadline.hasExpired(); still += lookEvery) {
        run(lookEvery);
        auto next = picture();
        if (next != now) still = 0;
        now = std::move(next);
    }
    return now;
}

bool PageStage::becomes(std::function<bool()> const& isSo) {
    QDeadlineTimer const deadline(patience);
    while (!deadline.hasExpired()) {
        if (isSo()) return true;
        run(10);
    }
    return false;
}

void PageStage::run(int milliseconds) { QTest::qWait(milliseconds); }

std::vector<std::string> PageStage::complaints() {
    std::lock_guard const lock(complaintsMutex);
    return std::exchange(complained, {});
}

}
