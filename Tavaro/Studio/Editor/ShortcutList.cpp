#include <Tavaro/Studio/Editor/ShortcutList.h>

#include <Tavaro/Studio/Editor/EditorCommands.h>

#include <QKeySequence>
#include <QStringList>

#include <algorithm>
#include <array>
#include <string_view>

namespace tavaro {

namespace {

constexpr int groupRole = Qt::UserRole, titleRole = groupRole + 1, keysRole = groupRole + 2;

struct Keys {
    char const* group;
    char const* title;
    char const* keys; // several with " / "
};

/// What is no command of the editor.
constexpr std::array others{
    Keys{"Play", "Play or Pause", "Space"},
    Keys{"On the Film", "Move What Is Selected", "Left / Right / Up / Down"},
    Keys{"On the Film", "Move It by Ten Pixels", "Shift+Left / Shift+Right"},
    Keys{"On the Film", "Make It Larger", "+"},
    Keys{"On the Film", "Make It Smaller", "-"},
    Keys{"On the Film", "Edit Its Text", "Return"},
    Keys{"On the Film", "Leave the Tool, Then the Selection", "Esc"},
    Keys{"On the Film", "Show the Take as It Was Recorded", "\\"},
    Keys{"Timeline", "Select the Item Before", "["},
    Keys{"Timeline", "Select the Next Item", "]"},
    Keys{"Timeline", "Zoom In", "+"},
    Keys{"Timeline", "Zoom Out", "-"},
    Keys{"Timeline", "Show All", "Ctrl+0 / Shift+Z"},
    Keys{"Timeline", "Menu of What Is Selected", "Menu / Shift+F10"},
    Keys{"Transcript", "Go from Word to Word", "Left / Right / Up / Down"},
    Keys{"Transcript", "Select Words", "Shift+Left / Shift+Right"},
    Keys{"Transcript", "Cut Words from the Film", "Del / Backspace"},
    Keys{"Transcript", "Correct a Word", "F2"},
    Keys{"Transcript", "Leave the Selection", "Esc"},
    Keys{"Transcript", "Menu of What Is Selected", "Menu"},
    Keys{"Captions", "Split It Where the Cursor Is", "Ctrl+Return"},
    Keys{"Library", "Open the Project", "Return / Space"},
    Keys{"Library", "Rename It", "F2"},
    Keys{"Library", "Move It to the Trash", "Del"},
    Keys{"Library", "Its Menu", "Menu"},
    Keys{"Window", "Library", "Ctrl+1"},
    Keys{"Window", "Record", "Ctrl+2 / Ctrl+N"},
    Keys{"Window", "Exports", "Ctrl+3"},
    Keys{"Window", "Settings", "Ctrl+,"},
    Keys{"Window", "Fold or Unfold the Side Panel", "Ctrl+I"},
    Keys{"Window", "Search the Library", "Ctrl+F"},
    Keys{"Window", "Open a Project or Movie", "Ctrl+O"},
    Keys{"Window", "Close the Project", "Ctrl+W"},
    Keys{"Window", "Keyboard Shortcuts", "Ctrl+?"},
    Keys{"Window", "Quit", "Ctrl+Q"},
};

QString shown(QString const& keys) {
    QStringList texts;
    for (auto const& each : keys.split(QStringLiteral(" / ")))
        texts.push_back(QKeySequence(each, QKeySequence::PortableText).toString(QKeySequence::NativeText));
    return texts.join(QStringLiteral(" / "));
}

}

ShortcutList::ShortcutList(QObject* parent) : shown_(all()) { setParent(parent); }

std::vector<ShortcutList::Entry> ShortcutList::all() {
    std::vector<Entry> entries;
    auto const add = [&](char const* group, char const* title, char const* keys) {
        entries.push_back({QString::fromUtf8(group), QString::fromUtf8(title), shown(QString::fromUtf8(keys))});
    };
    for (auto const& command : editorCommands()) {
        if (std::string_view(command.shortcut) != "") add(command.group, command.title, command.shortcut);
    }
    for (auto const& other : others) add(other.group, other.title, other.keys);
    return entries;
}

void ShortcutList::setSought(QString const& text) {
    if (text == sought_) return;
    sought_ = text;
    beginResetModel();
    shown_ = all();
    std::erase_if(shown_, [this](Entry const& entry) { return !isSought(entry); });
    endResetModel();
    Q_EMIT countChanged();
    Q_EMIT soughtChanged();
}

bool ShortcutList::isSought(Entry const& entry) const {
    auto const text = entry.group + QLatin1Char(' ') + entry.title + QLatin1Char(' ') + entry.keys;
    auto const words = sought_.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return std::ranges::all_of(words, [&](QString const& word) { return text.contains(word, Qt::CaseInsensitive); });
}

int ShortcutList::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

QHash<int, QByteArray> ShortcutList::roleNames() const {
    return {{groupRole, "group"}, {titleRole, "title"}, {keysRole, "keys"}};
}

QVariant ShortcutList::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto const& entry = shown_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case groupRole: return entry.group;
    case titleRole:
    case Qt::DisplayRole: return entry.title;
    case keysRole: return entry.keys;
    default: return {};
    }
}

}
