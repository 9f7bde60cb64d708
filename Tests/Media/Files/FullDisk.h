#pragma once

#include <csignal>
#include <filesystem>
#include <iterator>

#include <sys/resource.h>

namespace tavaro {

/// While it lives, no file of this process grows past `bytes`: a write that would fails, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(std::size_t bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit const limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signal_);
    }
    FullDisk(FullDisk const&) = delete;
    FullDisk& operator=(FullDisk const&) = delete;

private:
    rlimit before_ = {};
    void (*signal_)(int);
};

inline auto filesIn(std::filesystem::path const& folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

}
