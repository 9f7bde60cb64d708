#include <TavaroMedia/Audio/LoudnessMeter.h>

#include <algorithm>
#include <cmath>
#include <new>

#include <ebur128.h>

namespace tavaro {

namespace {

struct FreeMeter {
    void operator()(ebur128_state* meter) const { ebur128_destroy(&meter); }
};

}

struct LoudnessMeter::State {
    explicit State(Peaks peaks)
        : hasPeaks(peaks == Peaks::measured)
        , meter(ebur128_init(2, audioRate,
                             EBUR128_MODE_I | EBUR128_MODE_HISTOGRAM | (hasPeaks ? EBUR128_MODE_TRUE_PEAK : 0))) {
        if (!meter) throw std::bad_alloc();
    }

    bool const hasPeaks;
    std::unique_ptr<ebur128_state, FreeMeter> meter; // a histogram, so that memory does not grow with the sound
};

LoudnessMeter::LoudnessMeter(Peaks peaks) : state_(std::make_unique<State>(peaks)) {}
LoudnessMeter::LoudnessMeter(LoudnessMeter&&) noexcept = default;
LoudnessMeter& LoudnessMeter::operator=(LoudnessMeter&&) noexcept = default;
LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::add(std::span<StereoSample const> samples) {
    auto const code =
        ebur128_add_frames_float(state_->meter.get(), reinterpret_cast<float const*>(samples.data()), samples.size());
    if (code == EBUR128_ERROR_NOMEM) throw std::bad_alloc();
}

std::optional<double> LoudnessMeter::integrated() const {
    double loudness = 0;
    if (ebur128_loudness_global(state_->meter.get(), &loudness) != EBUR128_SUCCESS || !std::isfinite(loudness))
        return std::nullopt;
    return loudness;
}

std::optional<double> LoudnessMeter::truePeak() const {
    double left = 0;
    double right = 0;
    if (!state_->hasPeaks) return std::nullopt;
    ebur128_true_peak(state_->meter.get(), 0, &left);
    ebur128_true_peak(state_->meter.get(), 1, &right);
    auto const peak = std::max(left, right);
    if (!(peak > 0)) return std::nullopt;
    return 20 * std::log10(peak);
}

}
