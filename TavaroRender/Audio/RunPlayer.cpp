#include <TavaroRender/Audio/Private/RunPlayer.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::size_t mostIdle = 8;

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
    sourcePosition_ = run.sourceStart + std::llround(static_cast<double>(position - run.start) * run.speed);
    reader_ = pool.take(run.source, sourcePosition_);
    if (isPlain(run)) return;
    stretch_.emplace(run.speed, [&reader = *reader_, origin = sourcePosition_](std::int64_t at, auto samples) {
        reader.read(origin + at, samples); // past its end it gives silence
    });
}

RunPlayer::~RunPlayer() { pool_.giveBack(run_.source, std::move(reader_)); }

void RunPlayer::play(std::span<StereoSample> samples) {
    if (stretch_) return stretch_->read(samples);
    reader_->read(sourcePosition_, samples);
    sourcePosition_ += std::ssize(samples);
}

}
