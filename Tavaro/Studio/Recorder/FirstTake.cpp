#include <Tavaro/Studio/Recorder/FirstTake.h>

#include <TavaroCore/Errors/Error.h>

#include <QLoggingCategory>

#include <utility>

namespace tavaro {

FirstTake::FirstTake(RecorderModel& recorder, Preferences& preferences, int seconds)
    : recorder_(recorder)
    , preferences_(preferences)
    , seconds_(seconds) {
    connect(&recorder, &RecorderModel::changed, this, &FirstTake::changed);
    connect(recorder.sources(), &RecorderSources::chosenChanged, this, &FirstTake::changed);
    connect(&recorder, &RecorderModel::saved, this, [this](QString const& path, QString const& startedBy) {
        if (!startedBy.isEmpty() || !isWanted()) return;
        leave(); // a take is a take, however it came about
        if (std::exchange(isTaking_, false)) Q_EMIT made(path);
    });
    connect(&recorder, &RecorderModel::failureChanged, this, [this] {
        if (!recorder_.failure().isEmpty()) isTaking_ = false;
    });
}

bool FirstTake::isWanted() const { return !preferences_.get(firstTakeMade); }

bool FirstTake::canGoOn() const {
    if (recorder_.phase() != RecorderModel::Idle) return false;
    return step_ != Source || !recorder_.sources()->chosenName().isEmpty();
}

void FirstTake::goOn() {
    if (!canGoOn()) return;
    if (step_ != Take) return setStep(static_cast<Step>(step_ + 1));
    isTaking_ = true;
    recorder_.recordFor(seconds());
}

void FirstTake::goBack() {
    if (step_ != Source && recorder_.phase() == RecorderModel::Idle) setStep(static_cast<Step>(step_ - 1));
}

void FirstTake::leave() {
    try {
        preferences_.set(firstTakeMade, true);
    } catch (Error const& error) {
        qWarning("That there was a first take could not be kept: %s", error.what());
    }
    Q_EMIT changed();
}

void FirstTake::setStep(Step step) {
    step_ = step;
    Q_EMIT changed();
}

}
