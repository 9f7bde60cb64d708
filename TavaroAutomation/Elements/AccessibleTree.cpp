#include <TavaroAutomation/Elements/Private/AccessibleTree.h>

#include <TavaroAutomation/Elements/Private/AreaSearch.h>
#include <TavaroAutomation/Elements/Private/ElementRole.h>
#include <TavaroAutomation/Elements/Private/ElementTitle.h>

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

Toolkit toolkitNamed(std::string const& name) {
    if (name == "gtk") return Toolkit::gtk3;
    if (name == "GTK") return Toolkit::gtk4;
    if (name == "Qt") return Toolkit::qt;
    if (name == "Chromium") return Toolkit::chromium;
    return name == "Gecko" ? Toolkit::gecko : Toolkit::other;
}

class TreeWalk {
public:
    TreeWalk(AccessibilityBus& bus, Deadline deadline, std::stop_token stop)
        : bus_(bus)
        , deadline_(deadline)
        , stop_(std::move(stop)) {}

    AccessibleTree run(Address const& program) {
        program_ = program;
        isAnswered_ = walk();
        return collected();
    }

private:
    // The best first.
    enum class TitleSource { label, description, placeholder };

    struct Visit {
        AccessibleNode node;
        int depth = 0;
        bool isKept = false;
        bool isPlaced = false; // its place is known
        bool isInShownRow = false;
        Widget const* known = nullptr; // what the program said of it together with all others
        int crowd = -1;                // of the list, where its children are found by points
        std::optional<TitleSource> titleSource;
    };

    /// False as soon as the program is late. Nothing may be asked then: the answer would find nobody.
    bool walk() {
        bus_.toolkitName(program_, [this](auto const& name) { toolkit_ = toolkitNamed(name.value_or("")); });
        if (!hasAnswered()) return false;
        bus_.children(program_, [this](auto const& windows) {
            if (!windows) isCutShort_ = true;
            for (auto const& window : windows.value_or(std::vector<Address>{})) visit(window, -1);
        });
        if (!hasAnswered()) return false;
        while (searchCrowds()) {
            if (!hasAnswered()) return false;
        }
        // Who has thousands of children and none at any point does not find them.
        isCutShort_ = isCutShort_ || std::ranges::any_of(crowds_, [this](Crowd const& crowd) {
                          return crowd.places.empty() && !shownPart(crowd.index).isEmpty();
                      });
        findTitles();
        return hasAnswered();
    }

    bool hasAnswered() { return bus_.run(deadline_, stop_) == AccessibilityBus::Outcome::allAnswered; }

    void visit(Address const& address, int parent) {
        int const depth = parent < 0 ? 0 : visits_[parent].depth + 1;
        // An object that is its own descendant would never end.
        if (depth > mostDepth || !seen_.insert(address).second) return;
        if (visits_.size() >= mostNodes) {
            isCutShort_ = true;
            return;
        }
        int const index = static_cast<int>(visits_.size());
        visits_.push_back({.node = {.address = address, .parent = parent}, .depth = depth});
        if (visits_.size() == manyNodes) askForAll();
        if (isAskingForAll_)
            held_.push_back(index);
        else
            ask(index);
    }

    /// A program with many widgets says them faster at once.
    void askForAll() {
        isAskingForAll_ = true;
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
        // GTK 4 says of nothing but windows that it shows.
        if (toolkit_ == Toolkit::gtk4 || isInShownRow(visit) || isViewport(visit)) return states.has(State::visible);
        return states.has(State::showing);
    }

    /// GTK 3 looks for the viewport that a widget is in, finds itself where the widget is one, and takes it for
    /// scrolled away as soon as its contents are scrolled by more than its height.
    bool isViewport(Visit const& visit) const {
        return toolkit_ == Toolkit::gtk3 && visit.node.role == Role::viewport && visit.node.parent >= 0 &&
               !visits_[visit.node.parent].node.isScrolledAway;
    }

    /// GTK 3 takes the place in a widget with a window of its own, which are in rows, for one in the list, so that none
    /// of it shows in a list that was scrolled.
    bool isInShownRow(Visit const& visit) const {
        if (toolkit_ != Toolkit::gtk3 || visit.node.parent < 0) return false;
        auto const& parent = visits_[visit.node.parent];
        return parent.isInShownRow || (parent.node.role == Role::listItem && !parent.node.isScrolledAway);
    }

