#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>
#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCore/Recording/SettledRecording.h>

#include <spdlog/spdlog.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace {

using namespace tavaro;

class Folder {
public:
    Folder() {
        spdlog::set_level(spdlog::level::off); // a warning for each damaged one
        auto pattern = (std::filesystem::temp_directory_path() / "tavaro-fuzz-XXXXXX").string();
        if (!mkdtemp(pattern.data())) std::abort();
        path = pattern;
    }
    ~Folder() { std::filesystem::remove_all(path); }

    std::filesystem::path path;
};

void write(std::filesystem::path const& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes; // at once: nobody waits for the disk
}

void expectUsable(RecordingMetadata log) {
    constexpr double length = 2;
    cutStart(log, 0.25);
    trimToDuration(log, length);
    settle(log, {640, 360});
    bool const isInOrder = std::ranges::is_sorted(log.cursorSamples, {}, &CursorSample::t);
    bool const isInside = std::ranges::all_of(log.cursorSamples, [](auto const& sample) { return sample.t <= length; });
    if (!isInOrder || !isInside) std::abort();
}

}

// The log of a take, of which the first bytes up to a NUL are the checkpoint and the rest is a sealed part of it: read
// as a whole that can be cut and settled, or not at all.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Folder const folder;
    std::string_view const bytes(reinterpret_cast<char const*>(data), size);
    auto const border = bytes.find('\0');
    write(MetadataCheckpoints::path(folder.path), bytes.substr(0, border));
    write(folder.path / "metadata-000.json", border == bytes.npos ? std::string_view{} : bytes.substr(border + 1));
    if (auto const log = MetadataCheckpoints::read(folder.path)) expectUsable(log->log);
    return 0;
}
