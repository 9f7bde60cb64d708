#include <TavaroVoice/SystemVoices/Private/FliteLibrary.h>

#include <TavaroPlatform/Libraries/LoadedLibrary.h>

#include <fmt/format.h>
#include <map>
#include <optional>
#include <string>

namespace tavaro {

namespace {

std::optional<FliteLibrary> load() {
    auto const library = LoadedLibrary::load("libflite.so.1");
    if (!library) return std::nullopt;
    FliteLibrary found;
    bool const isWhole = library->find(found.init, "flite_init") &&
                         library->find(found.synthesize, "flite_synth_text") && library->find(found.wave, "utt_wave") &&
                         library->find(found.relation, "utt_relation") && library->find(found.head, "relation_head") &&
                         library->find(found.next, "item_next") && library->find(found.daughter, "item_daughter") &&
                         library->find(found.feature, "flite_ffeature_float") &&
                         library->find(found.setFeature, "flite_feat_set_float") &&
                         library->find(found.release, "delete_utterance") && library->find(found.onError, "cst_errjmp");
    if (!isWhole) return std::nullopt;
    found.init();
    return found;
}

cst_voice* loadVoice(std::string_view name) {
    auto const library = LoadedLibrary::load(fmt::format("libflite_cmu_us_{}.so.1", name));
    cst_voice* (*registerVoice)(char const* folder) = nullptr;
    if (!library || !library->find(registerVoice, fmt::format("register_cmu_us_{}", name).c_str())) return nullptr;
    return registerVoice(nullptr);
}

}

FliteLibrary const* fliteLibrary() {
    static auto const library = load();
    return library ? &*library : nullptr;
}

cst_voice* fliteVoice(std::string_view name) {
    static std::map<std::string, cst_voice*, std::less<>> voices;
    if (!fliteLibrary()) return nullptr;
    auto const known = voices.find(name);
    return known != voices.end() ? known->second : voices.emplace(name, loadVoice(name)).first->second;
}

}
