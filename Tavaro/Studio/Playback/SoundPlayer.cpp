#include <Tavaro/Studio/Playback/SoundPlayer.h>

#include <Tavaro/Studio/Playback/PassageSamples.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Export/FilmSound.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr auto turnLength = 10ms;
constexpr double patience = 0.6;                   // seconds that the film waits for its sound to begin
constexpr double betweenAttempts = 1;              // to find a device again
constexpr double longestStall = 1;                 // in which a device takes nothing
constexpr double scrubbed = 0.06;                  // seconds of the film that are heard of each place
constexpr double scrubPatience = 0.6;              // seconds that the device stays open for the next
constexpr double scrubAhead = audioRate * 0.02;    // samples still to be heard when the next are written
constexpr std::size_t mostAtOnce = audioRate / 20; // samples; between two of these it looks at its orders

/// A sound that is cut out of another does not click.
void fadeEnds(std::span<StereoSample> samples) {
    auto const length = std::min<std::size_t>(audioRate / 200, samples.size() / 2);
    for (std::size_t i = 0; i < length; ++i) {
        auto const share = static_cast<float>(i) / static_cast<float>(length);
        for (auto* sample : {&samples[i], &samples[samples.size() - 1 - i]}) {
            sample->left *= share;
            sample->right *= share;
        }
    }
}

}

struct SoundPlayer::Finished {
    std::uint64_t number = 0;
    FilmSound sound;
};

SoundPlayer::SoundPlayer(ProjectPackage package, FilmClock& clock, std::unique_ptr<SoundOutput> output,
                         std::function<void()> told)
    : package_(std::move(package))
    , clock_(clock)
    , told_(std::move(told))
    , output_(std::move(output)) {}

SoundPlayer::~SoundPlayer() {
    finishing_ = 0;
    stop();
}

void SoundPlayer::show(DemoProject const& project) {
    auto copy = std::make_shared<DemoProject const>(project);
    std::lock_guard const lock(mutex_);
    shown_ = {shown_.number + 1, std::move(copy)};
}

void SoundPlayer::play(Passage const& passage) {
    clock_.hold(passage.from);
    std::lock_guard const lock(mutex_);
    order_ = {order_.number + 1, passage};
    report_.hasEnded = false;
    if (std::exchange(isRunning_, true)) return;
    queue_.async([this] { run(); });
}

void SoundPlayer::scrub(double at) {
    std::lock_guard const lock(mutex_);
    order_ = {order_.number + 1, Passage{.from = at, .end = at + scrubbed}, true};
    if (std::exchange(isRunning_, true)) return;
    queue_.async([this] { run(); });
}

void SoundPlayer::stop() {
    std::lock_guard const lock(mutex_);
    if (!order_.passage) return;
    order_ = {order_.number + 1, std::nullopt};
    clock_.hold(clock_.position());
}

void SoundPlayer::moveEnd(double end) {
    std::lock_guard const lock(mutex_);
    if (order_.passage) order_.passage->end = end;
}

SoundPlayer::Report SoundPlayer::report() const {
    std::lock_guard const lock(mutex_);
    return report_;
}

SoundPlayer::Order SoundPlayer::order() const {
    std::lock_guard const lock(mutex_);
    return order_;
}

void SoundPlayer::say(std::function<void(Report&)> const& change) {
    {
        std::lock_guard const lock(mutex_);
        auto const before = report_;
        change(report_);
        if (report_ == before) return;
    }
    told_();
}

void SoundPlayer::run() {
    while (true) {
        auto const next = order();
        performed_ = next.number;
        if (next.passage && next.isScrub)
            scrubAlong();
        else if (next.passage)
            perform(*next.passage);
        std::lock_guard const lock(mutex_);
        if (order_.number != performed_) continue;
        order_.passage.reset();
        isRunning_ = false;
        return;
    }
}

void SoundPlayer::perform(Passage const& passage) {
    passage_ = passage;
    lead_ = Lead::nobody;
    samples_.reset();
    takeRevision();
    if (!sound_) return;
    askedAt_ = clock_.now();
    if (sound_->isSilent())
        leadByClock({});
    else
        output_->open();
    while (goesOn()) turn();
    output_->close();
    samples_.reset();
}

/// Takes each place that is new when the sound before has been written; the device stays open between two of them, and
/// holds so little that the next is heard at once.
void SoundPlayer::scrubAlong() {
    takeRevision();
    if (!sound_ || sound_->isSilent()) return;
    output_->open();
    std::uint64_t heardOf = 0; // the order whose sound was written last
    double written = 0, restSince = clock_.now();
    while (clock_.now() - restSince < scrubPatience) {
        output_->run(turnLength);
        if (output_->state() == SoundOutput::State::gone) break;
        auto const next = order();
        if (!next.isScrub || !next.passage) break;
        performed_ = next.number;
        double const queued = written - output_->heard().value_or(written);
        if (output_->state() != SoundOutput::State::ready || queued > scrubAhead || heardOf == next.number) continue;
        std::vector<StereoSample> sound(std::min(static_cast<std::size_t>(scrubbed * audioRate), output_->room()));
        if (sound.empty()) continue;
        PassageSamples(*next.passage, *sound_).fill(sound);
        fadeEnds(sound);
        write(sound);
        written += static_cast<double>(sound.size());
        heardOf = next.number;
        restSince = clock_.now();
    }
    output_->close();
}

