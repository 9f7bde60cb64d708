#pragma once

#include <filesystem>
#include <string>

namespace tavaro {

/// A library of a user who has worked for a while, the same wherever and whenever it is made: in `library`, "Welcome
/// tour" with a film, a zoom, a title, captions and a transcript, and others that are only listed.
void makeLibrary(std::filesystem::path const& library);
/// One that cannot be opened.
void addDamagedProject(std::filesystem::path const& library);

inline std::string const tourName = "Welcome tour";

}
