#include <Tavaro/Studio/Voice/VoiceSample.h>

#include <Tavaro/Studio/Lists/FieldVariant.h>
#include <Tavaro/Studio/Voice/VoiceOffer.h>

#include <TavaroVoice/Voiceover/SpokenLines.h>
#include <TavaroVoice/Voices/VoiceBox.h>

#include <QPointer>

#include <stop_token>

namespace tavaro {

VoiceSample::VoiceSample(MainQueue& queue, VoiceOffer const& offer, VoiceMeans const& means)
    : queue_(queue)
    , offer_(offer)
    , means_(means) {}

VoiceSample::~VoiceSample() = default;

void VoiceSample::hear() {
    stop();
    failure_.clear();
    auto const voice = offer_.settings();
    if (voice.voiceID.empty()) return;
    auto work = [voice, folder = means_.samples, speakers = means_.service().speakers](JobReporter<NoProgress>& job) {
        std::stop_source stop;
        JobControl::CancelAction const cancel(job, [&] { stop.request_stop(); });
        std::filesystem::create_directories(folder);
        auto const made = speakLines({.lines = {{UUID::random(), VoiceBox::previewLine}},
                                      .voice = voice,
                                      .assets = folder,
                                      .speakers = speakers},
                                     stop.get_token());
        if (!made.spoken.empty()) return Made{folder / made.spoken.front().asset, {}};
        return Made{{}, made.unspoken.empty() ? made.stopped.value_or("") : made.unspoken.front().sentence};
    };
    job_ = std::make_unique<Job<Made>>(queue_, "com.tavaro.job.sample", std::move(work));
    job_->onFinished([this] { play(); });
    job_->start();
    Q_EMIT changed();
}

void VoiceSample::play() {
    auto const job = std::move(job_);
    try {
        auto const& made = job->result();
        failure_ = toQString(made.failure);
        if (!made.file.empty()) {
            isPlaying_ = true;
            // On the thread that plays, which this outlives; the end is delivered by the main queue, which may not.
            auto const ended = [queue = &queue_, self = QPointer(this),
                                number = ++number_](std::string const& problem) {
                queue->async([self, number, problem] {
                    if (self) self->end(number, problem);
                });
            };
            sound_ = std::make_unique<SoundSample>(means_.output, ended);
            sound_->play(made.file);
        }
    } catch (Error const& error) {
        failure_ = toQString(error.what());
    }
    Q_EMIT changed();
}

void VoiceSample::end(std::uint64_t number, std::string const& problem) {
    if (number != number_) return;
    isPlaying_ = false;
    failure_ = toQString(problem);
    Q_EMIT changed();
}

void VoiceSample::stop() {
    ++number_;
    if (job_) job_->cancel();
    job_.reset();
    sound_.reset();
    if (std::exchange(isPlaying_, false)) Q_EMIT changed();
}

}
