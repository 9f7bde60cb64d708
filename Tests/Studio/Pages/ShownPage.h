#pragma once

#include "../Editor/TestEditor.h"
#include "../Playback/FakeOutput.h"

#include <Tavaro/Studio/Desk/EditorDesk.h>

#include <QQuickItem>
#include <QQuickView>
#include <QVariantMap>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// How a page is shown, where not as one of the side panel.
struct PageLook {
    QSize size = {360, 700};
    QVariantMap properties;           // besides its desk
    std::filesystem::path assets;     // whose files the project has; empty: none
    std::optional<VoiceMeans> voices; // else those of this machine
    MovieScan scan;                   // for private text; else the real one
};

/// A page of an open project in a window without a display, worked by mouse and keys, and what Qt complained of.
class ShownPage {
public:
    /// `file` of Tavaro/Studio/Pages, of which each has a `desk`.
    ShownPage(std::string const& file, DemoProject document, PageLook look = {});
    ~ShownPage();

    DemoProject const& document() const { return project.document(); }
    EditorSession& session() { return *desk->session(); }
    QObject* model(char const* property) { return session().property(property).value<QObject*>(); }

    /// What has that name for who does not see it, and shows; null for nothing.
    QQuickItem* find(QString const& name) const;
    /// Waits for it to be there, and presses it in its middle.
    void click(QString const& name);
    void clickAt(QQuickItem const& item, QPointF place);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
    void type(std::string const& text);
    void waitForItem(QString const& name) const;

    std::vector<std::string> warnings;
    MainQueue queue;
    QueueInLoop loop{queue};
    TestProject project;
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    std::unique_ptr<EditorDesk> desk;
    std::unique_ptr<QQuickView> view;
};

}
