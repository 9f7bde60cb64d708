#include <Tavaro/Studio/Settings/UpdateCheck.h>

#include <Tavaro/Studio/Settings/PackagePolicy.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroPlatform/Processes/ProgramRun.h>

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>

#include <chrono>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr auto betweenLooks = 6h; // at the clock; a program may run for weeks
constexpr auto week = std::chrono::duration_cast<std::chrono::seconds>(24h * 7);

/// Empty where the program is not there or fails. It says it in English.
std::string saidBy(std::string const& program, std::vector<std::string> const& arguments, std::stop_token const& stop) {
    auto const file = findProgram(program);
    if (!file) return {};
    ProgramRun run{.command = {file->string()}, .more = {"LC_ALL=C"}};
    run.command.insert(run.command.end(), arguments.begin(), arguments.end());
    auto answer = runProgram(run, stop);
    return answer.isGood() ? std::move(answer.out) : std::string();
}

}

UpdateCheck::UpdateCheck(MainQueue& queue, Preferences& preferences, Settings settings)
    : preferences_(preferences)
    , settings_(std::move(settings))
    , observation_(preferences.observe([this] { Q_EMIT changed(); }))
    , side_(queue, "com.tavaro.updates") {
    connect(&timer_, &QTimer::timeout, this, &UpdateCheck::lookWeekly);
    timer_.start(betweenLooks);
}

UpdateCheck::~UpdateCheck() { ending_.request_stop(); }

bool UpdateCheck::isWeekly() const { return preferences_.get(updatesLookedFor); }

void UpdateCheck::setWeekly(bool isWeekly) {
    try {
        preferences_.set(updatesLookedFor, isWeekly);
    } catch (Error const& error) {
        Q_EMIT failed(QString::fromUtf8(error.what()));
    }
    Q_EMIT changed();
}

void UpdateCheck::lookWeekly() {
    auto const now = QDateTime::currentSecsSinceEpoch();
    auto const last = preferences_.get(updatesLastLook);
    if (!isWeekly() || (last <= now && now - last < week.count())) return;
    look();
    try {
        preferences_.set(updatesLastLook, now);
    } catch (Error const&) { // it is looked for once more then
    }
}

void UpdateCheck::look() {
    if (std::exchange(isLooking_, true)) return;
    side_.ask([settings = settings_, stop = ending_.get_token()] { return asked(settings, stop); },
              [this](Outcome<Answers> const& answers) {
                  isLooking_ = false;
                  tell(answers.failure() ? Answers{} : answers.value());
              });
    Q_EMIT changed();
}

UpdateCheck::Answers UpdateCheck::asked(Settings const& settings, std::stop_token const& stop) {
    auto const package = packageOf(saidBy(settings.ownerQuery, {"-S", settings.program}, stop));
    if (package.empty()) return {};
    return {package, saidBy(settings.policyQuery, {"policy", package}, stop)};
}

void UpdateCheck::tell(Answers const& answers) {
    if (answers.package.empty()) {
        return finish(false, tr("This Tavaro was not installed as a package."),
                      tr("Whoever built it knows whether there is a newer one."));
    }
    auto const package = QString::fromStdString(answers.package);
    auto const policy = packagePolicy(answers.policy);
    if (policy.installed.empty())
        return finish(false, tr("The package manager does not answer."), tr("Try “apt-cache policy %1”.").arg(package));
    if (policy.hasNewer()) {
        return finish(true, tr("Tavaro %1 is available.").arg(QString::fromStdString(policy.candidate)),
                      tr("Your package manager installs it, as by “sudo apt install %1”.").arg(package));
    }
    auto const installed = QString::fromStdString(policy.installed);
    if (!policy.isOffered) {
        return finish(false, tr("Tavaro %1 was installed from a file.").arg(installed),
                      tr("None of your package sources offers Tavaro, so a newer one would not be seen here."));
    }
    finish(false, tr("Tavaro %1 is the newest that your package manager knows of.").arg(installed), age());
}

/// What it knows is as old as its lists.
QString UpdateCheck::age() const {
    QFileInfo const lists(QString::fromStdString(settings_.lists.string()));
    if (!lists.exists()) return {};
    return tr("It last fetched what there is on %1.").arg(QLocale().toString(lists.lastModified().date()));
}

void UpdateCheck::finish(bool isAvailable, QString const& text, QString const& hint) {
    isAvailable_ = isAvailable;
    text_ = text;
    hint_ = hint;
    Q_EMIT changed();
}

}
