#include <TavaroAutomation/Elements/Private/CrowdSearch.h>

#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>

namespace tavaro::atspi {

namespace {

/// Children in the order that people read them in, some of which are hidden, and what their program says when it is
/// asked for them.
struct TestCrowd {
    CrowdSearch::Crowd crowd;
    std::vector<std::optional<Extents>> children; // nothing for what is hidden
    bool saysPlaces = true;                       // among the children
    bool placesAll = true;                        // or only what shows: elsewhere it says nonsense
    bool findsByPoint = true;
    int header = 0; // by which points are off

    std::set<Extents> shown() const {
        std::set<Extents> result;
        for (auto const& child : children) {
            if (child && shows(*child)) result.insert(*child);
        }
        return result;
    }
    bool shows(Extents const& child) const { return !child.intersection(crowd.shown).isEmpty(); }
    Extents said(Extents const& child) const {
        constexpr int nowhere = -(1 << 28);
        return placesAll || shows(child) ? child : Extents{nowhere, nowhere, child.width, child.height};
    }
};

struct Searched {
    std::set<Extents> found;
    std::size_t questions = 0;
    int rounds = 0;
    bool isWhole = false;
};

Searched search(TestCrowd const& test) {
    Searched result;
    CrowdSearch search(test.crowd);
    auto const note = [&](Extents const& extents) {
        if (test.shows(extents)) result.found.insert(extents);
    };
    for (auto questions = search.next(); !questions.isEmpty(); questions = search.next()) {
        ++result.rounds;
        result.questions += questions.places.size() + questions.points.size();
        for (int const place : questions.places) {
            auto const& child = test.children.at(static_cast<std::size_t>(place));
            if (!child || !test.saysPlaces) continue;
            note(*child);
            search.addAtPlace(place, test.said(*child));
        }
        for (auto const& point : questions.points) {
            for (std::size_t i = 0; i < test.children.size() && test.findsByPoint; ++i) {
                auto const& child = test.children[i];
                Extents const at{point.x, point.y - test.header, 1, 1};
                if (!child || child->intersection(at).isEmpty()) continue;
                note(*child);
                search.addAtPoint(point, test.said(*child),
                                  test.saysPlaces ? std::optional(static_cast<int>(i)) : std::nullopt);
            }
        }
    }
    result.isWhole = search.isWhole();
    return result;
}

struct Shape {
    int count = 3000;
    int columns = 1;
    int spacing = 0;
    bool hasHidden = false;
};

/// Rows of random heights in a view of 600 by 500, scrolled to somewhere.
TestCrowd rows(Shape const& shape, std::mt19937& random) {
    TestCrowd test;
    int const width = 900 / shape.columns;
    int y = 0;
    for (int i = 0; i < shape.count;) {
        int const height = std::uniform_int_distribution(15, 60)(random);
        for (int column = 0; column < shape.columns && i < shape.count; ++column, ++i) {
            bool const isHidden = shape.hasHidden && random() % 3 == 0;
            Extents const each{column * width, y, width - shape.spacing, height};
            test.children.push_back(isHidden ? std::nullopt : std::optional(each));
        }
        y += height + shape.spacing;
    }
    int const scrolled = std::uniform_int_distribution(0, y - 500)(random);
    for (auto& child : test.children) {
        if (child) child->y += 100 - scrolled;
    }
    test.crowd = {.count = shape.count, .whole = {0, 100 - scrolled, 900, y}, .shown = {0, 100, 600, 500}};
    return test;
}

}

TEST(CrowdSearch, findsWhatShowsOfThousandsByTheirPlaces) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 random(seed);
        Shape const shape{.count = std::uniform_int_distribution(1501, 12'000)(random),
                          .columns = seed % 3 == 0 ? 12 : 1,
                          .spacing = static_cast<int>(seed % 4) * 3,
                          .hasHidden = seed % 2 == 0};
        auto test = rows(shape, random);
        test.findsByPoint = false;
        auto const searched = search(test);
        EXPECT_EQ(searched.found, test.shown()) << "seed " << seed;
        EXPECT_TRUE(searched.isWhole) << "seed " << seed;
        EXPECT_LE(searched.questions, 3 * test.shown().size() + 150) << "seed " << seed;
    }
}

/// As GTK 3 does in its tables: points are off by the header, what does not show has no place.
TEST(CrowdSearch, findsWhatShowsWherePointsAreOffAndWhatDoesNotShowHasNoPlace) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        auto test = rows({.spacing = 2}, random);
        test.children.insert(test.children.begin(), Extents{0, 100, 600, 25});
        test.crowd.count = static_cast<int>(test.children.size());
        test.crowd.whole = test.crowd.shown; // it scrolls itself
        test.crowd.isGrid = seed % 2 == 0;
        test.placesAll = false;
        test.header = 25;
        auto const searched = search(test);
        EXPECT_EQ(searched.found, test.shown()) << "seed " << seed;
        EXPECT_TRUE(searched.isWhole) << "seed " << seed;
    }
}

TEST(CrowdSearch, ofASheetOfBillionsOnlyPointsAreAsked) {
    for (int const off : {0, 27, -27}) {
        std::mt19937 random(5);
        auto test = rows({.count = 2000, .columns = 10}, random);
        test.crowd.count = std::numeric_limits<int>::max();
        test.saysPlaces = false;
        test.header = off;
        auto const searched = search(test);
        EXPECT_EQ(searched.found, test.shown()) << off;
        EXPECT_TRUE(searched.isWhole) << off;
        EXPECT_LE(searched.rounds, 30) << off;
    }
}

TEST(CrowdSearch, whatAnswersNothingIsNotWholeAndEnds) {
    std::mt19937 random(1);
    auto test = rows({}, random);
    test.findsByPoint = test.saysPlaces = false;
    for (int const count : {3000, std::numeric_limits<int>::max()}) {
        test.crowd.count = count;
        auto const searched = search(test);
        EXPECT_FALSE(searched.isWhole);
        EXPECT_LE(searched.questions, 300U);
    }
    test.crowd.shown = {};
    EXPECT_TRUE(search(test).isWhole) << "nothing of it shows";
}

TEST(CrowdSearch, whatContradictsItselfEnds) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        std::mt19937 random(seed);
        auto const any = [&](int least, int most) { return std::uniform_int_distribution(least, most)(random); };
        CrowdSearch search({.count = seed % 2 == 0 ? any(1501, 100'000) : std::numeric_limits<int>::max(),
                            .whole = {0, -any(0, 5000), 600, any(1, 100'000)},
                            .shown = {0, 0, 600, 500},
                            .isGrid = seed % 3 == 0});
        std::size_t questions = 0;
        for (auto next = search.next(); !next.isEmpty(); next = search.next()) {
            questions += next.places.size() + next.points.size();
            auto const somewhere = [&] { return Extents{any(-900, 900), any(-900, 900), any(-1, 90), any(-1, 90)}; };
            for (int const place : next.places) {
                if (random() % 2 == 0) search.addAtPlace(place, somewhere());
            }
            for (auto const& point : next.points)
                search.addAtPoint(point, somewhere(),
                                  random() % 2 == 0 ? std::optional(any(-5, 200'000)) : std::nullopt);
        }
        EXPECT_LE(questions, 8100U) << "seed " << seed;
    }
}

}
