#include <TavaroAutomation/Elements/Private/UIMatch.h>

#include <algorithm>
#include <gmock/gmock.h>
#include <random>

namespace tavaro {

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::SizeIs;

UIElement element(std::string const& role, std::string const& title) {
    return {.id = role + ":" + title, .role = role, .title = title, .frame = {0, 0, 10, 10}};
}

UIElement hidden(UIElement element) {
    element.isVisible = false;
    return element;
}

UIElement disabled(UIElement element) {
    element.isEnabled = false;
    return element;
}

std::string found(std::vector<UIElement> const& elements, std::string const& title, std::string const& role = {}) {
    auto const place = UIMatch::find(elements, {.title = title, .role = role});
    return place ? elements[*place].id : "none";
}

}

TEST(UIMatch, anExactTitleWinsOverOneThatContainsIt) {
    EXPECT_EQ(found({element("Button", "Save As…"), element("Cell", "Save")}, "Save"), "Cell:Save");
    EXPECT_EQ(found({element("Button", "Don't Save"), element("Button", "Save As…")}, "save"), "Button:Save As…");
    EXPECT_EQ(found({element("Button", "Autosave"), element("Button", "Don't Save")}, "save"), "Button:Don't Save");
    EXPECT_EQ(found({element("Button", "Save all of it"), element("Button", "Save all")}, "Save"), "Button:Save all");
}

TEST(UIMatch, titlesAreComparedAsPeopleReadThem) {
    std::pair<char const*, char const*> const same[]{{"Save As…", "save as..."},
                                                     {"Save As…", "Save As"},
                                                     {"_File", "File"},
                                                     {"&File", "file"},
                                                     {"Sa&ve", "save"},
                                                     {"Open\tCtrl+O", "Open"},
                                                     {"Café", "CAFE"},
                                                     {"Café", "Cafe\u0301"},
                                                     {"  New \n Tab ", "new tab"},
                                                     {"New\u00A0Tab", "New Tab"},
                                                     {"Name:", "Name"},
                                                     {"Don’t Save", "Don't Save"},
                                                     {"Straße", "STRASSE"},
                                                     {"1–2", "1-2"},
                                                     {"Öffnen", "offnen"},
                                                     {"ﬁle", "file"},
                                                     {"R&D", "R&D"},
                                                     {"snake_case", "snake_case"}};
    for (auto const& [title, wanted] : same) {
        EXPECT_NE(found({element("Button", title)}, wanted), "none") << title << " by " << wanted;
        EXPECT_EQ(found({element("Button", std::string("More of ") + title), element("Cell", title)}, wanted),
                  std::string("Cell:") + title)
            << "exact, though a button contains it";
    }
    EXPECT_EQ(found({element("Button", "Cafe"), element("Button", "Café")}, "Café"), "Button:Café");
    EXPECT_EQ(found({element("Button", "Open…"), element("Button", "Open")}, "Open"), "Button:Open");
    EXPECT_EQ(found({element("Button", "snakecase")}, "snake_case"), "none");
}

TEST(UIMatch, amongEqualsWinsWhatIsVisibleThenTheRole) {
    std::vector<UIElement> const roles{element("Cell", "Mail"), element("Row", "Mail"), element("TextField", "Mail"),
                                       element("Button", "Mail")};
    for (auto elements = roles; elements.size() > 1; elements.pop_back()) {
        EXPECT_EQ(found(elements, "Mail"), elements.back().id);
        auto other = elements;
        other.back() = hidden(other.back());
        EXPECT_EQ(found(other, "Mail"), elements[elements.size() - 2].id);
    }
    EXPECT_EQ(found({disabled(element("Button", "Go")), element("CheckBox", "Go")}, "Go"), "CheckBox:Go");
    EXPECT_EQ(found({disabled(element("Button", "Go")), element("Row", "Go")}, "Go"), "Button:Go");
}

TEST(UIMatch, aRoleLeavesOutAllOthers) {
    std::vector<UIElement> const elements{element("Button", "Mail"), element("Row", "Mailing list")};
    EXPECT_EQ(found(elements, "Mail", "Row"), "Row:Mailing list");
    EXPECT_EQ(found(elements, "Mail", "row"), "Row:Mailing list");
    EXPECT_EQ(found(elements, "Mail", "Link"), "none");
}

TEST(UIMatch, nothingIsFoundByNothing) {
    std::vector<UIElement> const elements{element("Button", ""), element("Button", "Mail"), element("Button", "…")};
    for (auto const* const title : {"", " ", "\u200B"}) EXPECT_EQ(found(elements, title), "none");
    EXPECT_EQ(found(elements, "…"), "Button:…");
    EXPECT_EQ(found({}, "Mail"), "none");
    EXPECT_TRUE(UIMatch::contains("Mail", ""));
    EXPECT_TRUE(UIMatch::contains("E-Mail…", "MAIL"));
    EXPECT_FALSE(UIMatch::contains("", "mail"));
}

TEST(UIMatch, theOrderOfTheListDoesNotMatter) {
    std::vector<UIElement> elements{element("Button", "Send Mail"), element("Row", "Mail"),
                                    element("Cell", "Mail"),        hidden(element("Button", "Mail")),
                                    element("Link", "Mailbox"),     disabled(element("Tab", "E-Mail"))};
    std::mt19937 random(7);
    for (int i = 0; i < 50; ++i) {
        std::ranges::shuffle(elements, random);
        EXPECT_EQ(found(elements, "Mail"), "Row:Mail");
        EXPECT_EQ(found(elements, "mail", "Link"), "Link:Mailbox");
    }
}

TEST(UIMatch, suggestsTheTitlesThatAreMostAlike) {
    std::vector<UIElement> elements{element("Button", ""), element("Button", "Preferences"), element("Row", "Zoo")};
    EXPECT_THAT(UIMatch::suggestions(elements, {.title = "Preference pane"}), ElementsAre("Preferences", "Zoo"));
    EXPECT_THAT(UIMatch::suggestions(elements, {.title = "x", .role = "Row"}), ElementsAre("Zoo"));
    for (int i = 0; i < 20; ++i) elements.push_back(element("Cell", "Cell " + std::to_string(i)));
    elements.push_back(element("Cell", "Zoo"));
    EXPECT_THAT(UIMatch::suggestions(elements, {.title = "Zooo"}), AllOf(SizeIs(8), Contains("Zoo").Times(1)));
}

}
