#include "ReachFaults.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>
#include <iterator>
#include <set>

namespace tavaro {

namespace {

constexpr int smallest = 16; // points
constexpr double slack = 1;  // points, since layouts round

using Role = QAccessible::Role;
std::set<Role> const pressed{Role::Button,  Role::CheckBox, Role::RadioButton, Role::ComboBox,
                             Role::PageTab, Role::MenuItem, Role::ButtonMenu,  Role::Link};
std::set<Role> const handled{Role::EditableText, Role::Slider, Role::SpinBox, Role::ListItem};
std::set<Role> const meaningless{Role::NoRole, Role::Client, Role::Window};

std::string nameOf(QAccessibleInterface const& node) { return node.text(QAccessible::Name).toStdString(); }

std::string described(QAccessibleInterface const& node) {
    return std::string(node.object() ? node.object()->metaObject()->className() : "A part") + " “" + nameOf(node) + "”";
}

/// The place that it scrolls in, if it does.
QQuickItem const* scrollerOf(QQuickItem const* item) {
    for (item = item ? item->parentItem() : nullptr; item; item = item->parentItem())
        if (item->inherits("QQuickFlickable")) return item;
    return nullptr;
}

bool canBePressed(QAccessibleInterface& node) {
    auto* const actions = node.actionInterface();
    if (!actions) return false;
    auto const names = actions->actionNames();
    return names.contains(QAccessibleActionInterface::pressAction()) ||
           names.contains(QAccessibleActionInterface::toggleAction());
}

/// The field in a control stands for the control.
QQuickItem& controlOf(QQuickItem& focus) {
    auto* const node = QAccessible::queryAccessibleInterface(&focus);
    if (node && !nameOf(*node).empty()) return focus;
    for (auto* item = focus.parentItem(); item; item = item->parentItem())
        if (item->inherits("QQuickControl")) return item->hasActiveFocus() ? *item : focus;
    return focus;
}

class Faults {
public:
    explicit Faults(QQuickWindow& window) : frame_(window.position(), window.size()) {}

    void visit(QAccessibleInterface* node) {
        if (!node || !node->isValid() || node->state().invisible) return;
        look(*node);
        for (int i = 0; i < node->childCount(); ++i) visit(node->child(i));
    }
    std::vector<std::string> found;

private:
    void add(QAccessibleInterface const& node, std::string const& what) {
        found.push_back(described(node) + " " + what);
    }

    void look(QAccessibleInterface& node) {
        auto const* const item = qobject_cast<QQuickItem*>(node.object());
        bool const isPressed = pressed.contains(node.role());
        if (item && item->activeFocusOnTab() && meaningless.contains(node.role())) add(node, "has no role");
        if (!isPressed && !handled.contains(node.role())) return;
        if (nameOf(node).empty()) add(node, "has no name");
        if (isPressed && (!item || item->isEnabled()) && !canBePressed(node)) add(node, "cannot be pressed");
        lookWhereItIs(node, item);
    }

    void lookWhereItIs(QAccessibleInterface& node, QQuickItem const* item) {
        auto const place = node.rect();
        if (place.width() < smallest || place.height() < smallest)
            add(node, "is " + std::to_string(place.width()) + " × " + std::to_string(place.height()));
        if (!item || scrollerOf(item)) return; // a part of an item may be scrolled in it
        if (!frame_.adjusted(-1, -1, 1, 1).contains(place)) add(node, "is outside of the window");
    }

    QRect const frame_;
};

}

std::vector<std::string> reachFaults(QQuickWindow& window) {
    Faults faults(window);
    faults.visit(QAccessible::queryAccessibleInterface(&window));
    return faults.found;
}

std::vector<std::string> rowsInLayouts(QQuickItem& item) {
    std::vector<std::string> found;
    auto* const parent = item.parentItem();
    if (item.inherits("QQuickRepeater") && parent && parent->inherits("QQuickLayout"))
        found.push_back("A Repeater of " + described(*parent) +
                        " is in a layout, which asks rows that are gone: use Rows");
    for (auto* const child : item.childItems()) std::ranges::move(rowsInLayouts(*child), std::back_inserter(found));
    return found;
}

std::vector<std::string> focusFaults(QQuickWindow& window, QQuickItem& focus) {
    std::vector<std::string> found;
    auto& item = controlOf(focus);
    auto* const node = QAccessible::queryAccessibleInterface(&item);
    if (!node || !node->isValid() || node->state().invisible)
        found.push_back(described(item) + " is not in the tree");
    else if (nameOf(*node).empty())
        found.push_back(described(item) + " has no name");
    auto const place = item.mapRectToScene(item.boundingRect());
    auto sight = QRectF(QPointF(), window.size());
    if (auto const* const scroller = scrollerOf(&item)) sight &= scroller->mapRectToScene(scroller->boundingRect());
    if (auto const seen = place & sight; seen.height() < std::min(place.height(), sight.height()) - slack)
        found.push_back(described(item) + " is not in sight");
    return found;
}

std::string described(QQuickItem const& item) {
    auto* const node = QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(&item));
    return std::string(item.metaObject()->className()) + " “" + (node ? nameOf(*node) : std::string()) + "”";
}

}
