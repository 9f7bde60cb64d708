#pragma once

#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>

#include <filesystem>
#include <optional>

namespace tavaro {

/// That the user lets takes read the keyboards and pointers themselves, where the desktop does not tell of them.
struct InputConsent {
    Date allowedAt;
    bool countsTaps = false;   // a finger that taps a touchpad clicks
    bool isLeftHanded = false; // the right button of a mouse is the first one

    static constexpr auto fields = std::tuple{
        field("allowedAt", &InputConsent::allowedAt),
        field("countsTaps", &InputConsent::countsTaps),
        field("isLeftHanded", &InputConsent::isLeftHanded),
    };
    bool operator==(InputConsent const&) const = default;
};
static_assert(listsEveryField<InputConsent>);

/// Where it is kept, for this user alone: `input-devices.json` in the user's state folder.
std::filesystem::path inputConsentFile();

/// None: it is not allowed. A file that cannot be read, or says something else, allows nothing.
std::optional<InputConsent> inputConsent(std::filesystem::path const& file = inputConsentFile());
/// On the disk when it returns. Throws `FileError`.
void allowInput(InputConsent const& consent, std::filesystem::path const& file = inputConsentFile());
/// False where it was not allowed. Throws `FileError`.
bool revokeInput(std::filesystem::path const& file = inputConsentFile());

}
