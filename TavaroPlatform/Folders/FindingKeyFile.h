#pragma once

#include <TavaroCore/Privacy/FindingHash.h>

#include <filesystem>

namespace tavaro {

/// The user's key for the hashes of findings, which nobody else can read. It is made at random when there is none yet.
/// Throws `FileError`.
FindingKey ensureFindingKey(std::filesystem::path const& file);

/// The same from where it is kept: `findings.key` in the user's state folder.
FindingKey ensureFindingKey();

}
