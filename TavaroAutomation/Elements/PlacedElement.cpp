#include <TavaroAutomation/Elements/Private/PlacedElement.h>

#include <TavaroAutomation/Elements/Private/ElementRole.h>
#include <TavaroAutomation/Elements/Private/ElementTitle.h>
#include <TavaroAutomation/Elements/Private/WindowScales.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <numeric>
#include <optional>
#include <tuple>

namespace tavaro::atspi {

namespace {

using Windows = std::vector<x11::OpenWindow>;

bool isTitled(x11::OpenWindow const& window, AccessibleNode const& root) {
    return x11::readableTitle(root.name) == window.title;
}

double mismatch(AccessibleNode const& root, WindowFit const& fit, x11::OpenWindow const& window) {
    constexpr double otherTitle = 100; // in points of size
    return fit.difference + (isTitled(window, root) ? 0 : otherTitle);
}

/// GTK 4 asks for room for a shadow that its own sizes leave out, on every side.
constexpr double widestMargin = 160;

bool isPlausible(AccessibleNode const& root, WindowFit const& fit, x11::OpenWindow const& window) {
    return isTitled(window, root) || fit.difference < (window.isPopup ? 2 * rounding : 2 * widestMargin);
}

/// The places of windows that tell of themselves: of every root of the tree, none for those that no window shows.
std::vector<std::optional<std::size_t>> matchWindows(AccessibleTree const& tree, WindowScales const& scales,
                                                     Windows const& windows) {
    std::vector<std::optional<std::size_t>> result;
    std::vector<bool> isTaken(windows.size());
    for (auto const& root : tree.nodes) {
        if (root.parent >= 0) continue;
        std::optional<std::size_t> best;
        double least = 0;
        for (std::size_t i = 0; i < windows.size(); ++i) {
            auto const fit = scales.bestFit(windowExtents(tree, root), windows[i]);
            if (isTaken[i] || !isPlausible(root, fit, windows[i])) continue;
            double const difference = mismatch(root, fit, windows[i]);
            if (best && difference >= least) continue;
            best = i;
            least = difference;
        }
        if (best) isTaken[*best] = true;
        result.push_back(best);
    }
    return result;
}

Placement placementOf(Extents const& root, WindowFit const& fit, Toolkit toolkit, x11::OpenWindow const& window) {
    double const scale = fit.scale;
    bool const isThere = std::abs(root.x * scale - fit.rect.x) + std::abs(root.y * scale - fit.rect.y) <= 2 * rounding;
    if (!habitsOf(toolkit).countsFromShadow && (isThere || fit.difference > 2 * rounding)) return {.scale = scale};
    // The program does not know where its window is: what it says counts from inside of the margin for the shadow.
    auto const margin = [](double outer, double inner) { return std::max(outer - inner, 0.0) / 2; };
    double const left = margin(window.contents.width, root.width * scale);
    double const top = margin(window.contents.height, root.height * scale);
    return {.scale = scale,
            .dx = window.contents.x + left - root.x * scale,
            .dy = window.contents.y + top - root.y * scale};
}

/// What cuts off its contents: everything that is laid out around them, but not what opens a menu or a list.
bool isClipping(AccessibleNode const& node, Toolkit toolkit) {
    if (node.extents.isEmpty()) return false;
    switch (node.role) {
    case Role::frame:
    case Role::dialog:
    case Role::window:
    case Role::scrollPane:
    case Role::viewport:
    case Role::list:
    case Role::listBox:
    case Role::table:
    case Role::tree:
    case Role::treeTable:
    case Role::internalFrame:
    case Role::documentFrame:
    case Role::documentWeb: return true;
    default: break;
    }
    bool const isLaidOut = !isClickable(node.role) && !isOfMenu(node.role) && node.role != Role::menuBar;
    return isLaidOut && habitsOf(toolkit).cutsOffInEveryContainer;
}

Extents united(Extents const& a, Extents const& b) {
    int const x = std::min(a.x, b.x), y = std::min(a.y, b.y);
    return {x, y, std::max(a.x + a.width, b.x + b.width) - x, std::max(a.y + a.height, b.y + b.height) - y};
}

// GTK 3 has no place for what it does not show.
constexpr double farthest = 1e6;

bool isButton(Role role) {
    return role == Role::pushButton || role == Role::toggleButton || role == Role::pushButtonMenu;
}

class Placing {
public:
    Placing(AccessibleTree const& tree, Windows const& windows, UIRect const& screen)
        : tree_(tree)
        , windows_(windows)
        , scales_(tree, windows)
        , screen_(screen) {}

