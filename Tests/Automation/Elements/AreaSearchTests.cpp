#include <TavaroAutomation/Elements/Private/AreaSearch.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>

namespace tavaro::atspi {

namespace {

struct Searched {
    std::set<Extents> found;
    std::size_t questions = 0;
    int rounds = 0;
};

/// What is found of those things.
Searched search(Extents const& area, std::vector<Extents> const& things) {
    Searched result;
    AreaSearch search(area);
    for (auto points = search.next(); !points.empty(); points = search.next()) {
        ++result.rounds;
        result.questions += points.size();
        for (auto const& point : points) {
            for (auto const& each : things) {
                bool const isAt = point.x >= each.x && point.y >= each.y && point.x < each.x + each.width &&
                                  point.y < each.y + each.height;
                if (isAt && result.found.insert(each).second) search.add(each);
            }
        }
    }
    return result;
}

}

TEST(AreaSearch, findsEveryCellOfATableWithAboutAQuestionEach) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        auto const lengths = [&](int count) {
            std::vector<int> result;
            for (int i = 0; i < count; ++i) result.push_back(std::uniform_int_distribution(4, 150)(random));
            return result;
        };
        auto const widths = lengths(18), heights = lengths(44);
        std::vector<Extents> cells;
        int y = 7;
        for (int const height : heights) {
            int x = -30;
            for (int const width : widths) {
                cells.push_back({x, y, width, height});
                x += width;
            }
            y += height;
        }
        Extents const area{-30, 7, cells.back().x + cells.back().width + 30, y - 7};
        auto const searched = search(area, cells);
        EXPECT_EQ(searched.found.size(), cells.size()) << "seed " << seed;
        EXPECT_LE(searched.questions, cells.size() + cells.size() / 10) << "seed " << seed;
        EXPECT_LE(searched.rounds, 24) << "seed " << seed;
    }
}

TEST(AreaSearch, findsWhatIsSpreadAndEndsWhereThereIsNothing) {
    Extents const area{0, 0, 1600, 900};
    std::vector<Extents> icons;
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 10; ++column) icons.push_back({column * 150 + 30, row * 140 + 20, 90, 100});
    }
    EXPECT_EQ(search(area, icons).found.size(), icons.size());
    EXPECT_LE(search(area, {}).questions, 100U);
    EXPECT_EQ(search({0, 0, 0, 900}, icons).questions, 0U);
    std::mt19937 random(3);
    std::vector<Extents> dust;
    for (int i = 0; i < 5000; ++i)
        dust.push_back({static_cast<int>(random() % 1600), static_cast<int>(random() % 900), 3, 3});
    EXPECT_LE(search(area, dust).questions, 6000U) << "it ends";
}

}
