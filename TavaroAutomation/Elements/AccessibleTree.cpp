#include <TavaroAutomation/Elements/Private/AccessibleTree.h>

#include <TavaroAutomation/Elements/Private/CrowdSearch.h>
#include <TavaroAutomation/Elements/Private/ElementRole.h>
#include <TavaroAutomation/Elements/Private/ElementTitle.h>
#include <TavaroAutomation/Elements/Private/TitleSearch.h>

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>

namespace tavaro::atspi {

namespace {

// Programs make an object of each child that is asked for, so that thousands take them seconds.
constexpr int mostChildren = 1500;
constexpr int mostDepth = 80;
constexpr std::size_t manyNodes = 300;
constexpr std::size_t mostNodes = 20'000;

class TreeWalk {
public:
    TreeWalk(AccessibilityBus& bus, WalkLimits const& limits) : bus_(bus), limits_(limits), titles_(bus) {}

    AccessibleTree run(Address const& program) {
        program_ = program;
        isAnswered_ = walk();
        return collected();
    }

private:
    struct Visit {
        AccessibleNode node;
        int depth = 0;
        bool isKept = false;
        bool isPlaced = false; // its place is known
        bool isInShownRow = false;
        bool isInScroller = false;
        Widget const* known = nullptr;            // what the program said of it together with all others
        int crowd = -1;                           // of the list, where its children are found by points
        std::optional<AreaSearch::Point> askedAt; // found in a crowd
    };

    /// False as soon as the program is late. Nothing may be asked then: the answer would find nobody.
    bool walk() {
        bus_.toolkitName(program_, [this](auto const& name) { toolkit_ = toolkitNamed(name.value_or("")); });
        if (!hasAnswered()) return false;
        bus_.children(program_, [this](auto const& windows) {
            if (!windows) isCutShort_ = true;
            for (auto const& window : windows.value_or(std::vector<Address>{})) visit({.address = window});
        });
        return hasAnswered() && findTitles() && findCrowds() && findTitles() && findScrolledAway() && findCrowds() &&
               findTitles();
    }

    bool hasAnswered() { return bus_.run(limits_.deadline, limits_.stop) == AccessibilityBus::Outcome::allAnswered; }

    void visit(AccessibleNode node, std::optional<AreaSearch::Point> const& askedAt = {}) {
        int const depth = node.parent < 0 ? 0 : visits_[node.parent].depth + 1;
        // An object that is its own descendant would never end.
        if (depth > mostDepth || !seen_.insert(node.address).second) return;
        if (visits_.size() >= mostNodes) {
            isCutShort_ = true;
            return;
        }
        int const index = static_cast<int>(visits_.size());
        visits_.push_back({.node = std::move(node), .depth = depth, .askedAt = askedAt});
        if (isAskingForAll_)
            held_.push_back(index);
        else
            ask(index);
    }

    /// A program with many widgets says them faster at once.
    void expect(int children) {
        expected_ += static_cast<std::size_t>(children);
        if (expected_ < manyNodes || hasAskedForAll_) return;
        hasAskedForAll_ = isAskingForAll_ = true;
        bus_.allWidgets(program_, [this](auto all) {
            isAskingForAll_ = false;
            if (all) all_ = std::move(*all);
            for (int const index : std::exchange(held_, {})) ask(index);
        });
    }

    void ask(int index) {
        auto& visit = visits_[index];
        auto const& address = visit.node.address;
        if (auto const known = all_.find(address); known != all_.end()) {
            visit.known = &known->second;
            visit.node.states = visit.known->states;
            visit.node.role = visit.known->role;
            return described(index);
        }
        bus_.states(address, [this, index](auto const& states) {
            if (states) visits_[index].node.states = *states;
        });
        bus_.role(address, [this, index](auto const& role) {
            if (role) visits_[index].node.role = *role;
            if (role) described(index);
        });
    }

