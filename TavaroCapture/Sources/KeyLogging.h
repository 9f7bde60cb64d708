#pragma once

namespace tavaro {

/// Which keys a take's log has.
enum class KeyLogging {
    all,
    shortcuts, // those pressed with control, alt or command
    none,
};

}
