#include <Tavaro/Studio/Exports/FilmReading.h>

#include <Tavaro/Model/Privacy/FilmCheck.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t mostTexts = 4; // that are told one by one

PrivacyScanRequest requestFor(std::filesystem::path const& film, DemoProject const& project, MovieScan const& scan) {
    auto request = filmCheckRequest(film, project.redactionSettings);
    if (scan) request.scan = scan;
    return request;
}

std::string lineOf(LegibleText const& text) {
    auto const time = [](double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); };
    auto line = fmt::format("{}–{}: {} {}", time(text.start), time(text.end), displayName(text.kind), text.masked);
    auto const remark = remarkOn(text);
    return remark.empty() ? line : line + ", " + remark;
}

}

FilmVerdict verdictOn(std::vector<LegibleText> const& texts) {
    FilmVerdict verdict{.said = filmCheckSentence(texts), .isLegible = countOfLegible(texts) > 0};
    std::size_t told = 0;
    for (auto const& text : texts) {
        if (text.isRejectedInProject) continue;
        if (told == mostTexts) break;
        verdict.said += '\n';
        verdict.said += lineOf(text);
        ++told;
    }
    if (auto const rest = countOfLegible(texts) - told; rest > 0) verdict.said += fmt::format("\nand {} more", rest);
    return verdict;
}

FilmReading::FilmReading(MainQueue& queue, std::filesystem::path const& film, DemoProject project,
                         MovieScan const& scan, std::function<void(FilmVerdict const&)> over)
    : project_(std::move(project))
    , job_(privacyScanJob(queue, requestFor(film, project_, scan))) {
    job_.onProgress([this](ScanProgress const& progress) { progress_ = progress; });
    job_.onFinished([this, over = std::move(over)] { over(verdict()); });
    job_.start();
}

FilmVerdict FilmReading::verdict() {
    try {
        auto const& made = job_.result();
        if (made.isStopped)
            return {.said =
                        made.failure.value_or("The check was stopped.") + " So nothing can be said about the film."};
        return verdictOn(legibleTexts(made, &project_));
    } catch (Error const& error) {
        return {.said = fmt::format("The film could not be read again: {}", error.what())};
    }
}

double FilmReading::share() const {
    return progress_.total > 0 ? std::clamp(progress_.seconds / progress_.total, 0.0, 1.0) : 0;
}

QString FilmReading::state() const {
    if (progress_.total <= 0) return {};
    return QString::fromStdString(
        fmt::format("{} of {}", Timecode::format(progress_.seconds), Timecode::format(progress_.total)));
}

}