    bool mayShow(Visit const& visit) const {
        auto const& states = visit.node.states;
        if (states.has(State::defunct)) return false;
        if (visit.depth == 0) return true; // a window that was minimised shows as soon as it is raised
        if (habits().saysShowingOfWindowsOnly || isInShownRow(visit) || isViewport(visit))
            return states.has(State::visible);
        return states.has(State::showing);
    }

    /// GTK 3 looks for the viewport that a widget is in, finds itself where the widget is one, and takes it for
    /// scrolled away as soon as its contents are scrolled by more than its height.
    bool isViewport(Visit const& visit) const {
        return habits().losesScrolledViewports && visit.node.role == Role::viewport && visit.node.parent >= 0 &&
               !visits_[visit.node.parent].node.isScrolledAway;
    }

    /// GTK 3 takes the place in a widget with a window of its own, which are in rows, for one in the list, so that none
    /// of it shows in a list that was scrolled.
    bool isInShownRow(Visit const& visit) const {
        if (!habits().losesPartsOfRows || visit.node.parent < 0) return false;
        auto const& parent = visits_[visit.node.parent];
        return parent.isInShownRow || (parent.node.role == Role::listItem && !parent.node.isScrolledAway);
    }

    /// Laid out but not shown: something to click, a label in such, or what may hold such in what scrolls.
    bool mayBeScrolledAway(Visit const& visit) const {
        auto const role = visit.node.role;
        bool const isHiddenRow = habits().hidesScrolledRows && isRowOrCell(role);
        if ((!visit.node.states.has(State::visible) && !isHiddenRow) || isOfMenu(role)) return false;
        if (mayHoldField(visit)) return true;
        auto const* const parent = visit.node.parent < 0 ? nullptr : &visits_[visit.node.parent];
        if (parent && parent->node.isScrolledAway && isClickable(parent->node.role)) return isLabel(role);
        bool const mayHoldMore = !isLabel(role) || (habits().showsPages && role != Role::staticText);
        return isClickable(role) || (visit.isInScroller && mayHoldMore);
    }

    /// Whether what does not show in it can be scrolled to. The pages behind a tab are out of view for another reason.
    bool isInScroller(Visit const& visit) const {
        if (!habits().saysWhatIsScrolledAway || visit.node.parent < 0 || visit.node.role == Role::pageTab) return false;
        auto const& parent = visits_[visit.node.parent];
        return parent.isInScroller || isScroller(parent);
    }

    /// The rows of a list are labels in Java.
    bool isChoice(Visit const& visit) const {
        if (visit.node.role != Role::label || visit.node.parent < 0) return false;
        return visit.node.states.has(State::selectable) && visits_[visit.node.parent].node.role == Role::list;
    }

    /// A program answers in order, so the states are there when the role is.
    void described(int index) {
        auto& visit = visits_[index];
        auto const& address = visit.node.address;
        visit.node.ownRole = visit.node.role;
        if (isChoice(visit)) visit.node.role = Role::listItem;
        bool const isShown = mayShow(visit);
        visit.isInShownRow = isShown && isInShownRow(visit);
        visit.isInScroller = isInScroller(visit);
        visit.node.isScrolledAway = !isShown && mayBeScrolledAway(visit);
        visit.isKept = isShown || visit.node.isScrolledAway;
        if (!visit.isKept) return;
        bool const waitsForName = !visit.known && isSomewhereAway(visit);
        if (visit.known) {
            named(index, visit.known->name);
        } else if (visit.depth == 0 || isClickable(visit.node.role) || isLabel(visit.node.role)) {
            bus_.name(address, [this, index, waitsForName](auto const& name) {
                named(index, name.value_or(""));
                if (waitsForName) askForPlace(index);
            });
        }
        if (!waitsForName) askForPlace(index);
    }

    void askForPlace(int index) {
        auto const& visit = visits_[index];
        if (isSomewhereAway(visit) && !descends(visit)) return placed(index, visits_[visit.node.parent].node.extents);
        bus_.extents(visit.node.address, habits().origin, [this, index](auto const& extents) {
            if (extents) placed(index, *extents);
        });
    }

