#pragma once

#include <TavaroAutomation/Elements/Private/Accessible.h>

#include <string_view>

namespace tavaro::atspi {

/// What agents and scripts call a widget ("Button", "MenuItem"); empty where nobody clicks on it.
std::string_view elementRole(Role role, States states);
/// Whether some widget of that role has a name of those.
bool isClickable(Role role);
/// Text whose only use is to be read: it names what it lies in.
bool isLabel(Role role);
bool isField(Role role);
bool isRowOrCell(Role role);
/// Menus and what is in them: they show outside of what they belong to.
bool isOfMenu(Role role);

}