    std::vector<PlacedElement> run() {
        auto const matches = matchWindows(tree_, scales_, windows_);
        std::vector<std::pair<std::size_t, int>> roots; // by the place of the window
        std::size_t root = 0;
        for (int i = 0; i < static_cast<int>(tree_.nodes.size()); ++i) {
            if (node(i).parent >= 0) continue;
            if (auto const window = matches[root++]) roots.emplace_back(*window, i);
        }
        std::ranges::stable_sort(roots, {}, [](auto const& each) { return each.first; });
        for (auto const& [window, index] : roots) placeWindow(index, window);
        return std::move(placed_);
    }

private:
    /// What surrounds a node.
    struct Around {
        Placement placement;
        UIRect clip;
        UIRect view; // the last of those around it that shows: what scrolls it
        std::size_t window = 0;
        int root = 0;
        bool isInMenu = false;       // one that is open
        std::optional<UIRect> combo; // whose list the node is in, which shows in a window of its own
    };

    ToolkitHabits const& habits() const { return habitsOf(tree_.toolkit); }
    AccessibleNode const& node(int index) const { return tree_.nodes[static_cast<std::size_t>(index)]; }

    void placeWindow(int root, std::size_t window) {
        auto const extents = windowExtents(tree_, node(root));
        auto const fit = scales_.bestFit(extents, windows_[window]);
        auto const placement = placementOf(extents, fit, tree_.toolkit, windows_[window]);
        auto const clip = windows_[window].frame.intersection(screen_);
        Around const around{.placement = placement, .clip = clip, .window = window, .root = root};
        for (int const child : node(root).children) place(child, around);
    }

    void place(int index, Around around) {
        enterPopup(node(index), around);
        if (isInPixels(node(index))) around.placement.scale = 1;
        auto const frame = around.placement.onScreen(node(index).extents);
        add(index, frame, around);
        if (!around.clip.isEmpty()) around.view = around.clip;
        if (isClipping(node(index), tree_.toolkit)) around.clip = around.clip.intersection(frame);
        if (node(index).role == Role::comboBox) around.combo = frame;
        if (node(index).role == Role::popupMenu) {
            moveIntoMenu(index, around.placement);
            around.isInMenu = around.isInMenu || !frame.isEmpty();
        }
        for (int const child : node(index).children) place(child, around);
    }

    bool isInPixels(AccessibleNode const& node) const {
        return habits().hasPagesInPixels && node.role == Role::documentWeb;
    }

    /// Menus and lists open in windows of their own.
    void enterPopup(AccessibleNode const& node, Around& around) const {
        for (std::size_t i = 0; i < windows_.size(); ++i) {
            auto const& popup = windows_[i];
            if (!popup.isPopup || i == around.window) continue;
            if (habits().countsFromShadow) {
                // It places what is in a popup from the popup's corner, and gives no other hint of it than the size.
                auto const fit = sizeDifference(node.extents, around.placement.scale, popup.contents);
                if (windows_[around.window].isPopup || node.extents.isEmpty() || fit > 1) continue;
                around.placement.dx = popup.contents.x - node.extents.x * around.placement.scale;
                around.placement.dy = popup.contents.y - node.extents.y * around.placement.scale;
            } else {
                auto const center = around.placement.onScreen(node.extents).center();
                bool const mayBe = isOfMenu(node.role) || around.combo || !around.clip.contains(center);
                if (!mayBe || !popup.contents.contains(center)) continue;
            }
            around.clip = popup.contents.intersection(screen_);
            around.window = i;
            around.combo.reset();
            return;
        }
    }

