#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <TavaroRender/Renderer/DroppedEffect.h>

namespace tavaro {

/// Keeps account of what frames are drawn without. One thread at a time.
class DroppedEffects {
public:
    /// Frames are those of that revision of the project from now on.
    void beginRevision(std::int64_t revision) { revision_ = revision; }

    /// Another frame is drawn, of which nothing is missing yet.
    void beginFrame();

    /// The frame has it.
    void use(Effect effect, std::string_view subject);

    /// The frame is drawn without it. Logged once, until it has been used in between.
    void drop(Effect effect, std::string_view subject, std::string const& sentence);

    /// What the frame is drawn without.
    std::vector<DroppedEffect> list() const;

private:
    struct Known {
        DroppedEffect dropped;
        bool isInFrame = false;
        bool worked = false; // one of its kind did, in the frame: it works again unless another one is still missing
    };

    std::int64_t revision_ = 0;
    // One for each sentence. Also what the frame does not ask for, since it has not been seen to work again.
    std::vector<Known> known_;
};

}
