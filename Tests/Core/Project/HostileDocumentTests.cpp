#include "../Records/RandomRecord.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>

#include <gtest/gtest.h>

#include <fmt/format.h>

#include <chrono>
#include <map>

using namespace tavaro;

namespace {

/// A document in which every list has items, every optional a value, and every kind of overlay and background occurs.
DemoProject fullProject() {
    DemoProject project;
    for (unsigned seed = 0; seed < 400; ++seed) { // until chance has filled everything at once
        DemoProject candidate;
        RandomRecord(seed).fill(candidate);
        if (encodeProject(candidate).size() > encodeProject(project).size()) project = candidate;
    }
    return project;
}

/// Where each value of a text begins and ends, with its path.
struct Place {
    std::string path;
    std::size_t begin, end;
};

class Places {
public:
    explicit Places(std::string_view text) : text_(text) {}

    std::vector<Place> all() {
        value("");
        return places_;
    }

private:
    // Of text that our own writer made: compact and sound.
    void value(std::string const& path) {
        auto const index = places_.size();
        places_.push_back({path, at_, 0});
        if (text_[at_] == '{' || text_[at_] == '[') {
            bool const isObject = text_[at_++] == '{';
            for (std::size_t i = 0; text_[at_] != '}' && text_[at_] != ']'; ++i) {
                if (text_[at_] == ',') ++at_;
                if (!isObject) {
                    value(fmt::format("{}[{}]", path, i));
                    continue;
                }
                auto const key = string();
                ++at_;
                value(path.empty() ? key : path + "." + key);
            }
            ++at_;
        } else if (text_[at_] == '"') {
            string();
        } else {
            while (text_[at_] != ',' && text_[at_] != '}' && text_[at_] != ']') ++at_;
        }
        places_[index].end = at_;
    }
    std::string string() {
        auto const begin = ++at_;
        for (; text_[at_] != '"'; ++at_) at_ += text_[at_] == '\\';
        return std::string(text_.substr(begin, at_++ - begin));
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::vector<Place> places_;
};

/// Nothing where the document was read.
std::optional<JSONError> failureOf(std::string_view text) {
    try {
        decodeProject(text);
        return std::nullopt;
    } catch (JSONError const& error) {
        return error;
    }
}

}

TEST(HostileDocuments, aValueOfAWrongTypeAnywhereIsNamedByItsPath) {
    auto const whole = encodeProject(fullProject());
    auto const places = Places(whole).all();
    ASSERT_GT(places.size(), 400u);
    std::map<char, std::string_view> const types{{'{', "{}"},  {'[', "[]"},   {'"', "\"?\""},
                                                 {'0', "7.5"}, {'t', "true"}, {'n', "null"}};
    int failures = 0;
    for (auto const& place : places) {
        for (auto const& [type, replacement] : types) {
            auto text = whole;
            text.replace(place.begin, place.end - place.begin, replacement);
            auto const failure = failureOf(text);
            char const first = whole[place.begin];
            char const own = first == '-' || (first >= '0' && first <= '9') ? '0' : first == 'f' ? 't' : first;
            bool const mustFail = type != own && type != 'n' && !place.path.empty();
            if (!failure) {
                // Without a value, or as an empty list or record, it reads as new; a case may be given by its name.
                ASSERT_FALSE(mustFail) << place.path << " took " << replacement;
                continue;
            }
            ++failures;
            // Sometimes what is missing is named with the case that misses it, which lies in the value.
            ASSERT_TRUE(failure->path().starts_with(place.path)) << failure->what() << " instead of " << place.path;
            ASSERT_GT(failure->problem().size(), 10u) << place.path;
        }
    }
    EXPECT_GT(failures, static_cast<int>(places.size()));
}

TEST(HostileDocuments, wildNumbersAreReadAsNearAsCanBeOrRefused) {
    for (auto const* number : {"1e999", "-1e999", "1e309", "123456789e400"}) {
        auto const failure = failureOf(fmt::format(R"({{"cameraOffset":{}}})", number));
        ASSERT_TRUE(failure) << number;
        EXPECT_EQ(failure->path(), "cameraOffset");
    }
    for (auto const* number :
         {"NaN", "Infinity", "-Infinity", "nan", "inf", "0x10", "01", "+1", "1.", ".5", "1e", "--1", "1_0"})
        EXPECT_TRUE(failureOf(fmt::format(R"({{"cameraOffset":{}}})", number))) << number;
    auto const read = [](std::string const& number) {
        return decodeProject(R"({"cameraOffset":)" + number + "}").cameraOffset;
    };
    EXPECT_EQ(read("1e-999"), 0);
    EXPECT_EQ(read("4.9e-324"), 5e-324);
    EXPECT_EQ(read("1.7976931348623157e308"), 1.7976931348623157e308);
    EXPECT_EQ(read("0." + std::string(1000, '0') + "1e1001"), 1);
    EXPECT_EQ(read(std::string(300, '9')), 1e300);
    EXPECT_EQ(read("0.1000000000000000055511151231257827021181583404541015625"), 0.1);
    EXPECT_EQ(read("9007199254740993"), 9007199254740992.0); // half way goes to the even one
    EXPECT_EQ(read("1e0000000000000000000000000000000000001"), 10);
    EXPECT_EQ(decodeProject(R"({"version":9223372036854775807})").version, 9223372036854775807);
    EXPECT_TRUE(failureOf(R"({"version":9223372036854775808})"));
    EXPECT_TRUE(failureOf(R"({"sourceSize":{"width":1e300}})"));
}

TEST(HostileDocuments, theLastOfARepeatedKeyWins) {
    auto const project =
        decodeProject(R"({"name":"a","canvas":{"width":1},"name":"b","canvas":{"width":2,"width":3}})");
    EXPECT_EQ(project.name, "b");
    EXPECT_EQ(project.canvas.width, 3);
    EXPECT_EQ(decodeProject(R"({"zoomEvents":[{"scale":1},{"scale":2}],"zoomEvents":[{"scale":3}]})").zoomEvents.size(),
              1u);
}

TEST(HostileDocuments, textsOfAnyContentAreReadOrRefusedAsAWhole) {
    auto const named = [](std::string const& text) { return R"({"name":")" + text + "\"}"; };
    EXPECT_EQ(decodeProject(named(R"(\u0041\u00e9\u65e5\ud83c\udfac\"\\\/\b\f\n\r\t\u0000)")).name,
              std::string("Aé日🎬\"\\/\b\f\n\r\t\0", 19));
    for (auto const* wrong : {R"(\x)", R"(\u12)", R"(\u12g4)", R"(\ud800)", R"(\ud800\u0041)", R"(\udc00)", R"(\u-123)",
                              "\n", "\x01", "\xff", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", R"(\)"}) {
        auto const failure = failureOf(named(wrong));
        ASSERT_TRUE(failure) << wrong;
        EXPECT_EQ(failure->kind(), JSONError::Kind::malformed) << wrong;
    }
}

TEST(HostileDocuments, deepAndBrokenStructuresEndWithASentence) {
    for (std::size_t const depth : {std::size_t{1'000}, std::size_t{1'100}, std::size_t{5'000'000}}) {
        for (auto const& [open, close] : {std::pair("[", "]"), std::pair("{\"a\":", "}")}) {
            std::string text = "{\"future\":";
            for (std::size_t i = 0; i < depth; ++i) text += open;
            text += "1";
            for (std::size_t i = 0; i < depth; ++i) text += close;
            EXPECT_EQ(failureOf(text + "}").has_value(), depth > 1024) << depth;
            EXPECT_TRUE(failureOf(text)) << depth;
        }
    }
    for (auto const* broken : {"{",
                               "}",
                               "[",
                               "{]",
                               "[}",
                               "{\"a\"}",
                               "{\"a\":}",
                               "{\"a\":1,}",
                               "{\"name\":\"x\",}",
                               "{,}",
                               "{\"a\" 1}",
                               "{a:1}",
                               "{\"a\":1 \"b\":2}",
                               "{\"zoomEvents\":[{},]}",
                               "{\"zoomEvents\":[,{}]}",
                               "{\"zoomEvents\":[{}}",
                               "{} {}",
                               "{}x",
                               "{\"a\":tru}",
                               "{\"a\":nul}",
                               "{\"name\":nulll}",
                               "{\"a\":\"}",
                               "{\"a",
                               "\"{}\"",
                               "7",
                               "null",
                               "",
                               "  \n"}) {
        EXPECT_TRUE(failureOf(broken)) << broken;
    }
    for (auto const* fine : {" {} ", "{\"a\":[]}", "{ \"name\" : \"x\" , \"b\" : [ 1 , { } ] }\n", "{\"name\":null}"})
        EXPECT_FALSE(failureOf(fine)) << fine;
}

TEST(HostileDocuments, hugeTextsTakeNoLongerThanTheirLength) {
    std::string const huge(100 << 20, 'x');
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(decodeProject("{\"name\":\"" + huge + "\"}").name.size(), huge.size());
    EXPECT_FALSE(failureOf("{\"future\":\"" + huge + "\"}"));
    EXPECT_TRUE(failureOf("{\"name\":\"" + huge));
    EXPECT_TRUE(failureOf("{\"mode\":\"" + huge + "\"}").value().problem().size() <
                1000); // the sentence does not repeat it
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(HostileDocuments, aSmallFileThatUnfoldsToMoreThanADocumentMayIsRefused) {
    struct Case {
        std::string before, element, after;
        std::size_t bytes;
    };
    for (auto const& [before, element, after, bytes] :
         {Case{R"({"overlays":[)", "{}", "]}", 8'000'000}, Case{R"({"metadata":{"clicks":[)", "{}", "]}}", 16'000'000},
          Case{R"({"metadata":{"cursorSamples":[)", "{}", "]}}", 60'000'000}}) {
        auto text = before + element;
        while (text.size() < bytes) text.append(",").append(element);
        text += after;
        auto const failure = failureOf(text);
        ASSERT_TRUE(failure) << before;
        EXPECT_EQ(failure->kind(), JSONError::Kind::tooLarge) << failure->what();
        EXPECT_TRUE(failure->problem() == "it would take more than 1 GiB of memory") << failure->what();
    }
}

TEST(HostileDocuments, assetNamesWithAnythingInThemStayInsideThePackage) {
    ProjectPackage const package("/p/take.recproj");
    for (auto const* name : {R"(../../etc/passwd)", R"(/etc/passwd)", R"(a\u0000b)", R"(..)", R"(.)", R"(a/..)",
                             R"(..\\..\\x)", R"(\n)", R"()"}) {
        auto const project = decodeProject(fmt::format(R"({{"cameraAsset":"{}"}})", name));
        auto const url = package.assetURL(*project.cameraAsset);
        EXPECT_EQ(url.parent_path(), package.assetsURL()) << name;
        EXPECT_EQ(url.lexically_normal(), url) << name;
    }
}
