#include <TavaroCore/Files/Private/HiddenNeighbour.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fmt/format.h>
#include <unistd.h>

namespace tavaro::hidden {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view ending = ".tmp";
constexpr std::string_view maker = "tavaro-";

/// "4711-0": a process and what it counts.
bool isNumbered(std::string_view text) {
    auto const dash = text.find('-');
    auto const isNumber = [](std::string_view digits) {
        return !digits.empty() && std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
    };
    return dash != text.npos && isNumber(text.substr(0, dash)) && isNumber(text.substr(dash + 1));
}

bool isNumberedBetween(std::string_view name, std::string_view before, std::string_view after) {
    if (name.size() <= before.size() + after.size() || !name.starts_with(before) || !name.ends_with(after))
        return false;
    return isNumbered(name.substr(before.size(), name.size() - before.size() - after.size()));
}

/// "tavaro-4711-0" of ".film.mp4.tavaro-4711-0.tmp"; empty where the name is of another kind.
std::string_view lastPart(std::string_view name) {
    if (!name.starts_with('.') || !name.ends_with(ending)) return {};
    name.remove_suffix(ending.size());
    auto const dot = name.rfind('.');
    return dot > 0 ? name.substr(dot + 1) : std::string_view{};
}

bool isOfThisProgram(std::string_view name) {
    auto const last = lastPart(name);
    return last.starts_with(maker) && isNumbered(last.substr(maker.size()));
}

/// What is a hidden neighbour of one file.
struct Names {
    explicit Names(fs::path const& file)
        : before(fmt::format(".{}.", cut(file.filename())))
        , formerWhole(file.filename().string() + std::string(ending))
        , formerBefore(fmt::format(".{}.", cut(file.stem())))
        , formerAfter(".part" + file.extension().string()) {}

    /// ".project.json.4711-0.tmp"
    bool containedLately(std::string_view name) const { return isNumberedBetween(name, before, ending); }
    /// "project.json.tmp", ".film.4711-0.part.mp4": what the first versions called them.
    bool containedFormerly(std::string_view name) const {
        return name == formerWhole || isNumberedBetween(name, formerBefore, formerAfter);
    }

    std::string const before, formerWhole, formerBefore, formerAfter;

private:
    /// A hidden name must fit into the same 255 bytes.
    static std::string cut(fs::path const& name) {
        constexpr std::size_t longest = 128;
        return name.string().substr(0, longest);
    }
};

bool isOlderThanAMinute(fs::path const& path) {
    std::error_code error;
    auto const written = fs::last_write_time(path, error);
    return !error && fs::file_time_type::clock::now() - written > std::chrono::minutes(1);
}

void removeUnlessHeld(fs::directory_entry const& entry) {
    std::error_code error;
    auto const type = entry.symlink_status(error).type();
    if (type != fs::file_type::regular && type != fs::file_type::directory) return; // nothing that was made here
    auto const left = FileDescriptor::open(entry.path(), FileDescriptor::Opening::reading);
    if (left.isOpen() && left.tryLock(FileDescriptor::Sharing::exclusive)) fs::remove_all(entry.path(), error);
}

}

fs::path neighbour(fs::path const& file) {
    static std::atomic<unsigned> counter{0};
    return file.parent_path() / fmt::format("{}{}{}-{}{}", Names(file).before, maker, getpid(), counter++, ending);
}

bool isNeighbourName(std::string_view name) { return isOfThisProgram(name) || isNumbered(lastPart(name)); }

void removeAbandoned(fs::path const& file) {
    Names const names(file);
    std::error_code error;
    for (fs::directory_iterator entry(FileDescriptor::folderOf(file), error), end; !error && entry != end;
         entry.increment(error)) {
        auto const name = entry->path().filename().string();
        // The first versions locked late or not at all, so theirs have to be old as well.
        if (isOfThisProgram(name) || names.containedLately(name) ||
            (names.containedFormerly(name) && isOlderThanAMinute(entry->path())))
            removeUnlessHeld(*entry);
    }
}

bool hold(FileDescriptor const& made, fs::path const& name) {
    made.lock(FileDescriptor::Sharing::shared);
    std::error_code ignored;
    return fs::exists(fs::symlink_status(name, ignored));
}

}
