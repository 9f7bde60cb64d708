#include <Tavaro/Studio/Settings/UpdateCheck.h>

#include <Tavaro/Studio/Settings/PackagePolicy.h>

#include <TavaroCore/Errors/Error.h>

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QProcessEnvironment>

#include <chrono>
#include <utility>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr auto betweenLooks = 6h; // at the clock; a program may run for weeks
constexpr auto week = std::chrono::duration_cast<std::chrono::seconds>(24h * 7);

/// Nothing else is started for it, and what it prints is for us.
QProcessEnvironment plainEnvironment() {
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    return environment;
}

}

UpdateCheck::UpdateCheck(Preferences& preferences, Settings settings)
    : preferences_(preferences)
    , settings_(std::move(settings))
    , observation_(preferences.observe([this] { Q_EMIT changed(); })) {
    process_.setProcessEnvironment(plainEnvironment());
    process_.setStandardInputFile(QProcess::nullDevice());
    process_.setStandardErrorFile(QProcess::nullDevice());
    connect(&process_, &QProcess::finished, this, [this](int code) {
        auto const said = std::exchange(said_, {});
        if (said) said(code == 0 ? QString::fromUtf8(process_.readAllStandardOutput()) : QString());
    });
    connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) return; // the others are told of at its end
        if (auto const said = std::exchange(said_, {})) said(QString());
    });
    connect(&timer_, &QTimer::timeout, this, &UpdateCheck::lookWeekly);
    timer_.start(betweenLooks);
}

UpdateCheck::~UpdateCheck() { process_.disconnect(this); }

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
    if (isLooking()) return;
    ask(settings_.ownerQuery, {QStringLiteral("-S"), settings_.program}, [this](QString const& said) {
        auto const package = QString::fromStdString(packageOf(said.toStdString()));
        if (package.isEmpty()) {
            return finish(false, tr("This Tavaro was not installed as a package."),
                          tr("Whoever built it knows whether there is a newer one."));
        }
        ask(settings_.policyQuery, {QStringLiteral("policy"), package},
            [this, package](QString const& policy) { tellPolicy(package, policy); });
    });
    Q_EMIT changed();
}

void UpdateCheck::tellPolicy(QString const& package, QString const& said) {
    auto const policy = packagePolicy(said.toStdString());
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

void UpdateCheck::ask(QString const& program, QStringList const& arguments, Said said) {
    said_ = std::move(said);
    process_.start(program, arguments, QIODevice::ReadOnly);
}

void UpdateCheck::finish(bool isAvailable, QString const& text, QString const& hint) {
    isAvailable_ = isAvailable;
    text_ = text;
    hint_ = hint;
    Q_EMIT changed();
}

}
