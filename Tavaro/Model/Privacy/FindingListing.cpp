#include <Tavaro/Model/Privacy/FindingListing.h>

#include <Tavaro/Model/Privacy/FindingPicture.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <utility>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t shortestName = 4;
constexpr Size2 pictureSize{480, 160}; // at most

/// How many characters at the beginning two ids have in common.
std::size_t inCommon(std::string const& a, std::string const& b) {
    return static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
}

/// As much of each id as no other one begins with.
std::map<UUID, std::string> names(std::vector<RedactionTrack> const& tracks) {
    std::vector<std::string> ids;
    for (auto const& track : tracks) ids.push_back(track.id.text());
    std::ranges::sort(ids);
    std::map<UUID, std::string> names;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        std::size_t length = shortestName;
        if (i > 0) length = std::max(length, inCommon(ids[i - 1], ids[i]) + 1);
        if (i + 1 < ids.size()) length = std::max(length, inCommon(ids[i], ids[i + 1]) + 1);
        names.emplace(UUID::parse(ids[i]).value(), ids[i].substr(0, length));
    }
    return names;
}

std::vector<TimeRange> shownAt(DemoProject const& project, RedactionTrack const& track) {
    std::string const asset = track.asset.value_or(std::string(recordingAsset(project)));
    RecordingOnTimeline const recording(project.timeline, asset);
    std::vector<TimeRange> shown;
    for (auto const& stretch : recording.stretches({track.start, track.duration()})) shown.push_back(stretch.range);
    return shown;
}

double firstShown(ListedFinding const& finding) {
    constexpr double never = 1e12;
    return finding.shown.empty() ? never + finding.recorded.start : finding.shown.front().start;
}

/// Reads frames of the movies of a project, one movie after the other.
class Frames {
public:
    explicit Frames(ProjectPackage const& package) : package_(package) {}

    ImageView at(std::string const& asset, double seconds) {
        if (!reader_ || asset != asset_) reader_.emplace(package_.assetURL(asset_ = asset));
        converter_.convert(reader_->frame(seconds), image_);
        return image_.view();
    }

private:
    ProjectPackage const& package_;
    std::string asset_;
    std::optional<MovieReader> reader_;
    FrameConverter converter_;
    Image image_;
};

std::string nameOfKind(SensitiveKind kind, std::size_t count) {
    std::string name(displayName(kind));
    bool const isAbbreviation = name.size() > 1 && std::isupper(static_cast<unsigned char>(name[1]));
    if (!isAbbreviation) name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
    if (kind == SensitiveKind::custom) name = "own word";
    return fmt::format("{} {}{}", count, name, count == 1 ? "" : "s");
}

}

std::vector<ListedFinding> listedFindings(DemoProject const& project) {
    auto const& tracks = *project.redactions;
    auto const named = names(tracks);
    std::vector<ListedFinding> found;
    for (auto const& track : tracks)
        found.push_back({.id = named.at(track.id),
                         .redaction = track.id,
                         .kind = track.kind,
                         .masked = track.label,
                         .state = stateOf(track),
                         .isByHand = !isFinding(track),
                         .shown = shownAt(project, track),
                         .recorded = {track.start, track.duration()}});
    std::ranges::stable_sort(found, {}, firstShown);
    return found;
}

void writeFindingPictures(std::vector<ListedFinding>& findings, DemoProject const& project,
                          ProjectPackage const& package, std::string const& folder) {
    std::error_code code;
    fs::create_directories(folder, code);
    if (code) throw FileError::writing(folder, code.value());
    Frames frames(package);
    for (auto& finding : findings) {
        auto const scene = sceneOf(project, finding.redaction);
        if (!scene) continue;
        auto const picture =
            findingPicture(frames.at(scene->asset, scene->time), scene->area, scene->others, pictureSize);
        if (picture.isEmpty()) continue;
        auto const file = fs::path(folder) / (finding.id + ".png");
        writePNG(file, picture.view());
        finding.picture = file.string();
    }
}

std::string countedKinds(std::vector<SensitiveKind> const& kinds) {
    std::map<SensitiveKind, std::size_t> counts;
    for (auto const kind : kinds) ++counts[kind];
    std::string text;
    std::size_t left = counts.size();
    for (auto const& [kind, count] : counts) {
        text += nameOfKind(kind, count);
        --left;
        text += left > 1 ? ", " : left == 1 ? " and " : "";
    }
    return text;
}

}