    /// Something to click in a container of which nothing shows: where that is says enough of its place, and thousands
    /// need not be asked.
    bool isSomewhereAway(Visit const& visit) const {
        if (!isFindingScrolledAway_ || !isClickable(visit.node.role)) return false;
        bool const isTold = visit.node.isScrolledAway || habits().cutsOffInEveryContainer;
        return isTold && isOfScroller(visit) && shownPart(visit.node.parent).isEmpty();
    }

    /// Menus and lists that open are elsewhere than what they are of.
    bool isOfScroller(Visit const& visit) const {
        for (int at = visit.node.parent; at >= 0; at = visits_[at].node.parent) {
            auto const& around = visits_[at];
            if (!around.isPlaced || around.node.extents.isEmpty()) return false;
            if (isClickable(around.node.role) || isOfMenu(around.node.role)) return false;
            if (isScroller(around)) return true;
        }
        return habits().scrollsInAnything;
    }

    static bool isScroller(Visit const& visit) {
        auto const role = visit.node.role;
        return role == Role::viewport || role == Role::scrollPane || role == Role::documentWeb;
    }

    /// Of a window the name stays as it is, to be compared with its title.
    void named(int index, std::string const& name) {
        auto& visit = visits_[index];
        visit.node.name = visit.depth == 0 ? name : readableTitle(name, toolkit_);
    }

    void placed(int index, Extents const& extents) {
        auto& visit = visits_[index];
        visit.node.extents = extents;
        visit.isPlaced = true;
        if (isViewport(visit) && !visit.node.states.has(State::showing))
            visit.node.extents = visits_[visit.node.parent].node.extents;
        joinCrowd(visit);
        if (isClosed(visit)) visit.isKept = false;
        if (!visit.isKept || !descends(visit)) return;
        if (visit.known) return descend(index, visit.known->childCount);
        bus_.childCount(visit.node.address, [this, index](auto const& count) { descend(index, count.value_or(0)); });
    }

    void descend(int index, int childCount) {
        auto const& visit = visits_[index];
        if (childCount <= 0) return;
        if (childCount > mostChildren && shownPart(index).isEmpty()) return;
        if (childCount > mostChildren) return addCrowd(index, childCount);
        if (!isFindingScrolledAway_ && (visit.node.isScrolledAway || shownPart(index).isEmpty()))
            return scrolledAway_.push_back({index, childCount});
        askForChildren(index, childCount);
    }

    void askForChildren(int index, int childCount) {
        expect(childCount);
        bus_.children(visits_[index].node.address, [this, index](auto const& children) {
            for (auto const& child : children.value_or(std::vector<Address>{}))
                this->visit({.address = child, .parent = index});
        });
    }

    /// What shows comes first, so that it is there where the program is too slow for the rest.
    bool findScrolledAway() {
        isFindingScrolledAway_ = true;
        constexpr std::size_t atOnce = 16;
        for (std::size_t next = 0; next < scrolledAway_.size();) {
            for (std::size_t i = 0; i < atOnce && next < scrolledAway_.size(); ++i, ++next)
                askForChildren(scrolledAway_[next].first, scrolledAway_[next].second);
            if (!hasAnswered()) return false;
        }
        scrolledAway_.clear();
        return true;
    }

    /// GTK 4 gives what is closed no size, LibreOffice its own menu bar where the desktop's replaces it; other programs
    /// have containers of no size with contents.
    bool isClosed(Visit const& visit) const {
        bool const mayBe = habits().closesToNoSize ? visit.depth > 0 : visit.node.role == Role::menuBar;
        auto const& extents = visit.node.extents;
        // What was never laid out has the size of a point.
        bool const isLaidOut = extents.width > 1 || extents.height > 1;
        return (mayBe && extents.isEmpty()) || (visit.node.isScrolledAway && visit.isInScroller && !isLaidOut);
    }

