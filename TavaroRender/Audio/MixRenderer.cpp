#include <TavaroRender/Audio/Private/MixRenderer.h>

#include <algorithm>
#include <list>

#include <TavaroMedia/Audio/PeakLimiter.h>
#include <TavaroRender/Audio/Private/ClickSound.h>
#include <TavaroRender/Audio/Private/RunPlayer.h>

namespace tavaro {

namespace {

constexpr std::int64_t blockSamples = 2048;
constexpr double ceiling = -1; // dB of true peak; room for what a coder adds

}

struct MixRenderer::State {
    State(MixPlan mix, std::vector<std::filesystem::path> files) : plan(std::move(mix)), pool(std::move(files)) {
        for (auto const& track : plan.tracks) {
            auto& last = lastEnds.emplace_back();
            for (auto const& run : track.runs) last.push_back(std::max(run.end, last.empty() ? run.end : last.back()));
        }
        startAt(0);
    }

    struct Playing {
        std::size_t next = 0; // the first run that has not begun
        std::list<RunPlayer> players;
    };

    MixPlan const plan;
    ReaderPool pool;
    std::vector<std::vector<std::int64_t>> lastEnds; // of each track, the latest end of its first n runs
    std::vector<Playing> playing;                    // one a track
    std::size_t nextClick = 0;
    PeakLimiter limiter{ceiling};
    std::int64_t mixed = 0; // position of the next sample that goes into the limiter
    std::vector<StereoSample> ready;
    std::int64_t readyStart = 0;
    std::vector<StereoSample> trackBlock = std::vector<StereoSample>(blockSamples);
    std::vector<StereoSample> runBlock = trackBlock;
    std::vector<StereoSample> sumBlock = trackBlock;

    void startAt(std::int64_t position);
    void mixBlock();
    bool addTrack(std::size_t number);
    void addRun(RunPlayer& player);
    void addClicks();
    void beginRuns(std::size_t number);
};

/// Blocks lie on a grid, so that they are the same from wherever the mix is started.
void MixRenderer::State::startAt(std::int64_t position) {
    mixed = position / blockSamples * blockSamples;
    readyStart = mixed;
    ready.clear();
    limiter = PeakLimiter(ceiling);
    playing = std::vector<Playing>(plan.tracks.size());
    for (std::size_t i = 0; i < playing.size(); ++i) {
        // Runs overlap only at cuts, but a document may lay clips over each other: what ended before is left out.
        auto const first = std::ranges::upper_bound(lastEnds[i], mixed);
        playing[i].next = static_cast<std::size_t>(first - lastEnds[i].begin());
    }
    auto const tail = static_cast<std::int64_t>(ClickSound::samples().size());
    nextClick = static_cast<std::size_t>(std::ranges::upper_bound(plan.clicks, mixed - tail) - plan.clicks.begin());
}

void MixRenderer::State::beginRuns(std::size_t number) {
    auto& [next, players] = playing[number];
    auto const& runs = plan.tracks[number].runs;
    for (; next < runs.size() && runs[next].start < mixed + blockSamples; ++next) {
        if (runs[next].end > mixed) players.emplace_back(runs[next], pool, std::max(runs[next].start, mixed));
    }
}

void MixRenderer::State::addRun(RunPlayer& player) {
    auto const& run = player.run();
    auto const from = std::max(run.start, mixed);
    auto const until = std::min(run.end, mixed + blockSamples);
    auto const samples = std::span(runBlock).first(static_cast<std::size_t>(until - from));
    player.play(samples);
    run.envelope.apply(from, samples);
    auto* out = trackBlock.data() + (from - mixed);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        out[i].left += samples[i].left;
        out[i].right += samples[i].right;
    }
}

bool MixRenderer::State::addTrack(std::size_t number) {
    beginRuns(number);
    auto& players = playing[number].players;
    if (players.empty()) return false;
    std::ranges::fill(trackBlock, StereoSample{});
    for (auto& player : players) addRun(player);
    players.remove_if([this](RunPlayer const& player) { return player.run().end <= mixed + blockSamples; });
    plan.tracks[number].muting.apply(mixed, trackBlock);
    plan.tracks[number].ducking.apply(mixed, trackBlock);
    return true;
}

void MixRenderer::State::addClicks() {
    auto const& sound = ClickSound::samples();
    auto const length = static_cast<std::int64_t>(sound.size());
    while (nextClick < plan.clicks.size() && plan.clicks[nextClick] + length <= mixed) ++nextClick;
    for (auto i = nextClick; i < plan.clicks.size() && plan.clicks[i] < mixed + blockSamples; ++i) {
        auto const click = plan.clicks[i];
        auto const until = std::min(click + length, mixed + blockSamples);
        for (auto at = std::max(click, mixed); at < until; ++at) {
            auto const value = plan.clickGain * sound[static_cast<std::size_t>(at - click)];
            auto& sample = sumBlock[static_cast<std::size_t>(at - mixed)];
            sample = {sample.left + value, sample.right + value};
        }
    }
}

void MixRenderer::State::mixBlock() {
    std::ranges::fill(sumBlock, StereoSample{});
    for (std::size_t number = 0; number < plan.tracks.size(); ++number) {
        if (!addTrack(number)) continue;
        for (std::size_t i = 0; i < sumBlock.size(); ++i) {
            sumBlock[i].left += trackBlock[i].left;
            sumBlock[i].right += trackBlock[i].right;
        }
    }
    addClicks();
    mixed += blockSamples;
    limiter.process(sumBlock, ready);
}

MixRenderer::MixRenderer(MixPlan plan, std::vector<std::filesystem::path> files)
    : state_(std::make_unique<State>(std::move(plan), std::move(files))) {}
MixRenderer::MixRenderer(MixRenderer&&) noexcept = default;
MixRenderer& MixRenderer::operator=(MixRenderer&&) noexcept = default;
MixRenderer::~MixRenderer() = default;

MixPlan const& MixRenderer::plan() const { return state_->plan; }

void MixRenderer::render(std::int64_t position, std::span<StereoSample> samples) {
    auto& state = *state_;
    auto const before = static_cast<std::size_t>(std::clamp<std::int64_t>(-position, 0, std::ssize(samples)));
    std::ranges::fill(samples.first(before), StereoSample{});
    samples = samples.subspan(before);
    position = std::max<std::int64_t>(position, 0);
    auto const inside =
        static_cast<std::size_t>(std::clamp<std::int64_t>(state.plan.length - position, 0, std::ssize(samples)));
    std::ranges::fill(samples.subspan(inside), StereoSample{});
    samples = samples.first(inside);
    if (samples.empty()) return;
    bool const isNear = position >= state.readyStart && position < state.mixed + blockSamples;
    if (!isNear) state.startAt(position);
    auto const skipped = static_cast<std::size_t>(position - state.readyStart);
    while (state.ready.size() < skipped + samples.size()) state.mixBlock();
    auto const from = state.ready.begin() + static_cast<std::ptrdiff_t>(skipped);
    std::copy_n(from, samples.size(), samples.begin());
    state.ready.erase(state.ready.begin(), from + std::ssize(samples));
    state.readyStart = position + std::ssize(samples);
}

}
