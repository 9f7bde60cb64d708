#include <TavaroMedia/Audio/TimeStretch.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <TavaroMedia/Audio/Attacks.h>

namespace tavaro {

namespace {

constexpr std::int64_t hop = audioRate / 100;
constexpr std::int64_t reach = audioRate / 160;         // 6.25 ms: half a period of 80 Hz
constexpr std::int64_t attack = audioRate / 240;        // played as it is
constexpr std::int64_t beforeAttack = audioRate / 1000; // kept out of what comes before it
constexpr std::int64_t crossing = 64;
constexpr std::int64_t history = 4096; // more than any piece lies behind its place
constexpr double placeCost = 0.6;      // likeness that a place at the end of the reach has to bring
// A pitch that goes with the speed would find each place off by the same: the last ones count against the next.
constexpr double balance = 0.2;
constexpr double forgetting = 0.9;
constexpr std::int64_t coarse = 6;

/// The source around the place that is played, read as it is needed.
class Window {
public:
    explicit Window(TimeStretch::Source source) : source_(std::move(source)) {}

    void extendTo(std::int64_t end, Attacks& attacks) {
        auto const held = samples_.size();
        if (begin_ + std::ssize(samples_) >= end) return;
        samples_.resize(static_cast<std::size_t>(end - begin_));
        auto const fresh = std::span(samples_).subspan(held);
        source_(begin_ + static_cast<std::int64_t>(held), fresh);
        attacks.feed(fresh);
        // Of unequal weights, so that sides in opposite phase do not cancel.
        for (auto const& sample : fresh) mono_.push_back(sample.left + 0.6f * sample.right);
    }
    void forgetBefore(std::int64_t position) {
        auto const count = std::min<std::int64_t>(position - begin_, std::ssize(samples_));
        if (count < history) return; // now and then
        samples_.erase(samples_.begin(), samples_.begin() + count);
        mono_.erase(mono_.begin(), mono_.begin() + count);
        begin_ += count;
    }

    std::int64_t begin() const { return begin_; }
    std::span<StereoSample const> at(std::int64_t position) const {
        return std::span(samples_).subspan(static_cast<std::size_t>(position - begin_));
    }
    float const* mono(std::int64_t position) const { return mono_.data() + (position - begin_); }

private:
    TimeStretch::Source source_;
    std::int64_t begin_ = -history;
    std::vector<StereoSample> samples_;
    std::vector<float> mono_;
};

/// How alike two stretches of a hop are, every `step`th sample: −1…1; 0 where one is silent.
double likeness(float const* a, float const* b, std::int64_t step) {
    float ab = 0;
    float aa = 0;
    float bb = 0;
    for (std::int64_t i = 0; i < hop; i += step) {
        ab += a[i] * b[i];
        aa += a[i] * a[i];
        bb += b[i] * b[i];
    }
    return ab / std::sqrt(double{aa} * bb + 1e-12);
}

/// Rises from 0 to 1.
float rising(std::int64_t i, std::int64_t length) {
    auto const share = (static_cast<float>(i) + 0.5f) / static_cast<float>(length);
    return 0.5f - 0.5f * std::cos(std::numbers::pi_v<float> * share);
}

StereoSample mixed(StereoSample const& from, StereoSample const& to, float share) {
    return {from.left + (to.left - from.left) * share, from.right + (to.right - from.right) * share};
}

}

/// Positions of the source are counted as its own, those of the output as the output's.
struct TimeStretch::State {
    State(double speedup, Source source) : speed(speedup), window(std::move(source)), attacks(window.begin()) {}

    double const speed;
    Window window;
    Attacks attacks;
    std::vector<StereoSample> ready; // its last samples may still be crossed over to an attack
    std::int64_t output = 0;         // of the next sample made
    std::int64_t goesOn = 0;         // where in the source the last piece would go on
    std::int64_t least = -history;   // the source from the last attack on
    std::int64_t passed = 0;         // attacks before it are played
    double lean = 0;                 // by how much the last pieces together lay behind their places

