#pragma once

#include <TavaroCapture/Sources/DesktopEntries.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tavaro {

/// The desktop entries of some folders as they are now: they are read again once one has come, changed or gone. Any
/// thread.
class InstalledEntries {
public:
    /// How soon a change is noticed. A new entry always is at once, but for one that is still being written.
    enum class Freshness { withinASecond, now };

    std::shared_ptr<DesktopEntries const> of(std::vector<std::filesystem::path> const& folders, Freshness freshness);
    /// Those of the user and the system.
    static std::shared_ptr<DesktopEntries const> usual(Freshness freshness = Freshness::withinASecond);

private:
    using Time = std::filesystem::file_time_type;
    struct Files {
        std::map<std::filesystem::path, Time> folders; // with what is below them; `Time::min` where there is none
        std::map<std::filesystem::path, std::pair<Time, std::uintmax_t>> entries; // and their sizes
        bool operator==(Files const&) const = default;
    };

    static Files filesIn(std::vector<std::filesystem::path> const& folders);
    bool isCurrent(std::vector<std::filesystem::path> const& folders, Freshness freshness);

    std::mutex lock_; // of all below
    std::vector<std::filesystem::path> folders_;
    Files files_;
    std::chrono::steady_clock::time_point lookedAt_; // at all files
    std::shared_ptr<DesktopEntries const> entries_;
};

/// Without an installed application, the class names the window's; with neither, `fallback` (a window's title) does.
ApplicationIdentity identifyApplication(WindowOwner const& window, std::string const& fallback);

}
