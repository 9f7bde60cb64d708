#include <Tavaro/Studio/Recorder/SourceModel.h>

#include <gtest/gtest.h>

#include <QPersistentModelIndex>

#include <algorithm>
#include <map>
#include <random>

using namespace tavaro;

TEST(SourceModel, rowsAreTheListAfterEveryUpdateAndThoseThatRemainStayThemselves) {
    std::mt19937 random(3);
    SourceModel model;
    std::map<QString, QPersistentModelIndex> followed;
    for (int round = 0; round < 300; ++round) {
        std::vector<ListedSource> wanted;
        for (int id = 0; id < 12; ++id) {
            if (random() % 3 == 0) continue;
            auto const text = QString::number(id);
            wanted.push_back({text, "Window " + text, QString::number(random() % 2), WindowSource{}});
        }
        std::ranges::shuffle(wanted, random);
        model.update(wanted);
        ASSERT_EQ(model.sources(), wanted);
        ASSERT_EQ(model.rowCount(), static_cast<int>(wanted.size()));
        for (auto const& [id, index] : followed) {
            bool const isListed = model.find(id) != nullptr;
            ASSERT_EQ(index.isValid(), isListed);
            if (isListed) {
                ASSERT_EQ(index.data(SourceModel::SourceID).toString(), id);
            }
        }
        followed.clear();
        for (int row = 0; row < model.rowCount(); ++row)
            followed.emplace(wanted[static_cast<std::size_t>(row)].id, QPersistentModelIndex(model.index(row)));
    }
}

TEST(SourceModel, aStillStaysWithItsSourceAndGoesWithIt) {
    ListedSource const one{"1", "One", "", WindowSource{1}}, two{"2", "Two", "", WindowSource{2}};
    SourceModel model;
    model.update({one, two});
    QImage still(4, 3, QImage::Format_RGB32);
    model.setStill("2", still);
    model.setStill("3", still);
    model.update({two, one});
    EXPECT_EQ(model.data(model.index(0), SourceModel::Still).value<QImage>().width(), 4);
    EXPECT_TRUE(model.data(model.index(1), SourceModel::Still).value<QImage>().isNull());
    model.update({one});
    model.update({one, two});
    EXPECT_TRUE(model.data(model.index(1), SourceModel::Still).value<QImage>().isNull());
}