    void moveIntoMenu(int menu, Placement& placement) const {
        auto const& children = node(menu).children;
        if (!habits().misplacesMenuItems || children.empty()) return;
        auto const all =
            std::accumulate(children.begin(), children.end(), node(children[0]).extents,
                            [this](Extents const& sum, int child) { return united(sum, node(child).extents); });
        auto const outer = placement.onScreen(node(menu).extents).center(), inner = placement.onScreen(all).center();
        placement.dx += outer.x - inner.x;
        placement.dy += outer.y - inner.y;
    }

    /// What can be seen of an element, or where it can be scrolled to.
    struct Seen {
        bool isInside = false;
        UIRect shown;
        UIRect view; // what scrolls it
    };

    /// None of what is closed, nor of what is said to be scrolled away though it lies where it would show: that is
    /// hidden for another reason.
    std::optional<Seen> seen(AccessibleNode const& it, UIRect const& frame, Around const& around) const {
        bool const isInClosedList = around.combo && !around.combo->contains(frame.center());
        if (frame.isEmpty() || isInClosedList || isInClosedMenu(it, around)) return std::nullopt;
        auto const shown = frame.intersection(around.clip);
        bool const isInside = !shown.isEmpty() && around.clip.contains(shown.center());
        auto const& view = around.clip.isEmpty() ? around.view : around.clip;
        bool const isAway = !isInside && !around.combo && !isOfMenu(it.role) && !view.isEmpty();
        if (!isAway && (it.isScrolledAway || !isInside)) return std::nullopt;
        return Seen{.isInside = isInside, .shown = shown, .view = view};
    }

    void add(int index, UIRect const& frame, Around const& around) {
        auto const& it = node(index);
        auto const role = it.isSearch ? "SearchField" : elementRole(it.role, it.states);
        auto const part = seen(it, frame, around);
        if (role.empty() || !part || isWrapper(index)) return;
        auto const& [isInside, shown, view] = *part;
        auto const title = titleOf(index);
        bool const isSomewhere = std::abs(frame.x) < farthest && std::abs(frame.y) < farthest;
        placed_.push_back({.element = {.id = elementID(lastingAddress(it, role, title), role, title),
                                       .role = std::string(role),
                                       .title = title,
                                       .frame = isSomewhere ? frame : UIRect{view.center().x, view.center().y},
                                       .isEnabled = isEnabled(it),
                                       .isVisible = isInside && !isCovered(shown.center(), around.window)},
                           .address = it.address,
                           .root = node(around.root).address,
                           .toolkit = tree_.toolkit,
                           .ownRole = it.ownRole,
                           .ownName = it.name,
                           .placement = around.placement,
                           .window = windows_[around.window].window,
                           .isInPopup = windows_[around.window].isPopup,
                           .isInMenu = around.isInMenu,
                           .shownPart = isInside ? shown : view});
    }

    bool isInClosedMenu(AccessibleNode const& node, Around const& around) const {
        if (!habits().opensMenusInWindows || node.parent < 0) return false;
        auto const parent = this->node(node.parent).role;
        return (parent == Role::menu || parent == Role::popupMenu) && !windows_[around.window].isPopup;
    }

    /// LibreOffice does not say of documents, rows and cells that they are sensitive, only that they are enabled.
    static bool isEnabled(AccessibleNode const& node) {
        bool const isOfDocument = isRowOrCell(node.role) || node.role == Role::documentText;
        return node.states.has(State::sensitive) || (isOfDocument && node.states.has(State::enabled));
    }

