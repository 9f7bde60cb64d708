#include <TavaroCapture/Input/InputConsent.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <system_error>

namespace tavaro {

namespace fs = std::filesystem;

fs::path inputConsentFile() { return folders::state() / "input-devices.json"; }

std::optional<InputConsent> inputConsent(fs::path const& file) {
    constexpr std::uint64_t largest = 4096;
    try {
        auto const text = readWholeFile(file, largest);
        if (!text) return std::nullopt;
        auto const consent = decodeJSON<InputConsent>(*text);
        if (consent.allowedAt == Date{}) return std::nullopt;
        return consent;
    } catch (Error const&) {
        return std::nullopt;
    }
}

void allowInput(InputConsent const& consent, fs::path const& file) {
    std::error_code code;
    fs::create_directories(file.parent_path(), code);
    if (code) throw FileError::writing(file, code.value());
    PendingFile pending(file, fs::perms::owner_read | fs::perms::owner_write);
    pending.append(encodeJSON(consent));
    pending.commit();
}

bool revokeInput(fs::path const& file) {
    std::error_code code;
    bool const wasThere = fs::remove(file, code);
    if (code) throw FileError::writing(file, code.value());
    return wasThere;
}

}
