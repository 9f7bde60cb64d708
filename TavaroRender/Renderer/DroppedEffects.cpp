#include <TavaroRender/Renderer/Private/DroppedEffects.h>

#include <algorithm>

#include <spdlog/spdlog.h>

namespace tavaro {

std::vector<DroppedEffects::Known>::iterator DroppedEffects::find(Effect effect, std::string_view subject) {
    return std::ranges::find_if(
        known_, [&](Known const& known) { return known.dropped.effect == effect && known.dropped.subject == subject; });
}

void DroppedEffects::beginFrame() {
    for (auto& known : known_) known.isInFrame = false;
}

void DroppedEffects::use(Effect effect, std::string_view subject) {
    if (known_.empty()) return;
    if (auto const found = find(effect, subject); found != known_.end()) known_.erase(found);
}

void DroppedEffects::drop(Effect effect, std::string_view subject, std::string const& sentence) {
    auto found = find(effect, subject);
    if (found == known_.end()) {
        spdlog::warn("{}", sentence);
        found = known_.insert(known_.end(), {{effect, std::string(subject), sentence, revision_}});
    }
    found->dropped.sentence = sentence;
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
