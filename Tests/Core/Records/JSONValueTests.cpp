#include "MergePatch.h"
#include "RandomRecord.h"

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/RecordPatch.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace tavaro;

namespace {

std::string failure(std::string const& text) {
    try {
        return "read as " + encodeJSON(JSONValue{JSONValue::Array{JSONValue::parse(text)}});
    } catch (JSONError const& error) {
        return error.what();
    }
}

std::string refusal(std::string const& patch, ListItems listItems = ListItems::replacedWhole) {
    DemoProject project;
    project.zoomEvents = {{.start = 1, .duration = 2}};
    try {
        patchRecord(project, JSONValue::parse(patch), listItems);
        return "taken";
    } catch (JSONError const& error) {
        return error.what();
    }
}

JSONValue treeOf(DemoProject const& project) { return JSONValue::parse(encodeProject(project)); }

DemoProject randomProject(unsigned seed) {
    DemoProject project;
    RandomRecord(seed).fill(project);
    settleAfterReading(project.cursor);
    return project;
}

}

TEST(JSONValue, keepsWhatATextSays) {
    for (std::string const text : {"null", "true", "\"a\\n\\u0001é🎬\"", "9007199254740993", "-9223372036854775808",
                                   "0.1", "1.5e-7", "[]", "{}", R"({"a":[1,{"b":null}],"é \" ":false})"}) {
        EXPECT_EQ(encodeJSON(JSONValue{JSONValue::Array{JSONValue::parse(text)}}), "[" + text + "]");
    }
    EXPECT_EQ(JSONValue::parse(R"({"b":1,"a":2,"b":3})"), JSONValue::parse(R"({"a":2,"b":3})"));
    EXPECT_TRUE(JSONValue::parse("18446744073709551616").as<double>()) << "too large for an integer";
    for (unsigned seed = 0; seed < 20; ++seed) {
        auto const project = randomProject(seed);
        EXPECT_EQ(decodeProject(encodeJSON(treeOf(project))), project) << seed;
    }
}

TEST(JSONValue, isWrittenDownInCodeAsInText) {
    std::string_view const word = "w";
    JSONValue const value = JSONValue::Object{{"none", {}},
                                              {"flag", false},
                                              {"whole", 3u},
                                              {"real", 0.5f},
                                              {"texts", JSONValue::Array{"a", word, std::string("b")}},
                                              {"one", JSONValue::Object{{"type", "string"}}}};
    EXPECT_EQ(value, JSONValue::parse(R"({"none":null,"flag":false,"whole":3,"real":0.5,"texts":["a","w","b"],
                                          "one":{"type":"string"}})"));
    EXPECT_EQ(*value.find<std::int64_t>("whole"), 3);
    EXPECT_FALSE(value.find<double>("whole"));
    EXPECT_FALSE(value.find("type"));
    EXPECT_FALSE(value.find("whole")->find("whole")) << "a number has no members";
}

TEST(JSONValue, aNumberIsTheSameHoweverItIsWritten) {
    for (auto const* const zero : {"0", "-0"}) EXPECT_EQ(encodeJSON(JSONValue::parse(zero)), zero);
    EXPECT_EQ(JSONValue::parse("[1.0, -0.0, 1e2]"), JSONValue::parse("[1, 0, 100]"));
    for (auto const* const different : {"1.5", "2", "9223372036854775808", "-9223372036854775808", "1e300", "true"})
        EXPECT_NE(JSONValue::parse(different), JSONValue::parse("1")) << different;
    EXPECT_NE(JSONValue::parse("9007199254740993"), JSONValue::parse("9007199254740992.0")) << "not rounded first";
}

TEST(JSONValue, refusesWhatIsNotOneValue) {
    for (std::string const text : {"", " ", "1 2", "1],[2", "{", "[1,]", "nul", "{\"a\" 1}", "01", "\"\x01\""})
        EXPECT_FALSE(failure(text).starts_with("read")) << text << ": " << failure(text);
    auto const nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_TRUE(failure(nested(JSONValue::deepestNesting)).starts_with("read"));
    EXPECT_EQ(failure(nested(JSONValue::deepestNesting + 1)), "the JSON is nested too deeply");
    EXPECT_EQ(failure(std::string(1'000'000, '[')), "the JSON is nested too deeply");
}

TEST(MergePatch, meetsTheExamplesOfItsStandard) {
    std::pair<std::string, std::pair<std::string, std::string>> const examples[] = {
        {R"({"a":"b"})", {R"({"a":"c"})", R"({"a":"c"})"}},
        {R"({"a":"b"})", {R"({"b":"c"})", R"({"a":"b","b":"c"})"}},
        {R"({"a":"b"})", {R"({"a":null})", R"({})"}},
        {R"({"a":"b","b":"c"})", {R"({"a":null})", R"({"b":"c"})"}},
        {R"({"a":["b"]})", {R"({"a":"c"})", R"({"a":"c"})"}},
        {R"({"a":"c"})", {R"({"a":["b"]})", R"({"a":["b"]})"}},
        {R"({"a":{"b":"c"}})", {R"({"a":{"b":"d","c":null}})", R"({"a":{"b":"d"}})"}},
        {R"({"a":[{"b":"c"}]})", {R"({"a":[1]})", R"({"a":[1]})"}},
        {R"(["a","b"])", {R"(["c","d"])", R"(["c","d"])"}},
        {R"({"a":"b"})", {R"(["c"])", R"(["c"])"}},
        {R"({"a":"foo"})", {"null", "null"}},
        {R"({"a":"foo"})", {R"("bar")", R"("bar")"}},
        {R"({"e":null})", {R"({"a":1})", R"({"e":null,"a":1})"}},
        {R"([1,2])", {R"({"a":"b","c":null})", R"({"a":"b"})"}},
        {R"({})", {R"({"a":{"bb":{"ccc":null}}})", R"({"a":{"bb":{}}})"}},
    };
    for (auto const& [before, change] : examples) {
        auto value = JSONValue::parse(before);
        mergePatch(value, JSONValue::parse(change.first));
        EXPECT_EQ(value, JSONValue::parse(change.second)) << before << " by " << change.first;
    }
}

