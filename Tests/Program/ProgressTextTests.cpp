#include <Tavaro/Commands/ProgressText.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

long characters(std::string const& text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
}

/// Where the percentage stands, which moves when anything before it does.
long columnOfPercent(std::string const& line) { return characters(line.substr(0, line.find(" %"))); }

}

TEST(Pace, aChangeOfPaceIsFollowedWithinSecondsAndASingleSlowFrameIsNot) {
    Pace pace;
    EXPECT_EQ(pace.rate(), 0);
    for (int i = 0; i <= 200; ++i) pace.note(i / 10.0, 10 * i); // 100 a second
    EXPECT_NEAR(pace.rate(), 100, 0.1);
    pace.note(20.5, 2001); // half a second for one
    EXPECT_NEAR(pace.rate(), 100, 12);
    for (int i = 1; i <= 200; ++i) pace.note(20.5 + i / 10.0, 2001 + 5 * i);
    EXPECT_NEAR(pace.rate(), 50, 2);
}

TEST(ProgressBar, itIsNeverWiderThanTheTerminalAndLeavesOutTheLeastFirst) {
    ProgressState const state{"Rendering", 310, 722, 91};
    for (int columns = 5; columns < 140; ++columns) EXPECT_LE(characters(progressBar(state, columns)), columns);
    EXPECT_THAT(progressBar(state, 100), HasSubstr(" 43 %  310 of 722 frames    91 frames/s     0:05 left"));
    EXPECT_THAT(progressBar(state, 60), Not(HasSubstr("of 722")));
    EXPECT_THAT(progressBar(state, 60), HasSubstr("0:05 left"));
    EXPECT_THAT(progressBar(state, 40), StartsWith("Rendering █"));
    EXPECT_EQ(progressBar(state, 8), " 43 %");
}

TEST(ProgressBar, nothingMovesWhileTheWorkGoesOn) {
    for (int const columns : {79, 60, 50}) {
        auto const column = columnOfPercent(progressBar({"Rendering", 0, 12'000, 0}, columns));
        for (int done = 1; done <= 12'000; done += 97) {
            ProgressState const state{"Rendering", done, 12'000, done % 5 == 0 ? 0 : done / 20.0 + 0.5};
            EXPECT_EQ(columnOfPercent(progressBar(state, columns)), column) << done;
        }
    }
}

TEST(ProgressBar, longWaitsAreToldInRoundSteps) {
    auto const left = [](std::int64_t frames) { return progressText({"Rendering", 0, frames, 10}); };
    EXPECT_THAT(left(95), HasSubstr(" 0:10 left"));
    EXPECT_THAT(left(1'010), HasSubstr(" 1:45 left"));
    EXPECT_THAT(left(36'110), HasSubstr(" 1:00:30 left"));
    EXPECT_THAT(progressText({"Rendering", 722, 722, 91}), Not(HasSubstr("left")));
}
