#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// What the desktop calls an application.
struct ApplicationIdentity {
    std::string bundleID; // desktop id ("org.xfce.mousepad"), else the window class
    std::string name;     // human name ("Mousepad")
    bool operator==(ApplicationIdentity const&) const = default;
};

/// An installed application as its desktop entry describes it.
struct DesktopEntry {
    ApplicationIdentity identity;
    std::vector<std::string> localizedNames;
    std::string startupClass;     // of its windows
    std::string exec;             // the command with its quotes and field codes
    std::string tryExec;          // a program that is there when this one is
    std::filesystem::path folder; // to start it in
    bool isInTerminal = false;
    bool isHidden = false; // from menus
};

/// The keys of an entry's main group with their values; the first of a name wins.
std::map<std::string, std::string> desktopEntryValues(std::string_view entry);
/// None for what is no application, or is marked as removed.
std::optional<DesktopEntry> parseDesktopEntry(std::string_view entry, std::string const& id);
/// The file name of the program that a command starts ("gedit"); empty for those that run others' programs.
std::string programNamed(std::string_view exec);

/// What a window says of its application; empty where it does not.
struct WindowOwner {
    std::string instance;         // the first word of its class, "mousepad"
    std::string windowClass;      // "Mousepad"
    std::string gtkApplicationID; // "org.xfce.mousepad"
    std::string program;          // the file name of its program
};

/// The installed applications.
class DesktopEntries {
public:
    /// Reads those of the folders; of two with one id, that of the earlier folder counts. Unreadable ones are left out.
    explicit DesktopEntries(std::vector<std::filesystem::path> const& folders);
    /// Of the user and the system.
    static std::vector<std::filesystem::path> usualFolders();

    std::vector<DesktopEntry> const& all() const { return entries_; }
    /// The application that a window belongs to: by what GTK calls it, `StartupWMClass`, the class as an id or its last
    /// part, the program, and the name; nothing where none of these fits.
    DesktopEntry const* ownerOf(WindowOwner const& window) const;

private:
    using Index = std::map<std::string, std::size_t>; // by lower case

    void add(DesktopEntry entry);
    void addPrograms();
    DesktopEntry const* in(Index const& index, std::string const& key) const;

    std::vector<DesktopEntry> entries_;
    Index byID_;
    Index byLastPart_;
    Index byClass_;
    Index byProgram_; // of those whose program starts no other entry's
    Index byName_;
};

}