/// With the volume that is wanted now, without a step to it.
void SoundPlayer::write(std::span<StereoSample> samples) {
    float const wanted = volume_;
    if (wanted != 1 || writtenVolume_ != 1) {
        float const step = (wanted - writtenVolume_) / static_cast<float>(std::max<std::size_t>(samples.size(), 1));
        for (auto& sample : samples) {
            writtenVolume_ += step;
            sample.left *= writtenVolume_;
            sample.right *= writtenVolume_;
        }
        writtenVolume_ = wanted;
    }
    output_->write(samples);
}

/// Whether the same is still to be played, and there is more of it.
bool SoundPlayer::goesOn() {
    bool hasEnded = false;
    {
        std::lock_guard const lock(mutex_);
        if (order_.number != performed_ || !order_.passage) return false;
        if (double const end = order_.passage->end; end != passage_.end) {
            passage_.end = end;
            clock_.setEnd(end);
            if (samples_) samples_->setEnd(end);
        }
        hasEnded = clock_.isAtEnd();
        if (hasEnded) clock_.hold(clock_.position());
    }
    if (hasEnded) say([](Report& report) { report.hasEnded = true; });
    return !hasEnded;
}

void SoundPlayer::turn() {
    output_->run(turnLength);
    takeRevision();
    takeFinished();
    if (output_->state() == SoundOutput::State::ready && !sound_->isSilent()) {
        follow();
    } else {
        lead();
    }
}

/// The sound that a revision leaves as it is goes on as it is.
void SoundPlayer::takeRevision() {
    Shown shown;
    {
        std::lock_guard const lock(mutex_);
        shown = shown_;
    }
    if (shown.number == soundOf_ || !shown.project) return;
    auto draft = FilmSound::draft(*shown.project, package_);
    bool const isOther = !sound_ || !sound_->hasSameMix(draft) || sound_->problems() != draft.problems();
    soundOf_ = shown.number;
    if (!isOther && sound_->isFinal()) return;
    if (isOther) {
        say([&](Report& report) { report.soundProblems = draft.problems(); });
        if (sound_)
            *sound_ = std::move(draft);
        else
            sound_ = std::make_unique<FilmSound>(std::move(draft));
    }
    if (!sound_->isFinal()) finishBeside(shown);
}

void SoundPlayer::finishBeside(Shown const& shown) {
    finishing_ = shown.number;
    finisher_.async([this, shown] {
        auto const isWanted = [&] { return finishing_ == shown.number; };
        if (!isWanted()) return;
        auto sound = FilmSound::finished(*shown.project, package_, isWanted);
        if (!sound) return;
        std::lock_guard const lock(mutex_);
        finished_ = std::make_unique<Finished>(Finished{shown.number, std::move(*sound)});
    });
}

void SoundPlayer::takeFinished() {
    std::unique_ptr<Finished> finished;
    {
        std::lock_guard const lock(mutex_);
        finished.swap(finished_);
    }
    if (finished && sound_->hasSameMix(finished->sound)) *sound_ = std::move(finished->sound);
}

/// The device plays, and its clock leads.
void SoundPlayer::follow() {
    if (!samples_) beginSamples();
    feed();
    if (auto const heard = output_->heard(); heard && *heard > 0) noteHeard(*heard);
    if (clock_.now() - tookAt_ < longestStall) return;
    output_->close();
    leadByClock("the sound device takes nothing");
}

void SoundPlayer::noteHeard(double sample) {
    double const at = samples_->at(sample);
    if (lead_ != Lead::sound) startLag_ = std::clamp(clock_.now() - fedFrom_ - sample / audioRate, 0.0, 1.0);
    if (lead_ == Lead::nobody)
        runClock(at);
    else
        clock_.heard(at);
    if (std::exchange(lead_, Lead::sound) != Lead::sound) say([](Report& report) { report.noSound.reset(); });
}

/// Joins a clock that runs already where that will be by the time at which the first sample is heard.
void SoundPlayer::beginSamples() {
    auto begun = passage_;
    if (lead_ != Lead::nobody) begun.from = clock_.position(clock_.now() + startLag_);
    samples_ = std::make_unique<PassageSamples>(begun, *sound_);
    fedFrom_ = tookAt_ = clock_.now();
}

void SoundPlayer::feed() {
    auto const count = std::min(output_->room(), mostAtOnce);
    if (count == 0) return;
    std::vector<StereoSample> block(count);
    samples_->fill(block);
    write(block);
    tookAt_ = clock_.now();
}

/// No device plays: the clock goes on by itself.
void SoundPlayer::lead() {
    samples_.reset();
    bool const isOpening = output_->state() == SoundOutput::State::opening;
    if (lead_ == Lead::nobody && isOpening && clock_.now() - askedAt_ < patience) return;
    if (lead_ != Lead::clock) leadByClock(isOpening ? "the sound server does not answer" : output_->reason());
    if (!sound_->isSilent()) reopenWhenDue();
}

void SoundPlayer::leadByClock(std::string const& reason) {
    if (lead_ == Lead::nobody) runClock(passage_.from);
    lead_ = Lead::clock;
    samples_.reset();
    if (!sound_->isSilent())
        say([&](Report& report) { report.noSound = "The film plays without sound: " + reason + "."; });
}

/// Whoever stops or plays something else holds the clock, and it stays so.
void SoundPlayer::runClock(double from) {
    auto begun = passage_;
    begun.from = from;
    std::lock_guard const lock(mutex_);
    if (order_.number == performed_) clock_.run(begun);
}

void SoundPlayer::reopenWhenDue() {
    bool const isTrying = output_->state() == SoundOutput::State::opening;
    double const wait = isTrying ? 2 * betweenAttempts : betweenAttempts;
    if (clock_.now() - askedAt_ < wait) return;
    askedAt_ = clock_.now();
    output_->open();
}

}
