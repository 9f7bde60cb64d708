#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/KeyCombo.h>
#include <TavaroAutomation/Input/Private/ANSIKeys.h>
#include <TavaroAutomation/Input/Private/TextSymbols.h>

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

namespace tavaro {

TEST(KeyCombo, shortcutsAreModifiersAndOneKey) {
    EXPECT_EQ(parseShortcut("cmd+shift+4"), (KeyCombo{21, commandFlag | shiftFlag}));
    EXPECT_EQ(parseShortcut("cmd+,"), (KeyCombo{43, commandFlag}));
    EXPECT_EQ(parseShortcut("Return"), (KeyCombo{36, 0}));
    EXPECT_EQ(parseShortcut("f5"), (KeyCombo{96, 0}));
    EXPECT_EQ(parseShortcut("⌃+⌥+⇧+⌘+`"), (KeyCombo{50, controlFlag | optionFlag | shiftFlag | commandFlag}));
    EXPECT_EQ(parseShortcut("super+left"), (KeyCombo{123, superFlag}));
    for (std::string const modifier : {"cmd", "command", "⌘"})
        EXPECT_EQ(parseShortcut(modifier + "+a").flags, 0x100000U) << modifier;
    for (std::string const modifier : {"opt", "option", "alt", "⌥"})
        EXPECT_EQ(parseShortcut(modifier + "+a").flags, 0x80000U) << modifier;
    for (std::string const modifier : {"ctrl", "control", "⌃"})
        EXPECT_EQ(parseShortcut(modifier + "+a").flags, 0x40000U) << modifier;
}

TEST(KeyCombo, whatIsNoShortcutIsQuotedBack) {
    for (std::string const shortcut :
         {"hyper+k", "cmd+", "+", "", "cmd", "cmd+shift", "k+cmd", "cmd++a", "f13", "é", "cmd k"}) {
        try {
            parseShortcut(shortcut);
            ADD_FAILURE() << shortcut << " was read";
        } catch (AutomationError const& error) {
            EXPECT_EQ(error.what(),
                      "Can't read the shortcut \"" + shortcut + "\". Use e.g. cmd+shift+4, return, esc, left, f5.");
            EXPECT_EQ(error.kind, AutomationError::Kind::invalidRequest);
        }
    }
}

TEST(KeyCombo, eachKeyHasOneCodeOneSymbolAndOnePlace) {
    std::map<std::uint16_t, ANSIKey> known;
    std::set<std::string> places;
    for (auto const& key : ansiKeys()) {
        EXPECT_EQ(parseShortcut(key.name).keyCode, key.code) << key.name;
        auto const [other, isNew] = known.emplace(key.code, key);
        EXPECT_EQ(other->second.symbol, key.symbol) << key.name;
        EXPECT_EQ(places.insert(key.place).second, isNew) << key.name << " is at the place of another key";
    }
    EXPECT_EQ(known.size(), 26 + 10 + 11 + 14 + 12U) << "letters, digits, marks, named keys, function keys";
}

TEST(TextSymbols, everyCharacterHasOneAndLineEndsAreReturn) {
    EXPECT_EQ(textSymbols("aÉ\t€"), (std::vector<std::uint32_t>{'a', 0xc9, 0xff09, 0x20ac}));
    EXPECT_EQ(textSymbols("😀中"), (std::vector<std::uint32_t>{0x0101f600, 0x01004e2d}));
    EXPECT_EQ(textSymbols("a\r\nb\nc\r"), (std::vector<std::uint32_t>{'a', 0xff0d, 'b', 0xff0d, 'c', 0xff0d}));
    for (std::string const text : {"a\x01", "bell\a", "\x7f", "\xff", "\xc3", "\xed\xa0\x80"})
        EXPECT_THROW(textSymbols(text), AutomationError) << text;
}

}
