#pragma once

#include <TavaroVision/Scanning/PrivacyScan.h>
#include <Tests/Vision/Corpus/ScreenScenes.h>

namespace tavaro {

/// How well the private things of scenes are found and covered. Counted are secrets that are seen whole for a quarter
/// of a second; others may be covered or not.
struct SceneJudgement {
    int secrets = 0;
    int found = 0;         // most of it is covered, at a time when all of it is seen
    int frames = 0;        // in which a secret that is found is seen, each secret for itself
    int legibleFrames = 0; // of these, where three letters of it or more are seen beside each other
    int falseCovers = 0;   // findings with nothing of any secret below them
    double seconds = 0;
    double secretArea = 0;  // of the letters of what is found, summed over frames
    double coveredArea = 0; // of the findings, likewise

    std::vector<std::string> missed, legible, wrong; // what, where and when
    std::vector<std::size_t> foundSecrets;           // of one scene, by their places in its list
    std::vector<double> doubtful;                    // times of one scene to look at
    std::vector<std::size_t> doubtfulSecrets;        // what is to be seen then

    double share() const { return secrets ? double(found) / secrets : 1; }
    double falseCoversAMinute() const { return seconds > 0 ? falseCovers * 60 / seconds : 0; }
    SceneJudgement& operator+=(SceneJudgement const& other);
};

SceneJudgement judge(ScreenScene const& scene, std::vector<ScreenFinding> const& findings);

/// What a finding covers while the film shows that second of a take of that size, as composition has it; empty when
/// nothing.
PixelBox coveredAt(ScreenFinding const& finding, double seconds, int width, int height);

/// As the document has it.
RedactionTrack trackOf(ScreenFinding const& finding);

}
