#pragma once

#include "../../Capture/TestDisplay.h"

#include <cstdint>
#include <string>

namespace tavaro {

/// Keys that come not from the extension's device but from the server's own, as a person's do.
class UsersKeyboard {
public:
    explicit UsersKeyboard(TestClient& client);

    void key(std::string const& symbol, bool isPressed);
    void tap(std::string const& symbol) { key(symbol, true), key(symbol, false); }

private:
    TestClient& client_;
    std::uint8_t device_ = 0;
};

}
