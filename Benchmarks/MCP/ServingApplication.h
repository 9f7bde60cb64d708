#pragma once

#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <filesystem>

namespace tavaro {

/// What a process has in memory now, mebibytes.
struct MemoryUse {
    double resident = 0;  // with the parts of programs and libraries that other processes use too
    double anonymous = 0; // what is its own, and no part of a file
};

/// `tavaro serve` in a home of its own, which this process gets, too, and with it the servers that it starts. The
/// client "bench" is allowed there.
class ServingApplication {
public:
    explicit ServingApplication(std::filesystem::path const& home);
    ~ServingApplication();
    ServingApplication(ServingApplication const&) = delete;
    ServingApplication& operator=(ServingApplication const&) = delete;

    MemoryUse memory() const;

    /// Where it looks for projects.
    static std::filesystem::path library(std::filesystem::path const& home) { return home / "Movies/Tavaro"; }

private:
    DetachedProcess process_;
};

}
