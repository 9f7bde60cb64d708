#include <Tavaro/Studio/Voice/VoiceoverRun.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>
#include <Tavaro/Studio/Voice/VoiceOffer.h>

#include <TavaroVoice/Voiceover/LineAudio.h>

#include <QLocale>

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr auto estimateDelay = 150ms; // after the last of many edits

}

VoiceoverRun::VoiceoverRun(MainQueue& queue, EditorSession& session, VoiceOffer& offer, VoiceMeans const& means)
    : queue_(queue)
    , session_(session)
    , offer_(offer)
    , means_(means)
    , counting_(queue, "com.tavaro.studio.cost") {
    estimating_.setSingleShot(true);
    connect(&estimating_, &QTimer::timeout, this, &VoiceoverRun::estimate);
    auto const later = [this] {
        estimating_.start(estimateDelay);
        Q_EMIT changed();
    };
    connect(&session, &EditorSession::documentChanged, this, later);
    connect(&offer, &VoiceOffer::changed, this, later);
    later();
}

VoiceoverRun::~VoiceoverRun() = default;

// What it would cost

void VoiceoverRun::estimate() {
    auto const& plan = session_.document().voiceover;
    auto const number = ++estimates_;
    if (!plan || plan->segments.empty() || offer_.voice().isEmpty()) {
        cost_.reset();
        return Q_EMIT changed();
    }
    // Of the voices that are known by now: to ask the engines again after each edit would be dear.
    auto const offered = [voices = offer_.known()] { return OfferedVoices{.voices = voices}; };
    VoiceoverRequest const request{
        .plan = *plan, .voice = offer_.settings().voiceID, .service = {.speakers = {}, .offered = offered}};
    auto const work = [package = session_.project().package(), request] { return voiceoverCost(package, request); };
    counting_.ask(work, [this, number](Outcome<VoiceoverCost> const& cost) {
        if (number != estimates_) return;
        cost_.reset();
        if (!cost.failure()) cost_ = cost.value();
        Q_EMIT changed();
    });
}

int VoiceoverRun::lines() const {
    auto const& plan = session_.document().voiceover;
    if (!plan) return 0;
    auto const voice = offer_.settings();
    auto const isToBeSpoken = [&](auto const& line) { return hasWords(line.text) && needsGeneration(line, voice); };
    return static_cast<int>(std::ranges::count_if(plan->segments, isToBeSpoken));
}

QString VoiceoverRun::cost() const {
    if (!cost_ || lines() == 0) return {};
    if (!cost_->isPaid) return tr("Spoken on this machine, free of charge");
    if (cost_->characters == 0) return tr("All of it was spoken before: nothing to pay");
    return tr("%1 characters of your ElevenLabs account")
        .arg(QLocale(QLocale::English).toString(static_cast<qlonglong>(cost_->characters)));
}

void VoiceoverRun::setMakesCaptions(bool makes) {
    makesCaptions_ = makes;
    Q_EMIT changed();
}

// The run

void VoiceoverRun::generate() { begin({}); }

void VoiceoverRun::generateLine(QString const& identity) {
    if (auto const id = UUID::parse(identity.toStdString())) begin({*id});
}

void VoiceoverRun::begin(std::vector<UUID> only) {
    auto const& plan = session_.document().voiceover;
    if (job_ || !plan || plan->segments.empty()) return;
    auto const voice = offer_.settings();
    failure_.clear(), asked_.clear(), waiting_.clear();
    for (auto const& line : plan->segments) {
        bool const isAsked = only.empty() ? needsGeneration(line, voice) : line.id == only.front();
        if (!isAsked || !hasWords(line.text)) continue;
        asked_.emplace(line.id, line.text);
        waiting_.insert(line.id);
        failures_.erase(line.id);
    }
    done_ = 0, total_ = static_cast<int>(asked_.size());
    session_.attempt([&] {
        VoiceoverRequest request{
            .plan = *plan, .voice = voice.voiceID, .only = std::move(only), .service = means_.service()};
        job_ = std::make_unique<VoiceoverTask>(voiceoverJob(queue_, session_.project().package(), std::move(request)));
        job_->onProgress([this](VoiceoverProgress const& progress) { follow(progress); });
        job_->onFinished([this] { finish(); });
        job_->start();
    });
    Q_EMIT changed();
}

void VoiceoverRun::cancel() {
    if (!job_ || isStopping_) return;
    isStopping_ = true;
    job_->cancel();
    Q_EMIT changed();
}

/// The job tells how many there are; which ones, the sounds tell, each of which appears when it is complete.
void VoiceoverRun::follow(VoiceoverProgress const& progress) {
    done_ = static_cast<int>(progress.done);
    total_ = static_cast<int>(progress.total);
    auto const voice = offer_.settings();
    auto const package = session_.project().package();
    std::erase_if(waiting_, [&](UUID const& id) {
        std::error_code ignored;
        return std::filesystem::exists(package.assetURL(lineAsset(asked_.at(id), voice)), ignored);
    });
    Q_EMIT changed();
}

void VoiceoverRun::finish() {
    auto const job = std::move(job_);
    bool const isCancelled = std::exchange(isStopping_, false);
    waiting_.clear();
    try {
        take(job->result());
    } catch (Error const& error) {
        if (!isCancelled) failure_ = toQString(error.what());
    }
    Q_EMIT changed();
}

void VoiceoverRun::take(GeneratedVoiceover const& generated) {
    for (auto const& line : generated.lines.unspoken) {
        if (line.kind != VoiceError::Kind::cancelled) failures_[line.id] = {line.text, toQString(line.sentence)};
    }
    if (generated.lines.stopped && !generated.lines.isCancelled) failure_ = toQString(*generated.lines.stopped);
    if (generated.lines.spoken.empty()) return;
    auto const captions = makesCaptions_ ? VoiceoverCaptions::made : VoiceoverCaptions::asTheyAre;
    session_.edit(voiceoverStep, [&](DemoProject& project) {
        takeIn(project, session_.project().package(), generated, {.captions = captions});
    });
}

QString VoiceoverRun::failureOf(VoiceoverSegment const& line) const {
    auto const found = failures_.find(line.id);
    return found != failures_.end() && found->second.text == line.text ? found->second.sentence : QString();
}

void VoiceoverRun::makeCaptions() {
    auto const& plan = session_.document().voiceover;
    if (!plan || isRunning()) return;
    GeneratedVoiceover const nothing{.lines = {}, .before = plan->voice, .voice = plan->voice};
    session_.edit("Make Captions", [&](DemoProject& project) {
        takeIn(project, session_.project().package(), nothing, {.captions = VoiceoverCaptions::made});
    });
}

}
