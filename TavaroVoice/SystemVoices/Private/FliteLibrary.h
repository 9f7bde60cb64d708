#pragma once

#include <flite/flite.h>

#include <csetjmp>
#include <string_view>

namespace tavaro {

/// What is used of flite, which is not safe for threads: under its mutex alone.
struct FliteLibrary {
    decltype(&flite_init) init = nullptr;
    decltype(&flite_synth_text) synthesize = nullptr;
    decltype(&utt_wave) wave = nullptr;
    decltype(&utt_relation) relation = nullptr;
    decltype(&relation_head) head = nullptr;
    decltype(&item_next) next = nullptr;
    decltype(&item_daughter) daughter = nullptr;
    decltype(&flite_ffeature_float) feature = nullptr;
    decltype(&flite_feat_set_float) setFeature = nullptr;
    decltype(&delete_utterance) release = nullptr;
    std::jmp_buf** onError = nullptr; // otherwise an error of flite's ends the process
};

/// Null where it is not installed.
FliteLibrary const* fliteLibrary();

/// The voice of that name, "slt"; null where it is not installed.
cst_voice* fliteVoice(std::string_view name);

}
