#pragma once

#include <TavaroVoice/Transcription/Private/Recogniser.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tavaro {

/// The embedded engine, in a program of its own, `tavaro-listener`: its crash, its memory and its hanging are not ours.
/// It is started with the first piece, and again after it broke down.
class ListenerProcess final : public Recogniser {
public:
    struct Options {
        std::vector<std::string> command;
        /// How long it may take to load its model, and for each second of a piece beside that.
        std::chrono::milliseconds start{60'000};
        std::chrono::milliseconds perSecond{4'000};
    };
    explicit ListenerProcess(Options options);
    ~ListenerProcess() override;

    std::vector<HeardWord> hear(MonoSound const& piece, std::stop_token const& stop) override;

private:
    struct Running;

    void start(std::stop_token const& stop);
    void end();
    std::vector<HeardWord> answer(std::chrono::milliseconds patience, std::stop_token const& stop);

    Options const options_;
    std::unique_ptr<Running> running_;
};

/// The embedded engine hears words in music and noise too: runs of words that it is not sure of, and words that last
/// longer than anyone says them, are left out.
std::vector<HeardWord> withoutGuesses(std::vector<HeardWord> words);

}
