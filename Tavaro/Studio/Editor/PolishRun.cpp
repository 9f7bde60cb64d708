#include <Tavaro/Studio/Editor/PolishRun.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Inspectors/FieldRows.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>
#include <Tavaro/Studio/Lists/ItemTitle.h>

namespace tavaro {

PolishRun::PolishRun(MainQueue& queue, EditorSession& session) : queue_(queue), session_(session) {}

PolishRun::~PolishRun() = default;

QVariantList PolishRun::switches() const {
    QVariantList switches;
    forEachField<PolishOptions>([&](auto const& field) {
        switches.push_back(QVariantMap{{QStringLiteral("name"), toQString(field.name)},
                                       {QStringLiteral("label"), inSentence(inWords(field.name))},
                                       {QStringLiteral("isOn"), options_.*field.member}});
    });
    return switches;
}

void PolishRun::setSwitch(QString const& name, bool isOn) {
    forEachField<PolishOptions>([&](auto const& field) {
        if (name == toQString(field.name)) options_.*field.member = isOn;
    });
    Q_EMIT changed();
}

void PolishRun::start() {
    if (isRunning()) return;
    report_.clear();
    begin();
    Q_EMIT changed();
}

void PolishRun::begin() {
    PolishChoices choices;
    choices.options = options_;
    job_ = std::make_unique<PolishJob>(polishJob(queue_, session_.document(), choices));
    job_->onFinished([this, revision = session_.project().revision()] { finish(revision); });
    job_->start();
}

void PolishRun::finish(std::uint64_t revision) {
    auto const job = std::move(job_);
    if (revision != session_.project().revision()) return begin();
    session_.attempt([&] {
        auto const& made = job->result();
        session_.edit(polishStep, [&](DemoProject& project) { project = made.project; });
        for (auto const& line : made.report.summaryLines()) report_.push_back(toQString(line));
    });
    Q_EMIT changed();
}

void PolishRun::cancel() {
    job_.reset();
    Q_EMIT changed();
}

}
