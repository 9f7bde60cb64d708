#include "../../Core/Editing/RandomDocument.h"
#include "SampleOperation.h"

#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroCore/Records/JSON.h>

#include <gmock/gmock.h>

#include <fmt/format.h>

#include <cmath>
#include <set>

using namespace tavaro;
using ::testing::StartsWith;

namespace {

/// What is wrong with the arguments; nothing where they are taken.
std::string problem(std::string_view name, JSONValue const& arguments) {
    try {
        decodeOperation(name, arguments);
        return "";
    } catch (OperationError const& error) {
        return error.what();
    }
}
std::string problem(std::string_view name, char const* arguments) { return problem(name, JSONValue::parse(arguments)); }

template<class Record> JSONValue encoded(Record const& record) { return JSONValue::parse(encodeJSON(record)); }

struct Try {
    DemoProject project;
    std::string said;
    bool isRefused = false;
};

Try tried(DemoProject project, Operation const& operation) {
    try {
        auto const report = perform(project, operation);
        EXPECT_EQ(report.duration, project.duration());
        return {std::move(project), report.summary};
    } catch (Error const& error) {
        return {std::move(project), error.what(), true};
    }
}

DemoProject randomProject(unsigned seed) {
    auto project = RandomDocument(seed).make();
    Transcript transcript;
    for (int i = 0; i < 40; ++i)
        transcript.words.push_back({.text = i % 5 ? "word" : "um", .start = i * 2.0, .end = i * 2.0 + 0.5});
    project.transcript = transcript;
    return project;
}

}

TEST(Operation, everyOneHasNamesOfItsOwnAndDecodesFromItsOwnEncoding) {
    std::set<std::string_view> names;
    forEachOperation([&]<class Record>(std::type_identity<Record>) {
        EXPECT_TRUE(names.insert(Record::info.name).second) << Record::info.name;
        EXPECT_FALSE(Record::info.title.empty() || Record::info.help.empty()) << Record::info.name;
        for (unsigned seed = 0; seed < 50; ++seed) {
            auto const record = SampleOperation(seed, 60).make<Record>();
            auto const decoded = decodeOperation(Record::info.name, encoded(record));
            EXPECT_EQ(decoded, Operation(record)) << encodeJSON(record);
            EXPECT_EQ(infoOf(decoded).name, Record::info.name);
        }
    });
}

TEST(Operation, numbersMeetTheSameBoundsHoweverTheyAreGiven) {
    int bounds = 0;
    forEachOperation([&]<class Record>(std::type_identity<Record>) {
        forEachParameter<Record>([&](auto const& field, Parameter const& parameter) {
            if (!parameter.range) return;
            auto const [least, most, noun] = *parameter.range;
            for (double const value : {least, std::nextafter(least, 1e9), least - 1, most, most + 1, -1e300, 1e300}) {
                if (!std::isfinite(value)) continue;
                auto arguments = encoded(SampleOperation(1, 60).make<Record>());
                auto& argument = std::get<JSONValue::Object>(arguments.content)[std::string(field.name)];
                argument = {value};
                if constexpr (!std::is_same_v<std::remove_cvref_t<decltype(std::declval<Record>().*field.member)>,
                                              std::int64_t>) {
                    auto const text = fmt::format("{}", value);
                    EXPECT_EQ(problem(Record::info.name, arguments).empty(),
                              numberProblem(*parameter.range, text).empty())
                        << Record::info.name << " " << field.name << " " << text;
                    ++bounds;
                }
            }
        });
    });
    EXPECT_GT(bounds, 50);
}

TEST(Operation, argumentsThatDoNotFitAreRefusedWithASentence) {
    EXPECT_EQ(problem("fly", "{}"), "There is no operation “fly”.");
    EXPECT_EQ(problem("cut", "[]"), "The arguments of cut must be a JSON object.");
    EXPECT_EQ(problem("cut", R"({"start":1})"), "end is required.");
    EXPECT_EQ(problem("cut", R"({"start":1,"end":2,"rate":3})"), "“rate” is no argument of cut.");
    EXPECT_EQ(problem("cut", R"({"start":"1","end":2})"), "start must be a number.");
    EXPECT_EQ(problem("cut", R"({"start":-1,"end":2})"), "start must be 0 or more.");
    EXPECT_EQ(problem("speed", R"({"start":1,"end":2,"rate":0.24})"), "rate must be 0.25–16.");
    EXPECT_EQ(problem("volume", R"({"track":"drum","level":1})"),
              "track must be microphone, system, voiceover, music or camera.");
    EXPECT_EQ(problem("volume", R"({"track":"music","level":2.5})"), "level must be 0–2.");
    EXPECT_EQ(problem("mute", R"({"what":"music","muted":1})"), "muted must be true or false.");
    EXPECT_THAT(problem("mute", R"({"what":"drum"})"), StartsWith("what: “drum” is no track"));
    EXPECT_EQ(problem("delete-words", R"({"first":-1})"), "first must be a whole number of 0 or more.");
    EXPECT_EQ(problem("set", R"({"changes":["camera"]})"), "changes: “camera” is no change; those are PATH=VALUE.");
    EXPECT_EQ(problem("tighten-pauses", R"({"keep":null})"), "") << "null is not given";
}

TEST(Operation, performingIsCheckedRepeatableAndAllOrNothing) {
    int made = 0, refused = 0;
    for (unsigned seed = 0; seed < 40; ++seed) {
        auto const before = randomProject(seed);
        forEachOperation([&]<class Record>(std::type_identity<Record>) {
            Operation const operation = SampleOperation(seed, before.duration() * 1.1).make<Record>();
            auto const first = tried(before, operation), second = tried(before, operation);
            EXPECT_EQ(first.said, second.said) << Record::info.name;
            EXPECT_EQ(drawn(first.project), drawn(second.project)) << Record::info.name;
            EXPECT_TRUE(!first.isRefused || first.project == before) << Record::info.name << ": " << first.said;
            ++(first.isRefused ? refused : made);
        });
    }
    EXPECT_GT(made, 100);
    EXPECT_GT(refused, 20);

    DemoProject project = randomProject(1);
    EXPECT_EQ(tried(project, operations::ChangeSpeed{.start = 0, .end = 1, .rate = 17}).said, "rate must be 0.25–16.")
        << "values from code are checked too";
    EXPECT_EQ(tried(project, operations::Cut{.start = 0, .end = project.duration()}).said,
              "The edit would leave nothing of the video, and is not made.");
}