    /// Laid out but not shown: something to click, or a label in such. Qt takes what is scrolled away in its lists and
    /// tables for invisible.
    bool mayBeScrolledAway(Visit const& visit) const {
        bool const isOfQtView = toolkit_ == Toolkit::qt && isRowOrCell(visit.node.role);
        if ((!visit.node.states.has(State::visible) && !isOfQtView) || isOfMenu(visit.node.role)) return false;
        if (mayHoldField(visit)) return true;
        auto const* const parent = visit.node.parent < 0 ? nullptr : &visits_[visit.node.parent];
        bool const isPart = parent && parent->node.isScrolledAway && !mayHoldField(*parent);
        return isPart ? isLabel(visit.node.role) : isClickable(visit.node.role);
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
        visit.node.isScrolledAway = !isShown && mayBeScrolledAway(visit);
        visit.isKept = isShown || visit.node.isScrolledAway;
        if (!visit.isKept) return;
        if (visit.known)
            named(index, visit.known->name);
        else if (visit.depth == 0 || isClickable(visit.node.role) || isLabel(visit.node.role))
            bus_.name(address, [this, index](auto const& name) { named(index, name.value_or("")); });
        bus_.extents(address, originOf(toolkit_), [this, index](auto const& extents) {
            if (extents) placed(index, *extents);
        });
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
        if (isClosed(visit) || !joinsCrowd(visit)) visit.isKept = false;
        if (!visit.isKept || !descends(visit)) return;
        if (visit.known) return descend(index, visit.known->childCount);
        bus_.childCount(visit.node.address, [this, index](auto const& count) { descend(index, count.value_or(0)); });
    }

    void descend(int index, int childCount) {
        auto& visit = visits_[index];
        if (childCount <= 0) return;
        if (childCount > mostChildren) {
            visit.crowd = static_cast<int>(crowds_.size());
            return crowds_.push_back({.index = index});
        }
        bus_.children(visit.node.address, [this, index](auto const& children) {
            for (auto const& child : children.value_or(std::vector<Address>{})) this->visit(child, index);
        });
    }

    /// GTK 4 gives what is closed no size, LibreOffice its own menu bar where the desktop's replaces it; other programs
    /// have containers of no size with contents.
    bool isClosed(Visit const& visit) const {
        bool const mayBe = toolkit_ == Toolkit::gtk4 ? visit.depth > 0 : visit.node.role == Role::menuBar;
        return mayBe && visit.node.extents.isEmpty();
    }

    /// Pages have their fields in the labels that name them.
    bool mayHoldField(Visit const& visit) const { return isOfPages(toolkit_) && visit.node.role == Role::label; }

