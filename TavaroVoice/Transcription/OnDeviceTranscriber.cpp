#include <TavaroVoice/Transcription/OnDeviceTranscriber.h>

#include <TavaroCore/Values/Timecode.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroPlatform/Queues/BoundedQueue.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/Private/HeardSpeech.h>
#include <TavaroVoice/Transcription/Private/Recogniser.h>
#include <TavaroVoice/Transcription/Private/SpeechCutter.h>

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace tavaro {

namespace {

using Kind = VoiceError::Kind;

constexpr int mostTries = 2;      // for a piece
constexpr int hopelessPieces = 3; // lost before the first one was heard

struct NumberedPiece {
    std::size_t number = 0;
    SpeechPiece piece;
    double offset = 0;
};

/// What became of a piece.
struct PieceResult {
    std::vector<TranscriptWord> words;
    double seconds = 0;
};

[[noreturn]] void throwCancelled() { throw VoiceError(Kind::cancelled, "Transcription was cancelled."); }

/// One transcription: the caller's thread cuts the sound, the others hear.
class Hearing {
public:
    Hearing(EngineWork const& work, TranscriptionWatch const& watch)
        : work_(work)
        , watch_(watch)
        , pieces_(static_cast<std::size_t>(work.atOnce)) {}

    Transcript of(std::vector<SpokenSound> const& sounds, std::string const& locale) {
        {
            std::vector<std::unique_ptr<SerialQueue>> listeners;
            for (int i = 0; i < work_.atOnce; ++i) {
                listeners.push_back(std::make_unique<SerialQueue>("com.tavaro.voice.listener"));
                listeners.back()->async([this] { listen(); });
            }
            attempt([&] { cut(sounds); });
            pieces_.close();
        }
        if (failure_) std::rethrow_exception(failure_);
        if (watch_.stop.stop_requested()) throwCancelled();
        if (lost_ > 0 && heard_ == 0) throw VoiceError(Kind::failed, "Transcription failed: " + reason_);
        return speech_.transcript(locale);
    }

private:
    /// The first failure ends everything.
    template<class Task> void attempt(Task const& task) {
        try {
            task();
        } catch (...) {
            std::lock_guard const lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
            pieces_.abandon();
            ending_.request_stop();
        }
    }

    // The caller's thread:

    void cut(std::vector<SpokenSound> const& sounds) {
        for (auto const& sound : sounds) total_ += secondsOf(sound);
        for (auto const& sound : sounds) cut(sound);
    }

    double secondsOf(SpokenSound const& sound) const {
        try {
            return AudioReader(sound.file).info().duration;
        } catch (MediaError const& error) {
            failToRead(error);
        }
    }

    void cut(SpokenSound const& sound) {
        bool goesOn = true;
        SpeechCutter cutter(work_.pieceSeconds, [&](SpeechPiece piece) {
            goesOn = pieces_.push({.number = next_++, .piece = std::move(piece), .offset = sound.offset});
        });
        try {
            AudioReader reader(sound.file);
            std::vector<StereoSample> block(audioRate);
            std::vector<float> mono(block.size());
            for (std::int64_t at = 0; goesOn; at += std::ssize(block)) {
                if (watch_.stop.stop_requested()) throwCancelled();
                auto const count = reader.read(at, block);
                std::transform(block.begin(), block.end(), mono.begin(),
                               [](StereoSample const& sample) { return (sample.left + sample.right) / 2; });
                cutter.feed(std::span(mono).first(count));
                if (count < block.size()) break;
            }
            if (goesOn) cutter.finish();
        } catch (MediaError const& error) {
            failToRead(error);
        }
    }

    [[noreturn]] void failToRead(MediaError const& error) const {
        std::lock_guard const lock(mutex_);
        if (watch_.remark) watch_.remark(error.what());
        throw VoiceError(Kind::unreadableSound, "could not read audio");
    }

    // The listeners' threads:

    void listen() {
        attempt([&] {
            auto const recogniser = work_.makeRecogniser();
            // Whoever cancels, and whoever fails, ends what the engine does.
            std::stop_callback const pass(watch_.stop, [this] { ending_.request_stop(); });
            while (auto piece = pieces_.pop()) {
                if (ending_.stop_requested()) throwCancelled();
                auto words = wordsOf(*piece, *recogniser);
                note(std::move(*piece), std::move(words));
            }
        });
    }

    std::vector<TranscriptWord> wordsOf(NumberedPiece const& piece, Recogniser& recogniser) {
        if (!maySpeak(piece.piece)) return {};
        for (int tries = 1;; ++tries) {
            try {
                auto const heard = recogniser.hear(piece.piece.sound, ending_.get_token());
                std::lock_guard const lock(mutex_);
                ++heard_;
                return wordsIn(piece.piece, heard, piece.offset);
            } catch (RecogniserLost const& error) {
                if (tries == mostTries) {
                    skip(piece, error.what());
                    return {};
                }
            }
        }
    }

    void skip(NumberedPiece const& piece, std::string const& reason) {
        std::lock_guard const lock(mutex_);
        reason_ = reason;
        if (++lost_ >= hopelessPieces && heard_ == 0) throw VoiceError(Kind::failed, "Transcription failed: " + reason);
        if (!watch_.remark) return;
        watch_.remark("What is said from " + Timecode::format(piece.offset + piece.piece.from) + " to " +
                      Timecode::format(piece.offset + piece.piece.to) + " was left out: " + reason + ".");
    }

    /// Pieces are heard in any order, and are told of in that of the sound.
    void note(NumberedPiece piece, std::vector<TranscriptWord> words) {
        std::lock_guard const lock(mutex_);
        speech_.addLevels(piece.piece, piece.offset);
        results_.emplace(piece.number, PieceResult{std::move(words), piece.piece.to - piece.piece.from});
        while (!results_.empty() && results_.begin()->first == told_) {
            auto result = std::move(results_.extract(results_.begin()).mapped());
            ++told_;
            seconds_ += result.seconds;
            auto added = speech_.add(std::move(result.words));
            if (watch_.progress) watch_.progress({.seconds = seconds_, .total = total_, .words = std::move(added)});
        }
    }

    EngineWork const& work_;
    TranscriptionWatch const& watch_;
    BoundedQueue<NumberedPiece> pieces_;
    std::size_t next_ = 0; // the caller's thread
    double total_ = 0;     // the same, until the first piece is there

    std::stop_source ending_;
    mutable std::mutex mutex_; // of all that follows
    std::exception_ptr failure_;
    HeardSpeech speech_;
    std::map<std::size_t, PieceResult> results_; // those that wait for one before them
    std::size_t told_ = 0;
    double seconds_ = 0;
    int heard_ = 0;
    int lost_ = 0;
    std::string reason_;
};

}

Transcript OnDeviceTranscriber::transcribe(std::vector<SpokenSound> const& sounds, std::string const& locale,
                                           TranscriptionWatch const& watch) const {
    if (sounds.empty()) throw VoiceError(Kind::noSound, "This recording has no microphone audio to transcribe.");
    return Hearing(work_, watch).of(sounds, locale);
}

}
