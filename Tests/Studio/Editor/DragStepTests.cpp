#include "../TestProject.h"

#include <Tavaro/Studio/Editor/DragStep.h>

#include <gtest/gtest.h>

namespace tavaro {

TEST(DragStep, whatAnotherProgramSavesInTheMiddleOfItStays) {
    TestProject const project(DemoProject{.name = "Film"});
    DragStep drag(*project.open(), "Drag");
    auto const moveTo = [&](double at) {
        return drag.change([&](DemoProject& each) { each.captions.position = {at, at}; });
    };
    EXPECT_TRUE(moveTo(0.2));
    EXPECT_TRUE(moveTo(0.3));
    ASSERT_EQ(project->save(), SaveOutcome::saved);
    project.editOutside([](DemoProject& each) { each.name = "Theirs"; });
    EXPECT_FALSE(moveTo(0.4)) << "that is the end of it";
    drag.takeBack();
    EXPECT_EQ(project.document().name, "Theirs");
    EXPECT_EQ(project.document().captions.position, (UnitPoint2{0.3, 0.3}));
}

TEST(DragStep, isOneStepThatTakesAllOfItBack) {
    TestProject const project(DemoProject{.name = "Film"});
    auto const before = DemoProject(project.document());
    DragStep drag(*project.open(), "Drag");
    for (double const at : {0.2, 0.9, 0.6}) drag.change([&](DemoProject& each) { each.captions.position.x = at; });
    drag.change([](DemoProject& each) { each.captions.position.y = 0.1; });
    EXPECT_EQ(project.document().captions.position, (UnitPoint2{before.captions.position.x, 0.1}))
        << "each change begins anew";
    EXPECT_EQ(project->steps().size(), 1U);
    ASSERT_TRUE(project->undo());
    EXPECT_EQ(project.document(), before);
}

}
