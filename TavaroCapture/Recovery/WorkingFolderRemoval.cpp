#include <TavaroCapture/Recovery/Private/WorkingFolderRemoval.h>

#include <TavaroCore/Errors/SystemReason.h>

#include <fmt/format.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr char const* prefix = ".removing-";

}

std::error_code removeWorkingFolder(fs::path const& directory) {
    std::error_code error;
    auto const doomed = directory.parent_path() / (prefix + directory.filename().string());
    fs::rename(directory, doomed, error);
    if (!error) fs::remove_all(doomed, error);
    return error;
}

std::string removalProblem(fs::path const& directory, std::error_code reason) {
    return fmt::format("Could not remove “{}”: {}.", directory.string(), systemReason(reason.value()));
}

std::vector<std::string> finishRemovals(fs::path const& recordings) {
    std::vector<fs::path> left;
    std::error_code ignored;
    for (fs::directory_iterator entry(recordings, ignored), end; !ignored && entry != end; entry.increment(ignored))
        if (entry->path().filename().string().starts_with(prefix)) left.push_back(entry->path());
    std::vector<std::string> problems;
    for (auto const& folder : left) {
        std::error_code error;
        fs::remove_all(folder, error);
        if (error) problems.push_back(removalProblem(folder, error));
    }
    return problems;
}

}
