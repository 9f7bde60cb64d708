#include <TavaroRender/Renderer/Private/DroppedEffects.h>

#include <algorithm>

#include <spdlog/spdlog.h>

namespace tavaro {

void DroppedEffects::beginFrame() {
    std::erase_if(known_, [](Known const& known) { return known.worked && !known.isInFrame; });
    for (auto& known : known_) known.isInFrame = known.worked = false;
}

void DroppedEffects::use(Effect effect, std::string_view subject) {
    for (auto& known : known_) {
        if (known.dropped.effect == effect && known.dropped.subject == subject) known.worked = true;
    }
}

void DroppedEffects::drop(Effect effect, std::string_view subject, std::string const& sentence) {
    auto const isIt = [&](Known const& known) {
        auto const& dropped = known.dropped;
        return dropped.effect == effect && dropped.subject == subject && dropped.sentence == sentence;
    };
    auto found = std::ranges::find_if(known_, isIt);
    if (found == known_.end()) {
        spdlog::warn("{}", sentence);
        found = known_.insert(known_.end(), {{effect, std::string(subject), sentence, revision_}});
    }
    found->isInFrame = true;
}

std::vector<DroppedEffect> DroppedEffects::list() const {
    std::vector<DroppedEffect> list;
    for (auto const& known : known_) {
        if (known.isInFrame) list.push_back(known.dropped);
    }
    return list;
}

}
