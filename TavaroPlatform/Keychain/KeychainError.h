#pragma once

#include <TavaroCore/Errors/Error.h>

#include <string>

namespace tavaro {

/// The desktop's keychain does not keep, or give back, a secret.
class KeychainError : public Error {
public:
    enum class Kind {
        missing,  // there is no keychain on this desktop
        locked,   // and nobody unlocked it
        noAnswer, // not in time
        failed,
    };
    KeychainError(Kind kind, int status, std::string const& sentence, std::string reason);
    KeychainError(KeychainError const&) = default;
    KeychainError& operator=(KeychainError const&) = delete;
    ~KeychainError() override;

    Kind const kind;
    int const status;         // of the keychain's library; 0 where it was not asked
    std::string const reason; // a sentence
};

}
