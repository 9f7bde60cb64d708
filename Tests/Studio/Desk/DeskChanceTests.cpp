#include "../Playback/FakeOutput.h"
#include "../RandomEdits.h"
#include "../TestProject.h"

#include <Tavaro/Studio/Desk/EditorDesk.h>
#include <Tavaro/Studio/Editor/EditorCommands.h>
#include <Tavaro/Studio/Editor/StepList.h>
#include <Tavaro/Studio/Editor/TranscriptModel.h>
#include <Tavaro/Studio/Inspectors/InspectedRecord.h>
#include <Tavaro/Studio/Inspectors/InspectorModel.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

using namespace tavaro;

namespace {

constexpr int width = 900, height = 420; // of the timeline's window
constexpr int seeds = 20, actions = 500; // the history keeps a thousand steps

/// Somebody who does anything at all, with the commands, the timeline, the inspector, the transcript, the steps and the
/// player of one project, while others edit it too.
class Chance {
public:
    explicit Chance(unsigned seed) : random(seed), project(fullDocument(random)) {
        window.resize(width, height);
        timeline = new TimelineItem(window.contentItem());
        timeline->setSize(QSizeF(width, height));
        desk = std::make_unique<EditorDesk>(queue, project.open(),
                                            FilmPlayback::Means{std::make_unique<FakeOutput>(device), {}});
        desk->showIn(timeline);
        for (auto* model : {session().fieldsModel(), session().transcriptModel(), session().stepsModel(),
                            session().list(QStringLiteral("zoom")), session().list(QStringLiteral("caption"))})
            testers.push_back(std::make_unique<QAbstractItemModelTester>(
                model, QAbstractItemModelTester::FailureReportingMode::Fatal));
    }

    EditorSession& session() { return *desk->session(); }
    StepList& steps() { return static_cast<StepList&>(*session().stepsModel()); }
    DemoProject const& document() const { return project.document(); }
    QString stepName(int row) {
        return steps().data(steps().index(row, 0), steps().roleNames().key("name")).toString();
    }

    void act() {
        using Action = void (Chance::*)();
        constexpr std::array<Action, 14> often{&Chance::command, &Chance::command, &Chance::command,  &Chance::drag,
                                               &Chance::drag,    &Chance::drag,    &Chance::setField, &Chance::setField,
                                               &Chance::key,     &Chance::wheel,   &Chance::look,     &Chance::play,
                                               &Chance::speak,   &Chance::rarely};
        (this->*often[static_cast<std::size_t>(below(often.size()))])();
        QCoreApplication::sendPostedEvents();
    }

    /// Whatever was done.
    void expectSound() {
        EXPECT_GE(session().playhead(), 0);
        EXPECT_LE(session().playhead(), document().duration());
        for (auto const& id : session().selection()) EXPECT_TRUE(visitItem(document(), id, [](auto const&) {}));
        EXPECT_EQ(timeline->project(), &document());
        for (auto const& listed : editorCommands())
            EXPECT_EQ(session().command(QString::fromUtf8(listed.name))->isEnabled(), listed.isPossible(session()))
                << listed.name;
    }

private:
    int below(std::size_t limit) { return random.below(static_cast<int>(limit)); }
    double time() { return random.time(0, std::max(document().duration(), 1.0)); }

    void command() {
        auto const& commands = session().commands();
        auto const& command = commands[static_cast<std::size_t>(below(commands.size()))];
        // Polishing goes on beside, so that what comes of it depends on when.
        if (command->name() != QStringLiteral("polish")) command->trigger();
    }

    QPointF point() { return {static_cast<double>(random.below(width)), static_cast<double>(random.below(height))}; }
    Qt::KeyboardModifiers modifiers() {
        return random.below(3) ? Qt::NoModifier : random.below(2) ? Qt::ShiftModifier : Qt::ControlModifier;
    }
    void mouse(QEvent::Type type, QPointF const& at, Qt::MouseButtons down) {
        auto const changed = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, at, at, changed, down, modifiers());
        QCoreApplication::sendEvent(&window, &event);
    }
    void drag() {
        auto at = point();
        mouse(QEvent::MouseButtonPress, at, Qt::LeftButton);
        for (int i = random.below(4); i > 0; --i) {
            at = point();
            mouse(QEvent::MouseMove, at, Qt::LeftButton);
            if (random.below(12) == 0) command(); // by a shortcut, in the middle
            if (random.below(20) == 0) editOutside();
        }
        if (random.below(8) == 0) send(Qt::Key_Escape);
        mouse(QEvent::MouseButtonRelease, at, Qt::NoButton);
        if (random.below(10) == 0)
            mouse(QEvent::MouseButtonDblClick, at, Qt::LeftButton), mouse(QEvent::MouseButtonRelease, at, Qt::NoButton);
    }

