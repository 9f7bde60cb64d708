#pragma once

#include <TavaroPlatform/Keychain/Secret.h>

#include <chrono>
#include <optional>
#include <string>

namespace tavaro {

/// One entry of the user's keychain: the desktop's Secret Service, found on the session's bus. A locked keychain asks
/// the user, who has `patience` for it, so none of this is for a thread that shows something. All failures are
/// `KeychainError`s.
class Keychain {
public:
    static constexpr std::chrono::minutes usualPatience{2};

    /// `service` is the name of the entry, `label` what the user reads where the keychain lists its entries.
    Keychain(std::string service, std::string label, std::chrono::milliseconds patience = usualPatience);

    /// None where the keychain has no such entry.
    std::optional<Secret> read() const;
    void write(Secret const& secret) const;
    /// False where there was none.
    bool forget() const;

private:
    std::string const service_;
    std::string const label_;
    std::chrono::milliseconds const patience_;
};

}
