#include "SpokenTake.h"

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroPlatform/Processes/ProgramRun.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <numeric>
#include <random>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

std::string const narration =
    "In this video I will show you how to make a small report from a list of numbers. At first we need a new document. "
    "I click on the button in the top left corner and wait until the window is open. On the left you can see all the "
    "files of the project, and on the right there is room for notes. I copy the first table and paste it here. The "
    "total is calculated in the last line. If something goes wrong, press undo and try again. It is important to save "
    "your work before you close the program.";

TestFolder::TestFolder() {
    auto pattern = (fs::temp_directory_path() / "tavaro-listening-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no folder");
    path = pattern;
}

TestFolder::~TestFolder() { fs::remove_all(path); }

fs::path TestFolder::script(std::string const& name, std::string const& text) const {
    auto const file = path / name;
    std::ofstream(file) << "#!/bin/sh\n" << text;
    fs::permissions(file, fs::perms::owner_all);
    return file;
}

std::optional<MonoSound> spokenByFestival(std::string const& text, TestFolder const& folder) {
    auto const program = findProgram("text2wave");
    if (!program) return std::nullopt;
    auto const file = folder / "spoken.wav";
    auto const answer = runProgram(
        {.command = {*program, "-eval", "(voice_cmu_us_slt_arctic_hts)", "-o", file.string()}, .input = text});
    if (!answer.isGood() || !fs::exists(file)) return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return resampled(soundOfWAV(bytes.str()), audioRate);
}

void writeWAV(fs::path const& file, MonoSound const& sound) {
    std::ofstream(file, std::ios::binary) << wavBytes(sound);
}

MonoSound humming(double seconds) {
    MonoSound sound{std::vector<float>(static_cast<std::size_t>(seconds * audioRate)), audioRate};
    for (std::size_t i = 0; i < sound.samples.size(); ++i) {
        double const t = static_cast<double>(i) / audioRate;
        double const loud = std::fmod(t, 2.5) < 2 ? std::abs(std::sin(std::numbers::pi * 4 * t)) : 0;
        sound.samples[i] = static_cast<float>(0.3 * loud * std::sin(2 * std::numbers::pi * 140 * t));
    }
    return sound;
}

MonoSound hiss(double seconds, float amplitude) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-amplitude, amplitude);
    MonoSound sound = silent(seconds);
    for (auto& sample : sound.samples) sample = level(random);
    return sound;
}

MonoSound silent(double seconds) {
    return {std::vector<float>(static_cast<std::size_t>(seconds * audioRate)), audioRate};
}

MonoSound joined(std::vector<MonoSound> const& sounds) {
    MonoSound whole{{}, audioRate};
    for (auto const& sound : sounds)
        whole.samples.insert(whole.samples.end(), sound.samples.begin(), sound.samples.end());
    return whole;
}

double wordErrorRate(std::string_view said, std::string_view heard) {
    auto const words = writtenWords(said), found = writtenWords(heard);
    std::vector<std::size_t> row(found.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < words.size(); ++i) {
        auto diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < found.size(); ++j) {
            auto const isOther = bareText(words[i]) != bareText(found[j]);
            auto const best = std::min({diagonal + isOther, row[j] + 1, row[j + 1] + 1});
            diagonal = std::exchange(row[j + 1], best);
        }
    }
    return static_cast<double>(row.back()) / static_cast<double>(words.size());
}

}
