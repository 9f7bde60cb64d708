#include <TavaroRender/Export/Private/SoundMovie.h>

#include <algorithm>
#include <cmath>

#include <TavaroMedia/Movie/MovieWriter.h>

namespace tavaro {

namespace {

constexpr std::size_t blocksAhead = 12; // of 85 ms

}

SoundMovie::SoundMovie(MovieWriter& writer, MixRenderer& mix, Part part)
    : writer_(writer)
    , totalSamples_(part.count)
    , blocks_(blocksAhead)
    , queue_("com.tavaro.export.audio") {
    queue_.async([this, &mix, part] {
        try {
            runAudioPass({.mix = mix, .start = part.start, .totalSamples = part.count, .blocks = blocks_});
        } catch (...) {
            failure_ = std::current_exception();
            blocks_.abandon();
        }
    });
}

SoundMovie::~SoundMovie() { blocks_.abandon(); }

EncoderPicture SoundMovie::picture() { return writer_.picture(); }

void SoundMovie::append(EncoderPicture picture, double presentationTime) {
    appendSound(std::llround(presentationTime * audioRate));
    writer_.append(std::move(picture), presentationTime);
}

void SoundMovie::finishSound() { appendSound(totalSamples_); }

void SoundMovie::appendSound(std::int64_t until) {
    until = std::min(until, totalSamples_);
    while (writer_.samplesAppended() < until) {
        auto const block = blocks_.pop();
        if (!block && failure_) std::rethrow_exception(failure_);
        if (!block) return;
        writer_.appendAudio(*block);
    }
}

}
