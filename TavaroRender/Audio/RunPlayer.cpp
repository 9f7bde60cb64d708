#include <TavaroRender/Audio/Private/RunPlayer.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::size_t mostIdle = 8;
constexpr std::size_t stretchBlock = 4096;

// The tempo filter needs so much sound before the first sample that counts.
constexpr std::int64_t stretchLead = audioRate / 2;

bool isPlain(MixRun const& run) { return run.speed == 1; }

}

std::unique_ptr<AudioReader> ReaderPool::take(std::size_t source, std::int64_t position) {
    auto best = idle_.end();
    auto const distance = [&](Idle const& idle) {
        auto const ahead = position - idle.reader->position();
        return ahead >= 0 ? ahead : std::numeric_limits<std::int64_t>::max() / 2 - ahead;
    };
    for (auto idle = idle_.begin(); idle != idle_.end(); ++idle) {
        if (idle->source == source && (best == idle_.end() || distance(*idle) < distance(*best))) best = idle;
    }
    if (best == idle_.end()) return std::make_unique<AudioReader>(files_.at(source));
    auto reader = std::move(best->reader);
    idle_.erase(best);
    return reader;
}

void ReaderPool::giveBack(std::size_t source, std::unique_ptr<AudioReader> reader) {
    idle_.push_front({source, std::move(reader)});
    if (idle_.size() > mostIdle) idle_.pop_back();
}

RunPlayer::RunPlayer(MixRun const& run, ReaderPool& pool, std::int64_t position) : run_(run), pool_(pool) {
    auto start = position;
    if (!isPlain(run)) {
        TempoFilter const filter(run.speed);
        tempo_.emplace(filter.chain);
        start -= stretchLead;
        toDrop_ = static_cast<std::size_t>(stretchLead + filter.delay);
    }
    sourcePosition_ = run.sourceStart + std::llround(static_cast<double>(start - run.start) * run.speed);
    reader_ = pool.take(run.source, sourcePosition_);
}

RunPlayer::~RunPlayer() { pool_.giveBack(run_.source, std::move(reader_)); }

void RunPlayer::play(std::span<StereoSample> samples) {
    if (tempo_) return stretch(samples);
    reader_->read(sourcePosition_, samples);
    sourcePosition_ += std::ssize(samples);
}

void RunPlayer::stretch(std::span<StereoSample> samples) {
    std::vector<StereoSample> block(stretchBlock);
    while (stretched_.size() < toDrop_ + samples.size()) {
        reader_->read(sourcePosition_, block); // past its end it gives silence, which pushes the rest out
        sourcePosition_ += std::ssize(block);
        tempo_->push(block);
        tempo_->pull(stretched_);
        auto const dropped = std::min(toDrop_, stretched_.size());
        stretched_.erase(stretched_.begin(), stretched_.begin() + static_cast<std::ptrdiff_t>(dropped));
        toDrop_ -= dropped;
    }
    std::copy_n(stretched_.begin(), samples.size(), samples.begin());
    stretched_.erase(stretched_.begin(), stretched_.begin() + std::ssize(samples));
}

}
