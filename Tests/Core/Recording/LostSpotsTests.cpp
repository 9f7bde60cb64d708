#include <TavaroCore/Recording/LostSpots.h>

#include <gtest/gtest.h>

namespace tavaro {

TEST(LostSpots, areNamedUpToAFew) {
    auto const said = [](std::vector<double> spots) {
        return lostSpots({.interruptedAt = std::move(spots)}).value_or("");
    };
    EXPECT_EQ(said({}), "");
    EXPECT_EQ(said({12.7}), "It was interrupted at 0:12.");
    EXPECT_EQ(said({12, 63, 3605}), "It was interrupted at 0:12, 1:03 and 1:00:05.");
    EXPECT_EQ(said({1, 2, 3, 4, 5, 6, 7}), "It was interrupted at 0:01, 0:02, 0:03, 0:04, 0:05 and at 2 more places.");
}

}
