#include "../RandomEdits.h"
#include "../TestProject.h"

#include <Tavaro/Studio/Lists/ItemList.h>

#include <TavaroCore/Editing/TimelineEdits.h>

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include <algorithm>
#include <chrono>
#include <map>

using namespace tavaro;

namespace {

constexpr int walkLength = 150;

/// What the document has of each kind, in order, as identities.
std::map<ItemKind, std::vector<UUID>> identities(DemoProject const& project) {
    std::map<ItemKind, std::vector<UUID>> found;
    forEachItem(project, [&](auto const& item) { found[kindOf(item)].push_back(item.id); });
    return found;
}

int roleNamed(QAbstractItemModel const& model, char const* name) { return model.roleNames().key(name, -1); }

std::vector<UUID> shown(QAbstractItemModel const& model) {
    std::vector<UUID> ids;
    int const role = roleNamed(model, "identity");
    for (int row = 0; row < model.rowCount(); ++row)
        ids.push_back(UUID::parse(model.index(row, 0).data(role).toString().toStdString()).value());
    return ids;
}

/// A view that knows only what it is told: it reads a row when it hears of it, never by itself.
class ToldView {
public:
    explicit ToldView(QAbstractItemModel& model) : model_(model) {
        read(0, model.rowCount());
        QObject::connect(&model, &QAbstractItemModel::rowsInserted,
                         [this](QModelIndex const&, int first, int last) { read(first, last + 1); });
        QObject::connect(&model, &QAbstractItemModel::rowsRemoved, [this](QModelIndex const&, int first, int last) {
            rows.erase(rows.begin() + first, rows.begin() + last + 1);
        });
        QObject::connect(&model, &QAbstractItemModel::rowsMoved,
                         [this](QModelIndex const&, int first, int last, QModelIndex const&, int to) {
                             if (to > last)
                                 std::rotate(rows.begin() + first, rows.begin() + last + 1, rows.begin() + to);
                             else
                                 std::rotate(rows.begin() + to, rows.begin() + first, rows.begin() + last + 1);
                         });
        QObject::connect(&model, &QAbstractItemModel::dataChanged,
                         [this](QModelIndex const& first, QModelIndex const& last) {
                             for (int row = first.row(); row <= last.row(); ++row)
                                 rows[static_cast<std::size_t>(row)] = rowOf(row);
                         });
        QObject::connect(&model, &QAbstractItemModel::layoutChanged, [this] {
            rows.clear();
            read(0, model_.rowCount());
        });
        QObject::connect(&model, &QAbstractItemModel::modelReset, [this] {
            ++resets;
            rows.clear();
            read(0, model_.rowCount());
        });
    }

    QVariantMap rowOf(int row) const {
        QVariantMap values;
        for (auto const& [role, name] : model_.roleNames().asKeyValueRange())
            values.insert(QString::fromUtf8(name), model_.index(row, 0).data(role));
        return values;
    }

    std::vector<QVariantMap> rows;
    int resets = 0;

private:
    void read(int first, int end) {
        for (int row = first; row < end; ++row) rows.insert(rows.begin() + row, rowOf(row));
    }

    QAbstractItemModel& model_;
};

std::vector<ItemEdit> itemEditsAtRandom(DemoProject const& project, RandomDocument& random) {
    std::vector<ItemEdit> edits;
    forEachEditedList(project, [&](auto const& items) {
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (random.below(4) != 0) continue;
            edits.push_back({i, items[i]});
            std::get<std::remove_cvref_t<decltype(items[i])>>(edits.back().item).duration += random.time(0, 2);
        }
    });
    return edits;
}

/// The list of a kind with everybody who looks at it.
struct Watched {
    Watched(ItemKind kind, TestProject const& project)
        : kind(kind)
        , model(makeItemList(kind, project.open()))
        , tester(model.get(), QAbstractItemModelTester::FailureReportingMode::Fatal)
        , view(*model) {
        int const role = roleNamed(*model, "identity");
        for (int row = 0; row < model->rowCount(); ++row) {
            QPersistentModelIndex const index(model->index(row, 0));
            marks.emplace_back(index, index.data(role).toString());
        }
    }

    ItemKind kind;
    std::unique_ptr<RowsModel> model;
    QAbstractItemModelTester tester;
    ToldView view;
    std::vector<std::pair<QPersistentModelIndex, QString>> marks;
};

void expectInStep(Watched const& list, DemoProject const& document) {
    auto const found = identities(document);
    auto const ids = found.find(list.kind);
    auto const expected = ids == found.end() ? std::vector<UUID>{} : ids->second;
    ASSERT_EQ(shown(*list.model), expected) << nameOf(list.kind);
    ASSERT_EQ(list.view.rows.size(), expected.size()) << nameOf(list.kind);
    for (int row = 0; row < list.model->rowCount(); ++row)
        ASSERT_EQ(list.view.rows[static_cast<std::size_t>(row)], list.view.rowOf(row))
            << nameOf(list.kind) << " row " << row;
    int const role = roleNamed(*list.model, "identity");
    for (auto const& [index, identity] : list.marks) {
        if (!index.isValid()) continue;
        ASSERT_EQ(index.data(role).toString(), identity) << nameOf(list.kind);
    }
}

}

