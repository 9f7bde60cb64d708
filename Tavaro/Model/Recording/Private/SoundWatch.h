#pragma once

#include <TavaroCapture/Sources/SoundState.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <map>
#include <string>
#include <vector>

namespace tavaro {

/// Tells what becomes of the sounds of a take while it goes on, so that it can still be helped: each thing once, as
/// soon as it is so.
class SoundWatch {
public:
    void look(std::vector<SoundState> const& sounds, FunctionRef<void(std::string const&)> tell);

private:
    struct Told {
        bool isAway = false;
        bool isSilent = false;
    };
    std::map<StreamRole, Told> told_;
};

}
