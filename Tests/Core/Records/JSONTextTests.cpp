#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Records/JSONText.h>

#include <gtest/gtest.h>

using namespace tavaro;

namespace {

struct Envelope {
    std::string kind;
    JSONText content;

    static constexpr auto fields = std::tuple{field("kind", &Envelope::kind), field("content", &Envelope::content)};
};
static_assert(listsEveryField<Envelope>);

}

TEST(JSONText, passesAnyValueOnAsItIsSpelled) {
    for (auto const* const value :
         {"null", "-0.50e+1", "true", R"("a\u00e9\n“b”")", "[]", "{}", R"({"b":[1,{"a":null}],"a":2})"}) {
        auto const line = std::string(R"({"content":)") + value + R"(,"kind":"k"})";
        auto const envelope = decodeJSON<Envelope>(line);
        EXPECT_EQ(envelope.content.text(), value);
        EXPECT_EQ(envelope.content.value(), JSONValue::parse(value));
        EXPECT_EQ(encodeJSON(envelope), line);
    }
}

TEST(JSONText, staysOneLineAndRefusesWhatIsNoValue) {
    auto const envelope = decodeJSON<Envelope>("{\"content\" :\r\n [1,\n\r2 ] , \"kind\":\"k\"}");
    EXPECT_EQ(encodeJSON(envelope).find_first_of("\r\n"), std::string::npos);
    EXPECT_EQ(envelope.content.value(), (JSONValue::Array{1, 2}));
    for (auto const* const broken : {"", "tru", "[1", "{\"a\"}", "01", "\"\n\"", "\"\\x\""}) {
        auto const line = std::string(R"({"content":)") + broken + R"(,"kind":"k"})";
        EXPECT_THROW(decodeJSON<Envelope>(line), JSONError) << broken;
    }
}
