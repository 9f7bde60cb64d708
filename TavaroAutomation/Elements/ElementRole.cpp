#include <TavaroAutomation/Elements/Private/ElementRole.h>

namespace tavaro::atspi {

std::string_view elementRole(Role role, States states) {
    switch (role) {
    case Role::pushButton: return states.has(State::hasPopup) ? "MenuButton" : "Button";
    case Role::pushButtonMenu: return "MenuButton";
    case Role::toggleButton:
        if (states.has(State::hasPopup)) return "MenuButton";
        return states.has(State::expandable) ? "DisclosureTriangle" : "Button";
    case Role::columnHeader:
    case Role::tableColumnHeader: return "Button";
    case Role::checkBox: return "CheckBox";
    case Role::radioButton: return "RadioButton";
    case Role::comboBox: return "PopUpButton";
    case Role::menu:
    case Role::menuItem:
    case Role::checkMenuItem:
    case Role::radioMenuItem:
    case Role::tearOffMenuItem: return "MenuItem";
    case Role::link: return "Link";
    case Role::text:
        if (!states.has(State::editable)) return "";
        return states.has(State::multiLine) ? "TextArea" : "TextField";
    case Role::entry: return states.has(State::multiLine) ? "TextArea" : "TextField";
    case Role::documentText: return states.has(State::editable) ? "TextArea" : "";
    case Role::autocomplete:
    case Role::passwordText: return "TextField";
    case Role::slider: return "Slider";
    case Role::spinButton: return "Stepper";
    case Role::pageTab: return "Tab";
    case Role::listItem:
    case Role::tableRow: return "Row";
    case Role::treeItem: return "OutlineRow";
    case Role::tableCell: return states.has(State::expandable) ? "OutlineRow" : "Cell";
    case Role::icon: return "Icon";
    default: return "";
    }
}

bool isClickable(Role role) {
    return role == Role::text || role == Role::documentText || !elementRole(role, States()).empty();
}

bool isLabel(Role role) {
    return role == Role::label || role == Role::staticText || role == Role::paragraph || role == Role::heading;
}

bool isField(Role role) {
    return role == Role::text || role == Role::documentText || role == Role::entry || role == Role::autocomplete ||
           role == Role::passwordText;
}

bool isRowOrCell(Role role) {
    return role == Role::listItem || role == Role::tableRow || role == Role::treeItem || role == Role::tableCell;
}

bool isOfMenu(Role role) {
    switch (role) {
    case Role::menu:
    case Role::menuItem:
    case Role::checkMenuItem:
    case Role::radioMenuItem:
    case Role::tearOffMenuItem:
    case Role::popupMenu: return true;
    default: return false;
    }
}

}
