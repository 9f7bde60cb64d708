#include "RandomRecord.h"

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/Data.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/JSON.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace tavaro;

TEST(UUID, textAndBytesAreOneAnother) {
    auto const id = UUID::parse("6ba7b810-9dad-11d1-80b4-00c04fd430c8");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->text(), "6BA7B810-9DAD-11D1-80B4-00C04FD430C8");
    auto const random = UUID::random();
    EXPECT_EQ(UUID::parse(random.text()), random);
    EXPECT_NE(random, UUID::random());
    for (auto const* wrong :
         {"", "6ba7b810", "6ba7b810-9dad-11d1-80b4-00c04fd430cg", "6ba7b8109dad-11d1-80b4-00c04fd430c8-"}) {
        EXPECT_FALSE(UUID::parse(wrong)) << wrong;
    }
}

TEST(Date, readsISO8601AndWritesWhatItReads) {
    EXPECT_EQ(Date::parse("1970-01-01T00:00:00Z")->milliseconds, 0);
    EXPECT_EQ(Date::parse("2026-03-01T12:00:00+02:00"), Date::parse("2026-03-01T10:00:00Z"));
    EXPECT_EQ(Date::parse("2026-03-01T10:00:00.2509Z")->text(), "2026-03-01T10:00:00.250Z");
    EXPECT_EQ(Date::parse("1969-12-31T23:59:59.5Z")->milliseconds, -500);
    EXPECT_EQ(Date{-500}.text(), "1969-12-31T23:59:59.500Z");
    for (auto const* wrong : {"", "2026-03-01", "2026-02-30T10:00:00Z", "2026-03-01T10:00:00", "2026-03-01T10:61:00Z",
                              "2026-03-01T10:00:00Zx", "2026-03-01T10:00:00.Z"}) {
        EXPECT_FALSE(Date::parse(wrong)) << wrong;
    }
    std::mt19937_64 random(7);
    for (int i = 0; i < 1000; ++i) {
        Date const date{static_cast<std::int64_t>(random() % 200'000'000'000'000) - 50'000'000'000'000};
        EXPECT_EQ(Date::parse(date.text()), date);
    }
}

TEST(Data, base64IsReversible) {
    std::mt19937 random(11);
    for (std::size_t length = 0; length < 50; ++length) {
        Data data;
        for (std::size_t i = 0; i < length; ++i) data.bytes.push_back(static_cast<std::uint8_t>(random()));
        EXPECT_EQ(Data::fromBase64(data.base64()), data);
    }
    EXPECT_EQ((Data{{'M', 'a'}}).base64(), "TWE=");
    EXPECT_FALSE(Data::fromBase64("a"));
    EXPECT_FALSE(Data::fromBase64("a*=="));
}

TEST(JSON, everyFieldOfEveryRecordSurvivesSavingAndLoading) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        DemoProject project;
        RandomRecord(seed).fill(project);
        settleAfterReading(project.cursor);
        auto const text = encodeProject(project);
        auto const again = decodeProject(text);
        ASSERT_EQ(again, project) << "seed " << seed;
        ASSERT_EQ(hashOf(again), hashOf(project)) << "seed " << seed;
        ASSERT_EQ(encodeProject(again), text) << "seed " << seed;
    }
}

