#include <TavaroPlatform/Folders/Trash.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace tavaro::trash {

namespace fs = std::filesystem;

namespace {

FileError refused(fs::path const& file, int errorNumber) {
    return {FileError::Kind::cannotWrite,
            fmt::format("Could not move “{}” to the trash: {}.", file.string(), std::strerror(errorNumber)),
            errorNumber};
}

std::optional<struct stat> about(fs::path const& path) {
    struct stat found {};
    return ::lstat(path.c_str(), &found) == 0 ? std::optional(found) : std::nullopt;
}

/// As in a URL, slashes left as they are.
std::string escaped(std::string const& path) {
    constexpr std::string_view plain = "/-_.~";
    std::string text;
    for (unsigned char const c : path) {
        bool const isPlain = c < 0x80 && (std::isalnum(c) || plain.find(static_cast<char>(c)) != plain.npos);
        text += isPlain ? std::string(1, static_cast<char>(c)) : fmt::format("%{:02X}", c);
    }
    return text;
}

/// A trash, and how its notes name the places that things came from.
struct Can {
    fs::path folder;
    fs::path root; // of the disk: places are relative to it; empty in the user's own

    std::string place(fs::path const& file) const {
        return escaped(root.empty() ? file.string() : file.lexically_relative(root).string());
    }
};

fs::path existingAncestor(fs::path path) {
    while (!about(path) && path.has_relative_path()) path = path.parent_path();
    return path;
}

/// The highest folder above the file that is on its disk.
fs::path rootOf(fs::path const& file, dev_t device) {
    auto root = file.parent_path();
    while (root.has_relative_path()) {
        auto const above = about(root.parent_path());
        if (!above || above->st_dev != device) break;
        root = root.parent_path();
    }
    return root;
}

Can canFor(fs::path const& file, dev_t device) {
    auto const own = folders::applicationSupport() / "Trash";
    auto const home = about(existingAncestor(own));
    if (home && home->st_dev == device) return {own, {}};
    auto const root = rootOf(file, device);
    // One that an administrator made for everybody counts only where nobody can plant things in it.
    auto const shared = about(root / ".Trash");
    auto const user = std::to_string(::getuid());
    if (shared && S_ISDIR(shared->st_mode) && (shared->st_mode & S_ISVTX) != 0) return {root / ".Trash" / user, root};
    return {root / (".Trash-" + user), root};
}

void ensureFolders(Can const& can, fs::path const& file) {
    for (auto const* const part : {"files", "info"}) {
        std::error_code code;
        fs::create_directories(can.folder / part, code);
        if (code) throw refused(file, code.value());
    }
    std::error_code ignored;
    fs::permissions(can.folder, fs::perms::owner_all, ignored);
}

std::string note(Can const& can, fs::path const& file) {
    return fmt::format("[Trash Info]\nPath={}\nDeletionDate={:%Y-%m-%dT%H:%M:%S}\n", can.place(file),
                       fmt::localtime(std::time(nullptr)));
}

/// The note is what takes the name: of several who want one, one gets it.
bool writeNote(fs::path const& info, std::string const& text, fs::path const& file) {
    auto const made = FileDescriptor::open(info, FileDescriptor::Opening::newFile);
    if (!made.isOpen() && errno == EEXIST) return false;
    if (!made.isOpen()) throw refused(file, errno);
    if (int const failure = made.write(std::as_bytes(std::span(text)))) throw refused(file, failure);
    return true;
}

std::string numbered(fs::path const& name, int number) {
    if (number == 1) return name.string();
    return fmt::format("{} {}{}", name.stem().string(), number, name.extension().string());
}

bool movedInto(Trashed const& place) {
    std::error_code ignored;
    try {
        if (moveUnlessTaken(place.from, place.files)) return true;
    } catch (FileError const& failure) {
        fs::remove(place.info, ignored);
        throw refused(place.from, failure.errorNumber);
    }
    fs::remove(place.info, ignored);
    return false;
}

}

Trashed put(fs::path const& given) {
    auto const file = fs::absolute(given).lexically_normal();
    auto const found = about(file);
    if (!found) throw refused(file, errno);
    auto const can = canFor(file, found->st_dev);
    ensureFolders(can, file);
    for (int number = 1;; ++number) {
        auto const name = numbered(file.filename(), number);
        Trashed const place{file, can.folder / "files" / name, can.folder / "info" / (name + ".trashinfo")};
        if (writeNote(place.info, note(can, file), file) && movedInto(place)) return place;
    }
}

fs::path restore(Trashed const& trashed) {
    std::error_code ignored;
    fs::create_directories(trashed.from.parent_path(), ignored);
    for (int number = 1;; ++number) {
        auto const to = trashed.from.parent_path() / numbered(trashed.from.filename(), number);
        if (!moveUnlessTaken(trashed.files, to)) continue;
        fs::remove(trashed.info, ignored);
        return to;
    }
}

}
