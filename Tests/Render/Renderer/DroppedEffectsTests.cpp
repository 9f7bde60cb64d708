#include <TavaroRender/Renderer/Private/DroppedEffects.h>

#include <gtest/gtest.h>

namespace tavaro {

TEST(DroppedEffects, twoOfAKindAreBothListedAndOneThatWorksHidesNeither) {
    DroppedEffects effects;
    for (std::int64_t revision = 1; revision <= 3; ++revision) {
        effects.beginRevision(revision);
        effects.beginFrame();
        effects.drop(Effect::layer, "callout", "The first is too large.");
        effects.use(Effect::layer, "callout");
        effects.drop(Effect::layer, "callout", "The second has no font.");
        auto const list = effects.list();
        ASSERT_EQ(list.size(), 2u);
        EXPECT_EQ(list[0].sentence, "The first is too large.");
        EXPECT_EQ(list[1].sentence, "The second has no font.");
        EXPECT_EQ(list[0].since, 1);
        EXPECT_EQ(list[1].since, 1);
    }
}

TEST(DroppedEffects, whatWorkedInBetweenIsMissingSinceThen) {
    DroppedEffects effects;
    auto const draw = [&](std::int64_t revision, bool works) {
        effects.beginRevision(revision);
        effects.beginFrame();
        if (works)
            effects.use(Effect::background, "beach.png");
        else
            effects.drop(Effect::background, "beach.png", "It is missing.");
        return effects.list();
    };
    EXPECT_EQ(draw(1, false).at(0).since, 1);
    EXPECT_EQ(draw(2, false).at(0).since, 1);
    EXPECT_TRUE(draw(3, true).empty());
    EXPECT_EQ(draw(4, false).at(0).since, 4);
}

}
