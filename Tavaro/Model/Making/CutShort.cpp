#include <Tavaro/Model/Making/Private/CutShort.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>

namespace tavaro {

std::string cutShortSentence(std::string const& name, double seconds) {
    return fmt::format("The file of “{}” is cut short: its pictures end at {}.", name,
                       Timecode::format(seconds, Timecode::Fraction::hundredths));
}

std::vector<std::string> cutShortMovies(ProjectPackage const& package, DemoProject const& project) {
    std::map<std::string, double> shownUntil; // seconds of the movie
    for (auto const& clip : project.timeline.clips) {
        auto& until = shownUntil[clip.asset];
        until = std::max(until, clip.sourceStart + clip.sourceSpan());
    }
    if (project.usesCamera()) shownUntil[*project.cameraAsset] = std::numeric_limits<double>::infinity();
    std::vector<std::string> sentences;
    for (auto const& [asset, until] : shownUntil) {
        try {
            auto const info = MovieReader(package.assetURL(asset)).info();
            if (info.isCutShort && until > info.duration + 0.001)
                sentences.push_back(cutShortSentence(asset, info.duration));
        } catch (MediaError const&) {
            continue; // whoever draws it says so
        }
    }
    return sentences;
}

}
