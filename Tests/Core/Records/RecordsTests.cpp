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

namespace {

/// Fills every field of a record, at any depth, with random content, so that a field that is not written, not read or
/// not compared shows.
class RandomRecord {
public:
    explicit RandomRecord(unsigned seed) : random_(seed) {}

    template<class T> void fill(T& value) {
        if constexpr (RecordType<T>) {
            forEachField<T>([&](auto const& field) { fill(value.*field.member); });
        } else if constexpr (CaseType<T>) {
            detail::selectCase(value, random_() % T::caseNames.size());
            std::visit([&](auto& content) { fill(content); }, value.content);
        } else if constexpr (NamedEnum<T>) {
            value = static_cast<T>(random_() % namesOf(T{}).size());
        } else if constexpr (std::is_same_v<T, bool>) {
            value = random_() % 2 == 0;
        } else if constexpr (std::is_floating_point_v<T>) {
            value = static_cast<T>(std::ldexp(static_cast<double>(random_()), static_cast<int>(random_() % 40) - 60));
            if (random_() % 2) value = -value;
        } else if constexpr (std::is_integral_v<T>) {
            value = static_cast<T>(random_());
        } else {
            fillPart(value);
        }
    }

private:
    void fillPart(std::string& value) {
        static constexpr std::string_view pieces[] = {"a", "\"", "\\", "/", "\n", "\x01", "é", "日", "🎬", " "};
        value.clear();
        for (auto n = random_() % 6; n > 0; --n) value += pieces[random_() % std::size(pieces)];
    }
    void fillPart(UUID& value) { value = UUID::random(); }
    void fillPart(Date& value) { value.milliseconds = static_cast<std::int64_t>(random_() % 4'000'000'000'000); }
    void fillPart(Data& value) { value.bytes.assign(random_() % 9, static_cast<std::uint8_t>(random_())); }
    template<class T> void fillPart(std::vector<T>& value) {
        value.resize(random_() % 3);
        for (auto& element : value) fill(element);
    }
    template<class T> void fillPart(std::set<T>& value) {
        T element{};
        fill(element);
        value = {element};
    }
    template<class T> void fillPart(std::map<std::string, T>& value) {
        std::string key;
        fillPart(key);
        fill(value[key]);
    }
    template<class T> void fillPart(std::optional<T>& value) {
        value.reset();
        if (random_() % 3) fill(value.emplace());
    }
    template<class T> void fillPart(CopyOnWrite<T>& value) { fill(value.edit()); }

    std::mt19937_64 random_;
};

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
