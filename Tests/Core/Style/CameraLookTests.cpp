#include <TavaroCore/Style/CameraLook.h>

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace tavaro {

TEST(CameraLook, offersEveryLookThatNeedsNoFileUnderANameOfItsOwn) {
    std::set<std::string_view> names;
    for (std::size_t i = 0; i < namesOf(CameraLook()).size(); ++i) {
        auto const look = static_cast<CameraLook>(i);
        EXPECT_TRUE(names.insert(displayName(look)).second) << displayName(look);
        EXPECT_EQ(std::ranges::count(cameraLookPresets(), look), look == CameraLook::lut ? 0 : 1);
    }
    EXPECT_EQ(cameraLookPresets().front(), CameraLook::natural);
}

TEST(CameraLook, onlyTheLooksWithoutAGradeLeaveColoursAlone) {
    for (std::size_t i = 0; i < namesOf(CameraLook()).size(); ++i) {
        auto const look = static_cast<CameraLook>(i);
        EXPECT_EQ(grade(look) == CameraGrade{}, look == CameraLook::natural || look == CameraLook::lut)
            << displayName(look);
    }
}

TEST(CameraLook, aWarmLookIsWarmAndACoolOneIsCool) {
    for (auto const look : {CameraLook::warm, CameraLook::golden, CameraLook::film, CameraLook::studio})
        EXPECT_GT(grade(look).temperature, 0) << displayName(look);
    EXPECT_LT(grade(CameraLook::cool).temperature, 0);
    for (auto const look : {CameraLook::mono, CameraLook::noir}) EXPECT_EQ(grade(look).saturation, 0);
    EXPECT_GT(grade(CameraLook::noir).vignette, grade(CameraLook::film).vignette);
}

}
