#pragma once

#include <span>

namespace tavaro {

class EditorSession;

/// A command of the editor as the code lists it.
struct ListedCommand {
    char const* name;
    char const* title;
    char const* group;    // of the menus and the sheet of shortcuts
    char const* shortcut; // as Qt writes key sequences; "" for none
    bool (*isPossible)(EditorSession const&);
    void (*run)(EditorSession&);
};

/// Every command, in the order of the menus.
std::span<ListedCommand const> editorCommands();

}
