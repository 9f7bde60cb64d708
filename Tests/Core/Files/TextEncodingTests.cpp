#include <TavaroCore/Files/TextEncoding.h>

#include <gtest/gtest.h>

using namespace tavaro;

namespace {

std::string utf16(std::u16string_view text, bool isBigEndian) {
    std::string bytes;
    for (char16_t const unit : text) {
        auto const low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

}

TEST(TextEncoding, utf16IsReadInBothOrdersWhereAMarkSaysSo) {
    for (bool const isBigEndian : {false, true}) {
        EXPECT_EQ(utf8OfMarkedUTF16(utf16(u"\uFEFFGrüße 🎬", isBigEndian)), "Grüße 🎬");
        EXPECT_EQ(utf8OfMarkedUTF16(utf16(u"Grüße", isBigEndian)), std::nullopt);
    }
    EXPECT_EQ(utf8OfMarkedUTF16(""), std::nullopt);
    EXPECT_EQ(utf8Of("\x80 5", TextEncoding::windows1252), "€ 5");
}

TEST(TextEncoding, noCharacterOfALongTextIsTorn) {
    constexpr std::size_t characters = 600'000; // more than a stretch
    for (std::u16string text : {u"", u"x"}) {
        std::string expected(text.size(), 'x');
        for (std::size_t i = 0; i < characters; ++i) {
            text += u"🎬";
            expected += "🎬";
        }
        EXPECT_TRUE(utf8Of(utf16(text, false), TextEncoding::utf16LittleEndian) == expected);
        EXPECT_TRUE(utf8Of(utf16(text, true), TextEncoding::utf16BigEndian) == expected);
    }
}
