#include <Tavaro/Model/Recording/Private/RoomWatch.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(RoomWatch, tellsOfEachLimitOnceHoweverTheRoomWavers) {
    RoomWatch watch;
    auto const told = [&](std::optional<double> room) {
        std::vector<std::string> sentences;
        watch.look(room, [&](std::string const& sentence) { sentences.push_back(sentence); });
        return sentences;
    };
    EXPECT_THAT(told(std::nullopt), ElementsAre());
    EXPECT_THAT(told(700), ElementsAre());
    EXPECT_THAT(told(590), ElementsAre(HasSubstr("less than 10 minutes")));
    EXPECT_THAT(told(610), ElementsAre());
    EXPECT_THAT(told(590), ElementsAre());
    EXPECT_THAT(told(20), ElementsAre(HasSubstr("2 minutes"), HasSubstr("30 seconds")));
    EXPECT_THAT(told(500), ElementsAre());
}
