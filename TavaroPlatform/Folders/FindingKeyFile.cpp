#include <TavaroPlatform/Folders/FindingKeyFile.h>

#include <TavaroPlatform/Folders/Folders.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/PendingFile.h>

#include <cerrno>
#include <charconv>
#include <optional>
#include <sys/random.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t digitsOfWord = 16; // hexadecimal

FindingKey randomKey(fs::path const& file) {
    FindingKey key;
    if (getrandom(key.words.data(), sizeof key.words, 0) != sizeof key.words) throw FileError::writing(file, errno);
    return key;
}

std::optional<FindingKey> parsed(std::string const& text) {
    FindingKey key;
    if (text.size() < 2 * digitsOfWord) return std::nullopt;
    for (std::size_t i = 0; i < 2; ++i) {
        char const* const first = text.data() + i * digitsOfWord;
        auto const [end, code] = std::from_chars(first, first + digitsOfWord, key.words[i], 16);
        if (code != std::errc() || end != first + digitsOfWord) return std::nullopt;
    }
    return key;
}

std::optional<FindingKey> readKey(fs::path const& file) {
    constexpr std::uint64_t largest = 4096;
    auto const text = readWholeFile(file, largest);
    if (!text) return std::nullopt;
    if (auto const key = parsed(*text)) return key;
    throw FileError(FileError::Kind::cannotRead,
                    fmt::format("Could not read “{}”: it holds no whole key. It may be deleted: then a new key is "
                                "made, and hashes of findings are others than before.",
                                file.string()));
}

void writeKey(fs::path const& file) {
    std::error_code code;
    fs::create_directories(file.parent_path(), code);
    if (code) throw FileError::writing(file, code.value());
    auto const key = randomKey(file);
    PendingFile pending(file, fs::perms::owner_read | fs::perms::owner_write);
    pending.append(fmt::format("{:016x}{:016x}\n", key.words[0], key.words[1]));
    static_cast<void>(pending.commitUnlessTaken()); // then another process was first, and its key counts
}

}

FindingKey ensureFindingKey(fs::path const& file) {
    if (auto const key = readKey(file)) return *key;
    writeKey(file);
    if (auto const key = readKey(file)) return *key;
    throw FileError::reading(file, ENOENT);
}

FindingKey ensureFindingKey() { return ensureFindingKey(folders::state() / "findings.key"); }

}
