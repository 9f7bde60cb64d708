#pragma once

#include <Tavaro/Model/Making/NewProject.h>
#include <TavaroCapture/Segments/TakeStream.h>

#include <vector>

namespace tavaro {

/// Adds what a take recorded beside its screen to the project that is made of it.
void addStreams(NewProject& project, std::vector<TakeStream> const& streams);

}
