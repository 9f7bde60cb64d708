#pragma once

#include <TavaroAutomation/Elements/Private/Toolkit.h>

#include <string>
#include <string_view>

namespace tavaro::atspi {

/// What people read of a name that a toolkit gives: one line without markup, at most 200 characters of it. GTK 4 names
/// what has no name by its class, and says a label twice, once with its mnemonic.
std::string readableTitle(std::string_view name, Toolkit toolkit);

/// Whether it is only the sign that pages draw before an item of a list.
bool isBullet(std::string_view title);

}
