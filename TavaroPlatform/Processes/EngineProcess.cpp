#include <TavaroPlatform/Processes/EngineProcess.h>

#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tavaro {

void becomeEngineProcess(std::uint64_t mostMemory) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() == 1) std::_Exit(EXIT_FAILURE);
    [[maybe_unused]] rlimit const limit{mostMemory, mostMemory};
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which map terabytes
    ::setrlimit(RLIMIT_AS, &limit);
#endif
    rlimit const noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
}

}
