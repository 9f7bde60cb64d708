#pragma once

#include <cstdint>

namespace tavaro {

/// For the `main` of an engine that has a process of its own: the process ends with whoever started it, however that
/// ends, takes no more than so many bytes of memory, and leaves no core image, since what its user said or showed is in
/// it. Ends it at once where its starter has gone already.
void becomeEngineProcess(std::uint64_t mostMemory);

}