    /// What programs make anew is told apart by its place among the children, and where nobody says that, by its title,
    /// and by which of those of that title it is.
    Address lastingAddress(AccessibleNode const& node, std::string_view role, std::string const& title) {
        bool const isAnew = habits().makesRowsAnew || (habits().makesCellsAnew && node.isOfCrowd);
        if (!isAnew || !isRowOrCell(node.role) || node.parent < 0) return node.address;
        auto const& holder = this->node(node.parent).address;
        if (node.place) return {holder.bus, fmt::format("{}/{}", holder.path, *node.place)};
        int const place = sameBefore_[{node.parent, std::string(role), title}]++;
        return {holder.bus, fmt::format("{}/{}", holder.path, place)};
    }

    /// A button around the button that takes the clicks.
    bool isWrapper(int index) const {
        if (!isButton(node(index).role) || node(index).states.has(State::focusable)) return false;
        return std::ranges::any_of(node(index).children, [this](int child) {
            return isButton(node(child).role) && node(child).states.has(State::focusable);
        });
    }

    bool isCovered(UIPoint const& point, std::size_t window) const {
        if (windows_[window].isMinimized) return true;
        return std::any_of(windows_.begin(), windows_.begin() + static_cast<std::ptrdiff_t>(window),
                           [&](auto const& above) { return !above.isMinimized && above.frame.contains(point); });
    }

    std::string titleOf(int index) const {
        auto const& it = node(index);
        if (!it.name.empty()) return it.name;
        if (!isField(it.role) && it.role != Role::comboBox) {
            auto const labels = labelsIn(index, 0);
            if (!labels.empty()) return readableTitle(labels, tree_.toolkit);
        }
        return it.title.empty() ? titleAround(index) : it.title;
    }

    std::string labelsIn(int index, int depth) const {
        constexpr int deepest = 4;
        std::string result;
        for (int const child : node(index).children) {
            auto const& label = node(child);
            auto const part = isLabel(label.role) && !label.name.empty() ? label.name
                              : depth < deepest                          ? labelsIn(child, depth + 1)
                                                                         : std::string();
            if (!part.empty() && !isBullet(part)) result += (result.empty() ? "" : " ") + part;
        }
        return result;
    }

    /// A menu button of GTK 4 may have its title on the button around it.
    std::string titleAround(int index) const {
        int const parent = node(index).parent;
        return parent >= 0 && isButton(node(index).role) && isWrapper(parent) ? titleOf(parent) : std::string();
    }

    AccessibleTree const& tree_;
    Windows const& windows_;
    WindowScales const scales_;
    UIRect const screen_;
    std::vector<PlacedElement> placed_;
    std::map<std::tuple<int, std::string, std::string>, int> sameBefore_;
};

}

UIRect Placement::onScreen(Extents const& extents) const {
    return {extents.x * scale + dx, extents.y * scale + dy, extents.width * scale, extents.height * scale};
}

std::vector<PlacedElement> placedElements(AccessibleTree const& tree, Windows const& windows, UIRect const& screen) {
    return Placing(tree, windows, screen).run();
}

std::string elementID(Address const& address, std::string_view role, std::string_view title) {
    constexpr std::uint64_t offset = 0xCBF29CE484222325U, prime = 0x100000001B3U; // FNV-1a
    std::uint64_t hash = offset;
    for (std::string_view const part : {std::string_view(address.bus), std::string_view(address.path), role, title}) {
        for (char const c : part) hash = (hash ^ static_cast<unsigned char>(c)) * prime;
        hash = (hash ^ 0xFFU) * prime; // no byte of a text
    }
    constexpr std::string_view digits = "0123456789abcdefghjkmnpqrstvwxyz";
    constexpr int length = 9;
    hash ^= hash >> 32U;
    std::string result = "e";
    for (int i = 0; i < length; ++i, hash >>= 5U) result += digits[hash & 31U];
    return result;
}

}