    bool mayHoldField(Visit const& visit) const { return habits().showsPages && visit.node.role == Role::label; }

    /// Of what has a title and holds nothing to click, the parts are of no interest.
    bool descends(Visit const& visit) const {
        if (mayHoldField(visit)) return true;
        if (visit.node.isScrolledAway && isClickable(visit.node.role)) return visit.node.name.empty();
        switch (visit.node.role) {
        case Role::passwordText:
        case Role::slider:
        case Role::scrollBar:
        case Role::label:
        case Role::staticText:
        case Role::entry:
        case Role::text: return false;
        case Role::checkBox:
        case Role::radioButton:
        case Role::link: return visit.node.name.empty();
        case Role::pushButton:
        case Role::toggleButton:
            return visit.node.name.empty() || (habits().wrapsMenuButtons && !visit.node.states.has(State::focusable));
        default: return true;
        }
    }

    // What has more children than it may be asked for is asked for those that show.

    struct Crowd {
        int index = 0;
        CrowdSearch search;
        // What is there already: some programs make a new object of a cell whenever they are asked for it.
        std::set<int> places;
        std::set<Extents> extents; // of what has no place
    };

    void addCrowd(int index, int childCount) {
        auto& visit = visits_[index];
        visit.crowd = static_cast<int>(crowds_.size());
        auto const role = visit.node.role;
        bool const isGrid = role == Role::table || role == Role::treeTable;
        CrowdSearch::Crowd const crowd{
            .count = childCount, .whole = visit.node.extents, .shown = shownPart(index), .isGrid = isGrid};
        crowds_.push_back({.index = index, .search = CrowdSearch(crowd), .places = {}, .extents = {}});
    }

    bool findCrowds() {
        while (askCrowds()) {
            if (!hasAnswered()) return false;
        }
        isCutShort_ =
            isCutShort_ || std::ranges::any_of(crowds_, [](Crowd const& crowd) { return !crowd.search.isWhole(); });
        return true;
    }

    /// False when there is nothing left to ask.
    bool askCrowds() {
        bool isAsking = false;
        for (std::size_t i = 0; i < crowds_.size(); ++i) {
            auto const questions = crowds_[i].search.next();
            isAsking = isAsking || !questions.isEmpty();
            for (int const place : questions.places) askForChild(crowds_[i].index, place);
            for (auto const& point : questions.points) askAt(crowds_[i].index, point);
        }
        return isAsking;
    }

    void askForChild(int index, int place) {
        bus_.childAt(visits_[index].node.address, place, [this, index, place](auto const& found) {
            if (found) visit({.address = *found, .parent = index, .isOfCrowd = true, .place = place});
        });
    }

    void askAt(int index, AreaSearch::Point const& point) {
        Place const place{point.x, point.y, habits().origin};
        bus_.atPoint(visits_[index].node.address, place, [this, index, point](auto const& found) {
            if (!found) return;
            if (habits().pointFindsInnermost) return climb(*found, index, point, mostDepth);
            join(*found, index, point);
        });
    }

    /// Up to the widget that the crowd holds itself.
    void climb(Address const& from, int index, AreaSearch::Point const& point, int levels) {
        bus_.parent(from, [this, from, index, point, levels](auto const& parent) {
            if (!parent || levels == 0) return;
            if (*parent == visits_[index].node.address)
                join(from, index, point);
            else
                climb(*parent, index, point, levels - 1);
        });
    }

    void join(Address const& found, int index, AreaSearch::Point const& point) {
        bus_.placeInParent(found, [this, found, index, point](auto const& place) {
            auto const known = place && *place >= 0 ? place : std::nullopt;
            visit({.address = found, .parent = index, .isOfCrowd = true, .place = known}, point);
        });
    }

