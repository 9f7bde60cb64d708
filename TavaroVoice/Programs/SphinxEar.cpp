#include <TavaroVoice/Programs/SphinxEar.h>

#include <TavaroCore/Errors/Error.h>

#include <pocketsphinx.h>
#include <sphinxbase/err.h>

#include <string>
#include <string_view>

namespace tavaro {

namespace {

template<auto release> struct ReleaseWithResult {
    void operator()(auto* handle) const { release(handle); }
};
using Settings = std::unique_ptr<cmd_ln_t, ReleaseWithResult<cmd_ln_free_r>>;
using Decoder = std::unique_ptr<ps_decoder_t, ReleaseWithResult<ps_free>>;

// The mean is taken over the whole utterance. Silence stays in, since the engine's times would count without it. More
// states a frame than these change no word, and make music and noise slower than real time.
constexpr char const* mostStates = "5000";

Settings settingsFor(std::filesystem::path const& model) {
    auto const acoustic = (model / "en-us").string(), language = (model / "en-us.lm.bin").string();
    auto const dictionary = (model / "cmudict-en-us.dict").string();
    return Settings(cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", acoustic.c_str(), "-lm", language.c_str(), "-dict",
                                dictionary.c_str(), "-cmn", "batch", "-remove_silence", "no", "-maxhmmpf", mostStates,
                                nullptr));
}

/// "to(2)" → "to": the dictionary numbers the ways to say a word.
std::string textOf(std::string_view entry) {
    std::string text(entry.substr(0, entry.find('(')));
    if (text == "i" || text.starts_with("i'")) text[0] = 'I';
    return text;
}

bool isWord(std::string_view entry) {
    return !entry.empty() && entry[0] != '<' && entry[0] != '[' && entry[0] != '+' && entry[0] != '(';
}

}

struct SphinxEar::State {
    Settings settings;
    Decoder decoder;
    double frameSeconds = 0.01;

    HeardWord word(ps_seg_t* segment) const {
        int first = 0, last = 0;
        ps_seg_frames(segment, &first, &last);
        int acoustic = 0, language = 0, backOff = 0;
        auto const posterior = ps_seg_prob(segment, &acoustic, &language, &backOff);
        return {.text = textOf(ps_seg_word(segment)),
                .start = first * frameSeconds,
                .end = (last + 1) * frameSeconds,
                .confidence = static_cast<float>(logmath_exp(ps_get_logmath(decoder.get()), posterior))};
    }
};

SphinxEar::SphinxEar(std::filesystem::path const& model) : state_(std::make_unique<State>()) {
    err_set_logfp(nullptr);
    state_->settings = settingsFor(model);
    if (state_->settings) state_->decoder.reset(ps_init(state_->settings.get()));
    if (!state_->decoder) throw Error("the speech model in " + model.string() + " cannot be loaded");
    auto const framesASecond = cmd_ln_int_r(state_->settings.get(), "-frate");
    if (framesASecond > 0) state_->frameSeconds = 1.0 / static_cast<double>(framesASecond);
}

SphinxEar::~SphinxEar() = default;

std::vector<HeardWord> SphinxEar::hear(std::vector<std::int16_t> const& samples) {
    auto* const decoder = state_->decoder.get();
    bool const hasHeard = ps_start_utt(decoder) >= 0 &&
                          ps_process_raw(decoder, samples.data(), samples.size(), FALSE, TRUE) >= 0 &&
                          ps_end_utt(decoder) >= 0;
    if (!hasHeard) throw Error("PocketSphinx does not take the sound");
    std::vector<HeardWord> words;
    for (auto* segment = ps_seg_iter(decoder); segment; segment = ps_seg_next(segment))
        if (isWord(ps_seg_word(segment))) words.push_back(state_->word(segment));
    return words;
}

}
