#pragma once

#include <string>
#include <vector>

class QQuickItem;
class QQuickWindow;

namespace tavaro {

/// What of a window cannot be used by who does not see it: without a role, without a name, beside the window or too
/// small, or what can only be pressed by a pointer.
std::vector<std::string> reachFaults(QQuickWindow& window);

/// What keeps the user from knowing that an item has the keyboard: that the tree has it not, or not by a name, or that
/// it is not in sight.
std::vector<std::string> focusFaults(QQuickWindow& window, QQuickItem& focus);

/// Its class and its name.
/// Repeaters that are children of a layout: that of Qt 6.4 now and then crashes when their rows change.
std::vector<std::string> rowsInLayouts(QQuickItem& item);

std::string described(QQuickItem const& item);

}
