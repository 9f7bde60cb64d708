#include <Tavaro/Studio/Exports/ExportRecord.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <spdlog/spdlog.h>

#include <system_error>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// A film that was only to be read again is there.
void interrupt(ExportRecord& record) {
    record.state = record.bytes ? ExportState::done : ExportState::interrupted;
    if (record.bytes) record.checked = "Tavaro ended before the film was read again.";
}

}

fs::path ExportMemory::usualFile() { return folders::state() / "exports.json"; }

ExportMemory ExportMemory::read(fs::path const& file) {
    constexpr std::uint64_t largest = 1U << 22;
    try {
        auto const text = readWholeFile(file, largest);
        auto memory = text ? decodeJSON<ExportMemory>(*text) : ExportMemory{};
        for (auto& each : memory.exports)
            if (!hasEnded(each.state)) interrupt(each);
        return memory;
    } catch (Error const& error) {
        spdlog::warn("The list of exports begins anew: {}", error.what());
        return {};
    }
}

void ExportMemory::write(fs::path const& file) const {
    try {
        std::error_code ignored; // writing says what is wrong
        fs::create_directories(file.parent_path(), ignored);
        writeFileAtomically(file, encodeJSON(*this));
    } catch (Error const& error) {
        spdlog::warn("{}", error.what());
    }
}

}
