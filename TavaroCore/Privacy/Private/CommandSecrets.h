#pragma once

#include <TavaroCore/Privacy/Private/LineFacts.h>

#include <cstddef>
#include <functional>

namespace tavaro {

/// Calls `found` with the passwords that a plain line hands to a command or a server by their place: `-u maria:…`,
/// `sshpass -p …`, `IDENTIFIED BY '…'`, `WIFI:…;P:…;`.
void forEachCommandSecret(LineFacts const& plain, std::function<void(std::size_t, std::size_t)> const& found);

}
