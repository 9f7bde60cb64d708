#include <TavaroRender/Export/Private/ExportChecks.h>

#include <string>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroMedia/GIF/GIFWriter.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Painter/Private/PaintChecks.h>

namespace tavaro {

namespace {

constexpr std::int64_t largestRate = 240;

void requireRate(ExportSettings const& settings, std::string const& what, std::int64_t largest) {
    if (settings.fps >= 1 && settings.fps <= largest) return;
    throw ExportError::writerFailed(what + " has 1 to " + std::to_string(largest) + " frames a second, not " +
                                    std::to_string(settings.fps));
}

}

void requireMovie(ExportSettings const& settings) {
    requireDrawable(settings.size);
    requireRate(settings, "a movie", largestRate);
    if (settings.container == ExportContainer::gif) {
        throw ExportError::writerFailed("a GIF is no movie, choose MP4 or MOV");
    }
    if (settings.codec == VideoCodecChoice::proRes422 && settings.container != ExportContainer::mov) {
        throw ExportError::writerFailed("ProRes 422 is stored in MOV files only");
    }
}

void requireGIF(ExportSettings const& settings) {
    requireDrawable(settings.size);
    requireRate(settings, "a GIF", GIFWriter::fastestRate);
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
