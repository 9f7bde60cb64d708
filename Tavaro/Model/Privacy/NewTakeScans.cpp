#include <Tavaro/Model/Privacy/NewTakeScans.h>

#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Model/Project/ProjectCatalogue.h>
#include <Tavaro/Model/Project/ProjectInUse.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds untilNextTry{200};
constexpr std::chrono::seconds longestWait{60}; // for another program to be done with the project

fs::path trueName(fs::path const& package) {
    std::error_code code;
    auto const path = fs::weakly_canonical(fs::absolute(package), code);
    return code ? package : path;
}

std::string reasonOf(std::exception_ptr const& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (std::exception const& error) {
        return error.what();
    }
}

}

NewTakeScans::NewTakeScans(MainQueue& queue, OpenProjects& projects, ProjectCatalogue& catalogue)
    : queue_(queue)
    , projects_(projects)
    , catalogue_(catalogue)
    , side_(queue, "com.tavaro.new-takes") {}

void NewTakeScans::add(fs::path const& package) {
    if (hasEnded_ || isExpected(package) || !DueScan::isNoted(package)) return;
    waiting_.push_back({.package = trueName(package)});
    side_.ask([] { return true; }, [this](auto const&) { next(); });
}

void NewTakeScans::takeUp() {
    catalogue_.listAll([this](Outcome<ProjectCatalogue::Listed> const& listed) {
        if (listed.failure()) return; // a library that is not there yet
        for (auto const& item : listed.value()) add(item.path);
    });
}

void NewTakeScans::hold(bool isHeld) {
    if (std::exchange(isHeld_, isHeld) == isHeld) return;
    if (!isHeld) return next();
    if (running_ && running_->job) running_->job->cancel();
}

void NewTakeScans::end() {
    if (std::exchange(hasEnded_, true)) return;
    if (running_ && running_->job) running_->job->cancel();
    auto const stays = static_cast<std::ptrdiff_t>(running_ ? 1 : 0);
    std::deque<Take> const left(waiting_.begin() + stays, waiting_.end());
    waiting_.erase(waiting_.begin() + stays, waiting_.end());
    auto const failure = std::make_exception_ptr(Error("Tavaro ended before it was looked at."));
    for (auto const& take : left)
        for (auto const& handler : take.handlers) handler(failure);
}

std::deque<NewTakeScans::Take>::const_iterator NewTakeScans::find(fs::path const& package) const {
    return std::ranges::find(waiting_, trueName(package), &Take::package);
}

bool NewTakeScans::isExpected(fs::path const& package) const { return find(package) != waiting_.end(); }

void NewTakeScans::whenOver(fs::path const& package, Ended handler) {
    auto const found = find(package);
    if (found == waiting_.end()) return handler(nullptr);
    waiting_[static_cast<std::size_t>(found - waiting_.begin())].handlers.push_back(std::move(handler));
}

void NewTakeScans::next() {
    if (isHeld_ || hasEnded_ || isOpening_ || running_ || waiting_.empty()) return;
    isOpening_ = true;
    projects_.open(waiting_.front().package, [this](Outcome<Opened> const& opened) {
        isOpening_ = false;
        if (isHeld_ || hasEnded_) return;
        try {
            begin(opened.value());
        } catch (...) {
            over(asError(std::current_exception()));
        }
    });
}

void NewTakeScans::begin(Opened const& project) {
    auto const& document = project->document();
    auto due = DueScan::claim(project->package(), document);
    if (!due) return over(nullptr);
    auto request = privacyScanRequest(document, project->package(), document.redactionSettings);
    request.scan = scan_;
    running_.emplace(Running{.project = project, .due = std::move(*due)});
    running_->job = std::make_unique<ScanJob>(privacyScanJob(queue_, std::move(request)));
    running_->job->onProgress([this](ScanProgress const& progress) {
        observers_.notify(Progress{.package = waiting_.front().package, .scan = progress});
    });
    running_->job->onFinished([this] { finish(); });
    running_->job->start();
}

void NewTakeScans::finish() {
    auto const job = std::move(running_->job); // its handler is running
    try {
        keep(std::make_shared<MadePrivacyScan const>(std::move(job->result())),
             std::chrono::steady_clock::now() + longestWait);
    } catch (...) {
        over(asError(std::current_exception()));
    }
}

/// Again in a moment, where another program has the project.
void NewTakeScans::keep(std::shared_ptr<MadePrivacyScan const> const& made, Time end) {
    std::exception_ptr failure;
    try {
        take(*made);
    } catch (ProjectInUse const&) {
        if (hasEnded_ || std::chrono::steady_clock::now() >= end) return over(std::current_exception());
        auto const pause = [] {
            std::this_thread::sleep_for(untilNextTry);
            return true;
        };
        return side_.ask(pause, [this, made, end](auto const&) { keep(made, end); });
    } catch (...) {
        failure = asError(std::current_exception());
    }
    if (made->failure && !failure) failure = std::make_exception_ptr(Error(*made->failure));
    if (failure || !made->isStopped) return over(failure);
    running_.reset(); // it is held, and goes on later
    next();
}

void NewTakeScans::take(MadePrivacyScan const& made) {
    auto& project = *running_->project;
    if (std::error_code ignored; !fs::is_directory(project.package().url(), ignored)) {
        takeUp(); // under its new name
        throw Error("The project is not where it was.");
    }
    bool const isNothing = made.isStopped && made.recordings.empty();
    if (!isNothing) project.commit(privacyScanStep, [&](DemoProject& edited) { keepPrivacyScan(edited, made); });
    if (!made.isStopped) running_->due.settle();
    if (made.isStopped && hasEnded_) throw Error("Tavaro ended before all of it was looked at.");
}

void NewTakeScans::over(std::exception_ptr const& failure) {
    auto const take = std::move(waiting_.front());
    waiting_.pop_front();
    running_.reset();
    if (failure) spdlog::warn("“{}” was not looked at for private text: {}", take.package.string(), reasonOf(failure));
    for (auto const& handler : take.handlers) handler(failure);
    next();
}

}
