#include "PageEngine.h"

#include "../Editor/TestEditor.h"
#include "../Playback/FakeOutput.h"

#include <Tavaro/Studio/Desk/EditorDesk.h>
#include <Tavaro/Studio/Inspectors/InspectedRecord.h>
#include <Tavaro/Studio/Inspectors/InspectorModel.h>

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>

namespace tavaro {

namespace {

/// What QML says while a test runs; that is never anything good.
std::vector<std::string>& complaints() {
    static std::vector<std::string> all;
    return all;
}

void listen(QtMsgType type, QMessageLogContext const&, QString const& text) {
    if (type != QtDebugMsg && type != QtInfoMsg) complaints().push_back(text.toStdString());
}

/// The pages beside the film, on a window that nobody sees.
class SidePanelTest : public testing::Test {
protected:
    SidePanelTest() {
        pageEngine();
        complaints().clear();
        before = qInstallMessageHandler(listen);
        for (auto const* name : {"one.file", "two.file"}) std::ofstream(project.package().assetURL(name)) << "media";
        desk.emplace(queue, project.open(),
                     FilmPlayback::Means{std::make_unique<FakeOutput>(std::make_shared<FakeDevice>()), {}});
        window.resize(360, 800);
    }
    ~SidePanelTest() override {
        qInstallMessageHandler(before);
        EXPECT_EQ(complaints(), std::vector<std::string>());
    }

    EditorSession& session() { return *desk->session(); }
    std::ptrdiff_t steps() const { return std::ranges::count(project->steps(), false, &ListedStep::isUndone); }

    std::unique_ptr<QQuickItem> make(char const* file, QVariantMap const& properties) {
        QQmlComponent component(&pageEngine(),
                                QUrl::fromLocalFile(QString::fromUtf8(TAVARO_PAGES "/") + QString::fromUtf8(file)));
        std::unique_ptr<QQuickItem> item(qobject_cast<QQuickItem*>(component.createWithInitialProperties(properties)));
        EXPECT_TRUE(item) << component.errorString().toStdString();
        if (!item) return item;
        item->setParentItem(window.contentItem());
        item->setSize({320, 700});
        QCoreApplication::processEvents();
        return item;
    }
    std::unique_ptr<QQuickItem> fieldList(InspectorModel* fields) {
        return make("FieldList.qml", {{QStringLiteral("session"), QVariant::fromValue(&session())},
                                      {QStringLiteral("fields"), QVariant::fromValue(fields)}});
    }
    /// For who wants to look at it: with TAVARO_PICTURES=FOLDER.
    void keepPicture(QString const& name) {
        auto const folder = qEnvironmentVariable("TAVARO_PICTURES");
        if (!folder.isEmpty())
            window.grabWindow().save(folder + QStringLiteral("/panel-") + name + QStringLiteral(".png"));
    }
    QVariantMap onDesk() { return {{QStringLiteral("desk"), QVariant::fromValue(&*desk)}}; }

    static DemoProject document() {
        RandomDocument random(11);
        auto made = fullDocument(random);
        made.sourceCrop = NormalizedRect{0.1, 0.1, 0.8, 0.8};
        made.background = {BackgroundStyle::Mesh{.colors = {RGBAColor::white, RGBAColor::black}}};
        made.exportSettings.bitrateOverride = 8'000'000;
        return made;
    }

