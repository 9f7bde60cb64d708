#pragma once

#include <Tests/Vision/Corpus/SceneJudge.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavaro {

class TextReader;

/// Exports the recording of a scene as a film of its size and rate in which the findings are covered, and returns
/// where it is.
std::filesystem::path exportCovered(ScreenScene const& scene, std::filesystem::path const& recording,
                                    std::vector<ScreenFinding> const& findings, std::filesystem::path const& folder);

struct ReadAgain {
    int looks = 0;                    // places at which a secret was looked for
    std::vector<std::string> legible; // what could be read there, and when

    ReadAgain& operator+=(ReadAgain const& other);
};

/// Reads the places of secrets in a film of the scene again at three times their size, at some moments of each one's
/// life: a secret is legible where four of its letters beside each other, or all of a shorter one, are read.
ReadAgain readAgain(ScreenScene const& scene, std::filesystem::path const& film,
                    std::vector<std::size_t> const& secrets, TextReader& reader);

/// What a scan without a fault would find, from the scene's own knowledge.
std::vector<ScreenFinding> knownFindings(ScreenScene const& scene);

}
