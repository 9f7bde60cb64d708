#include <TavaroPlatform/Preferences/Preferences.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FolderLock.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>
#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t mostBytes = 1 << 20;
constexpr auto damagedEnding = ".damaged";
constexpr auto ownerOnly = fs::perms::owner_read | fs::perms::owner_write;

void logged(std::string const& sentence) { spdlog::warn("{}", sentence); }

}

fs::path Preferences::usualFile() { return folders::configuration() / "preferences.json"; }

Preferences::Preferences(fs::path file, std::function<void(std::string const&)> remark)
    : file_(std::move(file))
    , remark_(remark ? std::move(remark) : logged) {}

std::optional<Preferences::Values> Preferences::decode(std::string_view bytes) {
    try {
        auto value = JSONValue::parse(bytes);
        if (auto* const values = std::get_if<Values>(&value.content)) return std::move(*values);
    } catch (JSONError const&) {
        // as good as none
    }
    return std::nullopt;
}

std::string Preferences::encode(Values const& values) { return encodeJSON(JSONValue{values}) + "\n"; }

bool Preferences::refresh() {
    auto const found = stampOf(file_);
    if (isRead_ && found == stamp_) return false;
    auto const before = std::exchange(values_, {});
    try {
        values_ = readWhole();
    } catch (FileError const& error) {
        stamp_ = found; // reported once
        problem_ = fmt::format("{} What you chose before does not count until it can be read.", error.what());
    }
    isRead_ = true;
    notify(before);
    return values_ != before;
}

void Preferences::edit(FunctionRef<void(Values&)> change) {
    ensureFolder();
    auto const before = values_;
    {
        FolderLock const lock(file_.parent_path());
        isRead_ = false; // until it is written
        auto const present = readUnderLock();
        auto values = present;
        change(values);
        if (values != present) write(values);
        values_ = std::move(values);
        isRead_ = true;
    }
    notify(before);
}

void Preferences::ensureFolder() const {
    std::error_code code;
    fs::create_directories(file_.parent_path(), code);
    if (code) throw FileError::writing(file_, code.value());
}

Preferences::Values Preferences::readWhole() {
    if (auto values = read()) return std::move(*values);
    FolderLock const lock(file_.parent_path());
    return readUnderLock();
}

/// None when the file is damaged.
std::optional<Preferences::Values> Preferences::read() {
    stamp_ = stampOf(file_); // before reading: what is written meanwhile is read the next time
    auto const bytes = readWholeFile(file_, mostBytes);
    return bytes ? decode(*bytes) : Values{};
}

Preferences::Values Preferences::readUnderLock() {
    if (auto values = read()) return std::move(*values);
    moveAside();
    stamp_ = stampOf(file_);
    return {};
}

void Preferences::moveAside() {
    auto const wanted = file_.parent_path() / fs::path(file_.stem()).concat(damagedEnding).concat(".json");
    auto aside = unusedFile(wanted);
    while (!moveUnlessTaken(file_, aside)) aside = unusedFile(wanted);
    remark_(
        fmt::format("Your preferences were damaged and start anew; what there was is kept in “{}”.", aside.string()));
}

std::vector<fs::path> Preferences::damagedFiles() const {
    auto const beginning = fs::path(file_.stem()).concat(damagedEnding).string();
    std::vector<fs::path> found;
    std::error_code code;
    for (auto entry = fs::directory_iterator(file_.parent_path(), code); !code && entry != fs::directory_iterator();
         entry.increment(code)) {
        if (entry->path().filename().string().starts_with(beginning)) found.push_back(entry->path());
    }
    std::ranges::sort(found);
    return found;
}

void Preferences::write(Values const& values) {
    auto const text = encode(values);
    if (text.size() > mostBytes) { // it could not be read any more, and nothing that was chosen would count
        throw FileError(FileError::Kind::tooLarge,
                        fmt::format("Could not write “{}”: the preferences would be larger than {} bytes.",
                                    file_.string(), mostBytes));
    }
    PendingFile pending(file_, ownerOnly);
    pending.append(text);
    pending.commit();
    stamp_ = stampOf(file_);
}

/// Without a lock: who hears of it may choose something in turn.
void Preferences::notify(Values const& before) {
    if (auto const problem = std::exchange(problem_, std::nullopt)) remark_(*problem);
    if (values_ == before) return;
    observers_.notify();
}

bool Preferences::valueOf(JSONValue const& stored, bool other) {
    auto const* const value = stored.as<bool>();
    return value ? *value : other;
}

std::int64_t Preferences::valueOf(JSONValue const& stored, std::int64_t other) {
    auto const* const value = stored.as<std::int64_t>();
    return value ? *value : other;
}

double Preferences::valueOf(JSONValue const& stored, double other) {
    if (auto const* const whole = stored.as<std::int64_t>()) return static_cast<double>(*whole);
    auto const* const value = stored.as<double>();
    return value ? *value : other;
}

std::string Preferences::valueOf(JSONValue const& stored, std::string const& other) {
    auto const* const value = stored.as<std::string>();
    return value ? *value : other;
}

/// What is no text in a list is left out.
std::vector<std::string> Preferences::valueOf(JSONValue const& stored, std::vector<std::string> const& other) {
    auto const* const entries = stored.as<JSONValue::Array>();
    if (!entries) return other;
    std::vector<std::string> texts;
    for (auto const& entry : *entries) {
        if (auto const* const text = entry.as<std::string>()) texts.push_back(*text);
    }
    return texts;
}

JSONValue Preferences::jsonOf(std::vector<std::string> const& texts) {
    JSONValue::Array entries;
    for (auto const& text : texts) entries.push_back({text});
    return {std::move(entries)};
}

}
