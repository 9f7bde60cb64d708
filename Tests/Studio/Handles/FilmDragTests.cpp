#include <Tavaro/Studio/Handles/FilmDrag.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tavaro {

namespace {

constexpr FilmGrip reshapers[] = {FilmGrip::topLeft,     FilmGrip::top,    FilmGrip::topRight,   FilmGrip::right,
                                  FilmGrip::bottomRight, FilmGrip::bottom, FilmGrip::bottomLeft, FilmGrip::left};

FilmPointer pointer(UnitPoint2 at, bool keepsShape = false, bool fromCenter = false, bool isFree = true) {
    return {.at = at, .keepsShape = keepsShape, .fromCenter = fromCenter, .isFree = isFree};
}

FilmDrag dragOf(FilmThing const& thing, FilmGrip grip, std::vector<FilmThing> const& others = {}) {
    return {{thing, grip}, {thing}, FilmMagnets(others, {&thing, 1}), {}, {0.5, 0.5}};
}

FilmThing area(NormalizedRect const& rect) { return {.kind = ThingKind::area, .id = UUID::random(), .rect = rect}; }

}

TEST(FilmDrag, whatIsOppositeOfTheGripStaysWhereItIs) {
    std::mt19937 random(3);
    auto const chance = [&](double from, double to) { return std::uniform_real_distribution(from, to)(random); };
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        auto const grip = reshapers[round % 8];
        auto const sides = sidesOf(grip);
        NormalizedRect const rect{chance(0, 0.5), chance(0, 0.5), chance(0.1, 0.5), chance(0.1, 0.5)};
        UnitPoint2 const by{chance(-0.6, 0.6), chance(-0.6, 0.6)};
        bool const keepsShape = round % 3 == 0, fromCenter = round % 5 == 0;
        auto const now = reshaped(rect, grip, by, pointer({}, keepsShape, fromCenter));
        EXPECT_GT(now.width, 0);
        EXPECT_GT(now.height, 0);
        if (fromCenter || sides.x == 0) {
            EXPECT_NEAR(now.center().x, rect.center().x, 1e-12);
        }
        if (fromCenter || sides.y == 0) {
            EXPECT_NEAR(now.center().y, rect.center().y, 1e-12);
        }
        if (!fromCenter && sides.x < 0) {
            EXPECT_NEAR(now.maxX(), rect.maxX(), 1e-12);
        }
        if (!fromCenter && sides.x > 0) {
            EXPECT_NEAR(now.x, rect.x, 1e-12);
        }
        if (!fromCenter && sides.y < 0) {
            EXPECT_NEAR(now.maxY(), rect.maxY(), 1e-12);
        }
        if (!fromCenter && sides.y > 0) {
            EXPECT_NEAR(now.y, rect.y, 1e-12);
        }
        if (keepsShape) {
            EXPECT_NEAR(now.width / now.height, rect.width / rect.height, 1e-9);
        }
    }
}

TEST(FilmDrag, anEdgeThatComesNearALineIsCaughtByItUnlessNothingIsToCatch) {
    auto const other = area({0.7, 0.1, 0.1, 0.1});
    for (bool const isFree : {false, true}) {
        SCOPED_TRACE(isFree);
        auto const thing = area({0.2, 0.3, 0.1, 0.11});
        // Its right edge comes near to the other's left one, its top near to a third.
        auto const moved = dragOf(thing, FilmGrip::body, {other}).to(pointer({0.903, 0.53}, false, false, isFree));
        EXPECT_NEAR(moved.things[0].rect.maxX(), isFree ? 0.703 : 0.7, 1e-12);
        EXPECT_NEAR(moved.things[0].rect.y, isFree ? 0.33 : 1.0 / 3, 1e-12);
        EXPECT_EQ(moved.guides.size(), isFree ? 0u : 2u);
        auto const sized = dragOf(thing, FilmGrip::right, {other}).to(pointer({0.898, 0.7}, false, false, isFree));
        EXPECT_NEAR(sized.things[0].rect.maxX(), isFree ? 0.698 : 0.7, 1e-12);
        EXPECT_EQ(sized.things[0].rect.height, 0.11);
    }
}

TEST(FilmDrag, aKeptShapeThatIsCaughtIsStillKept) {
    FilmThing const text{.kind = ThingKind::text, .id = UUID::random(), .rect = {0.3, 0.3, 0.2, 0.08}};
    for (bool const fromCenter : {false, true}) {
        SCOPED_TRACE(fromCenter);
        auto const sized =
            dragOf(text, FilmGrip::bottomRight).to(pointer({0.664, 0.51}, false, fromCenter, false)).things[0].rect;
        EXPECT_NEAR(sized.width / sized.height, 0.2 / 0.08, 1e-9);
        EXPECT_NEAR(sized.maxX(), 2.0 / 3, 1e-9);
    }
}

TEST(FilmDrag, withShiftTheWayIsAlongAnAxisAndAnArrowIsLevelOrUpright) {
    auto const thing = area({0.21, 0.22, 0.1, 0.1});
    auto const moved = dragOf(thing, FilmGrip::body).to(pointer({0.6, 0.52}, true)).things[0].rect;
    EXPECT_NEAR(moved.x, 0.31, 1e-12);
    EXPECT_EQ(moved.y, 0.22);
    FilmThing const arrow{.kind = ThingKind::arrow, .id = UUID::random(), .from = {0.2, 0.2}, .to = {0.4, 0.5}};
    auto const level = dragOf(arrow, FilmGrip::to).to(pointer({0.8, 0.5}, true)).things[0];
    EXPECT_EQ(level.from, arrow.from);
    EXPECT_NEAR(level.to.x, 0.7, 1e-12);
    EXPECT_EQ(level.to.y, 0.2);
    auto const upright = dragOf(arrow, FilmGrip::from).to(pointer({0.55, 0.1}, true)).things[0];
    EXPECT_EQ(upright.from.x, 0.4);
    EXPECT_NEAR(upright.from.y, -0.2, 1e-12);
}

TEST(FilmGrip, theGripsOfWhatIsSelectedAreTakenBeforeWhatLiesOverThem) {
    auto const below = area({0.2, 0.2, 0.2, 0.2}), above = area({0.35, 0.35, 0.3, 0.3});
    std::vector const things{below, above};
    EXPECT_TRUE(hitThing(things, {}, {0.39, 0.39}, {})->thing.isSame(above));
    auto const corner = hitThing(things, {&below, 1}, {0.4, 0.4}, {});
    EXPECT_TRUE(corner->thing.isSame(below));
    EXPECT_EQ(corner->grip, FilmGrip::bottomRight);
    EXPECT_FALSE(hitThing(things, {}, {0.8, 0.8}, {}));
    FilmThing const arrow{.kind = ThingKind::arrow, .id = UUID::random(), .from = {0.1, 0.9}, .to = {0.5, 0.5}};
    EXPECT_TRUE(hitThing({&arrow, 1}, {}, {0.3, 0.7}, {}));
    EXPECT_FALSE(hitThing({&arrow, 1}, {}, {0.3, 0.8}, {})) << "beside its line";
}

}