TEST(JSON, damagedDocumentsFailWithASentenceOrRead) {
    DemoProject project;
    RandomRecord(5).fill(project);
    auto const whole = encodeProject(project);
    std::mt19937 random(3);
    for (int i = 0; i < 3000; ++i) {
        auto text = whole.substr(0, random() % 4 ? whole.size() : random() % whole.size());
        for (auto n = random() % 4; n > 0 && !text.empty(); --n)
            text[random() % text.size()] = static_cast<char>(random());
        try {
            decodeProject(text);
        } catch (JSONError const& error) {
            ASSERT_FALSE(error.problem().empty());
        }
    }
    std::string const deep(100'000, '[');
    EXPECT_THROW(decodeProject("{\"future\":" + deep), JSONError);
    EXPECT_THROW(decodeProject("{\"timeline\":{\"clips\":" + deep + std::string(100'000, ']') + "}}"), JSONError);
}

TEST(JSON, numbersTakeTheirShortestFormAndNonsenseReadsBackAsNotGiven) {
    auto const written = [](double value) {
        JSONWriter writer;
        writer.number(value);
        return writer.take();
    };
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(3), "3");
    EXPECT_EQ(written(std::numeric_limits<double>::quiet_NaN()), "null");
    TimeRange const range{std::numeric_limits<double>::infinity(), 2};
    EXPECT_EQ(decodeJSON<TimeRange>(encodeJSON(range)), (TimeRange{0, 2}));
    EXPECT_THROW(decodeJSON<TimeRange>(R"({"start":1e999})"), JSONError);
    EXPECT_EQ(decodeJSON<Size2>(R"({"width":3.0})").width, 3);
    EXPECT_THROW(decodeJSON<Size2>(R"({"width":3.5})"), JSONError);
    EXPECT_THROW(decodeJSON<Size2>(R"({"width":99999999999999999999})"), JSONError);
}

TEST(JSON, textThatIsNotUTF8IsWrittenSoThatItCanBeRead) {
    JSONWriter writer;
    writer.beginObject();
    writer.key("keys");
    writer.beginArray();
    writer.string("ok\xff\xc3(\xed\xa0\x80");
    writer.endArray();
    writer.endObject();
    auto const keys = decodeJSON<KeystrokeEvent>(writer.take()).keys;
    EXPECT_EQ(keys.at(0), "ok\uFFFD\uFFFD(\uFFFD\uFFFD\uFFFD");
}

namespace {

/// A long list of samples as JSON, one of them as given.
std::string longList(std::size_t count, std::size_t oddOne, std::string const& odd) {
    std::string json = "{\"cursorSamples\":[";
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) json += ',';
        json += i == oddOne ? odd : R"({"kind":"iBeam","position":{"x":0.25,"y":0.5},"t":)" + std::to_string(i) + "}";
    }
    return json + "],\"clicks\":[{\"t\":7}]}";
}

}

TEST(JSON, aLongListIsReadAsAShortOneIs) {
    constexpr std::size_t count = 50'000;
    for (std::size_t const oddOne : {std::size_t{0}, count / 2, count - 1}) {
        for (std::string const odd : {R"({ "t" : 3, "position" : { "x" : 1 } })", R"({"note":"]","t":3})",
                                      R"({"note":"}]","t":3})", R"({"note":[{},{}],"t":3})", "{}"}) {
            auto const log = decodeJSON<RecordingMetadata>(longList(count, oddOne, odd));
            ASSERT_EQ(log.cursorSamples.size(), count) << odd;
            EXPECT_EQ(log.cursorSamples[oddOne].t, odd == "{}" ? 0 : 3) << odd;
            EXPECT_EQ(log.cursorSamples[count / 3].t, count / 3) << odd;
            EXPECT_EQ(log.cursorSamples[count - 2].kind, CursorKind::iBeam) << odd;
            EXPECT_EQ(log.clicks.size(), 1u) << "what follows is read";
        }
        try {
            decodeJSON<RecordingMetadata>(longList(count, oddOne, R"({"t":"late"})"));
            ADD_FAILURE() << "a text is no time";
        } catch (JSONError const& error) {
            auto const path = "cursorSamples[" + std::to_string(oddOne) + "].t";
            EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
        }
        for (std::string const broken : {"{\"t\":1", "{}}", "{},", "", "{\"t\":1}{\"t\":2}"}) {
            EXPECT_THROW(decodeJSON<RecordingMetadata>(longList(count, oddOne, broken)), JSONError) << broken;
        }
    }
}
