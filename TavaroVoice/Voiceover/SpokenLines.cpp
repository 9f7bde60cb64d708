#include <TavaroVoice/Voiceover/SpokenLines.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroVoice/Voiceover/LineAudio.h>
#include <TavaroVoice/Voiceover/Private/EvenSpeech.h>
#include <TavaroVoice/Voiceover/StoredLine.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t requestsAtOnce = 4; // what a service lets one key do
constexpr int mostInVain = 4;             // in a row; the next ones would be, too

/// Lines of one text, which have one sound.
struct Group {
    std::string asset;
    std::string text;
    std::vector<std::size_t> lines;
};

std::vector<Group> grouped(SpeakingTask const& task) {
    std::vector<Group> groups;
    std::map<std::string, std::size_t> known;
    for (std::size_t i = 0; i < task.lines.size(); ++i) {
        auto asset = lineAsset(task.lines[i].text, task.voice);
        auto const [place, isNew] = known.try_emplace(asset, groups.size());
        if (isNew) groups.push_back({std::move(asset), std::string(trimmed(task.lines[i].text)), {}});
        groups[place->second].lines.push_back(i);
    }
    return groups;
}

/// Whether every other line would fail the same way.
bool concernsAll(VoiceError::Kind kind) {
    using enum VoiceError::Kind;
    return kind == noKey || kind == rejectedKey || kind == quotaUsedUp || kind == noVoice || kind == noEngine;
}

/// Whether a service was asked for nothing: it was out of reach, or was paid for what is no good.
bool isInVain(VoiceError::Kind kind, VoiceSettings const& voice) {
    using enum VoiceError::Kind;
    return !isSystemVoice(voice.voiceID) && (kind == notReached || kind == service || kind == noSound);
}

/// The failure that is being handled.
UnspokenLine presentFailure() {
    try {
        throw;
    } catch (VoiceError const& error) {
        return {.kind = error.kind, .sentence = error.what()};
    } catch (std::exception const& error) {
        return {.sentence = error.what()};
    }
}

class Speaking {
public:
    Speaking(SpeakingTask const& task, std::stop_token stop, std::function<void(SpokenSoFar const&)> const& progress)
        : task_(task)
        , stop_(std::move(stop))
        , progress_(progress)
        , groups_(grouped(task))
        , lines_(task.lines.size()) {}

    SpokenLines run() {
        auto const atOnce = std::min(threads(), groups_.size());
        {
            std::vector<std::unique_ptr<SerialQueue>> queues;
            for (std::size_t i = 0; i < atOnce; ++i) {
                queues.push_back(std::make_unique<SerialQueue>(fmt::format("com.tavaro.voice.line{}", i)));
                queues.back()->async([this] { work(); });
            }
        }
        return result();
    }

private:
    /// What came of a line; neither where it was not begun.
    struct Line {
        std::optional<SpokenLine> spoken;
        std::optional<UnspokenLine> unspoken;
    };

    std::size_t threads() const {
        if (!isSystemVoice(task_.voice.voiceID)) return requestsAtOnce;
        return std::max(std::thread::hardware_concurrency(), 1u);
    }

    void work() {
        std::unique_ptr<Speaker> speaker;
        while (auto const* const group = next()) {
            try {
                if (auto const there = storedLine(task_.assets, group->asset)) {
                    spoke(*group, there->duration, false);
                    continue;
                }
                if (!speaker) speaker = task_.speakers();
                speak(*speaker, *group);
            } catch (...) {
                failed(*group, presentFailure(), false);
            }
        }
    }

    void speak(Speaker& speaker, Group const& group) {
        auto const speech = evened(speaker.speak(group.text, task_.voice, stop_));
        try {
            spoke(group, storeLine(task_.assets, group.asset, speech).duration, true);
        } catch (...) {
            failed(group, presentFailure(), true); // nothing that is paid for could be kept
        }
    }

    Group const* next() {
        std::lock_guard const lock(mutex_);
        if (stop_.stop_requested() || stopped_ || begun_ == groups_.size()) return nullptr;
        return &groups_[begun_++];
    }

    void spoke(Group const& group, double duration, bool isNew) {
        std::lock_guard const lock(mutex_);
        for (auto const i : group.lines) {
            auto const& [id, text] = task_.lines[i];
            lines_[i].spoken = SpokenLine{id, text, group.asset, duration};
        }
        newlySpoken_ += isNew;
        if (isNew) inVain_ = 0;
        report(group, 0);
    }

    void failed(Group const& group, UnspokenLine failure, bool endsAll) {
        std::lock_guard const lock(mutex_);
        if (failure.kind == VoiceError::Kind::cancelled && stop_.stop_requested()) return;
        for (auto const i : group.lines) {
            failure.id = task_.lines[i].id;
            failure.text = task_.lines[i].text;
            lines_[i].unspoken = failure;
        }
        if (isInVain(failure.kind, task_.voice)) ++inVain_;
        bool const isOver = endsAll || concernsAll(failure.kind) || inVain_ >= mostInVain;
        if (isOver && !stopped_) stopped_ = failure.sentence;
        report(group, group.lines.size());
    }

    void report(Group const& group, std::size_t failures) {
        soFar_.total = lines_.size();
        soFar_.done += group.lines.size();
        soFar_.failed += failures;
        if (progress_) progress_(soFar_);
    }

    SpokenLines result() {
        SpokenLines all{.newlySpoken = newlySpoken_};
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            auto& [spoken, unspoken] = lines_[i];
            if (spoken) all.spoken.push_back(std::move(*spoken));
            if (unspoken) all.unspoken.push_back(std::move(*unspoken));
            if (!spoken && !unspoken) all.notBegun.push_back(task_.lines[i].id);
        }
        all.isCancelled = stop_.stop_requested() && !all.notBegun.empty();
        if (!all.notBegun.empty()) all.stopped = stopped_;
        return all;
    }

    SpeakingTask const& task_;
    std::stop_token const stop_;
    std::function<void(SpokenSoFar const&)> const& progress_;
    std::vector<Group> const groups_;

    std::mutex mutex_; // of all that follows
    std::size_t begun_ = 0;
    std::vector<Line> lines_;
    std::size_t newlySpoken_ = 0;
    int inVain_ = 0; // requests in a row
    std::optional<std::string> stopped_;
    SpokenSoFar soFar_;
};

}

SpokenLines speakLines(SpeakingTask const& task, std::stop_token const& stop,
                       std::function<void(SpokenSoFar const&)> const& progress) {
    return Speaking(task, stop, progress).run();
}

}
