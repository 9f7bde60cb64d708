#include <TavaroPlatform/Keychain/KeychainError.h>

#include <utility>

namespace tavaro {

KeychainError::KeychainError(Kind kind, int status, std::string const& sentence, std::string reason)
    : Error(sentence)
    , kind(kind)
    , status(status)
    , reason(std::move(reason)) {}

KeychainError::~KeychainError() = default;

}
