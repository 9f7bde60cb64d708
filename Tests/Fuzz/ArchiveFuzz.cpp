#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

/// A folder in memory that holds nothing but one to unpack into, made anew for each run.
fs::path const& stage() {
    static fs::path const folder = [] {
        std::string pattern = fs::exists("/dev/shm") ? "/dev/shm/tavaro-fuzz-XXXXXX" : "/tmp/tavaro-fuzz-XXXXXX";
        return fs::path(mkdtemp(pattern.data()));
    }();
    return folder;
}

}

// Any bytes are refused with a sentence, or unpacked as one project; nothing appears beside it.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    int const file = memfd_create("archive", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    auto const into = stage() / "in";
    try {
        auto const [project, problem] = tavaro::unpackProject("/proc/self/fd/" + std::to_string(file), into,
                                                              [](tavaro::ArchiveProgress const&) { return true; });
        if (problem && problem->empty()) std::abort();
        if (project.parent_path() != into || !fs::is_regular_file(project / "project.json")) std::abort();
        fs::remove_all(project);
    } catch (tavaro::ArchiveError const& error) {
        if (std::string(error.what()).empty()) std::abort();
    }
    if (fs::exists(into) && !fs::is_empty(into)) std::abort();
    for (auto const& entry : fs::directory_iterator(stage())) {
        if (entry.path() != into) std::abort();
    }
    close(file);
    return 0;
}
