#include <TavaroVoice/Voiceover/StoredLine.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroVoice/Speaking/Speaker.h>
#include <TavaroVoice/Voiceover/LineAudio.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t mostBytes = 4 << 20; // an hour of words takes less
constexpr double longest = 86'400;           // seconds

StoredLine lineOf(Speech const& speech) {
    StoredLine line{.duration = speech.duration()};
    for (auto const& [text, start, end] : speech.words) line.words.push_back({text, start, end});
    return line;
}

bool isInOrder(StoredLine const& line) {
    double before = 0;
    for (auto const& word : line.words) {
        if (!(word.start >= before && word.end >= word.start && word.end <= line.duration)) return false;
        before = word.start;
    }
    return true;
}

/// The sound's own length; none where it cannot be read.
std::optional<StoredLine> measured(fs::path const& sound) {
    try {
        StoredLine const line{.duration = AudioReader(sound).info().duration};
        if (line.duration > 0 && line.duration <= longest) return line;
    } catch (Error const&) {
        // As good as none.
    }
    return std::nullopt;
}

}

StoredLine storeLine(fs::path const& assets, std::string const& lineAsset, Speech const& speech) {
    auto const line = lineOf(speech);
    writeFileAtomically(assets / lineWordsAsset(lineAsset), encodeJSON(line));
    std::vector<StereoSample> sides(speech.samples.size());
    std::ranges::transform(speech.samples, sides.begin(), [](float s) { return StereoSample{s, s}; });
    AudioFileWriter writer(assets / lineAsset, AudioFileFormat::whole16, 1);
    writer.append(sides);
    writer.finish();
    return line;
}

std::optional<StoredLine> storedLine(fs::path const& assets, std::string const& lineAsset) {
    auto const sound = assets / lineAsset;
    std::error_code ignored;
    if (!fs::is_regular_file(fs::symlink_status(sound, ignored))) return std::nullopt;
    try {
        auto const bytes = readWholeFile(assets / lineWordsAsset(lineAsset), mostBytes);
        if (auto line = bytes ? decodeStoredLine(*bytes) : std::nullopt) return line;
    } catch (FileError const&) {
        // The sound is what was paid for.
    }
    return measured(sound);
}

std::optional<StoredLine> decodeStoredLine(std::string_view bytes) {
    try {
        auto line = decodeJSON<StoredLine>(bytes);
        if (!(line.duration > 0 && line.duration <= longest)) return std::nullopt;
        if (!isInOrder(line)) line.words.clear();
        return line;
    } catch (JSONError const&) {
        return std::nullopt;
    }
}

}
