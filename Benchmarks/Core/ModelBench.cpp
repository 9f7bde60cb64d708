// The project model on an hour's take: reading and writing its document beside a general JSON library, a cut with its
// undo, and the library's listing. Prints one line a figure: name, value, unit.

#include "HourTake.h"

#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/History/History.h>
#include <TavaroCore/Library/ProjectLibrary.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Queues/ParallelPair.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace tavaro;

namespace {

double milliseconds(auto const& measured) {
    auto const start = std::chrono::steady_clock::now();
    measured();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> times) {
    auto const middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

// The field copy of the peer: from the tree into the same record, by the same lists.
template<class T> void copy(nlohmann::json const& from, T& to);

template<class T> void copyPart(nlohmann::json const& from, std::vector<T>& to) {
    to.resize(from.size());
    for (std::size_t i = 0; i < to.size(); ++i) copy(from[i], to[i]);
}
template<class T> void copyPart(nlohmann::json const& from, std::set<T>& to) {
    for (auto const& each : from) {
        T element{};
        copy(each, element);
        to.insert(element);
    }
}
template<class T> void copyPart(nlohmann::json const& from, std::map<std::string, T>& to) {
    for (auto const& [key, element] : from.items()) copy(element, to[key]);
}
template<class T> void copyPart(nlohmann::json const& from, std::optional<T>& to) { copy(from, to.emplace()); }
template<class T> void copyPart(nlohmann::json const& from, CopyOnWrite<T>& to) { copy(from, to.edit()); }
void copyPart(nlohmann::json const& from, UUID& to) { to = UUID::parse(from.get_ref<std::string const&>()).value(); }
void copyPart(nlohmann::json const& from, Date& to) { to = Date::parse(from.get_ref<std::string const&>()).value(); }
void copyPart(nlohmann::json const& from, Data& to) {
    to = Data::fromBase64(from.get_ref<std::string const&>()).value();
}

template<class T> void copy(nlohmann::json const& from, T& to) {
    if constexpr (RecordType<T>) {
        forEachField<T>([&](auto const& field) {
            auto const found = from.find(field.name);
            if (found != from.end()) copy(*found, to.*field.member);
        });
    } else if constexpr (CaseType<T>) {
        detail::selectCase(to, detail::caseIndex<T>(from.begin().key()));
        std::visit([&](auto& content) { copy(from.front(), content); }, to.content);
    } else if constexpr (NamedEnum<T>) {
        to = detail::enumFromText<T>(from.get_ref<std::string const&>());
    } else if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
        from.get_to(to);
    } else {
        copyPart(from, to);
    }
}

/// False when the two readers disagree.
bool measureJSON(DemoProject const& take) {
    constexpr int rounds = 7;
    auto const text = encodeProject(take);
    std::vector<double> load, peerLoad, save, peerSave;
    bool isEqual = true;
    for (int i = 0; i < rounds; ++i) {
        DemoProject ours, theirs;
        std::string written;
        load.push_back(milliseconds([&] { ours = decodeProject(text); }));
        nlohmann::json tree;
        peerLoad.push_back(milliseconds([&] {
            tree = nlohmann::json::parse(text);
            copy(tree, theirs);
        }));
        save.push_back(milliseconds([&] { written = encodeProject(ours); }));
        peerSave.push_back(milliseconds([&] { written = tree.dump(); }));
        isEqual = isEqual && ours == take && theirs == take;
    }
    fmt::print("json.bytes {:.1f} MB\n", static_cast<double>(text.size()) / 1e6);
    fmt::print("json.load.time {:.1f} ms\n", median(load));
    fmt::print("json.load.peer {:.1f} ms\n", median(peerLoad));
    fmt::print("json.load {:.3f} ratio\n", median(load) / median(peerLoad));
    fmt::print("json.save.time {:.1f} ms\n", median(save));
    fmt::print("json.save.peer {:.1f} ms\n", median(peerSave));
    fmt::print("json.save {:.3f} ratio\n", median(save) / median(peerSave));
    return isEqual;
}

/// Cuts a quarter of a second somewhere, with a step of history, and takes it back. False when that is not exact.
bool measureCut(DemoProject const& take) {
    History history(take);
    std::vector<double> times, cuts, undos, kept;
    for (int i = 0; i < 41; ++i) {
        double const at = 20 + 85.3 * i;
        cuts.push_back(milliseconds(
            [&] { history.edit("Cut", [&](DemoProject& project) { removeTimeRange(project, at, 0.25); }); }));
        kept.push_back(static_cast<double>(history.keptBytes()) / 1024);
        undos.push_back(milliseconds([&] { history.undo(); }));
        times.push_back(cuts.back() + undos.back());
    }
    fmt::print("edit.items {} zooms, {} overlays, {} captions, {} clips\n", take.zoomEvents.size(),
               take.overlays.size(), take.captions.cues.size(), take.timeline.clips.size());
    fmt::print("edit.cut {:.3f} ms\n", median(times));
    fmt::print("edit.cut.do {:.3f} ms\n", median(cuts));
    fmt::print("edit.cut.undo {:.3f} ms\n", median(undos));
    fmt::print("edit.cut.copy {:.3f} ms\n", [&] {
        std::vector<double> copies;
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is measured
        for (int i = 0; i < 41; ++i) copies.push_back(milliseconds([&] { DemoProject const copied = take; }));
        return median(copies);
    }());
    fmt::print("edit.cut.kept {:.1f} KiB\n", median(kept));
    fmt::print("edit.cut.kept.most {:.1f} KiB\n", *std::max_element(kept.begin(), kept.end()));
    return history.project() == take;
}

/// Two thousand takes of some minutes each, in folders of a hundred. False when the listing is not right.
bool measureLibrary() {
    namespace fs = std::filesystem;
    constexpr int projects = 2000;
    auto pattern = (fs::temp_directory_path() / "tavaro-library-XXXXXX").string();
    fs::path const folder = mkdtemp(pattern.data());
    DemoProject take;
    take.timeline.clips.push_back({.asset = "screen.mp4", .duration = 120});
    take.metadata.edit().cursorSamples.resize(500, {.t = 0.1, .position = {0.25, 0.75}});
    for (int i = 0; i < projects; ++i) {
        ProjectPackage const package(folder / fmt::format("{}/Take {}.recproj", i / 100, i));
        package.createDirectories();
        take.name = fmt::format("Take {}", i);
        std::ofstream(package.projectFileURL()) << encodeProject(take); // not `save`, which waits for the disk
        std::ofstream(package.assetURL("screen.mp4")) << take.name;
        if (i % 2) std::ofstream(package.thumbnailURL()) << take.name;
    }
    ProjectLibrary const library(folder / "cache/library.json");
    std::size_t count = 0;
    fmt::print("library.2000.cold {:.1f} ms\n", milliseconds([&] { count = library.list({folder}).size(); }));
    bool isRight = count == projects;
    std::vector<double> warm;
    for (int i = 0; i < 15; ++i) {
        std::vector<LibraryItem> items;
        warm.push_back(milliseconds([&] { items = library.list({folder}); }));
        isRight = isRight && items.size() == projects && items[0].duration == 120;
    }
    fmt::print("library.2000 {:.1f} ms\n", median(warm));
    fs::remove_all(folder);
    return isRight;
}

}

int main() {
    setTaskPairRunner(runInParallel);
    auto const take = hourTake();
    bool const isRight = measureJSON(take) & measureCut(take) & measureLibrary();
    if (!isRight) fmt::print(stderr, "a document came back different, or a project is missing\n");
    return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