TEST(ItemList, rowsAreTheDocumentsItemsAfterEveryEditUndoRedoAndOutsideEdit) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(seed);
        RandomDocument random(seed);
        TestProject const project(fullDocument(random));
        std::vector<std::unique_ptr<Watched>> lists;
        for (auto const kind : allCases<ItemKind>()) lists.push_back(std::make_unique<Watched>(kind, project));
        for (int step = 0; step < walkLength; ++step) {
            SCOPED_TRACE(step);
            auto const edit = [&](DemoProject& document) { editAtRandom(document, random); };
            switch (random.below(8)) {
            case 0: project->undo(); break;
            case 1: project->redo(); break;
            case 3: project->editItems("Edit", itemEditsAtRandom(project.document(), random)); break;
            case 2:
                project.editOutside(edit);
                project->refresh();
                break;
            default: project->edit("Edit", edit);
            }
            for (auto const& list : lists) expectInStep(*list, project.document());
            if (HasFatalFailure()) return;
        }
        for (auto const& list : lists) EXPECT_EQ(list->view.resets, 0) << nameOf(list->kind);
    }
}

TEST(ItemList, itemsOfOneIdentityAreShownAsTheyAre) {
    RandomDocument random(4);
    TestProject const project(fullDocument(random));
    Watched const zooms(ItemKind::zoom, project);
    project->edit("Twins", [](DemoProject& document) {
        document.zoomEvents.push_back(document.zoomEvents[0]);
        std::ranges::reverse(document.zoomEvents);
    });
    expectInStep(zooms, project.document());
    project->undo();
    expectInStep(zooms, project.document());
}

TEST(ItemList, oneItemMovedIsOneMoveAndOneChangedIsOneChange) {
    RandomDocument random(5);
    auto document = fullDocument(random);
    document.zoomEvents.clear();
    for (int i = 0; i < 200; ++i) document.zoomEvents.push_back({.start = i / 64.0, .duration = 1});
    TestProject const project(document);
    Watched const zooms(ItemKind::zoom, project);
    int moves = 0, others = 0, changed = 0;
    QObject::connect(zooms.model.get(), &QAbstractItemModel::rowsMoved, [&] { ++moves; });
    for (auto const signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        QObject::connect(zooms.model.get(), signal, [&] { ++others; });
    QObject::connect(
        zooms.model.get(), &QAbstractItemModel::dataChanged,
        [&](QModelIndex const& first, QModelIndex const& last) { changed += last.row() - first.row() + 1; });

    project->edit("Move", [](DemoProject& edited) {
        std::rotate(edited.zoomEvents.begin() + 20, edited.zoomEvents.begin() + 21, edited.zoomEvents.begin() + 150);
    });
    EXPECT_EQ(moves, 1);
    EXPECT_EQ(changed, 0);
    project->edit("Scale", [](DemoProject& edited) { edited.zoomEvents[70].scale = 3; });
    EXPECT_EQ(changed, 1);
    auto longer = project.document().zoomEvents[5];
    longer.duration = 2;
    project->editItems("Trim", {{5, longer}});
    EXPECT_EQ(changed, 2);
    EXPECT_EQ(others, 0);
}

TEST(ItemList, anEditOfAnotherListIsNotLookedAt) {
    RandomDocument random(6);
    TestProject const project(fullDocument(random));
    Watched const zooms(ItemKind::zoom, project);
    int told = 0;
    QObject::connect(zooms.model.get(), &QAbstractItemModel::dataChanged, [&] { ++told; });
    project->edit("Cursor", [](DemoProject& edited) { edited.cursor.size = 2; });
    EXPECT_EQ(told, 0);
}

/// The bar for 5,000 items is a millisecond; the test leaves room for machines under load.
TEST(ItemList, anEditOfFiveThousandItemsIsQuick) {
    DemoProject document;
    document.timeline.clips = {{.asset = "screen.mp4", .duration = 10'000}};
    for (int i = 0; i < 5000; ++i) document.zoomEvents.push_back({.start = 2.0 * i, .duration = 1});
    TestProject const project(document);
    std::vector<double> milliseconds;
    for (int i = 0; i < 11; ++i) {
        auto const timed = [&] {
            auto const from = std::chrono::steady_clock::now();
            project->edit("Scale", [&](DemoProject& edited) { edited.zoomEvents[2500].scale += 0.5; });
            return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - from).count();
        };
        auto const without = timed();
        auto const zooms = makeItemList(ItemKind::zoom, project.open());
        milliseconds.push_back(timed() - without);
    }
    std::ranges::nth_element(milliseconds, milliseconds.begin() + 5);
    EXPECT_LT(milliseconds[5], 10);
    RecordProperty("millisecondsPerEdit", std::to_string(milliseconds[5]));
}
