#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Parameter.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro::operations {

namespace {

constexpr double endTolerance = 0.01; // lengths are shown in hundredths, and people type what they see

[[noreturn]] void fail(std::string const& sentence) {
    throw OperationError(OperationError::Kind::notPossible, sentence);
}

}

void expectInside(DemoProject const& project, double at) {
    if (at <= project.duration() + endTolerance) return;
    fail(fmt::format("{:g} s is past the end of the video, which lasts {:.2f} s.", at, project.duration()));
}

void expectSpan(DemoProject const& project, TimeRange const& range) {
    if (!(range.duration > 0)) {
        fail(fmt::format("The end of the span has to come after its start: {:g} s is not after {:g} s.", range.end(),
                         range.start));
    }
    expectInside(project, range.end());
}

bool namesClip(std::string const& text) {
    auto const at = finiteNumber(text);
    return UUID::parse(text) || (at && *at >= 0);
}

VideoClip const& clipNamed(DemoProject const& project, std::string const& what) {
    if (auto const id = UUID::parse(what)) {
        for (auto const& clip : project.timeline.clips) {
            if (clip.id == *id) return clip;
        }
        fail(fmt::format("The project has no clip {}.", what));
    }
    double const at = finiteNumber(what).value();
    expectInside(project, at);
    if (auto const* clip = project.timeline.clip(std::min(at, project.duration()))) return *clip;
    fail(fmt::format("The video shows no clip at {:g} s.", at));
}

std::vector<TranscriptWord> const& wordsOf(DemoProject const& project) {
    if (!project.transcript) fail("This project has no transcript yet.");
    return (*project.transcript)->words;
}

std::string shownTime(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

std::string shownSpan(TimeRange const& range) { return shownTime(range.start) + "–" + shownTime(range.end()); }

std::string counted(std::size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}