    std::int64_t outputOf(std::int64_t source) const {
        return source == Attacks::none ? source : std::llround(static_cast<double>(source) / speed);
    }
    void make();
    void lay(std::int64_t piece, std::int64_t count, std::int64_t most);
    void begin(std::int64_t attackAt);
    std::int64_t chosen(double place, std::int64_t most) const;
    struct Bounds {
        std::int64_t first = 0;
        std::int64_t last = 0;
    };
    std::int64_t crestNear(std::int64_t place, Bounds bounds) const;
};

/// The crest of likeness to how the last piece goes on that is highest for its distance from the own place. The cost
/// only chooses among crests: off a crest, every piece would be turned a little, and the pitch with it.
std::int64_t TimeStretch::State::chosen(double place, std::int64_t most) const {
    auto const own = std::llround(place);
    auto const first = std::max<std::int64_t>(own - reach, least);
    auto const last = std::min<std::int64_t>(own + reach, most);
    if (first >= last) return std::max(std::min<std::int64_t>(own, most), window.begin());
    // The slower, the more of the film a place is off by.
    double const cost = placeCost / std::sqrt(std::min(speed, 1.0));
    auto const* wanted = window.mono(goesOn);
    auto best = first;
    double highest = -100;
    for (auto at = first; at <= last; at += coarse) {
        double const off = (static_cast<double>(at) - place + balance * lean) / reach;
        double const score = likeness(wanted, window.mono(at), 4) - cost * off * off;
        if (score > highest) best = at;
        highest = std::max(highest, score);
    }
    return crestNear(best, {first, last});
}

std::int64_t TimeStretch::State::crestNear(std::int64_t place, Bounds bounds) const {
    auto const* wanted = window.mono(goesOn);
    auto best = likeness(wanted, window.mono(place), 2);
    for (auto const step : {coarse, coarse / 3, std::int64_t{1}}) {
        for (auto const move : {-step, step}) {
            for (auto at = place + move; at >= bounds.first && at <= bounds.last; at += move) {
                auto const here = likeness(wanted, window.mono(at), 2);
                if (here <= best) break;
                best = here;
                place = at;
            }
        }
    }
    return place;
}

/// Goes over from how the last piece goes on to another, which it has to leave before `most`.
void TimeStretch::State::lay(std::int64_t piece, std::int64_t count, std::int64_t most) {
    auto const length = std::min(most == Attacks::none ? count : std::max<std::int64_t>(most - goesOn, 32), count);
    auto const from = window.at(goesOn);
    auto const to = window.at(piece);
    for (std::int64_t i = 0; i < count; ++i) {
        auto const n = static_cast<std::size_t>(i);
        ready.push_back(i < length ? mixed(from[n], to[n], rising(i, length)) : to[n]);
    }
    output += count;
    goesOn = piece + count;
}

/// Lays the source anew at an attack, whose time it is.
void TimeStretch::State::begin(std::int64_t attackAt) {
    auto const made = std::min<std::int64_t>(crossing, std::ssize(ready));
    auto const before = window.at(attackAt - made);
    for (std::int64_t i = 0; i < made; ++i) {
        auto& sample = ready[ready.size() - static_cast<std::size_t>(made - i)];
        sample = mixed(sample, before[static_cast<std::size_t>(i)], rising(i, made));
    }
    passed = attackAt + 1;
    lean = 0;
    auto const count = std::min<std::int64_t>(attack, outputOf(attacks.next(passed)) - output);
    auto const sound = window.at(attackAt);
    if (count > 0) ready.insert(ready.end(), sound.begin(), sound.begin() + count);
    output += std::max<std::int64_t>(count, 0);
    goesOn = attackAt + std::max<std::int64_t>(count, 0);
    least = attackAt + attack / 2;
}

void TimeStretch::State::make() {
    double const place = speed * static_cast<double>(output + hop) - hop; // its middle is in the middle of the piece
    auto const ahead = static_cast<std::int64_t>(std::ceil(std::max(place + hop, speed * static_cast<double>(output))));
    auto const here = static_cast<std::int64_t>(speed * static_cast<double>(output));
    window.forgetBefore(std::min(here, goesOn) - history);
    window.extendTo(std::max(ahead + reach, goesOn) + 3 * hop + Attacks::lookAhead, attacks);
    auto const next = attacks.next(passed);
    auto const until = outputOf(next) - output;
    if (until <= 0) return begin(next);
    auto const most = next == Attacks::none ? next : next - beforeAttack;
    auto const count = std::min(hop, until);
    auto const piece = chosen(place, most == Attacks::none ? most : most - 2 * hop);
    double const off = static_cast<double>(piece) - place;
    lean = forgetting * lean + std::clamp<double>(off, -reach, reach);
    lay(piece, count, most);
}

TimeStretch::TimeStretch(double speed, Source source)
    : state_(std::make_unique<State>(std::clamp(speed, slowest, fastest), std::move(source))) {}
TimeStretch::TimeStretch(TimeStretch&&) noexcept = default;
TimeStretch& TimeStretch::operator=(TimeStretch&&) noexcept = default;
TimeStretch::~TimeStretch() = default;

void TimeStretch::read(std::span<StereoSample> samples) {
    auto& ready = state_->ready;
    while (ready.size() < samples.size() + crossing) state_->make();
    std::copy_n(ready.begin(), samples.size(), samples.begin());
    ready.erase(ready.begin(), ready.begin() + std::ssize(samples));
}

}
