#include <Tavaro/Studio/Voice/VoiceSample.h>

#include <Tavaro/Studio/Lists/FieldVariant.h>
#include <Tavaro/Studio/Voice/VoiceOffer.h>

#include <TavaroVoice/Voiceover/SpokenLines.h>
#include <TavaroVoice/Voices/VoiceBox.h>

#include <QPointer>

#include <algorithm>
#include <stop_token>
#include <utility>

namespace tavaro {

VoiceSample::VoiceSample(MainQueue& queue, VoiceOffer const& offer, VoiceMeans const& means)
    : queue_(queue)
    , offer_(offer)
    , means_(means) {}

VoiceSample::~VoiceSample() {
    for (auto const& one : making_) one.job->cancel(); // all, before each is waited for
}

void VoiceSample::hear() {
    stop();
    failure_.clear();
    auto const voice = offer_.settings();
    if (voice.voiceID.empty()) return;
    wanted_ = voice;
    if (std::ranges::find(making_, voice, &Making::voice) == making_.end()) make(voice);
    Q_EMIT changed();
}

void VoiceSample::make(VoiceSettings const& voice) {
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
    auto job = std::make_unique<Job<Made>>(queue_, "com.tavaro.job.sample", std::move(work));
    job->onFinished([this, voice] { finish(voice); });
    job->start();
    making_.push_back({voice, std::move(job)});
}

void VoiceSample::finish(VoiceSettings const& voice) {
    auto const place = std::ranges::find(making_, voice, &Making::voice);
    auto const job = std::move(place->job);
    making_.erase(place);
    if (wanted_ != voice) return;
    wanted_.reset();
    play(*job);
}

void VoiceSample::play(Job<Made>& job) {
    try {
        auto const& made = job.result();
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
    bool const wasMaking = std::exchange(wanted_, std::nullopt).has_value();
    sound_.reset();
    if (std::exchange(isPlaying_, false) || wasMaking) Q_EMIT changed();
}

}