    void send(Qt::Key key) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers());
        QCoreApplication::sendEvent(timeline, &event);
    }
    void key() {
        constexpr std::array keys{Qt::Key_Left,   Qt::Key_Right, Qt::Key_Up,   Qt::Key_Down,
                                  Qt::Key_Home,   Qt::Key_End,   Qt::Key_Tab,  Qt::Key_Plus,
                                  Qt::Key_Escape, Qt::Key_Minus, Qt::Key_Menu, Qt::Key_Return};
        send(keys[static_cast<std::size_t>(below(keys.size()))]);
    }
    void wheel() {
        auto const at = point();
        QWheelEvent event(at, at, {}, {random.below(241) - 120, random.below(241) - 120}, Qt::NoButton, modifiers(),
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&window, &event);
    }

    void look() {
        switch (random.below(5)) {
        case 0: session().setPlayhead(time()); break;
        case 1: session().setRange(time(), random.time(0, 2)); break;
        case 2: {
            auto const names = sectionNames();
            session().setInspector(toQString(names[static_cast<std::size_t>(below(names.size()))]));
            session().clearSelection();
            break;
        }
        case 3:
            session().setCollapsedLanes(random.below(2) ? QStringList{} : QStringList{QStringLiteral("zooms")});
            break;
        default: {
            std::vector<UUID> some;
            forEachItem(document(), [&](auto const& item) {
                if (random.below(8) == 0) some.push_back(item.id);
            });
            session().select(some, static_cast<EditorSession::Select>(random.below(3)));
        }
        }
    }

    QVariant value(QString const& editor, QVariant const& now) {
        if (random.below(6) == 0) return {};
        if (random.below(8) == 0) return QStringLiteral("nonsense");
        if (editor == QStringLiteral("toggle")) return !now.toBool();
        if (editor == QStringLiteral("text")) return QStringLiteral("Wörter %1").arg(random.below(9));
        if (editor == QStringLiteral("wholeNumber")) return random.below(2000) - 300;
        return random.time(-2, 4);
    }
    void setField() {
        auto& fields = static_cast<InspectorModel&>(*session().fieldsModel());
        if (fields.rowCount() == 0) return look();
        auto const row = fields.index(below(static_cast<std::size_t>(fields.rowCount())), 0);
        auto const roles = fields.roleNames();
        auto const of = [&](char const* role) { return fields.data(row, roles.key(role)); };
        auto const path = of("path").toString(), editor = of("editor").toString();
        auto const choices = of("choices").toList();
        auto const isChoice = !choices.isEmpty() && random.below(4) != 0;
        auto const chosen = [&] {
            return choices[below(static_cast<std::size_t>(choices.size()))].toMap().value(QStringLiteral("name"));
        };
        bool const isSlider = random.below(3) == 0;
        if (isSlider) fields.beginChange();
        for (int i = isSlider ? 3 : 1; i > 0; --i) fields.set(path, isChoice ? chosen() : value(editor, of("value")));
        if (isSlider) fields.endChange();
    }

    void speak() {
        auto& words = static_cast<TranscriptModel&>(*session().transcriptModel());
        auto const count = words.entryCount();
        if (count == 0) return;
        auto const entry = random.below(count);
        words.place(entry);
        if (random.below(2)) words.selectTo(std::min(entry + random.below(3), count - 1));
        switch (random.below(4)) {
        case 0: words.correct(entry, QStringLiteral("wort")); break;
        case 1: words.restoreSelected(); break;
        default: words.deleteSelected();
        }
    }

    void play() {
        auto& playback = *desk->preview()->playback();
        switch (random.below(4)) {
        case 0: playback.toggle(); break;
        case 1: playback.seek(time()); break;
        case 2: playback.setSpeed(0.5 * (1 + random.below(4))); break;
        default: desk->preview()->scrub(time());
        }
        device->turn(0.05);
    }

    void editOutside() {
        project.editOutside([&](DemoProject& changed) { editAtRandom(changed, random); });
        project->refresh();
    }
    void rarely() {
        switch (random.below(5)) {
        case 0: editOutside(); break;
        case 1: steps().goTo(random.below(steps().rowCount() + 1) - 1); break;
        case 2: session().rename(QStringLiteral("Film %1").arg(random.below(5))); break;
        case 3: desk->showIn(random.below(2) ? nullptr : timeline), desk->showIn(timeline); break;
        default: session().save();
        }
    }

    RandomDocument random;
    MainQueue queue;
    QueueInLoop loop{queue};
    TestProject project;
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    QQuickWindow window;
    TimelineItem* timeline = nullptr; // the window's
    std::unique_ptr<EditorDesk> desk;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
};

}

// What nobody can do is not tested by this.
TEST(EditorDesk, chanceLeadsToStepsOfManyKinds) {
    std::set<QString> names;
    for (unsigned seed = 1; seed <= 10; ++seed) {
        Chance chance(seed);
        for (int i = 0; i < actions; ++i) chance.act();
        for (int row = 0; row < chance.steps().rowCount(); ++row) names.insert(chance.stepName(row));
    }
    EXPECT_GT(names.size(), 40U);
    for (auto const* kind : {"Move ", "Trim ", "Change ", "Add ", "Delete "})
        EXPECT_TRUE(
            std::ranges::any_of(names, [&](QString const& name) { return name.startsWith(QLatin1String(kind)); }))
            << kind << testing::PrintToString(names.size());
}

TEST(EditorDesk, whateverIsDoneIsUndoneToTheBottomAndDoneAgainToTheTopByteForByte) {
    for (unsigned seed = 1; seed <= seeds && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Chance chance(seed);
        auto const first = encodeProject(chance.document());
        for (int i = 0; i < actions && !testing::Test::HasFailure(); ++i) {
            SCOPED_TRACE(i);
            chance.act();
            if (i % 20 == 0) chance.expectSound();
        }
        auto const last = encodeProject(chance.document());
        int const undone = [&] {
            int count = 0;
            for (int row = 0; row < chance.steps().rowCount(); ++row)
                count += chance.steps()
                             .data(chance.steps().index(row, 0), chance.steps().roleNames().key("isUndone"))
                             .toBool();
            return count;
        }();
        auto const top = chance.steps().rowCount() - 1 - undone;
        chance.steps().goTo(-1);
        EXPECT_EQ(encodeProject(chance.document()), first);
        chance.steps().goTo(top);
        EXPECT_EQ(encodeProject(chance.document()), last);
        chance.expectSound();
    }
}
