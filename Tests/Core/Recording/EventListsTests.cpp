#include <TavaroCore/Recording/EventLists.h>
#include <TavaroCore/Recording/SettledRecording.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace tavaro;

namespace {

template<class Value> constexpr bool isList = false;
template<class Item> constexpr bool isList<std::vector<Item>> = true;
template<class Item> constexpr bool isList<std::optional<std::vector<Item>>> = true;

/// Three of everything, one, two and three seconds in, latest first.
RecordingMetadata threeOfEach() {
    RecordingMetadata log;
    log.rawCursorSamples.emplace();
    forEachEventList(
        [](auto& events) {
            for (double const t : {3.0, 2.0, 1.0}) {
                auto& event = events.emplace_back();
                if constexpr (requires { event.t; })
                    event.t = t;
                else
                    event = static_cast<float>(t);
            }
        },
        log);
    return log;
}

/// The first entry of each list: its time, or the level itself.
std::vector<double> firsts(RecordingMetadata const& log) {
    std::vector<double> result;
    forEachEventList(
        [&](auto const& events) {
            if constexpr (requires { events[0].t; })
                result.push_back(events.at(0).t);
            else
                result.push_back(events.at(0));
        },
        log);
    return result;
}

}

TEST(EventLists, everyListOfTheLogIsInTheTable) {
    auto log = threeOfEach();
    std::set<void const*> visited;
    forEachEventList([&](auto& events) { visited.insert(&events); }, log);
    forEachField<RecordingMetadata>([&](auto const& field) {
        auto& member = log.*field.member;
        if constexpr (isList<std::remove_cvref_t<decltype(member)>>) {
            void const* list = &member;
            if constexpr (requires { member.has_value(); }) list = &*member;
            EXPECT_TRUE(visited.contains(list)) << field.name << " belongs into forEachEventList";
        }
    });
}

TEST(EventLists, cuttingAndAppendingGiveTheWholeLogAgain) {
    auto const whole = threeOfEach();
    EventCounts counts = eventCounts(whole);
    forEachEventList([n = 0u](std::size_t& count) mutable { count = n++ % 4; }, counts);
    auto rest = whole;
    auto front = takeFirstEvents(rest, counts);
    EXPECT_EQ(eventCounts(front), counts);
    EXPECT_EQ(eventCounts(rest), eventCounts(whole) - counts);
    EXPECT_EQ(eventsAfter(whole, counts), rest);
    appendEvents(front, rest);
    EXPECT_EQ(front, whole);
    EXPECT_EQ(eventsAfter(whole, {.clicks = 99}).clicks.size(), 0u);
}

TEST(SettledRecording, everyListOfEventsIsInTheOrderOfTime) {
    auto log = threeOfEach();
    settle(log, {64, 48});
    EXPECT_EQ(log.captureSize, (Size2{64, 48}));
    EXPECT_EQ(firsts(log), (std::vector<double>{1, 1, 1, 1, 1, 3})) << "levels have no time, so they keep their order";
}

TEST(SettledRecording, nothingIsLeftAfterTheEndOfTheTake) {
    auto log = threeOfEach();
    settle(log, {64, 48});
    log.micLevels.assign(40, 0.5f); // four seconds, a tenth each
    for (auto& span : log.appSpans) span.duration = 5;
    log.clicks[0].dragEnd = 9;
    trimToDuration(log, 2.5);
    EXPECT_EQ(eventCounts(log), (EventCounts{2, 2, 2, 2, 2, 25}));
    EXPECT_EQ(log.duration(), 2.5);
    trimToDuration(log, 3);
    EXPECT_EQ(log.micLevels.size(), 30u) << "levels are spread over the whole take, so they grow with it";
    EXPECT_EQ(log.micLevels.back(), 0);
}

TEST(SettledRecording, aTakeThatLostItsStartCountsFromWhatIsLeft) {
    auto log = threeOfEach();
    settle(log, {64, 48});
    log.micLevels.assign(40, 0.5f);
    for (auto& span : log.appSpans) span.duration = 1;
    log.clicks[2].dragEnd = 3.5;
    cutStart(log, 1.5);
    EXPECT_EQ(eventCounts(log), (EventCounts{2, 2, 2, 2, 3, 25}));
    EXPECT_EQ(log.clicks[0].t, 0.5);
    EXPECT_EQ(log.clicks[1].dragEnd, 2);
    EXPECT_EQ(log.appSpans[0].t, 0);
    EXPECT_EQ(log.appSpans[0].duration, 0.5);
    EXPECT_EQ(log.appSpans[1].t, 0.5);
    EXPECT_EQ(log.appSpans[1].duration, 1);
}