TEST(RecordPatch, changesARecordInPlaceAsMergingItsJSONWould) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        auto const before = randomProject(seed), other = randomProject(seed + 1000);
        auto patch = std::get<JSONValue::Object>(difference(treeOf(before), treeOf(other)).content);
        if (seed % 2) std::erase_if(patch, [&](auto const& each) { return each.first.size() % 3 != seed % 3; });
        auto merged = treeOf(before);
        mergePatch(merged, {patch});
        auto patched = before;
        patchRecord(patched, {patch});
        ASSERT_EQ(encodeProject(patched), encodeProject(decodeProject(encodeJSON(merged)))) << "seed " << seed;
        EXPECT_EQ(patched.metadata.sharesWith(before.metadata), !patch.contains("metadata"));
    }
}

TEST(RecordPatch, aCaseThatIsNamedComesInPlaceOfAnother) {
    DemoProject project;
    project.background.content = BackgroundStyle::Solid{};
    patchRecord(project, JSONValue::parse(R"({"background":{"mesh":{"speed":2}}})"));
    EXPECT_EQ(std::get<BackgroundStyle::Mesh>(project.background.content).speed, 2);
    patchRecord(project, JSONValue::parse(R"({"background":{"mesh":{"seed":3}}})"));
    EXPECT_EQ(std::get<BackgroundStyle::Mesh>(project.background.content),
              (BackgroundStyle::Mesh{.speed = 2, .seed = 3}));
    patchRecord(project, JSONValue::parse(R"({"background":{"mesh":null,"solid":{}}})"));
    EXPECT_TRUE(std::holds_alternative<BackgroundStyle::Solid>(project.background.content));
}

TEST(RecordPatch, saysWhereTheBadValueIsAndWhatWasExpected) {
    EXPECT_EQ(refusal(R"({"camera":{"size":"large"}})"), "camera.size: expected a number, found a string");
    EXPECT_EQ(refusal(R"({"camera":{"shape":"oval"}})"),
              "camera.shape: 'oval' is not one of circle, roundedSquare, square, full, wide");
    EXPECT_EQ(refusal(R"({"canvas":{"width":1.5}})"), "canvas.width: expected a whole number");
    EXPECT_EQ(refusal(R"({"canvas":{"depth":1}})"), "canvas.depth: there is no such field; there are width, height");
    EXPECT_EQ(refusal(R"({"zoomEvents":[{},{"start":true}]})"),
              "zoomEvents[1].start: expected a number, found true or false");
    EXPECT_EQ(refusal(R"({"zoomEvents":{"0":{"scale":2}}})"), "zoomEvents: expected an array, found an object");
    EXPECT_EQ(refusal(R"({"zoomEvents":[{"id":"7"}]})"), "zoomEvents[0].id: '7' is not an identifier");
    EXPECT_EQ(refusal(R"({"modifiedAt":"today"})"), "modifiedAt: Unrecognised date 'today'");
    EXPECT_EQ(refusal(R"({"camera":3})"), "camera: expected an object, found a number");
    EXPECT_EQ(refusal(R"({"screenSceneChanges":[null]})"), "screenSceneChanges[0]: expected a number, found null");
    EXPECT_EQ(refusal(R"({"background":{"solid":{},"mesh":{}}})"),
              "background: expected an object with one key, the name of the case");
    EXPECT_EQ(refusal(R"({"background":{"none":null}})"),
              "background: expected an object with one key, the name of the case");
    EXPECT_EQ(refusal(R"({"background":{"solid":{"colour":{"red":1}}}})"),
              "background.solid.colour.red: there is no such field; there are r, g, b, a");
}

TEST(RecordPatch, itemsOfAListCanBeNamedByTheirNumber) {
    DemoProject project;
    project.zoomEvents.resize(12);
    auto const ids = [&] {
        std::vector<UUID> each;
        for (auto const& zoom : project.zoomEvents) each.push_back(zoom.id);
        return each;
    };
    auto expected = ids();
    patchRecord(project, JSONValue::parse(R"({"zoomEvents":{"2":null,"10":null,"11":{"scale":3}}})"),
                ListItems::byNumber);
    expected.erase(expected.begin() + 10);
    expected.erase(expected.begin() + 2);
    EXPECT_EQ(ids(), expected);
    EXPECT_EQ(project.zoomEvents.back().scale, 3);
    EXPECT_EQ(refusal(R"({"zoomEvents":{"1":{"scale":2}}})", ListItems::byNumber),
              "zoomEvents.1: there is no such item; the list has those from 0 to 0");
    EXPECT_EQ(refusal(R"({"overlays":{"x":{}}})", ListItems::byNumber),
              "overlays.x: there is no such item; the list is empty");
}
