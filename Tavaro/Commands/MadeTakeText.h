#pragma once

#include <Tavaro/Model/Making/TakeProject.h>

namespace tavaro::commands {

enum class TakeOutput { lines, json };

/// What became of a take: its length, how well the capture went, what the polish did and where the project lies, or
/// one JSON object.
void print(MadeTake const& take, TakeOutput output);

}