    /// Of what has a title and holds nothing to click, the parts are of no interest.
    bool descends(Visit const& visit) const {
        if (mayHoldField(visit)) return true;
        if (visit.node.isScrolledAway) return visit.node.name.empty() && !isLabel(visit.node.role);
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
            // A menu button of GTK 4 is a button around the one that takes the clicks, and around its menu.
            return visit.node.name.empty() || (toolkit_ == Toolkit::gtk4 && !visit.node.states.has(State::focusable));
        default: return true;
        }
    }

    // What has more children than it may be asked for is asked for those at the points of its part that shows.

    struct Crowd {
        int index = 0;
        std::optional<AreaSearch> search;
        std::set<Extents> places; // some programs make a new object of a cell whenever they are asked for it
    };

    /// Asks for more; false when there is nothing left to ask.
    bool searchCrowds() {
        bool isAsking = false;
        for (auto& crowd : crowds_) {
            if (!crowd.search) crowd.search.emplace(shownPart(crowd.index));
            auto const points = crowd.search->next();
            isAsking = isAsking || !points.empty();
            for (auto const& point : points) askAt(crowd.index, point);
        }
        return isAsking;
    }

    void askAt(int index, AreaSearch::Point const& point) {
        Place const place{point.x, point.y, originOf(toolkit_)};
        bus_.atPoint(visits_[index].node.address, place, [this, index](auto const& found) {
            if (!found) return;
            // These answer with the innermost widget, which is in the one that is meant.
            if (toolkit_ == Toolkit::gtk4 || toolkit_ == Toolkit::qt) return climb(*found, index, mostDepth);
            visit(*found, index);
        });
    }

    /// Up to the widget that the crowd holds itself.
    void climb(Address const& from, int index, int levels) {
        bus_.parent(from, [this, from, index, levels](auto const& parent) {
            if (!parent || levels == 0) return;
            if (*parent == visits_[index].node.address)
                visit(from, index);
            else
                climb(*parent, index, levels - 1);
        });
    }

    /// False where it is there already.
    bool joinsCrowd(Visit& visit) {
        int const place = visit.node.parent < 0 ? -1 : visits_[visit.node.parent].crowd;
        if (place < 0) return true;
        auto& crowd = crowds_[static_cast<std::size_t>(place)];
        bool const isNew = crowd.places.insert(visit.node.extents).second;
        if (isNew) crowd.search->add(visit.node.extents);
        visit.node.isFoundByPoint = true;
        return isNew;
    }

    // Titles

    /// What has no name of its own may have labels in it or beside it, a description, or a text that it shows while it
    /// is empty. What was typed into it is not asked for.
    void findTitles() {
        for (std::size_t index = 0; index < visits_.size(); ++index) {
            auto& visit = visits_[index];
            if (!visit.isKept || !isClickable(visit.node.role)) continue;
            if (visit.node.name.empty()) askForTitle(index);
            if (isField(visit.node.role) && visit.node.role != Role::passwordText) askWhetherSearch(index);
        }
    }

    void askForTitle(std::size_t index) {
        auto const address = visits_[index].node.address;
        bus_.labels(address, [this, index](auto const& labels) {
            for (auto const& label : labels.value_or(std::vector<Address>{})) {
                bus_.name(label, [this, index](auto const& name) { offer(index, TitleSource::label, name); });
            }
        });
        bus_.description(address, [this, index](auto const& text) { offer(index, TitleSource::description, text); });
        bus_.attributes(address, [this, index](auto const& attributes) {
            if (attributes && attributes->contains("placeholder-text"))
                offer(index, TitleSource::placeholder, attributes->at("placeholder-text"));
        });
    }

    void askWhetherSearch(std::size_t index) {
        if (!isOfPages(toolkit_)) return;
        bus_.attributes(visits_[index].node.address, [this, index](auto const& attributes) {
            if (attributes && attributes->contains("text-input-type"))
                visits_[index].node.isSearch = attributes->at("text-input-type") == "search";
        });
    }

    /// The better source wins, whenever it answers.
    void offer(std::size_t index, TitleSource source, std::optional<std::string> const& text) {
        auto& visit = visits_[index];
        auto readable = readableTitle(text.value_or(""), toolkit_);
        if (readable.empty() || (visit.titleSource && *visit.titleSource <= source)) return;
        visit.node.title = std::move(readable);
        visit.titleSource = source;
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

    /// The part of the widget that the widgets around it leave.
    Extents shownPart(int index) const {
        auto part = visits_[index].node.extents;
        for (int at = visits_[index].node.parent; at >= 0; at = visits_[at].node.parent) {
            auto const& around = visits_[at].node.extents;
            if (!visits_[at].isPlaced || around.isEmpty()) continue;
            int const right = std::min(part.x + part.width, around.x + around.width);
            int const bottom = std::min(part.y + part.height, around.y + around.height);
            part.x = std::max(part.x, around.x);
            part.y = std::max(part.y, around.y);
            part.width = right - part.x;
            part.height = bottom - part.y;
        }
        return part;
    }

    AccessibilityBus& bus_;
    Deadline const deadline_;
    std::stop_token const stop_;
    Toolkit toolkit_ = Toolkit::other;
    Address program_;
    std::deque<Visit> visits_; // visits stay where they are while others are added
    std::set<Address> seen_;
    std::vector<Crowd> crowds_;
    std::map<Address, Widget> all_; // where the program was asked for all
    std::vector<int> held_;         // visits that wait for them
    bool isAskingForAll_ = false;
    bool isAnswered_ = false;
    bool isCutShort_ = false; // something keeps its contents to itself, or has more of them than anybody could use
};

}

AccessibleTree walkTree(AccessibilityBus& bus, Address const& program, Deadline deadline, std::stop_token const& stop) {
    return TreeWalk(bus, deadline, stop).run(program);
}

}
