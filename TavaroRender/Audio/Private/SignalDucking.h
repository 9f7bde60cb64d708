#pragma once

#include <filesystem>
#include <functional>
#include <vector>

#include <TavaroRender/Audio/Private/MixPlan.h>

namespace tavaro {

/// Finishes a plan in which tracks give way to the sound of a role: finds where that role is heard, by its level, and
/// lowers the tracks there too. Costs one pass over that role's sound; nothing where no track asks for it. `files` are
/// those of the plan's sources. `goOn` is asked now and then; false ends the search early.
void resolveDucking(MixPlan& plan, std::vector<std::filesystem::path> const& files,
                    std::function<bool()> const& goOn = {});

}
