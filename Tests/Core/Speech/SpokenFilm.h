#pragma once

#include <TavaroCore/Project/DemoProject.h>

#include <string>
#include <utility>
#include <vector>

namespace tavaro {

struct Said {
    std::string text;
    double start = 0;
    double end = 0;
};

/// A film of one take of that length in which these words are said.
inline DemoProject spokenFilm(std::vector<Said> const& words, double seconds = 60) {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}};
    Transcript transcript;
    for (auto const& [text, start, end] : words) {
        transcript.words.push_back({.text = text, .start = start, .end = end, .confidence = 0.9f});
    }
    project.transcript = std::move(transcript);
    return project;
}

}