    /// It is kept unless it is there already.
    void joinCrowd(Visit& visit) {
        int const number = visit.node.parent < 0 ? -1 : visits_[visit.node.parent].crowd;
        if (number < 0) return;
        auto& crowd = crowds_[static_cast<std::size_t>(number)];
        auto const& extents = visit.node.extents;
        if (visit.askedAt)
            crowd.search.addAtPoint(*visit.askedAt, extents, visit.node.place);
        else if (visit.node.place)
            crowd.search.addAtPlace(*visit.node.place, extents);
        bool const isNew =
            visit.node.place ? crowd.places.insert(*visit.node.place).second : crowd.extents.insert(extents).second;
        visit.isKept = isNew && !extents.intersection(shownPart(visit.node.parent)).isEmpty();
    }

    bool findTitles() {
        for (; titled_ < visits_.size(); ++titled_) {
            if (visits_[titled_].isKept) titles_.ask(visits_[titled_].node, toolkit_);
        }
        return hasAnswered();
    }

    AccessibleTree collected() {
        AccessibleTree tree{.toolkit = toolkit_, .isComplete = isAnswered_ && !isCutShort_};
        std::vector<int> places(visits_.size(), -1);
        for (std::size_t index = 0; index < visits_.size(); ++index) {
            auto& visit = visits_[index];
            int const parent = visit.node.parent < 0 ? -1 : places[static_cast<std::size_t>(visit.node.parent)];
            bool const hangs = visit.node.parent >= 0 && parent < 0;
            if (!visit.isKept || !visit.isPlaced || hangs) continue;
            places[index] = static_cast<int>(tree.nodes.size());
            if (parent >= 0) tree.nodes[static_cast<std::size_t>(parent)].children.push_back(places[index]);
            tree.nodes.push_back(std::move(visit.node));
            tree.nodes.back().parent = parent;
        }
        for (auto const& crowd : crowds_) {
            if (auto const place = places[static_cast<std::size_t>(crowd.index)]; place >= 0)
                sortAsRead(tree, tree.nodes[static_cast<std::size_t>(place)].children);
        }
        return tree;
    }

    /// Row by row.
    static void sortAsRead(AccessibleTree const& tree, std::vector<int>& nodes) {
        std::ranges::sort(nodes, {}, [&](int node) {
            auto const& extents = tree.nodes[static_cast<std::size_t>(node)].extents;
            return std::pair(extents.y, extents.x);
        });
    }

    /// The part of the widget that the widgets around it leave, and the screen.
    Extents shownPart(int index) const {
        auto part = visits_[index].node.extents;
        for (int at = visits_[index].node.parent; at >= 0; at = visits_[at].node.parent) {
            auto const& around = visits_[at].node.extents;
            if (visits_[at].isPlaced && !around.isEmpty()) part = part.intersection(around);
        }
        bool const isOnScreen = limits_.screen && habits().origin == Origin::screen;
        return isOnScreen ? part.intersection(*limits_.screen) : part;
    }

    ToolkitHabits const& habits() const { return habitsOf(toolkit_); }

    AccessibilityBus& bus_;
    WalkLimits const limits_;
    TitleSearch titles_;
    Toolkit toolkit_ = Toolkit::other;
    Address program_;
    std::deque<Visit> visits_; // visits stay where they are while others are added
    std::set<Address> seen_;
    std::vector<Crowd> crowds_;
    std::map<Address, Widget> all_;                 // where the program was asked for all
    std::vector<int> held_;                         // visits that wait for them
    std::vector<std::pair<int, int>> scrolledAway_; // whose children were not asked for yet, and how many those are
    std::size_t expected_ = 0;                      // children of all that were asked for theirs
    std::size_t titled_ = 0;                        // how many visits were asked for their titles
    bool isFindingScrolledAway_ = false;
    bool hasAskedForAll_ = false;
    bool isAskingForAll_ = false;
    bool isAnswered_ = false;
    bool isCutShort_ = false; // something keeps its contents to itself, or has more of them than anybody could use
};

}

AccessibleTree walkTree(AccessibilityBus& bus, Address const& program, WalkLimits const& limits) {
    return TreeWalk(bus, limits).run(program);
}

}
