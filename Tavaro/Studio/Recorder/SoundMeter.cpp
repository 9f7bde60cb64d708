#include <Tavaro/Studio/Recorder/SoundMeter.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double suspiciousSilence = 5; // seconds
constexpr double peakHolds = 1.2;       // seconds

/// Of 60 dB, in steps of a two hundredth, so that what nobody can see changes nothing.
double shareOf(float level) {
    double const share = 1 + std::log10(std::max(level, 1e-6f)) / 3;
    return std::round(std::clamp(share, 0.0, 1.0) * 200) / 200;
}

QString warningFor(SoundState const& state) {
    bool const isMicrophone = state.role == StreamRole::microphone;
    if (state.isAway)
        return isMicrophone ? SoundMeter::tr("No sound comes from the microphone. Is it unplugged?")
                            : SoundMeter::tr("No sound comes from the system.");
    if (state.silentSeconds < suspiciousSilence) return {};
    if (!state.awaited.empty())
        return SoundMeter::tr("“%1” has not played anything yet.").arg(QString::fromStdString(state.awaited));
    // A machine may well play nothing. A microphone that works has some noise.
    return isMicrophone ? SoundMeter::tr("The microphone gives nothing but silence. Is it muted?") : QString();
}

}

QString SoundMeter::description() const {
    if (!isListening_) return tr("off");
    return warning_.isEmpty() ? tr("%1 percent").arg(static_cast<int>(std::lround(level_ * 100))) : warning_;
}

void SoundMeter::show(SoundState const& state, double now) {
    double const level = state.isAway ? 0 : shareOf(state.level);
    bool const isPeak = level >= peak_ || now - peakAt_ >= peakHolds;
    if (isPeak) peakAt_ = now;
    set(level, isPeak ? level : peak_, warningFor(state), true);
}

void SoundMeter::fail(QString const& sentence) { set(0, 0, sentence, false); }

void SoundMeter::clear() { set(0, 0, {}, false); }

void SoundMeter::set(double level, double peak, QString const& warning, bool isListening) {
    bool const isSame = level == level_ && peak == peak_ && warning == warning_ && isListening == isListening_;
    if (isSame) return;
    level_ = level;
    peak_ = peak;
    warning_ = warning;
    isListening_ = isListening;
    Q_EMIT changed();
}

}