    QtMessageHandler before = nullptr;
    MainQueue queue;
    QueueInLoop loop{queue};
    TestProject project{document()};
    std::optional<EditorDesk> desk;
    QQuickWindow window;
};

void forEachInside(QQuickItem const& item, std::function<void(QQuickItem&)> const& visit) {
    for (auto* child : item.childItems()) {
        visit(*child);
        forEachInside(*child, visit);
    }
}

/// The first item inside of another whose type's name begins so.
QQuickItem* inside(QQuickItem const& item, std::string const& type) {
    QQuickItem* found = nullptr;
    forEachInside(item, [&](QQuickItem& child) {
        if (!found && std::string(child.metaObject()->className()).starts_with(type + "_")) found = &child;
    });
    return found;
}

/// Opens each page of the panel, and each view of it, with the name of the page and its file.
void forEachView(QQuickItem& panel, std::function<void(QString const& page, QString const& source)> const& visit) {
    auto const pages = panel.property("pages").toList();
    EXPECT_GT(pages.size(), 8);
    for (auto const& each : pages) {
        auto const page = each.toMap();
        auto const name = page[QStringLiteral("name")].toString();
        QMetaObject::invokeMethod(&panel, "choose", Q_ARG(QString, name));
        if (panel.property("isFolded").toBool()) QMetaObject::invokeMethod(&panel, "choose", Q_ARG(QString, name));
        auto views = page[QStringLiteral("views")].toList();
        if (views.isEmpty()) views.push_back(page);
        for (int view = 0; view < views.size(); ++view) {
            if (auto* const shown = inside(panel, "PanelViews")) shown->setProperty("view", view);
            QCoreApplication::processEvents();
            visit(name, views[view].toMap()[QStringLiteral("source")].toString());
        }
    }
}

void toggle(QQuickItem& button) {
    QMetaObject::invokeMethod(&button, "toggle");
    QMetaObject::invokeMethod(&button, "toggled");
}

void type(QQuickItem& box, QString const& text) {
    box.setProperty("text", text);
    QMetaObject::invokeMethod(&box, "editingFinished");
}

/// Works the editor of a field as a hand would. False where it has none.
bool work(QQuickItem& row, EditorSession& session) {
    auto const editor = row.property("editor").toString().toStdString();
    auto const value = row.property("value");
    auto const with = [&](char const* kind, auto act) {
        auto* const it = inside(row, kind);
        if (it) act(*it);
        return it != nullptr;
    };
    if (editor == "toggle") return with("FieldToggle", toggle);
    if (editor == "number" || editor == "wholeNumber") {
        auto const shown = value.toDouble() * row.property("shownFactor").toDouble();
        return with("FieldNumber", [&](QQuickItem& box) { type(box, QString::number(shown > 1 ? 1 : shown + 1)); });
    }
    if (editor == "point" || editor == "rect" || editor == "size")
        return with("NumberField", [&](QQuickItem& box) { type(box, editor == "size" ? "1000" : "12.5"); });
    if (editor == "choice") {
        if (with("Segmented", [&](QQuickItem& box) {
                auto const options = row.property("choices").toList();
                auto const other = options[value == options[0].toMap()[QStringLiteral("name")] ? 1 : 0].toMap();
                QMetaObject::invokeMethod(&box, "chosen", Q_ARG(QVariant, other[QStringLiteral("name")]));
            }))
            return true;
        return with("ComboBox", [&](QQuickItem& box) {
            auto const current = box.property("currentIndex").toInt();
            QMetaObject::invokeMethod(&box, "activated", Q_ARG(int, current == 1 ? 2 : 1));
        });
    }
    if (editor == "choices") return with("CheckBox", toggle);
    if (editor == "color" || editor == "colors")
        return with(editor == "color" ? "FieldColor" : "ColorButton", [&](QQuickItem& button) {
            QMetaObject::invokeMethod(&button, "given", Q_ARG(QColor, QColor(10, 20, 31)));
        });
    if (editor == "text")
        return with("FieldText", [&](QQuickItem& area) {
            area.setProperty("text", value.toString() + QStringLiteral(" more"));
            QMetaObject::invokeMethod(&area, "finish");
        });
    if (editor == "texts") return with("TextField", [&](QQuickItem& box) { type(box, QStringLiteral("another")); });
    if (editor == "file")
        return with("FieldFile", [&](QQuickItem& file) {
            file.setProperty("wanted", QStringLiteral("/chosen"));
            Q_EMIT session.imported(QStringLiteral("/chosen"), value.toString() == QStringLiteral("one.file")
                                                                   ? QStringLiteral("two.file")
                                                                   : QStringLiteral("one.file"));
        });
    return false;
}

}

TEST_F(SidePanelTest, everyFieldIsWorkedThroughItsEditorInOneStep) {
    QStringList all;
    DemoProject const plain;
    forEachField<DemoProject>([&](auto const& field) { all.push_back(toQString(field.name)); });
    all.push_back(QStringLiteral("project"));
    std::set<ItemKind> kinds;
    forEachItem(project.document(), [&](auto const& item) {
        if (kinds.insert(kindOf(item)).second) all.push_back(toQString(item.id.text()));
    });
    std::map<std::string, int> worked;
    for (auto const& what : all) {
        auto* const fields = qobject_cast<InspectorModel*>(session().fieldsOf(what));
        auto const list = fieldList(fields);
        std::vector<QPointer<QQuickItem>> rows;
        for (auto* child : list->childItems().constFirst()->childItems()) {
            if (child->property("editor").isValid()) rows.emplace_back(child);
        }
        for (auto const& row : rows) {
            auto const editor = row ? row->property("editor").toString().toStdString() : "section";
            if (editor == "section" || row->property("isReadOnly").toBool()) continue;
            if (!row->property("isSet").toBool() && row->property("hasSwitch").toBool()) continue;
            auto const label = row->property("label").toString().toStdString();
            auto const path = row->property("path").toString().toStdString();
            SCOPED_TRACE(what.toStdString() + "." + path);
            auto const count = steps();
            if (path.empty() || path == "kind") continue; // makes other rows
            EXPECT_TRUE(work(*row, session())) << "no editor for " << editor;
            EXPECT_EQ(steps(), count + 1);
            EXPECT_EQ(session().undoName().toLower().toStdString(),
                      QString::fromStdString("change " + label).toLower().toStdString());
            ++worked[editor];
        }
    }
    EXPECT_GT(worked["number"], 40);
    for (auto const editor : namesOf(FieldEditor{})) {
        if (editor == "section") continue;
        EXPECT_GT(worked[std::string(editor)], 0) << editor;
    }
}

TEST_F(SidePanelTest, everyPageOpensAndASelectionShowsItself) {
    auto const panel = make("SidePanel.qml", onDesk());
    auto const open = [&] { return panel->property("open").toMap()[QStringLiteral("name")].toString().toStdString(); };
    forEachView(*panel, [&](QString const& page, QString const& source) {
        EXPECT_EQ(open(), page.toStdString());
        keepPicture(source);
        EXPECT_TRUE(inside(*panel, source.chopped(4).toStdString())) << source.toStdString();
    });
    auto const zoom = project.document().zoomEvents.front().id;
    QMetaObject::invokeMethod(panel.get(), "choose", Q_ARG(QString, QStringLiteral("camera")));
    session().select(std::vector{zoom});
    EXPECT_EQ(open(), "selection");
    session().clearSelection();
    EXPECT_EQ(open(), "camera");
    QMetaObject::invokeMethod(panel.get(), "choose", Q_ARG(QString, QStringLiteral("polish")));
    session().select(std::vector{zoom});
    EXPECT_EQ(open(), "polish") << "a selection does not take such a page away";
}

TEST_F(SidePanelTest, noFieldOfTheDocumentIsMissingOnItsPages) {
    std::map<QObject const*, std::string> sections;
    for (auto const name : sectionNames()) sections[session().fieldsOf(toQString(name))] = name;
    std::set<std::string> shown;
    auto const panel = make("SidePanel.qml", onDesk());
    forEachView(*panel, [&](QString const&, QString const&) {
        forEachInside(*panel, [&](QQuickItem const& item) {
            if (!item.property("path").isValid()) return;
            auto const section = sections.find(item.property("fields").value<QObject*>());
            if (section != sections.end())
                shown.insert(section->second + "/" + item.property("path").toString().toStdString());
        });
    });
    shown.insert("background/"); // its gallery
    for (auto const section : sectionNames()) {
        for (auto const& row : sectionRows(project.document(), section)) {
            bool const isTitle = row.path.empty() && row.editor == FieldEditor::section && !row.isOptional;
            if (isTitle) continue;
            EXPECT_TRUE(shown.contains(std::string(section) + "/" + row.path)) << section << " " << row.path;
        }
    }
    EXPECT_GT(shown.size(), 80u);
}

TEST_F(SidePanelTest, whatIsBeingTypedStaysWhileOthersEdit) {
    auto const caption = project.document().captions.cues.front().id;
    auto const list = fieldList(qobject_cast<InspectorModel*>(session().fieldsOf(toQString(caption.text()))));
    auto* const area = inside(*list, "FieldText");
    ASSERT_TRUE(area);
    area->setProperty("text", QStringLiteral("half a sen"));
    project->edit("By an agent", [](DemoProject& edited) { edited.captions.cues.front().text = "another"; });
    EXPECT_EQ(area->property("text").toString(), QStringLiteral("half a sen"));
    QMetaObject::invokeMethod(area, "restore");
    EXPECT_EQ(area->property("text").toString(), QStringLiteral("another"));
}

TEST_F(SidePanelTest, whatIsTypedForOneThingIsNotGivenToAnother) {
    auto const& cues = project.document().captions.cues;
    ASSERT_GT(cues.size(), 1u);
    session().select(std::vector{cues[0].id});
    auto const list = fieldList(qobject_cast<InspectorModel*>(session().fieldsModel()));
    auto* const area = inside(*list, "FieldText");
    ASSERT_TRUE(area);
    area->setProperty("text", QStringLiteral("for the first"));
    session().select(std::vector{cues[1].id});
    EXPECT_EQ(area->property("text").toString().toStdString(), cues[1].text);
    QMetaObject::invokeMethod(area, "finish");
    EXPECT_TRUE(project->steps().empty());
}

TEST_F(SidePanelTest, whatIsRefusedIsSaidAtItsFieldAndTheValueIsShownAgain) {
    auto const list = fieldList(qobject_cast<InspectorModel*>(session().fieldsOf(QStringLiteral("screen"))));
    auto* const box = inside(*list, "FieldNumber");
    ASSERT_TRUE(box);
    auto const shown = box->property("text").toString();
    type(*box, QStringLiteral("4000"));
    EXPECT_EQ(box->property("text").toString(), shown);
    auto const* row = inside(*list, "FieldRow");
    EXPECT_EQ(row->property("problem").toString(), QStringLiteral("Padding cannot be 4000 %."));
    type(*box, QStringLiteral("10"));
    EXPECT_EQ(row->property("problem").toString(), QString());
    EXPECT_EQ(project.document().screen.padding, 0.1);
}

}
