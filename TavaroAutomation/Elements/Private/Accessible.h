#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

/// What programs tell of their widgets on the accessibility bus, with the numbers of AT-SPI 2.
namespace tavaro::atspi {

/// Where a widget is addressed: the connection of its program, and the object in there.
struct Address {
    std::string bus;
    std::string path;

    /// Programs answer with an object of that name where they have none.
    bool isNull() const { return path.empty() || path.ends_with("/null"); }
    auto operator<=>(Address const&) const = default;
};

/// In what the toolkit takes for points: divided by the scale, and with toolkits that do not know their window's place,
/// from a corner of the window.
struct Extents {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    Extents intersection(Extents const& other) const {
        int const left = std::max(x, other.x), right = std::min(x + width, other.x + other.width);
        int const top = std::max(y, other.y), bottom = std::min(y + height, other.y + other.height);
        return {left, top, std::max(right - left, 0), std::max(bottom - top, 0)};
    }
    auto operator<=>(Extents const&) const = default;
};

/// From where places count.
enum class Origin : std::uint32_t { screen = 0, window = 1 };

struct Place {
    int x = 0;
    int y = 0;
    Origin origin = Origin::screen;
};

enum class Role : std::uint32_t {
    checkBox = 7,
    checkMenuItem = 8,
    columnHeader = 10,
    comboBox = 11,
    dialog = 16,
    filler = 20,
    frame = 23,
    icon = 26,
    image = 27,
    internalFrame = 28,
    label = 29,
    list = 31,
    listItem = 32,
    menu = 33,
    menuBar = 34,
    menuItem = 35,
    pageTab = 37,
    pageTabList = 38,
    panel = 39,
    passwordText = 40,
    popupMenu = 41,
    pushButton = 43,
    radioButton = 44,
    radioMenuItem = 45,
    rootPane = 46,
    scrollBar = 48,
    scrollPane = 49,
    separator = 50,
    slider = 51,
    spinButton = 52,
    table = 55,
    tableCell = 56,
    tableColumnHeader = 57,
    tearOffMenuItem = 59,
    text = 61,
    toggleButton = 62,
    toolTip = 64,
    tree = 65,
    treeTable = 66,
    viewport = 68,
    window = 69,
    paragraph = 73,
    application = 75,
    autocomplete = 76,
    entry = 79,
    documentFrame = 82,
    heading = 83,
    link = 88,
    tableRow = 90,
    treeItem = 91,
    documentText = 94,
    documentWeb = 95,
    listBox = 98,
    staticText = 116,
    pushButtonMenu = 129,
};

enum class State : unsigned {
    defunct = 6,
    editable = 7,
    enabled = 8,
    expandable = 9,
    expanded = 10,
    focusable = 11,
    multiLine = 17,
    selectable = 22,
    sensitive = 24,
    showing = 25,
    visible = 30,
    managesDescendants = 31,
    checkable = 41,
    hasPopup = 42,
};

class States {
public:
    constexpr States() = default;
    explicit constexpr States(std::uint64_t bits) : bits_(bits) {}

    constexpr bool has(State state) const { return (bits_ >> static_cast<unsigned>(state) & 1U) != 0; }
    bool operator==(States const&) const = default;

private:
    std::uint64_t bits_ = 0;
};

/// What a program says of a widget at once; not its place.
struct Widget {
    Role role{};
    States states;
    std::string name;
    int childCount = 0;
};

}
