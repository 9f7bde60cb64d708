#include <TavaroRender/Export/Private/ExportChecks.h>

#include <string>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/GIF/GIFWriter.h>
#include <TavaroRender/Export/ExportError.h>

namespace tavaro {

namespace {

constexpr std::int64_t smallestSide = 16;
constexpr std::int64_t largestSide = 16384;
constexpr std::int64_t largestRate = 240;

void requireRate(ExportSettings const& settings, std::string const& what, std::int64_t largest) {
    if (settings.fps >= 1 && settings.fps <= largest) return;
    throw ExportError::writerFailed(what + " has 1 to " + std::to_string(largest) + " frames a second, not " +
                                    std::to_string(settings.fps));
}

}

void requireDrawable(ExportSettings const& settings) {
    auto const isSide = [](std::int64_t side) { return side >= smallestSide && side <= largestSide; };
    if (!isSide(settings.size.width) || !isSide(settings.size.height)) {
        throw ExportError::writerFailed("a movie is at least " + std::to_string(smallestSide) + " and at most " +
                                        std::to_string(largestSide) + " pixels wide and high, not " +
                                        std::to_string(settings.size.width) + " × " +
                                        std::to_string(settings.size.height));
    }
}

void requireMovie(ExportSettings const& settings) {
    requireDrawable(settings);
    requireRate(settings, "a movie", largestRate);
    if (settings.container == ExportContainer::gif) {
        throw ExportError::writerFailed("a GIF is no movie, choose MP4 or MOV");
    }
    if (settings.codec == VideoCodecChoice::proRes422 && settings.container != ExportContainer::mov) {
        throw ExportError::writerFailed("ProRes 422 is stored in MOV files only");
    }
}

void requireGIF(ExportSettings const& settings) {
    requireDrawable(settings);
    requireRate(settings, "a GIF", GIFWriter::fastestRate);
}

void requireSource(DemoProject const& project, double duration) {
    bool const hasClips = !project.timeline.clips.empty();
    bool const hasCards = project.intro || project.outro;
    if (!(duration > 0) || !(hasClips || hasCards)) throw ExportError::readerFailed("the timeline shows nothing of it");
    if (duration > longestMovie) throw ExportError::readerFailed("the timeline is longer than a movie can be");
    auto const size = project.sourceSize;
    if (!hasClips || (size.width >= 1 && size.height >= 1)) return;
    throw ExportError::readerFailed("the project gives its size as " + std::to_string(size.width) + " × " +
                                    std::to_string(size.height) + " pixels");
}

void makeFolder(std::filesystem::path const& folder) {
    std::error_code failure;
    if (!folder.empty()) std::filesystem::create_directories(folder, failure);
    if (failure) {
        throw ExportError::writerFailed("the folder '" + folder.string() + "' cannot be made (" +
                                        systemReason(failure.value()) + ")");
    }
}

}
