#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <vector>

namespace tavaro {

enum class SecondNames { known, unknown };

/// From here on, for the whole process, every disk is one that does not know how to rename without replacing, and it
/// may know no second names of a file. False where that cannot be had.
inline bool goWithoutExclusiveRenaming(SecondNames secondNames) {
    constexpr unsigned allow = SECCOMP_RET_ALLOW;
    constexpr auto number = static_cast<unsigned>(offsetof(seccomp_data, nr));
    constexpr auto flags = static_cast<unsigned>(offsetof(seccomp_data, args) + 4 * sizeof(std::uint64_t));
    std::vector<sock_filter> program{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 4),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, flags), // of a little-endian machine
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, allow),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
    };
    std::vector<unsigned> refused;
    if (secondNames == SecondNames::unknown) refused.push_back(SYS_linkat);
#ifdef SYS_link
    if (secondNames == SecondNames::unknown) refused.push_back(SYS_link);
#endif
    for (unsigned const call : refused) {
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM));
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, allow));
    sock_fprog const filter{static_cast<unsigned short>(program.size()), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

}
