#pragma once

#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// Says of a movie that its file ends before it does, `seconds` after its start.
std::string cutShortSentence(std::string const& name, double seconds);

/// One sentence for each recording that is cut short before the last that the project shows of it, and for the camera's
/// movie: its last picture stands still from there. Silent on movies that cannot be read at all.
std::vector<std::string> cutShortMovies(ProjectPackage const& package, DemoProject const& project);

}
