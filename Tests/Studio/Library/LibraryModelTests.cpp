#include <Tavaro/Studio/Library/LibraryModel.h>
#include <Tavaro/Studio/Library/LibraryText.h>

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QTimeZone>

#include <algorithm>
#include <random>

using namespace tavaro;
using ::testing::ElementsAre;

namespace {

LibraryItem item(std::string const& name, double duration = 1, std::int64_t modified = 0) {
    return {.path = "/library/" + name + ".recproj", .name = name, .duration = duration, .modified = {modified}};
}

std::vector<std::string> shown(LibraryModel const& model) {
    std::vector<std::string> names;
    for (int row = 0; row < model.rowCount(); ++row)
        names.push_back(model.index(row).data(LibraryModel::nameRole).toString().toStdString());
    return names;
}

/// A view that knows only the rows that it is told of.
class ToldNames {
public:
    explicit ToldNames(LibraryModel& model) : model_(model) {
        QObject::connect(&model, &LibraryModel::rowsInserted, [this](auto const&, int first, int last) {
            for (int row = first; row <= last; ++row) names.insert(names.begin() + row, at(row));
        });
        QObject::connect(&model, &LibraryModel::rowsRemoved, [this](auto const&, int first, int last) {
            names.erase(names.begin() + first, names.begin() + last + 1);
        });
        QObject::connect(&model, &LibraryModel::rowsMoved, [this](auto const&, int from, int, auto const&, int to) {
            auto const moved = names[static_cast<std::size_t>(from)];
            names.erase(names.begin() + from);
            names.insert(names.begin() + (to > from ? to - 1 : to), moved);
        });
        QObject::connect(&model, &LibraryModel::dataChanged, [this](QModelIndex const& first, QModelIndex const& last) {
            for (int row = first.row(); row <= last.row(); ++row) names[static_cast<std::size_t>(row)] = at(row);
        });
        QObject::connect(&model, &LibraryModel::modelReset, [this] { names = shown(model_); });
    }

    std::vector<std::string> names;

private:
    std::string at(int row) const { return model_.index(row).data(LibraryModel::nameRole).toString().toStdString(); }

    LibraryModel& model_;
};

}

TEST(LibraryModel, aViewThatIsToldOfChangesShowsWhatANewOneWould) {
    LibraryModel model;
    QAbstractItemModelTester const tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    ToldNames view(model);
    std::mt19937 random(7);
    for (int step = 0; step < 300; ++step) {
        std::vector<LibraryItem> items;
        for (int i = 0; i < 12; ++i) {
            if (random() % 3 == 0) continue;
            items.push_back(item(std::to_string(i)));
            if (random() % 4 == 0) items.back().name += " renamed";
        }
        std::ranges::shuffle(items, random);
        model.setItems(items);
        if (step % 5 == 0) model.setSearch(step % 10 == 0 ? QStringLiteral("renamed") : QString());
        if (step % 7 == 0) model.setOrder(step % 2 == 0 ? QStringLiteral("name") : QStringLiteral("edited"));
        ASSERT_EQ(view.names, shown(model)) << "step " << step;
        ASSERT_EQ(model.count(), static_cast<int>(view.names.size()));
    }
}

TEST(LibraryModel, ordersAndFindsAsPeopleDo) {
    LibraryModel model;
    model.setItems({item("Take 10", 5), item("take 9", 70), item("Export", 30), item("desk", 30)});
    EXPECT_THAT(shown(model), ElementsAre("Take 10", "take 9", "Export", "desk"));
    model.setOrder(QStringLiteral("name"));
    EXPECT_THAT(shown(model), ElementsAre("desk", "Export", "take 9", "Take 10"));
    model.setOrder(QStringLiteral("length"));
    EXPECT_THAT(shown(model), ElementsAre("take 9", "Export", "desk", "Take 10"));
    model.setSearch(QStringLiteral(" 1  TAKE"));
    EXPECT_THAT(shown(model), ElementsAre("Take 10"));
    model.hide("/library/Take 10.recproj");
    EXPECT_THAT(shown(model), ElementsAre());
    EXPECT_FALSE(model.isEmpty()) << "of the library";
    model.show("/library/Take 10.recproj");
    EXPECT_EQ(model.count(), 1);
}

TEST(LibraryModel, whatCannotBeOpenedIsShownAndSaysSo) {
    LibraryModel model;
    auto broken = item("Broken");
    broken.problem = "Could not open it.";
    model.setItems({broken});
    auto const row = model.index(0);
    EXPECT_EQ(row.data(LibraryModel::problemRole).toString(), QStringLiteral("Could not open it."));
    EXPECT_EQ(row.data(LibraryModel::lengthRole).toString(), QString());
    EXPECT_EQ(row.data(LibraryModel::summaryRole).toString(), QStringLiteral("Broken, cannot be opened"));
}

TEST(LibraryText, agesAreSaidAsPeopleSayThem) {
    QDateTime const now(QDate(2026, 3, 10), QTime(9, 0), QTimeZone::utc());
    auto const age = [&](qint64 secondsAgo) {
        return libraryText::age({now.toMSecsSinceEpoch() - secondsAgo * 1000}, now).toStdString();
    };
    constexpr qint64 minute = 60, hour = 3600, day = 86400;
    EXPECT_EQ(age(-5), "Just now") << "another machine's clock";
    EXPECT_EQ(age(59), "Just now");
    EXPECT_EQ(age(minute), "A minute ago");
    EXPECT_EQ(age(59 * minute), "59 minutes ago");
    EXPECT_EQ(age(hour), "An hour ago");
    EXPECT_EQ(age(8 * hour), "8 hours ago");
    EXPECT_EQ(age(10 * hour), "Yesterday") << "23:00 of the day before";
    EXPECT_EQ(age(33 * hour), "Yesterday");
    EXPECT_EQ(age(34 * hour), "2 days ago");
    EXPECT_EQ(age(6 * day), "6 days ago");
    EXPECT_EQ(age(7 * day), "3 March 2026");
}
