#include <Tavaro/Model/Recording/Private/SoundWatch.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::ElementsAre;

TEST(SoundWatch, tellsEachThingOnceAndAsSoonAsItIsSo) {
    SoundWatch watch;
    auto const told = [&](SoundState const& microphone, SoundState const& system = {.role = StreamRole::systemSound}) {
        std::vector<std::string> sentences;
        watch.look({microphone, system}, [&](std::string const& sentence) { sentences.push_back(sentence); });
        return sentences;
    };
    EXPECT_THAT(told({.silentSeconds = 4.9}), ElementsAre());
    auto const silent = ElementsAre("The microphone has given nothing but silence for 5 seconds. Is it muted?");
    EXPECT_THAT(told({.silentSeconds = 5}), silent);
    EXPECT_THAT(told({.silentSeconds = 6}), ElementsAre());
    EXPECT_THAT(told({.level = 0.2f}), ElementsAre());
    EXPECT_THAT(told({.silentSeconds = 5}), silent) << "again, after it was heard";

    auto const gone = ElementsAre("No sound comes from the microphone; the take is silent until it does.");
    EXPECT_THAT(told({.isAway = true}), gone);
    EXPECT_THAT(told({.isAway = true}), ElementsAre());
    EXPECT_THAT(told({}), ElementsAre("Sound comes from the microphone again."));

    SoundState const quiet{.role = StreamRole::systemSound, .silentSeconds = 100};
    EXPECT_THAT(told({}, quiet), ElementsAre()) << "a machine may play nothing";
    EXPECT_THAT(told({}, {.role = StreamRole::systemSound, .silentSeconds = 5, .awaited = "Music"}),
                ElementsAre("“Music” has not played anything for 5 seconds. `tavaro sources` lists what plays."));
    EXPECT_THAT(told({}, {.role = StreamRole::systemSound, .isAway = true}),
                ElementsAre("No sound comes from the system's sound; the take is silent until it does."));
}
