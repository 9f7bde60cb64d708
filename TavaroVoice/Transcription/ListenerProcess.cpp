#include <TavaroVoice/Transcription/Private/ListenerProcess.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroPlatform/Processes/ConnectedProcess.h>
#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/ListenerTalk.h>

#include <utility>

namespace tavaro {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double runGap = 0.5;        // seconds between words of one run
constexpr double unsure = 0.35;       // mean confidence of a run
constexpr double longestSound = 0.35; // seconds that a word of no letters lasts
constexpr double secondsALetter = 0.12;

bool lastsTooLong(HeardWord const& word) {
    return word.end - word.start > longestSound + secondsALetter * static_cast<double>(lengthOf(word.text));
}

constexpr std::chrono::milliseconds step{50}; // between looks at whether to stop
constexpr std::chrono::seconds lineTime{20};  // from a line's beginning to its end

}

struct ListenerProcess::Running {
    explicit Running(ConnectedProcess started)
        : process(std::move(started))
        , lines(process.socket(), longestListenerLine) {}

    ConnectedProcess process;
    LineReader lines;
};

ListenerProcess::ListenerProcess(Options options) : options_(std::move(options)) {}

ListenerProcess::~ListenerProcess() { end(); }

std::vector<HeardWord> ListenerProcess::hear(MonoSound const& piece, std::stop_token const& stop) {
    try {
        if (!running_) start(stop);
        double const seconds = static_cast<double>(piece.samples.size()) / speechRate;
        if (!running_->process.socket().sendAll(requestLine(piece) + '\n', lineTime))
            throw RecogniserLost("the speech recognizer broke down");
        auto const perSecond = std::chrono::duration<double, std::milli>(options_.perSecond) * seconds;
        auto const patience = options_.start + std::chrono::ceil<std::chrono::milliseconds>(perSecond);
        return withoutGuesses(soundWords(answer(patience, stop), seconds));
    } catch (...) {
        end();
        throw;
    }
}

void ListenerProcess::start(std::stop_token const& stop) {
    auto process = ConnectedProcess::start(options_.command);
    if (!process) throw VoiceError(VoiceError::Kind::failed, "Transcription failed: the listener does not start");
    running_ = std::make_unique<Running>(std::move(*process));
    answer(options_.start, stop);
}

void ListenerProcess::end() {
    if (running_) running_->process.kill();
    running_.reset();
}

std::vector<HeardWord> ListenerProcess::answer(std::chrono::milliseconds patience, std::stop_token const& stop) {
    auto const deadline = Clock::now() + patience;
    while (!running_->lines.awaitBeginning(step)) {
        if (stop.stop_requested()) throw VoiceError(VoiceError::Kind::cancelled, "Transcription was cancelled.");
        if (Clock::now() > deadline) throw RecogniserLost("the speech recognizer took too long");
    }
    auto const line = running_->lines.next(lineTime);
    if (stop.stop_requested()) throw VoiceError(VoiceError::Kind::cancelled, "Transcription was cancelled.");
    if (!line) throw RecogniserLost("the speech recognizer broke down");
    auto reply = readReply(*line);
    if (reply.failure) throw VoiceError(VoiceError::Kind::failed, "Transcription failed: " + *reply.failure);
    return std::move(reply.words);
}

std::vector<HeardWord> withoutGuesses(std::vector<HeardWord> words) {
    std::erase_if(words, lastsTooLong);
    for (auto begin = words.begin(); begin != words.end();) {
        auto end = begin;
        double sum = 0, spokenUntil = begin->end;
        for (; end != words.end() && end->start - spokenUntil < runGap; ++end) {
            sum += static_cast<double>(end->confidence);
            spokenUntil = end->end;
        }
        begin = sum < unsure * static_cast<double>(end - begin) ? words.erase(begin, end) : end;
    }
    return words;
}

}
